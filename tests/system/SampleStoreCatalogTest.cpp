// The catalogue file after passes over the whole sample store.
#include "standin/Settings.h"
#include "system/StoreCatalog.h"

namespace {

using standin::SetSetting;
using standin::Setting;
using test::StoreCatalog;

// All that the samples know, in the order of their folders' names, and a Start menu beside them. Written by
// hand from the manifests.
constexpr char sampleCatalog[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
    "<Applications>\r\n"
    "  <MetroApps>\r\n"
    "    <Package PackageFamilyName=\"Lumen.Photos_5lum2d8xw4yhe\" Version=\"1.0.3.0\">\r\n"
    "      <MetroApp DisplayName=\"photo album\" ShortName=\"photos\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Microsoft.Office.Desktop_8wekyb3d8bbwe\" Version=\"16.0.1.0\" />\r\n"
    "    <Package PackageFamilyName=\"Test.Arabic_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"البريد اليومي\" ShortName=\"بريد\" />\r\n"
    "    </Package>\r\n"
    // The manifest breaks off behind its first application.
    "    <Package PackageFamilyName=\"Test.Broken_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"before the break\" ShortName=\"before\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.CutOff_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"cut off\" ShortName=\"cut\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.Emoji_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"post 📮 and 🐦‍⬛\" ShortName=\"📮\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.EmptyApplications_9test0p6zjcqm\" Version=\"1.0.0.0\" />\r\n"
    // Test.Faulty is left out: its folder cannot be had.
    "    <Package PackageFamilyName=\"Test.Japanese_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"予定表とメモ\" ShortName=\"予定表\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.LetterCase_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"other letter case\" ShortName=\"other\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.LongPath_9test0p6zjcqm\" Version=\"1.0.0.0\" />\r\n"
    // 255 of 300 letters.
    "    <Package PackageFamilyName=\"Test.LongText_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\""
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcde\" ShortName=\"long\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.Markup_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"salt &amp; pepper &lt;&quot;fine&quot; 'coarse'&gt;\" "
    "ShortName=\"s&amp;p\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.NoApplications_9test0p6zjcqm\" Version=\"1.0.0.0\" />\r\n"
    "    <Package PackageFamilyName=\"Test.NoDisplayName_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp ShortName=\"short only\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.NoManifest_9test0p6zjcqm\" Version=\"1.2.3.4\" />\r\n"
    // The search for a tile goes on into the second application.
    "    <Package PackageFamilyName=\"Test.NoTile_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"first without tile\" ShortName=\"tile of the second\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.OnlyNoTile_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"tileless\" />\r\n"
    "    </Package>\r\n"
    // One record for the family: the second package is taken for another version of the first.
    "    <Package PackageFamilyName=\"Test.TwoArchitectures_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"thirty-two\" ShortName=\"32\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.Unresolvable_9test0p6zjcqm\" Version=\"3.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"ms-resource:nosuchname\" ShortName=\"ms-resource:///nowhere/at/all\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Vel.Calendar_1vel7kq0n3rta\" Version=\"2.1.0.14\">\r\n"
    "      <MetroApp DisplayName=\"Calendar\" ShortName=\"Days\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Vel.Post_1vel7kq0n3rta\" Version=\"3.0.12.0\">\r\n"
    "      <MetroApp DisplayName=\"Post\" ShortName=\"Post\" />\r\n"
    "      <MetroApp DisplayName=\"People\" ShortName=\"people\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Vel.Runtime_1vel7kq0n3rta\" Version=\"1.4.0.0\" />\r\n"
    "  </MetroApps>\r\n"
    "  <DesktopApps>\r\n"
    "    <DesktopApp DisplayName=\"A\" LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\A.lnk\" />\r\n"
    "    <DesktopApp DisplayName=\"B\" LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\B.url\" />\r\n"
    "    <DesktopApp DisplayName=\"C\" LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\Sub\\C.lnk\" />\r\n"
    "    <DesktopApp DisplayName=\"メール\" LnkFileName=\"<roaming>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\メール.lnk\" />\r\n"
    "  </DesktopApps>";

class SampleStoreCatalog : public StoreCatalog
{
protected:
    SampleStoreCatalog()
    {
        m_sandbox.UseSamplePackages();
        m_sandbox.AddCommonShortcut(L"B.url");
        m_sandbox.AddCommonShortcut(L"A.lnk");
        m_sandbox.AddCommonShortcut(L"Sub\\C.lnk");
        m_sandbox.AddUserShortcut(L"メール.lnk");
    }
};

TEST_F(SampleStoreCatalog, HoldsEveryPackageAndShortcut)
{
    RunOnePass();
    EXPECT_EQ(Bytes(), sampleCatalog);
}

TEST_F(SampleStoreCatalog, IsWrittenAnewByTheNextProcess)
{
    RunOnePass();
    RunOnePass();
    // A version that comes from the file has its last two numbers changed about. It is put right when the
    // names can be read, and stays so when they cannot.
    std::string expected = sampleCatalog;
    expected.replace(expected.find("1.2.3.4"), 7, "1.2.4.3");
    EXPECT_EQ(Bytes(), expected);
    RunOnePass();
    EXPECT_EQ(Bytes(), sampleCatalog);
}

TEST_F(SampleStoreCatalog, HasTheTextsOfTheUsersLanguage)
{
    standin::SetLanguage(L"ja-JP");
    RunOnePass();
    const std::string bytes = Bytes();
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"カレンダー\" ShortName=\"日付\" />"), std::string::npos);
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"ポスト\" ShortName=\"ポスト\" />\r\n"
                         "      <MetroApp DisplayName=\"連絡先\" ShortName=\"people\" />"),
              std::string::npos);
}

