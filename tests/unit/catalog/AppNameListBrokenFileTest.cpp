// What the catalogue makes of a file that is cut off, malformed or no catalogue at all: what came before the
// fault is kept, and the reading always ends.

#include "catalog/AppNameList.h"

#include "support/ImportPatch.h"
#include "support/Text.h"
#include "unit/catalog/CatalogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <shlwapi.h>

#include <wrl/client.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using test::LoadText;
using test::SavedText;

// How many start tags of this element are complete in the text.
std::size_t CompleteTags(const std::string& text, const std::string& element)
{
    const std::string tag = std::string("<").append(element);
    std::size_t count = 0;
    for (std::size_t start = text.find(tag); start != std::string::npos; start = text.find(tag, start + 1)) {
        const std::size_t end = start + tag.size();
        const char next = end < text.size() ? text[end] : '\0';
        const bool isWholeName = next == ' ' || next == '/' || next == '>';
        count += isWholeName && text.find('>', start) != std::string::npos;
    }
    return count;
}

// The record's lines of a saved catalogue, whatever follows their attributes.
std::vector<std::string> Records(const std::string& saved)
{
    std::vector<std::string> records;
    for (std::string line : test::Split(saved, "\r\n")) {
        if (line.find("<Package ") != std::string::npos || line.find("<MetroApp ") != std::string::npos ||
            line.find("<DesktopApp ") != std::string::npos) {
            records.push_back(line.substr(0, line.find_last_of('"')));
        }
    }
    return records;
}

// Keeps the catalogue's files in memory: thousands of them on disk would take their time.
class FileInMemory
{
public:
    FileInMemory() : m_patch("SHCreateStreamOnFileW", Open) {}
    ~FileInMemory() { s_stream.Reset(); }

    static HRESULT Load(CQanhAppNameList& list, const std::string& text)
    {
        s_stream.Attach(
            SHCreateMemStream(reinterpret_cast<const BYTE*>(text.data()), static_cast<UINT>(text.size())));
        return list.Load(L"memory");
    }

    static std::string Save(const CQanhAppNameList& list)
    {
        s_stream.Attach(SHCreateMemStream(nullptr, 0));
        EXPECT_EQ(list.Save(L"memory"), S_OK);
        s_stream->Seek({}, STREAM_SEEK_SET, nullptr);
        char buffer[4096];
        ULONG size = 0;
        s_stream->Read(buffer, sizeof buffer, &size);
        return std::string(buffer, size);
    }

private:
    using OpenFunction = HRESULT(WINAPI*)(LPCWSTR, DWORD, IStream**);

    static HRESULT WINAPI Open(LPCWSTR, DWORD, IStream** ppStream) { return s_stream.CopyTo(ppStream); }

    static inline Microsoft::WRL::ComPtr<IStream> s_stream;
    test::ImportPatch<OpenFunction> m_patch;
};

// Loads what is left of the document when it ends at each byte from `first` on.
void CutEverywhere(const std::string& document, std::size_t first)
{
    CQanhAppNameList whole;
    EXPECT_EQ(LoadText(whole, document), S_FALSE);
    const std::vector<std::string> all = Records(SavedText(whole));
    ASSERT_EQ(all.size(), CompleteTags(document, "Package") + CompleteTags(document, "MetroApp") +
                              CompleteTags(document, "DesktopApp"));
    const FileInMemory file;
    for (std::size_t size = first; size < document.size(); ++size) {
        const std::string text = document.substr(0, size);
        SCOPED_TRACE("..." + text.substr(text.size() > 30 ? text.size() - 30 : 0));
        CQanhAppNameList list;
        const HRESULT result = FileInMemory::Load(list, text);
        EXPECT_NE(result, S_OK);
        // Behind a complete end tag the reader in use may take the end of the file for the end of the
        // document.
        const bool behindEndTag = size > 0 && text.back() == '>' && text[text.rfind('<') + 1] == '/';
        EXPECT_TRUE(FAILED(result) || behindEndTag) << std::hex << result;
        // Every record whose tag is complete is there, each as it stands in the whole document, and no other.
        const std::vector<std::string> records = Records(FileInMemory::Save(list));
        EXPECT_EQ(records.size(), CompleteTags(text, "Package") + CompleteTags(text, "MetroApp") +
                                      CompleteTags(text, "DesktopApp"));
        ASSERT_LE(records.size(), all.size());
        EXPECT_TRUE(std::equal(records.begin(), records.end(), all.begin()));
    }
}

constexpr char kBody[] =
    "<Applications>\r\n"
    "  <MetroApps>\r\n"
    "    <Package PackageFamilyName=\"mail_1\" Version=\"1.2.3.4\">\r\n"
    "      <MetroApp DisplayName=\"Mail\" />\r\n"
    "      <MetroApp DisplayName=\"People\"></MetroApp>\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"word_1\"/>\r\n"
    "    <Package PackageFamilyName=\"calc_1\" NeedReserve=\"1\"><MetroApp DisplayName=\"\xE5\xA4\xA9\"/></Package>\r\n"
    "  </MetroApps>\r\n"
    "  <!-- a comment -->\r\n"
    "  <DesktopApps>\r\n"
    "    <DesktopApp DisplayName=\"a\" LnkFileName=\"C:\\a.lnk\" />\r\n"
    "    <DesktopApp DisplayName=\"b\" LnkFileName=\"C:\\b.lnk\"></DesktopApp>\r\n"
    "  </DesktopApps>\r\n"
    "</Applications>";

