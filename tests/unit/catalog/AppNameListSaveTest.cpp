// The bytes of the catalogue file and the way in which they are written.

#include "catalog/AppNameList.h"

#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/catalog/CatalogFile.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using test::Document;
using test::LoadText;
using test::SavedText;
using testing::ElementsAre;

std::unique_ptr<CQanhPackage> Package(const wchar_t* familyName, bool needReserve, bool isInstalled)
{
    return std::make_unique<CQanhPackage>(familyName, RecordVersion{6, 2, 16384, 9200}, needReserve,
                                          isInstalled);
}

TEST(AppNameListSave, WritesAnEmptyCatalogueWithBothCollections)
{
    // The root stays open.
    EXPECT_EQ(
        SavedText(CQanhAppNameList()),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>\r\n  <MetroApps />\r\n  <DesktopApps />");
}

TEST(AppNameListSave, WritesEveryRecordInOrder)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\Menu\\Word.lnk"), S_OK);
    auto mail = Package(L"mail_1", false, true);
    EXPECT_EQ(mail->AddApplication(std::make_unique<CQanhMetroApp>(L"Mail", L"M", L"m", L"n")), S_OK);
    EXPECT_EQ(mail->AddApplication(L"People", nullptr), S_OK);
    EXPECT_EQ(list.AddMetroPackage(std::move(mail)), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"calendar_1", true, true)), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Calc", L"C:\\Menu\\Calc.url"), S_OK);
    EXPECT_EQ(SavedText(list),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
              "<Applications>\r\n"
              "  <MetroApps>\r\n"
              "    <Package PackageFamilyName=\"mail_1\" Version=\"6.2.9200.16384\">\r\n"
              "      <MetroApp DisplayName=\"Mail\" ShortName=\"M\" RubyDisplayName=\"m\" "
              "RubyShortName=\"n\" />\r\n"
              "      <MetroApp DisplayName=\"People\" />\r\n"
              "    </Package>\r\n"
              "    <Package PackageFamilyName=\"calendar_1\" Version=\"6.2.9200.16384\" "
              "NeedReserve=\"1\" />\r\n"
              "  </MetroApps>\r\n"
              "  <DesktopApps>\r\n"
              "    <DesktopApp DisplayName=\"Word\" LnkFileName=\"C:\\Menu\\Word.lnk\" />\r\n"
              "    <DesktopApp DisplayName=\"Calc\" LnkFileName=\"C:\\Menu\\Calc.url\" />\r\n"
              "  </DesktopApps>");
}

TEST(AppNameListSave, LeavesOutWhatIsNeitherInstalledNorReserved)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(Package(L"gone_1", false, false)), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"reserved_1", true, false)), S_OK);
    LoadText(list, R"(<DesktopApps><DesktopApp DisplayName="gone" IsInstalled="0"/>
                      <DesktopApp DisplayName="reserved" NeedReserve="1" IsInstalled="0"/></DesktopApps>)");
    EXPECT_EQ(
        SavedText(list),
        Document({"  <MetroApps>",
                  R"(    <Package PackageFamilyName="reserved_1" Version="6.2.9200.16384" NeedReserve="1" )"
                  R"(IsInstalled="0" />)",
                  "  </MetroApps>", "  <DesktopApps>",
                  R"(    <DesktopApp DisplayName="reserved" NeedReserve="1" IsInstalled="0" />)",
                  "  </DesktopApps>"}));
    list.SetPackagesInstalled({FALSE, TRUE});
    list.SetDesktopAppsInstalled({TRUE, TRUE});
    EXPECT_EQ(
        SavedText(list),
        Document(
            {"  <MetroApps>",
             R"(    <Package PackageFamilyName="reserved_1" Version="6.2.9200.16384" NeedReserve="1" />)",
             "  </MetroApps>", "  <DesktopApps>", R"(    <DesktopApp DisplayName="gone" />)",
             R"(    <DesktopApp DisplayName="reserved" NeedReserve="1" />)", "  </DesktopApps>"}));
}

TEST(AppNameListSave, WritesUtf8WithoutAByteOrderMark)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"メモ帳 \xD83D\xDE00 \u00C4", L"C:\\天.lnk"), S_OK);
    EXPECT_EQ(SavedText(list),
              Document({"  <MetroApps />", "  <DesktopApps>",
                        "    <DesktopApp DisplayName=\"\xE3\x83\xA1\xE3\x83\xA2\xE5\xB8\xB3 \xF0\x9F\x98\x80 "
                        "\xC3\x84\" LnkFileName=\"C:\\\xE5\xA4\xA9.lnk\" />",
                        "  </DesktopApps>"}));
}

