// What the catalogue makes of its file.

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

using test::Lines;
using test::LoadedLines;
using test::LoadText;
using test::SavedText;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kNothing = Lines({"  <MetroApps />", "  <DesktopApps />"});

// The lines of a catalogue without desktop applications.
std::string Packages(std::string_view lines)
{
    return "\r\n  <MetroApps>" + std::string(lines) + "\r\n  </MetroApps>\r\n  <DesktopApps />";
}

// The lines of a catalogue without packages.
std::string DesktopApps(std::string_view lines)
{
    return "\r\n  <MetroApps />\r\n  <DesktopApps>" + std::string(lines) + "\r\n  </DesktopApps>";
}

TEST(AppNameListLoad, ReadsPackagesWithTheirAppsAndDesktopApps)
{
    const test::ScopedEnvironment variable(L"QanhMenu", L"C:\\Menu");
    CQanhAppNameList list;
    EXPECT_EQ(LoadText(list,
                       "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                       "<Applications>\r\n"
                       "  <MetroApps>\r\n"
                       "    <Package PackageFamilyName=\"mail_1\" Version=\"6.2.9200.16384\">\r\n"
                       "      <MetroApp DisplayName=\"Mail\" RubyDisplayName=\"m\" />\r\n"
                       "      <MetroApp DisplayName=\"People\" ShortName=\"P\" />\r\n"
                       "    </Package>\r\n"
                       "    <Package PackageFamilyName=\"word_1\" Version=\"1.0.0.0\" NeedReserve=\"1\" "
                       "IsInstalled=\"0\" />\r\n"
                       "  </MetroApps>\r\n"
                       "  <DesktopApps>\r\n"
                       "    <DesktopApp DisplayName=\"Word\" LnkFileName=\"%QanhMenu%\\Word.lnk\" "
                       "NeedReserve=\"1\" />\r\n"
                       "    <DesktopApp DisplayName=\"Calc\" LnkFileName=\"C:\\Calc.lnk\" LocalizeName=\"c\" "
                       "RubyDisplayName=\"k\" IsDualMode=\"1\" />\r\n"
                       "  </DesktopApps>\r\n"
                       "</Applications>\r\n"),
              S_FALSE);
    // Build and revision trade places each time.
    EXPECT_EQ(SavedText(list),
              test::Document(
                  {"  <MetroApps>", R"(    <Package PackageFamilyName="mail_1" Version="6.2.16384.9200">)",
                   R"(      <MetroApp DisplayName="Mail" RubyDisplayName="m" />)",
                   R"(      <MetroApp DisplayName="People" ShortName="P" />)", "    </Package>",
                   R"(    <Package PackageFamilyName="word_1" Version="1.0.0.0" NeedReserve="1" )"
                   R"(IsInstalled="0" />)",
                   "  </MetroApps>", "  <DesktopApps>",
                   R"(    <DesktopApp DisplayName="Word" LnkFileName="C:\Menu\Word.lnk" NeedReserve="1" />)",
                   R"(    <DesktopApp DisplayName="Calc" LnkFileName="C:\Calc.lnk" LocalizeName="c" )"
                   R"(RubyDisplayName="k" IsDualMode="1" />)",
                   "  </DesktopApps>"}));
}

TEST(AppNameListLoad, AppendsToWhatIsThereWithoutATestForDuplicates)
{
    constexpr char text[] = R"(<Applications><Package PackageFamilyName="a_1"/><DesktopApps>
        <DesktopApp DisplayName="b" LnkFileName="C:\b.lnk"/><DesktopApp LnkFileName="C:\b.lnk"/></DesktopApps></Applications>)";
    CQanhAppNameList list;
    EXPECT_EQ(LoadText(list, text), S_FALSE);
    EXPECT_EQ(LoadText(list, text), S_FALSE);
    EXPECT_EQ(list.PackageFamilyNames().size(), 2u);
    EXPECT_EQ(list.DesktopShortcuts().size(), 4u);
}

