// How the catalogue opens its file and what ends the reading of it.

#include "catalog/AppNameList.h"

#include "common/Xml.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/ReaderProbe.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/catalog/CatalogFile.h"
#include "unit/catalog/XmlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using test::LoadText;
using test::SavedText;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(AppNameListFile, RefusesNullAndAnEmptyPath)
{
    CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.Load(nullptr), E_POINTER);
    EXPECT_EQ(list.Load(L""), E_INVALIDARG);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhAppNameList::Load((null)) IN", "CQanhAppNameList::Load OUT(0x80004003)",
                            "CQanhAppNameList::Load() IN", "CQanhAppNameList::Load OUT(0x80070057)"));
}

TEST(AppNameListFile, ReturnsTheFailureToOpenTheFile)
{
    const test::TemporaryFolder folder;
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.Load((folder / L"missing.xml").c_str()), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(list.Load((folder / L"missing\\a.xml").c_str()), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(FAILED(list.Load(folder.Path().c_str())));
    EXPECT_FALSE(test::Exists(folder / L"missing.xml"));

    const std::wstring locked = folder / L"locked.xml";
    const HANDLE file = CreateFileW(locked.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_EQ(list.Load(locked.c_str()), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    CloseHandle(file);
    // What was there stays.
    EXPECT_EQ(list.DesktopShortcuts().size(), 1u);
}

TEST(AppNameListFile, LogsAMissingFile)
{
    CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.Load(L"Z:\\q\\q.xml"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::Load(Z:\\q\\q.xml) IN",
                                         "CQanhAppNameList::Load OUT(0x80070003)"));
}

TEST(AppNameListFile, OpensTheFileForReadingOnlyAndLetsGoOfIt)
{
    static std::wstring s_path;
    static DWORD s_mode = 1;
    using Open = HRESULT(WINAPI*)(LPCWSTR, DWORD, IStream**);
    static Open s_open = nullptr;
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    test::WriteFileBytes(path, "<r/>");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    CQanhAppNameList list;
    {
        const test::ImportPatch<Open> patch("SHCreateStreamOnFileW",
                                            [](LPCWSTR file, DWORD mode, IStream** stream) {
                                                s_path = file;
                                                s_mode = mode;
                                                return s_open(file, mode, stream);
                                            });
        s_open = patch.Original();
        EXPECT_EQ(list.Load(path.c_str()), S_FALSE);
    }
    EXPECT_EQ(s_path, path);
    EXPECT_EQ(s_mode, 0u);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

using CreateReader = HRESULT(WINAPI*)(REFIID, void**, IMalloc*);

TEST(AppNameListFile, ReturnsTheFailureToMakeAReader)
{
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    test::WriteFileBytes(path, "<Package/>");
    CQanhAppNameList list;
    {
        const test::ImportPatch<CreateReader> patch(
            "CreateXmlReader", [](REFIID, void**, IMalloc*) -> HRESULT { return REGDB_E_CLASSNOTREG; });
        EXPECT_EQ(list.Load(path.c_str()), REGDB_E_CLASSNOTREG);
    }
    EXPECT_THAT(list.PackageFamilyNames(), IsEmpty());
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

// Lets the library read the text with a reader that was told what to answer.
HRESULT LoadWith(CQanhAppNameList& list, test::ReaderProbe& probe, std::string_view text)
{
    static test::ReaderProbe* s_pReader = nullptr;
    s_pReader = &probe;
    const test::ImportPatch<CreateReader> patch("CreateXmlReader",
                                                [](REFIID, void** ppObject, IMalloc*) -> HRESULT {
                                                    s_pReader->AddRef();
                                                    *ppObject = s_pReader;
                                                    return S_OK;
                                                });
    return LoadText(list, text);
}

TEST(AppNameListFile, ReturnsTheFailureToSetTheReadersInput)
{
    const test::XmlSource source("<unused/>");
    test::ReaderProbe reader(source.Reader());
    reader.Answer("SetInput", 0, E_NOINTERFACE);
    CQanhAppNameList list;
    EXPECT_EQ(LoadWith(list, reader, "<Package/>"), E_NOINTERFACE);
    EXPECT_EQ(reader.references, 0u);
    EXPECT_EQ(reader.Calls("Read"), 0);
}

TEST(AppNameListFile, SkipsRecordsThatCannotBeReadAndReadsOn)
{
    constexpr char text[] = "<r><Package PackageFamilyName='a_1'/><Package PackageFamilyName='b_1'/><Package "
                            "PackageFamilyName='c_1'/><DesktopApps><DesktopApp DisplayName='a'/><DesktopApp "
                            "DisplayName='b'/><DesktopApp DisplayName='c'/></DesktopApps></r>";
    const test::XmlSource source("<unused/>");
    test::ReaderProbe reader(source.Reader());
    reader.Answer("MoveToFirstAttribute", 1, E_ABORT);
    reader.Answer("MoveToFirstAttribute", 4, E_ABORT);
    CQanhAppNameList list;
    EXPECT_EQ(LoadWith(list, reader, text), S_FALSE);
    EXPECT_EQ(reader.references, 0u);
    EXPECT_EQ(SavedText(list),
              test::Document({"  <MetroApps>", R"(    <Package PackageFamilyName="a_1" Version="0.0.0.0" />)",
                              R"(    <Package PackageFamilyName="c_1" Version="0.0.0.0" />)",
                              "  </MetroApps>", "  <DesktopApps>", R"(    <DesktopApp DisplayName="a" />)",
                              R"(    <DesktopApp DisplayName="c" />)", "  </DesktopApps>"}));
}

TEST(AppNameListFile, EndsWithTheReadersFailureAndKeepsWhatItRead)
{
    for (int failing = 0; failing < 6; ++failing) {
        const test::XmlSource source("<unused/>");
        test::ReaderProbe reader(source.Reader());
        reader.Answer("Read", failing, STG_E_READFAULT);
        CQanhAppNameList list;
        EXPECT_EQ(
            LoadWith(list, reader,
                     "<r><Package/><Package/><DesktopApps><DesktopApp/><DesktopApp/></DesktopApps></r>"),
            STG_E_READFAULT);
        EXPECT_EQ(reader.Calls("Read"), failing + 1);
        EXPECT_EQ(list.PackageFamilyNames().size() + list.DesktopShortcuts().size(),
                  static_cast<std::size_t>(std::min(std::max(failing - 1, 0), 2) + std::max(failing - 4, 0)));
    }
}

TEST(AppNameListFile, IsOutOfMemoryWhenTheReadingRaisesAnything)
{
    const test::XmlSource source("<unused/>");
    test::ReaderProbe reader(source.Reader());
    reader.Raise("Read", 1);
    CQanhAppNameList list;
    EXPECT_EQ(LoadWith(list, reader, "<r><Package/></r>"), E_OUTOFMEMORY);
    EXPECT_EQ(reader.references, 0u);
}

TEST(AppNameListFile, EndsWhenTheReaderKnowsNoNodeType)
{
    // Some readers report the end of their input there.
    for (const HRESULT answer : {S_FALSE, E_ABORT}) {
        const test::XmlSource source("<unused/>");
        test::ReaderProbe reader(source.Reader());
        for (int call = 0; call < 100; ++call) {
            reader.Answer("GetNodeType", call, answer);
        }
        CQanhAppNameList list;
        EXPECT_EQ(LoadWith(list, reader, "<r><Package/></r>"), answer);
        EXPECT_EQ(reader.Calls("Read"), 1);
        EXPECT_THAT(list.PackageFamilyNames(), IsEmpty());
    }
}

TEST(AppNameListFile, ReadsOnWhenTheListsAreFull)
{
    CQanhAppNameList list(1);
    const test::LogCapture log;
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"a.xml";
    test::WriteFileBytes(
        path, "<r><Package PackageFamilyName='a_1'><MetroApp DisplayName='a'/><MetroApp/></Package>"
              "<Package PackageFamilyName='b_1'/><DesktopApps><DesktopApp LnkFileName='a'/>"
              "<DesktopApp LnkFileName='b'/><DesktopApp LnkFileName='c'/></DesktopApps></r>");
    EXPECT_EQ(list.Load(path.c_str()), S_FALSE);
    const std::string name = test::ToUtf8(path);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            "CQanhAppNameList::Load(" + name + ") IN", "CQanhPackage::FromXmlNode IN",
            "CQanhMetroApp::FromXmlNode IN", "CQanhMetroApp::FromXmlNode OUT(0x00000000)",
            "CQanhPackage::AddApplication IN", "CQanhPackage::AddApplication OUT(0x00000000)",
            "CQanhMetroApp::FromXmlNode IN", "CQanhMetroApp::FromXmlNode OUT(0x00000000)",
            "CQanhPackage::AddApplication IN", "CQanhPackage::AddApplication OUT(0x8007000E)",
            "CQanhPackage::FromXmlNode OUT(0x00000000)", "CQanhAppNameList::AddMetroPackage IN",
            "CQanhAppNameList::AddMetroPackage OUT(0x00000000)", "CQanhPackage::FromXmlNode IN",
            "CQanhPackage::FromXmlNode OUT(0x00000000)", "CQanhAppNameList::AddMetroPackage IN",
            "CQanhAppNameList::AddMetroPackage OUT(0x8007000E)", "CQanhAppNameList::ReadDesktopApps IN",
            "CQanhDesktopApp::FromXmlNode IN", "CQanhDesktopApp::FromXmlNode OUT(0x00000000)",
            "CQanhDesktopApp::FromXmlNode IN", "CQanhDesktopApp::FromXmlNode OUT(0x00000000)",
            "CQanhAppNameList::ReadDesktopApps Error (0x8007000E)", "CQanhDesktopApp::FromXmlNode IN",
            "CQanhDesktopApp::FromXmlNode OUT(0x00000000)",
            "CQanhAppNameList::ReadDesktopApps Error (0x8007000E)",
            "CQanhAppNameList::ReadDesktopApps OUT(0x00000000)", "CQanhAppNameList::Load OUT(0x00000001)"));
    EXPECT_EQ(list.PackageFamilyNames().size(), 1u);
    EXPECT_EQ(list.DesktopShortcuts().size(), 1u);
    EXPECT_EQ(list.GetPackage(L"a_1")->Apps().Size(), 1u);
}

TEST(AppNameListReadDesktopApps, StopsWhereTheCollectionEnds)
{
    const test::XmlSource source("<r><DesktopApps><DesktopApp LnkFileName='a'/></DesktopApps>"
                                 "<DesktopApp LnkFileName='b'/></r>",
                                 L"DesktopApps");
    CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.ReadDesktopApps(source.Reader()), S_OK);
    EXPECT_EQ(list.DesktopShortcuts().size(), 1u);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhAppNameList::ReadDesktopApps IN", "CQanhDesktopApp::FromXmlNode IN",
                            "CQanhDesktopApp::FromXmlNode OUT(0x00000000)",
                            "CQanhAppNameList::ReadDesktopApps OUT(0x00000000)"));
}

TEST(AppNameListReadDesktopApps, StopsAtAnElementThatIsNotDeeper)
{
    const test::XmlSource source("<r><DesktopApps/><Package/></r>", L"DesktopApps");
    CQanhAppNameList list;
    EXPECT_EQ(list.ReadDesktopApps(source.Reader()), S_OK);
    EXPECT_EQ(source.Name(), L"Package");
}

TEST(AppNameListReadDesktopApps, StopsAtTheEndOfTheDocument)
{
    const test::XmlSource source("<DesktopApps/>", L"DesktopApps");
    CQanhAppNameList list;
    EXPECT_EQ(list.ReadDesktopApps(source.Reader()), S_FALSE);
}

TEST(AppNameListReadDesktopApps, RefusesNull)
{
    CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.ReadDesktopApps(nullptr), E_POINTER);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::ReadDesktopApps IN",
                                         "CQanhAppNameList::ReadDesktopApps OUT(0x80004003)"));
}

} // namespace