TEST(AppNameListSave, KeepsTheRecordsBesideAHalfSurrogatePair)
{
    // Writers differ in what they make of it; the others must not suffer.
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"before", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"half \xD83D pair", L"C:\\b.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"half \xDE00", L"C:\\c.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"after", L"C:\\d.lnk"), S_OK);
    CQanhAppNameList loaded;
    LoadText(loaded, SavedText(list));
    EXPECT_TRUE(loaded.IsInDesktopAppList(L"C:\\a.lnk"));
    EXPECT_TRUE(loaded.IsInDesktopAppList(L"C:\\d.lnk"));
}

TEST(AppNameListSave, TradesBuildAndRevisionAtEachLoadAndSave)
{
    constexpr char first[] = R"(<Package PackageFamilyName="a_1" Version="1.2.3.4"/>)";
    CQanhAppNameList once;
    LoadText(once, first);
    const std::string saved = SavedText(once);
    EXPECT_NE(saved.find(R"(Version="1.2.4.3")"), std::string::npos);
    CQanhAppNameList twice;
    LoadText(twice, saved);
    EXPECT_NE(SavedText(twice).find(R"(Version="1.2.3.4")"), std::string::npos);
}

TEST(AppNameListSave, KeepsEverythingThroughLoadingAndSaving)
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
    CQanhAppNameList list;
    EXPECT_NE(LoadText(list, text), S_OK); // the end of its open root
    EXPECT_EQ(SavedText(list), text);
}

TEST(AppNameListSave, ReplacesALongerFile)
{
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    test::WriteFileBytes(path, std::string(10000, 'x'));
    EXPECT_EQ(CQanhAppNameList().Save(path.c_str()), S_OK);
    EXPECT_EQ(test::ReadFileBytes(path), Document({"  <MetroApps />", "  <DesktopApps />"}));
}

TEST(AppNameListSave, RefusesNullAndAnEmptyPath)
{
    const CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.Save(nullptr), E_POINTER);
    EXPECT_EQ(list.Save(L""), E_INVALIDARG);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhAppNameList::Save((null)) IN", "CQanhAppNameList::Save OUT(0x80004003)",
                            "CQanhAppNameList::Save() IN", "CQanhAppNameList::Save OUT(0x80070057)"));
}

TEST(AppNameListSave, ReturnsTheFailureToOpenTheFile)
{
    const test::TemporaryFolder folder;
    const CQanhAppNameList list;
    EXPECT_EQ(list.Save((folder / L"missing\\a.xml").c_str()), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(test::Exists(folder / L"missing"));
    EXPECT_TRUE(FAILED(list.Save(folder.Path().c_str())));

    const std::wstring locked = folder / L"locked.xml";
    const HANDLE file = CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_EQ(list.Save(locked.c_str()), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    CloseHandle(file);
}

TEST(AppNameListSave, LeavesAReadOnlyFileAlone)
{
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"readonly.xml";
    test::WriteFileBytes(path, "old");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
        GTEST_SKIP() << "this user may write to read-only files";
    }
    EXPECT_EQ(CQanhAppNameList().Save(path.c_str()), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(test::ReadFileBytes(path), "old");
}

TEST(AppNameListSave, LogsAFileThatCannotBeOpened)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhAppNameList().Save(L"Z:\\q\\q.xml"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::Save(Z:\\q\\q.xml) IN",
                                         "CQanhAppNameList::Save OUT(0x80070003)"));
}

TEST(AppNameListSave, LogsEveryRecord)
{
    CQanhAppNameList list;
    auto package = Package(L"a_1", false, true);
    EXPECT_EQ(package->AddApplication(L"a", nullptr), S_OK);
    EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"gone_1", false, false)), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Gone", L"C:\\b.lnk"), S_OK);
    list.SetDesktopAppsInstalled({TRUE, FALSE});
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"a.xml";
    const test::LogCapture log;
    EXPECT_EQ(list.Save(path.c_str()), S_OK);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhAppNameList::Save(" + test::ToUtf8(path) + ") IN", "CQanhPackage::ToXmlNode IN",
                    "CQanhMetroApp::ToXmlNode IN", "CQanhMetroApp::ToXmlNode OUT(0x00000000)",
                    "CQanhPackage::ToXmlNode OUT(0x00000000)", "CQanhPackage::ToXmlNode IN",
                    "CQanhPackage::ToXmlNode OUT(0x00000000)", "CQanhDesktopApp::ToXmlNode IN",
                    "CQanhDesktopApp::ToXmlNode OUT(0x00000000)", "CQanhDesktopApp::ToXmlNode IN",
                    "CQanhDesktopApp::ToXmlNode OUT(0x00000001)", "CQanhAppNameList::Save OUT(0x00000000)"));
}

