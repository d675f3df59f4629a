// What the catalogue reads out of a document.

#include "catalog/AppNameList.h"

#include "unit/catalog/Records.h"

namespace {

using namespace test;

// The catalogue holds these records after it loaded the document.
void ExpectLoaded(std::string_view document, const std::string& records)
{
    SCOPED_TRACE(document);
    CQanhAppNameList list;
    EXPECT_EQ(LoadText(list, document), S_FALSE);
    EXPECT_EQ(SavedRecords(list), records);
}

constexpr char kPackageA[] = R"(<Package PackageFamilyName="a_1" Version="0.0.0.0" />)";
constexpr char kPackageAWithM[] =
    R"(<Package PackageFamilyName="a_1" Version="0.0.0.0"><MetroApp DisplayName="m" /></Package>)";
constexpr char kPackagesAAndBAndDesktopAppD[] =
    R"(<Package PackageFamilyName="a_1" Version="0.0.0.0" />)"
    R"(<Package PackageFamilyName="b_1" Version="0.0.0.0" /><DesktopApp DisplayName="d" />)";

TEST(AppNameListLoad, ReadsPackagesWithTheirAppsAndDesktopApps)
{
    const ScopedEnvironment variable(L"QanhMenu", L"C:\\Menu");
    // Build and revision trade places each time.
    ExpectLoaded(R"(<?xml version="1.0" encoding="UTF-8"?>
<Applications>
  <MetroApps>
    <Package PackageFamilyName="mail_1" Version="6.2.9200.16384">
      <MetroApp DisplayName="Mail" RubyDisplayName="m" />
      <MetroApp DisplayName="People" ShortName="P" />
    </Package>
    <Package PackageFamilyName="word_1" Version="1.0.0.0" NeedReserve="1" IsInstalled="0" />
  </MetroApps>
  <DesktopApps>
    <DesktopApp DisplayName="Word" LnkFileName="%QanhMenu%\Word.lnk" NeedReserve="1" />
    <DesktopApp DisplayName="Calc" LnkFileName="C:\Calc.lnk" LocalizeName="c" RubyDisplayName="k" IsDualMode="1" />
  </DesktopApps>
</Applications>
)",
                 R"(<Package PackageFamilyName="mail_1" Version="6.2.16384.9200">)"
                 R"(<MetroApp DisplayName="Mail" RubyDisplayName="m" />)"
                 R"(<MetroApp DisplayName="People" ShortName="P" />)"
                 R"(</Package>)"
                 R"(<Package PackageFamilyName="word_1" Version="1.0.0.0" NeedReserve="1" IsInstalled="0" />)"
                 R"(<DesktopApp DisplayName="Word" LnkFileName="C:\Menu\Word.lnk" NeedReserve="1" />)"
                 R"(<DesktopApp DisplayName="Calc" LnkFileName="C:\Calc.lnk" LocalizeName="c" )"
                 R"(RubyDisplayName="k" IsDualMode="1" />)");
}

TEST(AppNameListLoad, AppendsToWhatIsThereWithoutATestForDuplicates)
{
    constexpr char text[] =
        R"(<r><Package PackageFamilyName="a_1"/><DesktopApps><DesktopApp DisplayName="b")"
        R"( LnkFileName="C:\b.lnk"/><DesktopApp LnkFileName="C:\b.lnk"/></DesktopApps></r>)";
    CQanhAppNameList list;
    EXPECT_EQ(LoadText(list, text), S_FALSE);
    EXPECT_EQ(LoadText(list, text), S_FALSE);
    EXPECT_EQ(list.PackageFamilyNames().size(), 2u);
    EXPECT_EQ(list.DesktopShortcuts().size(), 4u);
}

TEST(AppNameListLoad, ReadsPackagesWhereverTheyStand)
{
    ExpectLoaded(R"(<Package PackageFamilyName="a_1"><MetroApp DisplayName="m"/></Package>)", kPackageAWithM);
    ExpectLoaded(
        R"(<r><Package PackageFamilyName="a_1"/><MetroApps><Package PackageFamilyName="b_1"/></MetroApps>
              <x><y><z><Package PackageFamilyName="c_1"/></z></y></x><Package PackageFamilyName="d_1"/></r>)",
        R"(<Package PackageFamilyName="a_1" Version="0.0.0.0" />)"
        R"(<Package PackageFamilyName="b_1" Version="0.0.0.0" />)"
        R"(<Package PackageFamilyName="c_1" Version="0.0.0.0" />)"
        R"(<Package PackageFamilyName="d_1" Version="0.0.0.0" />)");
}

TEST(AppNameListLoad, ReadsDesktopAppsWhereverTheyStand)
{
    ExpectLoaded(R"(<DesktopApps><DesktopApp DisplayName="a"/></DesktopApps>)",
                 R"(<DesktopApp DisplayName="a" />)");
    ExpectLoaded(
        R"(<r><x><DesktopApps><y><DesktopApp DisplayName="a"/></y></DesktopApps></x><MetroApps><DesktopApps>
              <DesktopApp DisplayName="b"><DesktopApp DisplayName="c"/></DesktopApp></DesktopApps></MetroApps></r>)",
        R"(<DesktopApp DisplayName="a" /><DesktopApp DisplayName="b" /><DesktopApp DisplayName="c" />)");
}