TEST(AppNameListLoad, ReadsPackagesWhereverTheyStand)
{
    EXPECT_EQ(LoadedLines(R"(<Package PackageFamilyName="a_1"><MetroApp DisplayName="m"/></Package>)"),
              Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\">"
                       "\r\n      <MetroApp DisplayName=\"m\" />\r\n    </Package>"));
    EXPECT_EQ(
        LoadedLines(
            R"(<r><Package PackageFamilyName="a_1"/><MetroApps><Package PackageFamilyName="b_1"/></MetroApps>
                             <x><y><z><Package PackageFamilyName="c_1"/></z></y></x><Package PackageFamilyName="d_1"/></r>)"),
        Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\" />"
                 "\r\n    <Package PackageFamilyName=\"b_1\" Version=\"0.0.0.0\" />"
                 "\r\n    <Package PackageFamilyName=\"c_1\" Version=\"0.0.0.0\" />"
                 "\r\n    <Package PackageFamilyName=\"d_1\" Version=\"0.0.0.0\" />"));
}

TEST(AppNameListLoad, ReadsDesktopAppsWhereverTheyStand)
{
    EXPECT_EQ(LoadedLines(R"(<DesktopApps><DesktopApp DisplayName="a"/></DesktopApps>)"),
              DesktopApps("\r\n    <DesktopApp DisplayName=\"a\" />"));
    EXPECT_EQ(
        LoadedLines(
            R"(<r><x><DesktopApps><y><DesktopApp DisplayName="a"/></y></DesktopApps></x><MetroApps><DesktopApps>
                             <DesktopApp DisplayName="b"><DesktopApp DisplayName="c"/></DesktopApp></DesktopApps></MetroApps></r>)"),
        DesktopApps("\r\n    <DesktopApp DisplayName=\"a\" />\r\n    <DesktopApp DisplayName=\"b\" />"
                    "\r\n    <DesktopApp DisplayName=\"c\" />"));
}

TEST(AppNameListLoad, NeedsTheCollectionForDesktopAppsAndThePackageForStoreApps)
{
    EXPECT_EQ(LoadedLines(R"(<r><DesktopApp DisplayName="a"/><MetroApps><MetroApp DisplayName="b"/>
                             <DesktopApp DisplayName="c"/></MetroApps></r>)"),
              kNothing);
}

TEST(AppNameListLoad, MatchesNamesInAnyLetterCase)
{
    EXPECT_EQ(
        LoadedLines(
            R"(<APPLICATIONS><metroapps><PACKAGE PACKAGEFAMILYNAME="a_1" VERSION="1.2.3.4" NEEDRESERVE="1"
                             ISINSTALLED="0"><mETROaPP DISPLAYNAME="m" SHORTNAME="s"/></PACKAGE></metroapps><desktopapps>
                             <DESKTOPAPP DISPLAYNAME="d" lnkfilename="C:\d.lnk" isdualmode="1"/></desktopapps></APPLICATIONS>)"),
        Lines({"  <MetroApps>",
               R"(    <Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" IsInstalled="0">)",
               R"(      <MetroApp DisplayName="m" ShortName="s" />)", "    </Package>", "  </MetroApps>",
               "  <DesktopApps>",
               R"(    <DesktopApp DisplayName="d" LnkFileName="C:\d.lnk" IsDualMode="1" />)",
               "  </DesktopApps>"}));
}

TEST(AppNameListLoad, MatchesWholeNames)
{
    EXPECT_EQ(LoadedLines(R"(<r><Packages PackageFamilyName="a"/><Packag PackageFamilyName="a"/><Pack/><P/>
                             <DesktopAppsX><DesktopApp DisplayName="a"/></DesktopAppsX><DesktopApp><DesktopApp/></DesktopApp>
                             <DesktopApps><DesktopAppX DisplayName="a"/><DesktopAp DisplayName="a"/></DesktopApps></r>)"),
              kNothing);
}

TEST(AppNameListLoad, MatchesNamesWithoutTheirPrefixes)
{
    EXPECT_EQ(
        LoadedLines(
            R"(<q:Applications xmlns:q="urn:q" xmlns:Package="urn:p"><q:Package q:PackageFamilyName="a_1"
                             q:Version="1.2.3.4"><q:MetroApp q:DisplayName="m"/></q:Package>
                             <Package:x PackageFamilyName="b_1"/></q:Applications>)"),
        Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"1.2.4.3\">"
                 "\r\n      <MetroApp DisplayName=\"m\" />\r\n    </Package>"));
}