TEST_F(SampleStoreCatalog, HasTheReferencesWhenNoTextCanBeHad)
{
    SetSetting(Setting::FailResources, static_cast<DWORD>(E_FAIL));
    RunOnePass();
    const std::string bytes = Bytes();
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"ms-resource:calendarname\" "
                         "ShortName=\"ms-resource:calendarshort\" />"),
              std::string::npos);
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"ms-resource:/post/name/\" "
                         "ShortName=\"ms-resource:/post/shortname/\" />\r\n"
                         "      <MetroApp DisplayName=\"ms-resource:///resources/peoplename\" "
                         "ShortName=\"people\" />"),
              std::string::npos);
}

TEST_F(SampleStoreCatalog, HasTheNamesAsThePlatformGivesThemOnRequest)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    RunOnePass();
    const std::string packages = Packages();
    for (const char* package : {
             "<Package PackageFamilyName=\"Lumen.Photos_5lum2d8xw4yhe\" Version=\"1.0.3.0\">"
             "<MetroApp DisplayName=\"Photo Album\" /></Package>",
             "<Package PackageFamilyName=\"Test.Emoji_9test0p6zjcqm\" Version=\"1.0.0.0\">"
             "<MetroApp DisplayName=\"Post 📮 and 🐦‍⬛\" /></Package>",
             "<Package PackageFamilyName=\"Test.NoDisplayName_9test0p6zjcqm\" Version=\"1.0.0.0\">"
             "<MetroApp /></Package>",
             // Not read to its end: the platform's reader gives nothing of a document that is not well
             // formed.
             "<Package PackageFamilyName=\"Test.Broken_9test0p6zjcqm\" Version=\"1.0.0.0\" />",
             "<Package PackageFamilyName=\"Test.NoTile_9test0p6zjcqm\" Version=\"1.0.0.0\">"
             "<MetroApp DisplayName=\"First without tile\" /><MetroApp DisplayName=\"Second with tile\" />"
             "</Package>",
             "<Package PackageFamilyName=\"Vel.Calendar_1vel7kq0n3rta\" Version=\"2.1.0.14\">"
             "<MetroApp DisplayName=\"ms-resource:CalendarName\" /></Package>",
             "<Package PackageFamilyName=\"Vel.Post_1vel7kq0n3rta\" Version=\"3.0.12.0\">"
             "<MetroApp DisplayName=\"ms-resource:/Post/Name/\" />"
             "<MetroApp DisplayName=\"ms-resource:///Resources/PeopleName\" /></Package>",
         }) {
        EXPECT_NE(packages.find(package), std::string::npos) << package << "\nin\n" << packages;
    }
}

} // namespace