TEST(AppNameListLoad, KnowsElementsByTheirNames)
{
    // In any letter case.
    ExpectLoaded(
        R"(<APPLICATIONS><metroapps><PACKAGE PACKAGEFAMILYNAME="a_1" VERSION="1.2.3.4" NEEDRESERVE="1"
              ISINSTALLED="0"><mETROaPP DISPLAYNAME="m" SHORTNAME="s"/></PACKAGE></metroapps><desktopapps>
              <DESKTOPAPP DISPLAYNAME="d" lnkfilename="C:\d.lnk" isdualmode="1"/></desktopapps></APPLICATIONS>)",
        R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" IsInstalled="0">)"
        R"(<MetroApp DisplayName="m" ShortName="s" /></Package>)"
        R"(<DesktopApp DisplayName="d" LnkFileName="C:\d.lnk" IsDualMode="1" />)");
    // As a whole.
    ExpectLoaded(
        R"(<r><Packages PackageFamilyName="a"/><Packag PackageFamilyName="a"/><Pack/><P/>
              <DesktopAppsX><DesktopApp DisplayName="a"/></DesktopAppsX><DesktopApp><DesktopApp/></DesktopApp>
              <DesktopApps><DesktopAppX DisplayName="a"/><DesktopAp DisplayName="a"/></DesktopApps></r>)",
        "");
    // Without their prefixes.
    ExpectLoaded(
        R"(<q:Applications xmlns:q="urn:q" xmlns:Package="urn:p"><q:Package q:PackageFamilyName="a_1"
              q:Version="1.2.3.4"><q:MetroApp q:DisplayName="m"/></q:Package>
              <Package:x PackageFamilyName="b_1"/></q:Applications>)",
        R"(<Package PackageFamilyName="a_1" Version="1.2.4.3"><MetroApp DisplayName="m" /></Package>)");
}

TEST(AppNameListLoad, PassesOverEverythingElse)
{
    ExpectLoaded(R"(<!-- <Package/> --><?Package x?><Applications>text<!-- <Package/> --><Unknown Package="1">
                       <MetroApps/></Unknown><![CDATA[<Package/>]]><Package PackageFamilyName="a_1"/>&lt;Package/&gt;
                       <?DesktopApps x?></Applications><!-- end -->)",
                 kPackageA);
}

TEST(AppNameListLoad, LosesNothingBehindAnEmptyElement)
{
    for (const char* document :
         {R"(<r><DesktopApps/><Package PackageFamilyName="a_1"/><Package PackageFamilyName="b_1"/>
             <DesktopApps/><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps><DesktopApps/></r>)",
          R"(<r><DesktopApps/><DesktopApps/><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps>)"
          R"(<DesktopApps/><Package PackageFamilyName="a_1"/><Package PackageFamilyName="b_1"/></r>)",
          R"(<r><Package PackageFamilyName="a_1"/><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps>)"
          R"(<Package PackageFamilyName="b_1"></Package></r>)",
          R"(<r><MetroApps><Package PackageFamilyName="a_1"/></MetroApps>)"
          R"(<x><DesktopApps/></x><Package PackageFamilyName="b_1"/>)"
          R"(<DesktopApps><DesktopApp DisplayName="d"/></DesktopApps></r>)"}) {
        ExpectLoaded(document, kPackagesAAndBAndDesktopAppD);
    }
}

TEST(AppNameListLoad, GivesAppsToTheRecordThatTheyStandIn)
{
    // Desktop applications need the collection, Store applications the package.
    ExpectLoaded(R"(<r><DesktopApp DisplayName="a"/><MetroApps><MetroApp DisplayName="b"/>
                       <DesktopApp DisplayName="c"/></MetroApps></r>)",
                 "");
    // What stands behind an empty element is nobody's.
    ExpectLoaded(R"(<r><Package PackageFamilyName="a_1"/><MetroApp DisplayName="m"/></r>)", kPackageA);
    ExpectLoaded(R"(<r><x><DesktopApps/></x><DesktopApp DisplayName="m"/></r>)", "");
    // A package within a package is none, but its applications are the outer one's.
    ExpectLoaded(
        R"(<r><Package PackageFamilyName="a_1"><Package PackageFamilyName="b_1"><MetroApp DisplayName="m"/>
              </Package><DesktopApps><DesktopApp DisplayName="d"/></DesktopApps></Package></r>)",
        kPackageAWithM);
    ExpectLoaded(R"(<r><DesktopApps><Package PackageFamilyName="a_1"><MetroApp/></Package>
                       <DesktopApps><DesktopApp DisplayName="d"/></DesktopApps></DesktopApps></r>)",
                 R"(<DesktopApp DisplayName="d" />)");
}

TEST(AppNameListLoad, ReadsEveryEncodingThatTheReaderKnows)
{
    const std::string name = "\xE3\x83\xA1\xE3\x83\xBC\xE3\x83\xAB \xF0\x9F\x98\x80";
    const std::string utf8 =
        R"(<r><Package PackageFamilyName="a_1"><MetroApp DisplayName=")" + name + R"("/></Package></r>)";
    const std::wstring wide = L"\xFEFF" + FromUtf8(utf8);
    for (const std::string& document :
         {utf8, "\xEF\xBB\xBF" + utf8, "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + utf8,
          std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t))}) {
        ExpectLoaded(document,
                     R"(<Package PackageFamilyName="a_1" Version="0.0.0.0"><MetroApp DisplayName=")" + name +
                         R"(" /></Package>)");
    }
}

TEST(AppNameListLoad, TakesLineEndsOfEveryKind)
{
    for (const std::string end : {"\n", "\r\n", "\r", "\t", ""}) {
        ExpectLoaded(R"(<?xml version="1.0"?>)" + end + "<r>" + end +
                         R"(<Package PackageFamilyName="a_1"/>)" + end + "</r>" + end,
                     kPackageA);
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
    const std::vector<std::wstring> shortcuts = Names(list.DesktopShortcuts());
    ASSERT_EQ(shortcuts.size(), 3000u);
    EXPECT_EQ(shortcuts[2999], L"C:\\2999.lnk");
    EXPECT_NE(list.GetPackage(std::wstring(100000, L'p').c_str()), nullptr);
}

} // namespace