TEST(AppNameListLoad, PassesOverEverythingElse)
{
    EXPECT_EQ(
        LoadedLines(
            R"(<!-- <Package/> --><?Package x?><Applications>text<!-- <Package/> --><Unknown Package="1">
                             <MetroApps/></Unknown><![CDATA[<Package/>]]><Package PackageFamilyName="a_1"/>&lt;Package/&gt;
                             <?DesktopApps x?></Applications><!-- end -->)"),
        Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\" />"));
}

TEST(AppNameListLoad, LosesNothingBehindAnEmptyElement)
{
    const std::string expected =
        Lines({"  <MetroApps>", R"(    <Package PackageFamilyName="a_1" Version="0.0.0.0" />)",
               R"(    <Package PackageFamilyName="b_1" Version="0.0.0.0" />)", "  </MetroApps>",
               "  <DesktopApps>", R"(    <DesktopApp DisplayName="d" />)", "  </DesktopApps>"});
    EXPECT_EQ(
        LoadedLines(R"(<r><DesktopApps/><Package PackageFamilyName="a_1"/><Package PackageFamilyName="b_1"/>
                             <DesktopApps/><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps><DesktopApps/></r>)"),
        expected);
    EXPECT_EQ(
        LoadedLines(
            R"(<r><DesktopApps/><DesktopApps/><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps>)"
            R"(<DesktopApps/><Package PackageFamilyName="a_1"/><Package PackageFamilyName="b_1"/></r>)"),
        expected);
    EXPECT_EQ(
        LoadedLines(
            R"(<r><Package PackageFamilyName="a_1"/><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps>)"
            R"(<Package PackageFamilyName="b_1"></Package></r>)"),
        expected);
    EXPECT_EQ(LoadedLines(R"(<r><MetroApps><Package PackageFamilyName="a_1"/></MetroApps>)"
                          R"(<x><DesktopApps/></x><Package PackageFamilyName="b_1"/>)"
                          R"(<DesktopApps><DesktopApp DisplayName="d"/></DesktopApps></r>)"),
              expected);
}

TEST(AppNameListLoad, GivesTheAppsBehindAnEmptyPackageToNobody)
{
    EXPECT_EQ(LoadedLines(R"(<r><Package PackageFamilyName="a_1"/><MetroApp DisplayName="m"/></r>)"),
              Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\" />"));
    EXPECT_EQ(LoadedLines(R"(<r><x><DesktopApps/></x><DesktopApp DisplayName="m"/></r>)"), kNothing);
}

TEST(AppNameListLoad, TakesWhatStandsWithinARecordForAPartOfIt)
{
    // A package within a package is none, but its applications are the outer one's.
    EXPECT_EQ(
        LoadedLines(
            R"(<r><Package PackageFamilyName="a_1"><Package PackageFamilyName="b_1"><MetroApp DisplayName="m"/>
                             </Package><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps></Package></r>)"),
        Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\">"
                 "\r\n      <MetroApp DisplayName=\"m\" />\r\n    </Package>"));
    EXPECT_EQ(LoadedLines(R"(<r><DesktopApps><Package PackageFamilyName="a_1"><MetroApp/></Package>
                             <DesktopApps><DesktopApp DisplayName="d"/></DesktopApps></DesktopApps></r>)"),
              DesktopApps("\r\n    <DesktopApp DisplayName=\"d\" />"));
}

TEST(AppNameListLoad, ReadsRecordsWithoutAttributes)
{
    CQanhAppNameList list;
    EXPECT_EQ(LoadText(list, "<r><Package><MetroApp/></Package><DesktopApps><DesktopApp/></DesktopApps></r>"),
              S_FALSE);
    EXPECT_EQ(SavedText(list),
              test::Document({"  <MetroApps>", R"(    <Package PackageFamilyName="" Version="0.0.0.0">)",
                              "      <MetroApp />", "    </Package>", "  </MetroApps>", "  <DesktopApps>",
                              "    <DesktopApp />", "  </DesktopApps>"}));
}

