// What the catalogue makes of a file that is cut off, malformed or no catalogue at all: what came before the
// fault is kept, and the reading always ends.

#include "catalog/AppNameList.h"

#include "support/CutDocument.h"
#include "support/DocumentedReaderInstead.h"
#include "unit/catalog/Records.h"

#include <windows.h>

#include <shlwapi.h>

#include <wrl/client.h>

#include <algorithm>

namespace {

using namespace test;

// The records of a catalogue's text whose tags are complete, each up to its last value.
std::vector<std::string> Records(const std::string& text)
{
    std::vector<std::string> records;
    for (const std::string& tag : Split(text, "<")) {
        const std::string name = tag.substr(0, tag.find_first_of(" />"));
        const bool isRecord = name == "Package" || name == "MetroApp" || name == "DesktopApp";
        if (isRecord && tag.find('>') != std::string::npos) {
            records.push_back(tag.substr(0, tag.find_last_of('"')));
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
    ImportPatch<OpenFunction> m_patch;
};

constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

// Loads what is left of the document when it ends at each byte, and hands each result to check(result, text);
// those for which isLeftOut(text) is true are not loaded. Every record whose tag is complete must be there,
// each as it stands in the whole document, and no other.
template <typename IsLeftOut, typename Check>
void CutEverywhere(const std::string& document, IsLeftOut isLeftOut, Check check)
{
    const FileInMemory file;
    CQanhAppNameList whole;
    EXPECT_EQ(FileInMemory::Load(whole, document), S_FALSE);
    const std::vector<std::string> all = Records(FileInMemory::Save(whole));
    ASSERT_EQ(all.size(), Records(document).size());
    for (std::size_t size = 0; size < document.size(); ++size) {
        const std::string text = document.substr(0, size);
        if (isLeftOut(text)) {
            continue;
        }
        SCOPED_TRACE("..." + text.substr(text.size() > 30 ? text.size() - 30 : 0));
        CQanhAppNameList list;
        check(FileInMemory::Load(list, text), text);
        const std::vector<std::string> records = Records(FileInMemory::Save(list));
        EXPECT_EQ(records.size(), Records(text).size());
        ASSERT_LE(records.size(), all.size());
        EXPECT_TRUE(std::equal(records.begin(), records.end(), all.begin()));
    }
}

// With the reader in use here. What it leaves open is looked at with the documented one below: behind a
// complete end tag, and behind a declaration, it may take the end of the file for the end of the document, so
// the result is a failure everywhere else only.
void CutWithTheReaderInUse(const std::string& document)
{
    CutEverywhere(document, EndsTheProcess, [](HRESULT result, const std::string& text) {
        const bool behindEndTag = !text.empty() && text.back() == '>' && text[text.rfind('<') + 1] == '/';
        const bool behindDeclaration = text.ends_with("?>\r") || text.ends_with("?>\r\n");
        EXPECT_TRUE(FAILED(result) || (result == S_FALSE && (behindEndTag || behindDeclaration)))
            << std::hex << result;
    });
}

// With a reader that fails wherever a document ends before its root does.
void CutWithTheDocumentedReader(const std::string& document)
{
    const DocumentedReaderInstead reader;
    CutEverywhere(
        document, [](const std::string&) { return false; },
        [](HRESULT result, const std::string&) { EXPECT_EQ(result, static_cast<HRESULT>(0xC00CEE01)); });
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

std::string BodyWithoutLineEnds()
{
    std::string text;
    for (const std::string& line : Split(kBody, "\r\n")) {
        text += line.substr(line.find_first_not_of(' '));
    }
    return text;
}

TEST(AppNameListCutFile, KeepsWhatIsCompleteWhereverItEnds)
{
    CutWithTheReaderInUse(kBody);
    CutWithTheDocumentedReader(kBody);
    CutWithTheReaderInUse(std::string(kDeclaration) + kBody);
    CutWithTheDocumentedReader(std::string(kDeclaration) + kBody);
    CutWithTheReaderInUse(BodyWithoutLineEnds());
    CutWithTheDocumentedReader(BodyWithoutLineEnds());
}

// A file that the library wrote has an open root, so its end is a failure; all of it is read.
TEST(AppNameListCutFile, KeepsAllOfASavedFile)
{
    const FileInMemory file;
    CQanhAppNameList first;
    EXPECT_EQ(FileInMemory::Load(first, kBody), S_FALSE);
    const std::string saved = FileInMemory::Save(first);
    EXPECT_EQ(Records(saved).size(), Records(kBody).size());
    const DocumentedReaderInstead reader;
    std::string again = saved;
    // Versions trade build and revision each time.
    for (const int round : {1, 2}) {
        CQanhAppNameList list;
        EXPECT_EQ(FileInMemory::Load(list, again), static_cast<HRESULT>(0xC00CEE01)) << round;
        again = FileInMemory::Save(list);
    }
    EXPECT_EQ(again, saved);
}

// The documented reader is no better than the one in use where that one is right.
TEST(AppNameListCutFile, IsReadByTheDocumentedReaderAsByTheOneInUse)
{
    const std::string texts[] = {
        std::string(kDeclaration) + kBody, BodyWithoutLineEnds(),
        "<a xmlns:q='urn:q'><Package PackageFamilyName='&lt;&#x30e1;&amp;'>text<![CDATA[<Package/>]]>"
        "<?DesktopApps x?></Package><q:Package/></a>\r\n<!-- end -->"};
    const FileInMemory file;
    for (const std::string& text : texts) {
        CQanhAppNameList list;
        EXPECT_EQ(FileInMemory::Load(list, text), S_FALSE);
        const DocumentedReaderInstead reader;
        CQanhAppNameList other;
        EXPECT_EQ(FileInMemory::Load(other, text), S_FALSE);
        EXPECT_EQ(FileInMemory::Save(other), FileInMemory::Save(list));
    }
}

// So is what that reader knows to be no XML: a name with a null character in it would be another one when it
// is saved and read again.
TEST(AppNameListBrokenFile, EndsAtReferencesToNoCharacter)
{
    for (const char* reference :
         {"&#0;", "&#x0;", "&#;", "&#x;", "&#12x;", "&#x-1;", "&#1;", "&#xFFFE;", "&#x110000;", "&none;"}) {
        SCOPED_TRACE(reference);
        const std::string text =
            std::string("<a><Package PackageFamilyName='b_1'/><Package PackageFamilyName='") + reference +
            "'/></a>";
        const FileInMemory file;
        CQanhAppNameList list;
        EXPECT_TRUE(FAILED(FileInMemory::Load(list, text)));
        EXPECT_EQ(list.PackageFamilyNames().size(), 1u);
        const DocumentedReaderInstead reader;
        CQanhAppNameList other;
        EXPECT_TRUE(FAILED(FileInMemory::Load(other, text)));
        EXPECT_EQ(other.PackageFamilyNames().size(), 1u);
    }
}

TEST(AppNameListCutFile, EndsWithinTextAndOpenConstructs)
{
    for (const char* rest :
         {"text", "<!-- open", "<![CDATA[ open", "<?open", "&amp", "&#12", "<a b='", "<a b=\"c", "<a><b",
          "<a><b>", "<a><b><c>", "<a>text", "<a b='1' b", "</", "</Package", "]]>"}) {
        SCOPED_TRACE(rest);
        CQanhAppNameList list;
        EXPECT_TRUE(FAILED(LoadText(list, std::string("<r><Package PackageFamilyName='a_1'/><DesktopApps>"
                                                      "<DesktopApp DisplayName='d'/>") +
                                              rest)));
        EXPECT_EQ(Records(SavedText(list)).size(), 2u);
    }
}

// Behind the fault the reading fails, with so many records before it.
void ExpectFault(const char* what, const char* text, std::size_t records)
{
    SCOPED_TRACE(what);
    CQanhAppNameList list;
    EXPECT_TRUE(FAILED(LoadText(list, text)));
    EXPECT_EQ(Records(SavedText(list)).size(), records);
}

TEST(AppNameListBrokenFile, KeepsWhatCameBeforeTheFault)
{
    ExpectFault("nothing", "", 0);
    ExpectFault("a wrong end tag", "<r><Package/></q><Package/></r>", 1);
    ExpectFault("a wrong end tag within a package", "<r><Package><MetroApp DisplayName='a'/></r><Package/>",
                2);
    ExpectFault("an end tag too many", "<r><Package/></r></r>", 1);
    ExpectFault("a second root", "<r><Package/></r><s><Package/></s>", 1);
    ExpectFault("an attribute without value", "<r><Package/><Package NeedReserve/></r>", 1);
    ExpectFault("an attribute without quotes", "<r><Package/><Package NeedReserve=1/></r>", 1);
    ExpectFault("a bare ampersand", "<r><Package/><Package PackageFamilyName='A & B'/></r>", 1);
    ExpectFault("a bare less-than", "<r><Package/><Package PackageFamilyName='A < B'/></r>", 1);
    ExpectFault("a document type", "<!DOCTYPE r [<!ENTITY e 'x'>]><r><Package PackageFamilyName='&e;'/></r>",
                0);
    ExpectFault("an encoding that the reader does not know",
                "<?xml version='1.0' encoding='Shift_JIS'?><r><Package/></r>", 0);
    std::string elements;
    for (int i = 0; i < 5000; ++i) {
        elements += "<x>";
    }
    ExpectFault("elements nested too deep", ("<r><Package PackageFamilyName='a_1'/>" + elements).c_str(), 1);
}

TEST(AppNameListBrokenFile, MakesNothingOfWhatIsNoXml)
{
    for (const std::string& text :
         {std::string("plain text <Package/>"), std::string("{\"Package\": 1}"), std::string("\0\0\0\0", 4),
          std::string(5000, 'x'), std::string("\x89PNG\r\n\x1A\n\0\0", 10),
          std::string("\xFF\xFF\xFF\xFF", 4)}) {
        SCOPED_TRACE(PrintToString(text.substr(0, 30)));
        CQanhAppNameList list;
        LoadText(list, text); // which the reader in use may not call a failure
        EXPECT_EQ(SavedRecords(list), "");
    }
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