TEST(AppNameListSave, CreatesTheFileForWritingAndLetsGoOfIt)
{
    static std::wstring s_path;
    static DWORD s_mode = 0;
    using Open = HRESULT(WINAPI*)(LPCWSTR, DWORD, IStream**);
    static Open s_open = nullptr;
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    {
        const test::ImportPatch<Open> patch("SHCreateStreamOnFileW",
                                            [](LPCWSTR file, DWORD mode, IStream** stream) {
                                                s_path = file;
                                                s_mode = mode;
                                                return s_open(file, mode, stream);
                                            });
        s_open = patch.Original();
        EXPECT_EQ(CQanhAppNameList().Save(path.c_str()), S_OK);
    }
    EXPECT_EQ(s_path, path);
    EXPECT_EQ(s_mode, 0x1001u);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

class AppNameListWriter : public testing::Test
{
protected:
    AppNameListWriter()
    {
        auto package = Package(L"a_1", false, true);
        EXPECT_EQ(package->AddApplication(L"m", nullptr), S_OK);
        EXPECT_EQ(m_list.AddMetroPackage(std::move(package)), S_OK);
        EXPECT_EQ(m_list.AddDesktopApp(L"d", L"e"), S_OK);
    }

    HRESULT Save()
    {
        const test::WriterInstead patch(&m_writer);
        return m_list.Save((m_folder / L"AppNameList.xml").c_str());
    }

    const test::TemporaryFolder m_folder;
    CQanhAppNameList m_list;
    test::WriterProbe m_writer;
};

TEST_F(AppNameListWriter, FollowsTheSequenceAndClosesNeitherRootNorDocument)
{
    EXPECT_EQ(Save(), S_OK);
    EXPECT_THAT(m_writer.calls,
                ElementsAre(L"output", L"property 1=1", L"start document 0", L"start Applications",
                            L"start MetroApps", L"start Package", L"PackageFamilyName=a_1",
                            L"Version=6.2.9200.16384", L"start MetroApp", L"DisplayName=m", L"end", L"end",
                            L"end", L"start DesktopApps", L"start DesktopApp", L"DisplayName=d",
                            L"LnkFileName=e", L"end", L"end", L"flush"));
    EXPECT_EQ(m_writer.references, 0u);
}

TEST_F(AppNameListWriter, SkipsToTheFlushWhenTheRootCannotBeStarted)
{
    m_writer.failingCall = 3;
    EXPECT_EQ(Save(), S_OK);
    EXPECT_THAT(m_writer.calls, ElementsAre(L"output", L"property 1=1", L"start document 0",
                                            L"start Applications", L"flush"));
}

TEST_F(AppNameListWriter, ReturnsTheResultOfTheFlush)
{
    m_writer.failingCall = 19;
    EXPECT_EQ(Save(), m_writer.failure);
    EXPECT_EQ(m_writer.calls.back(), L"flush");
    EXPECT_EQ(m_writer.references, 0u);
}

TEST_F(AppNameListWriter, ReturnsTheFailureToSetTheOutput)
{
    m_writer.failingCall = 0;
    EXPECT_EQ(Save(), m_writer.failure);
    EXPECT_THAT(m_writer.calls, ElementsAre(L"output"));
    EXPECT_EQ(m_writer.references, 0u);
}

TEST_F(AppNameListWriter, WritesTheOtherRecordsWhenOneFails)
{
    m_writer.failingCall = 5; // the package's start
    EXPECT_EQ(Save(), S_OK);
    EXPECT_THAT(m_writer.calls, ElementsAre(L"output", L"property 1=1", L"start document 0",
                                            L"start Applications", L"start MetroApps", L"start Package",
                                            L"end", L"start DesktopApps", L"start DesktopApp",
                                            L"DisplayName=d", L"LnkFileName=e", L"end", L"end", L"flush"));
}

TEST_F(AppNameListWriter, ReturnsTheFailureToMakeAWriter)
{
    using Create = HRESULT(WINAPI*)(REFIID, void**, IMalloc*);
    const std::wstring path = m_folder / L"AppNameList.xml";
    {
        const test::ImportPatch<Create> patch(
            "CreateXmlWriter", [](REFIID, void**, IMalloc*) -> HRESULT { return REGDB_E_CLASSNOTREG; });
        EXPECT_EQ(m_list.Save(path.c_str()), REGDB_E_CLASSNOTREG);
    }
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

} // namespace
