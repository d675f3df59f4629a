// The bytes of the catalogue file and the way in which they are written.

#include "catalog/AppNameList.h"

#include "support/XmlInputs.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

namespace {

using namespace test;

std::unique_ptr<CQanhPackage> Package(const wchar_t* familyName, bool needReserve, bool isInstalled)
{
    return std::make_unique<CQanhPackage>(familyName, RecordVersion{6, 2, 16384, 9200}, needReserve,
                                          isInstalled);
}

class AppNameListSave : public Test
{
protected:
    HRESULT Save() { return m_list.Save(m_path.c_str()); }

    const TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"AppNameList.xml";
    CQanhAppNameList m_list;
};

TEST_F(AppNameListSave, WritesAnEmptyCatalogueWithBothCollections)
{
    // The root stays open.
    EXPECT_EQ(
        SavedText(CQanhAppNameList()),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>\r\n  <MetroApps />\r\n  <DesktopApps />");
}

TEST_F(AppNameListSave, LeavesOutWhatIsNeitherInstalledNorReserved)
{
    EXPECT_EQ(m_list.AddMetroPackage(Package(L"gone_1", false, false)), S_OK);
    EXPECT_EQ(m_list.AddMetroPackage(Package(L"reserved_1", true, false)), S_OK);
    LoadText(m_list, R"(<DesktopApps><DesktopApp DisplayName="gone" IsInstalled="0"/>
                      <DesktopApp DisplayName="reserved" NeedReserve="1" IsInstalled="0"/></DesktopApps>)");
    EXPECT_EQ(SavedRecords(m_list),
              R"(<Package PackageFamilyName="reserved_1" Version="6.2.9200.16384" )"
              R"(NeedReserve="1" IsInstalled="0" />)"
              R"(<DesktopApp DisplayName="reserved" NeedReserve="1" IsInstalled="0" />)");
    m_list.SetPackagesInstalled({FALSE, TRUE});
    m_list.SetDesktopAppsInstalled({TRUE, TRUE});
    EXPECT_EQ(SavedRecords(m_list), R"(<Package PackageFamilyName="reserved_1" Version="6.2.9200.16384" )"
                                    R"(NeedReserve="1" /><DesktopApp DisplayName="gone" />)"
                                    R"(<DesktopApp DisplayName="reserved" NeedReserve="1" />)");
}

TEST_F(AppNameListSave, WritesUtf8WithoutAByteOrderMark)
{
    EXPECT_EQ(m_list.AddDesktopApp(L"メモ帳 \xD83D\xDE00 \u00C4", L"C:\\天.lnk"), S_OK);
    EXPECT_EQ(SavedRecords(m_list),
              "<DesktopApp DisplayName=\"\xE3\x83\xA1\xE3\x83\xA2\xE5\xB8\xB3 \xF0\x9F\x98\x80 \xC3\x84\" "
              "LnkFileName=\"C:\\\xE5\xA4\xA9.lnk\" />");
}

TEST_F(AppNameListSave, KeepsTheRecordsBesideAHalfSurrogatePair)
{
    // Writers differ in what they make of it; the others must not suffer.
    EXPECT_EQ(m_list.AddDesktopApp(L"before", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"half \xD83D pair", L"C:\\b.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"half \xDE00", L"C:\\c.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"after", L"C:\\d.lnk"), S_OK);
    CQanhAppNameList loaded;
    LoadText(loaded, SavedText(m_list));
    EXPECT_TRUE(loaded.IsInDesktopAppList(L"C:\\a.lnk"));
    EXPECT_TRUE(loaded.IsInDesktopAppList(L"C:\\d.lnk"));
}

TEST_F(AppNameListSave, KeepsEverythingThroughLoadingAndSaving)
{
    const std::string text = Document(
        {"  <MetroApps>",
         R"(    <Package PackageFamilyName="a_1" Version="1.2.3.3" NeedReserve="1" IsInstalled="0">)",
         R"(      <MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />)",
         "      <MetroApp />", "    </Package>", R"(    <Package PackageFamilyName="" Version="0.0.0.0" />)",
         "  </MetroApps>", "  <DesktopApps>",
         R"(    <DesktopApp DisplayName="a" LnkFileName="C:\b.lnk" LocalizeName="c" RubyDisplayName="d" )"
         R"(NeedReserve="1" IsInstalled="0" IsDualMode="1" />)",
         "    <DesktopApp />", "  </DesktopApps>"});
    LoadText(m_list, text); // whose open root the reader in use may not call a failure
    EXPECT_EQ(SavedText(m_list), text);
}

TEST_F(AppNameListSave, ReplacesALongerFile)
{
    WriteFileBytes(m_path, std::string(10000, 'x'));
    EXPECT_EQ(Save(), S_OK);
    EXPECT_EQ(ReadFileBytes(m_path), Document({"  <MetroApps />", "  <DesktopApps />"}));
}

TEST_F(AppNameListSave, RefusesNullAndAnEmptyPath)
{
    const LogCapture log;
    EXPECT_EQ(m_list.Save(nullptr), E_POINTER);
    EXPECT_EQ(m_list.Save(L""), E_INVALIDARG);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Save((null))", "(0x80004003)") +
                               Call("CQanhAppNameList::Save()", "(0x80070057)"));
}

TEST_F(AppNameListSave, ReturnsTheFailureToOpenTheFile)
{
    EXPECT_EQ(m_list.Save((m_folder / L"missing\\a.xml").c_str()), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(Exists(m_folder / L"missing"));
    EXPECT_TRUE(FAILED(m_list.Save(m_folder.Path().c_str())));
    const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_READ, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_EQ(Save(), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    CloseHandle(file);
    const LogCapture log;
    EXPECT_EQ(m_list.Save(L"Z:\\q\\q.xml"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Save(Z:\\q\\q.xml)", "(0x80070003)"));
}

TEST_F(AppNameListSave, LeavesAReadOnlyFileAlone)
{
    WriteFileBytes(m_path, "old");
    SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_READONLY);
    const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
        GTEST_SKIP() << "this user may write to read-only files";
    }
    EXPECT_EQ(Save(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(ReadFileBytes(m_path), "old");
}

TEST_F(AppNameListSave, LogsEveryRecord)
{
    auto package = Package(L"a_1", false, true);
    EXPECT_EQ(package->AddApplication(L"a", nullptr), S_OK);
    EXPECT_EQ(m_list.AddMetroPackage(std::move(package)), S_OK);
    EXPECT_EQ(m_list.AddMetroPackage(Package(L"gone_1", false, false)), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"Gone", L"C:\\b.lnk"), S_OK);
    m_list.SetDesktopAppsInstalled({TRUE, FALSE});
    const LogCapture log;
    EXPECT_EQ(Save(), S_OK);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Save(" + ToUtf8(m_path) + ")", "(0x00000000)",
                                Call("CQanhPackage::ToXmlNode", "(0x00000000)",
                                     Call("CQanhMetroApp::ToXmlNode", "(0x00000000)")) +
                                    Call("CQanhPackage::ToXmlNode", "(0x00000000)") +
                                    Call("CQanhDesktopApp::ToXmlNode", "(0x00000000)") +
                                    Call("CQanhDesktopApp::ToXmlNode", "(0x00000001)")));
}

TEST_F(AppNameListSave, CreatesTheFileForWritingAndLetsGoOfIt)
{
    const XmlInputs files;
    EXPECT_EQ(Save(), S_OK);
    EXPECT_THAT(files.calls, ElementsAre(L"SHCreateStreamOnFileW(" + m_path + L", 4097)")); // 0x1001
    EXPECT_TRUE(DeleteFileW(m_path.c_str()));
}

class AppNameListWriter : public AppNameListSave
{
protected:
    AppNameListWriter()
    {
        auto package = Package(L"a_1", false, true);
        EXPECT_EQ(package->AddApplication(L"m", nullptr), S_OK);
        EXPECT_EQ(m_list.AddMetroPackage(std::move(package)), S_OK);
        EXPECT_EQ(m_list.AddDesktopApp(L"d", L"e"), S_OK);
    }

    // Saves with a writer whose call of this index fails, which makes these calls.
    void ExpectCalls(const char* what, std::size_t failingCall, HRESULT result,
                     const std::vector<std::wstring>& calls)
    {
        SCOPED_TRACE(what);
        WriterProbe writer;
        writer.failingCall = failingCall;
        const WriterInstead patch(&writer);
        EXPECT_EQ(Save(), result);
        EXPECT_EQ(writer.calls, calls);
        EXPECT_EQ(writer.references, 0u);
    }
};

const std::vector<std::wstring> kAllCalls = {L"output",
                                             L"property 1=1",
                                             L"start document 0",
                                             L"start Applications",
                                             L"start MetroApps",
                                             L"start Package",
                                             L"PackageFamilyName=a_1",
                                             L"Version=6.2.9200.16384",
                                             L"start MetroApp",
                                             L"DisplayName=m",
                                             L"end",
                                             L"end",
                                             L"end",
                                             L"start DesktopApps",
                                             L"start DesktopApp",
                                             L"DisplayName=d",
                                             L"LnkFileName=e",
                                             L"end",
                                             L"end",
                                             L"flush"};

TEST_F(AppNameListWriter, FollowsTheSequenceAsFarAsTheWriterDoes)
{
    const HRESULT failure = WriterProbe().failure;
    ExpectCalls("neither root nor document is closed", WriterProbe().failingCall, S_OK, kAllCalls);
    ExpectCalls("the failure to set the output is returned", 0, failure, {L"output"});
    ExpectCalls("a root that cannot be started leaves the flush", 3, S_OK,
                {L"output", L"property 1=1", L"start document 0", L"start Applications", L"flush"});
    ExpectCalls("a list that cannot be begun has neither records nor an end; the other one is written", 4,
                S_OK,
                {L"output", L"property 1=1", L"start document 0", L"start Applications", L"start MetroApps",
                 L"start DesktopApps", L"start DesktopApp", L"DisplayName=d", L"LnkFileName=e", L"end",
                 L"end", L"flush"});
    ExpectCalls("a package that cannot be started leaves the other records", 5, S_OK,
                {L"output", L"property 1=1", L"start document 0", L"start Applications", L"start MetroApps",
                 L"start Package", L"end", L"start DesktopApps", L"start DesktopApp", L"DisplayName=d",
                 L"LnkFileName=e", L"end", L"end", L"flush"});
    ExpectCalls("the result of the flush is returned", 19, failure, kAllCalls);
}

TEST_F(AppNameListWriter, ReturnsTheFailureToMakeAWriter)
{
    using Create = HRESULT(WINAPI*)(REFIID, void**, IMalloc*);
    const ImportPatch<Create> patch("CreateXmlWriter",
                                    [](REFIID, void**, IMalloc*) -> HRESULT { return REGDB_E_CLASSNOTREG; });
    EXPECT_EQ(Save(), REGDB_E_CLASSNOTREG);
    EXPECT_TRUE(DeleteFileW(m_path.c_str()));
}

} // namespace