TEST(AppNameListLoad, ReadsEveryEncodingThatTheReaderKnows)
{
    const std::string utf8 =
        "<r><Package PackageFamilyName=\"a_1\"><MetroApp DisplayName=\"\xE3\x83\xA1\xE3\x83\xBC"
        "\xE3\x83\xAB \xF0\x9F\x98\x80\"/></Package></r>";
    const std::string expected =
        Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\">\r\n      "
                 "<MetroApp DisplayName=\"\xE3\x83\xA1\xE3\x83\xBC\xE3\x83\xAB "
                 "\xF0\x9F\x98\x80\" />\r\n    </Package>");
    EXPECT_EQ(LoadedLines(utf8), expected);
    EXPECT_EQ(LoadedLines("\xEF\xBB\xBF" + utf8), expected);
    EXPECT_EQ(LoadedLines("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + utf8), expected);
    const std::wstring wide = L"\xFEFF" + test::FromUtf8(utf8);
    EXPECT_EQ(LoadedLines(std::string_view(reinterpret_cast<const char*>(wide.data()),
                                           wide.size() * sizeof(wchar_t))),
              expected);
}

TEST(AppNameListLoad, TakesLineEndsOfEveryKind)
{
    const std::string expected =
        Packages("\r\n    <Package PackageFamilyName=\"a_1\" Version=\"0.0.0.0\" />");
    for (const char* end : {"\n", "\r\n", "\r", "\t", ""}) {
        EXPECT_EQ(LoadedLines(std::string("<?xml version=\"1.0\"?>") + end + "<r>" + end +
                              "<Package PackageFamilyName=\"a_1\"/>" + end + "</r>" + end),
                  expected);
    }
}

TEST(AppNameListLoad, ReadsThousandsOfRecordsAndLongNames)
{
    std::string text = "<r><DesktopApps>";
    for (int i = 0; i < 3000; ++i) {
        text += "<DesktopApp LnkFileName='C:\\" + std::to_string(i) + ".lnk'/>";
    }
    text += "</DesktopApps><Package PackageFamilyName='" + std::string(100000, 'p') + "'/></r>";
    CQanhAppNameList list;
    EXPECT_EQ(LoadText(list, text), S_FALSE);
    const std::vector<WideString> shortcuts = list.DesktopShortcuts();
    ASSERT_EQ(shortcuts.size(), 3000u);
    EXPECT_STREQ(shortcuts[2999].c_str(), L"C:\\2999.lnk");
    EXPECT_NE(list.GetPackage(std::wstring(100000, L'p').c_str()), nullptr);
}

TEST(AppNameListLoad, RefusesNullAndAnEmptyPath)
{
    CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.Load(nullptr), E_POINTER);
    EXPECT_EQ(list.Load(L""), E_INVALIDARG);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhAppNameList::Load((null)) IN", "CQanhAppNameList::Load OUT(0x80004003)",
                            "CQanhAppNameList::Load() IN", "CQanhAppNameList::Load OUT(0x80070057)"));
}

TEST(AppNameListLoad, ReturnsTheFailureToOpenTheFile)
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

TEST(AppNameListLoad, LogsAMissingFile)
{
    CQanhAppNameList list;
    const test::LogCapture log;
    EXPECT_EQ(list.Load(L"Z:\\q\\q.xml"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::Load(Z:\\q\\q.xml) IN",
                                         "CQanhAppNameList::Load OUT(0x80070003)"));
}

TEST(AppNameListLoad, OpensTheFileForReadingOnlyAndLetsGoOfIt)
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

TEST(AppNameListLoad, ReturnsTheFailureToMakeAReader)
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

TEST(AppNameListLoad, ReturnsTheFailureToSetTheReadersInput)
{
    const test::XmlSource source("<unused/>");
    test::ReaderProbe reader(source.Reader());
    reader.Answer("SetInput", 0, E_NOINTERFACE);
    CQanhAppNameList list;
    EXPECT_EQ(LoadWith(list, reader, "<Package/>"), E_NOINTERFACE);
    EXPECT_EQ(reader.references, 0u);
    EXPECT_EQ(reader.Calls("Read"), 0);
}

TEST(AppNameListLoad, SkipsRecordsThatCannotBeReadAndReadsOn)
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

TEST(AppNameListLoad, EndsWithTheReadersFailureAndKeepsWhatItRead)
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

TEST(AppNameListLoad, EndsWhenTheReaderKnowsNoNodeType)
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

TEST(AppNameListLoad, ReadsOnWhenTheListsAreFull)
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