TEST(AppNameListCutFile, KeepsWhatIsCompleteWhereverItEnds)
{
    CutEverywhere(kBody, 0);
}

TEST(AppNameListCutFile, KeepsWhatIsCompleteBehindADeclaration)
{
    // Within its declaration there is nothing to keep; the reader in use ends the process there.
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
    CutEverywhere(declaration + kBody, declaration.size() + 1);
}

TEST(AppNameListCutFile, KeepsWhatIsCompleteWithoutLineEnds)
{
    std::string text;
    for (const std::string& line : test::Split(kBody, "\r\n")) {
        text += line.substr(line.find_first_not_of(' '));
    }
    CutEverywhere(text, 0);
}

TEST(AppNameListCutFile, EndsWithinTextAndOpenConstructs)
{
    for (const char* rest :
         {"text", "<!-- open", "<![CDATA[ open", "<?open", "&amp", "&#12", "<a b='", "<a b=\"c", "<a><b",
          "<a><b>", "<a><b><c>", "<a>text", "<a b='1' b", "</", "</Package", "]]>"}) {
        SCOPED_TRACE(rest);
        CQanhAppNameList list;
        EXPECT_NE(LoadText(list, std::string("<r><Package PackageFamilyName='a_1'/><DesktopApps>"
                                             "<DesktopApp DisplayName='d'/>") +
                                     rest),
                  S_OK);
        EXPECT_EQ(Records(SavedText(list)).size(), 2u);
    }
}

struct Broken
{
    const char* what;
    const char* text;
    std::size_t records;
};

TEST(AppNameListBrokenFile, KeepsWhatCameBeforeTheFault)
{
    const Broken files[] = {
        {"nothing", "", 0},
        {"a wrong end tag", "<r><Package/></q><Package/></r>", 1},
        {"a wrong end tag within a package", "<r><Package><MetroApp DisplayName='a'/></r><Package/>", 2},
        {"an end tag too many", "<r><Package/></r></r>", 1},
        {"a second root", "<r><Package/></r><s><Package/></s>", 1},
        {"an attribute without value", "<r><Package/><Package NeedReserve/></r>", 1},
        {"an attribute without quotes", "<r><Package/><Package NeedReserve=1/></r>", 1},
        {"a bare ampersand in a value", "<r><Package/><Package PackageFamilyName='A & B'/></r>", 1},
        {"a bare less-than in a value", "<r><Package/><Package PackageFamilyName='A < B'/></r>", 1},
        {"a document type", "<!DOCTYPE r [<!ENTITY e 'x'>]><r><Package PackageFamilyName='&e;'/></r>", 0},
        {"an encoding that the reader does not know",
         "<?xml version='1.0' encoding='Shift_JIS'?><r><Package/></r>", 0},
    };
    for (const Broken& file : files) {
        SCOPED_TRACE(file.what);
        CQanhAppNameList list;
        EXPECT_TRUE(FAILED(LoadText(list, file.text)));
        EXPECT_EQ(Records(SavedText(list)).size(), file.records);
    }
}

TEST(AppNameListBrokenFile, MakesNothingOfWhatIsNoXml)
{
    for (const std::string& text :
         {std::string("plain text <Package/>"), std::string("{\"Package\": 1}"),
          std::string(" \r\n <r><Package/></r>"), std::string("\0\0\0\0", 4), std::string(5000, 'x'),
          std::string("\x89PNG\r\n\x1A\n\0\0", 10), std::string("\xFF\xFF\xFF\xFF", 4)}) {
        CQanhAppNameList list;
        EXPECT_NE(LoadText(list, text), S_OK);
    }
}

TEST(AppNameListBrokenFile, EndsInElementsNestedTooDeep)
{
    std::string text = "<r><Package PackageFamilyName='a_1'/>";
    for (int i = 0; i < 5000; ++i) {
        text += "<x>";
    }
    CQanhAppNameList list;
    EXPECT_TRUE(FAILED(LoadText(list, text)));
    EXPECT_EQ(list.PackageFamilyNames().size(), 1u);
}

TEST(AppNameListBrokenFile, EndsInPackagesAndCollectionsThatAreNeverClosed)
{
    for (const char* element : {"Package", "DesktopApps", "MetroApp", "DesktopApp"}) {
        std::string text = "<r>";
        for (int i = 0; i < 200; ++i) {
            text.append("<").append(element).append(">");
        }
        CQanhAppNameList list;
        EXPECT_TRUE(FAILED(LoadText(list, text))) << element;
        EXPECT_LE(list.PackageFamilyNames().size(), 1u) << element;
        EXPECT_EQ(list.DesktopShortcuts().size(), 0u) << element;
    }
}

} // namespace
