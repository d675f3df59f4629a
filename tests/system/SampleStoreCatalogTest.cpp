// The catalogue file after passes over the whole sample store.
#include "standin/Settings.h"
#include "system/StoreCatalog.h"

namespace {

using standin::SetSetting;
using standin::Setting;
using test::CatalogWith;
using test::PackageElement;
using test::StoreCatalog;

// The Start menu that SampleStoreCatalog makes.
std::string StartMenu()
{
    using test::CommonShortcut;
    return CommonShortcut("A", "A.lnk") + CommonShortcut("B", "B.url") + CommonShortcut("C", "Sub\\C.lnk") +
           test::ShortcutElement("メール", "<roaming>\\Microsoft\\Windows\\Start Menu\\Programs\\メール.lnk");
}

// All that the samples know, in the order of their folders' names, and the Start menu beside them. Written by
// hand from the manifests.
std::string SampleCatalog()
{
    const std::string longName = "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
                                 "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
                                 "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
                                 "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
                                 "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
                                 "abcde";
    const std::string packages =
        PackageElement("Lumen.Photos_5lum2d8xw4yhe", "1.0.3.0", {{"photo album", "photos"}}) +
        PackageElement("Microsoft.Office.Desktop_8wekyb3d8bbwe", "16.0.1.0", {}) +
        PackageElement("Test.Arabic_9test0p6zjcqm", "1.0.0.0", {{"البريد اليومي", "بريد"}}) +
        // The manifest breaks off behind its first application.
        PackageElement("Test.Broken_9test0p6zjcqm", "1.0.0.0", {{"before the break", "before"}}) +
        PackageElement("Test.CutOff_9test0p6zjcqm", "1.0.0.0", {{"cut off", "cut"}}) +
        PackageElement("Test.Emoji_9test0p6zjcqm", "1.0.0.0", {{"post 📮 and 🐦‍⬛", "📮"}}) +
        PackageElement("Test.EmptyApplications_9test0p6zjcqm", "1.0.0.0", {}) +
        // Test.Faulty is left out: its folder cannot be had.
        PackageElement("Test.Japanese_9test0p6zjcqm", "1.0.0.0", {{"予定表とメモ", "予定表"}}) +
        PackageElement("Test.LetterCase_9test0p6zjcqm", "1.0.0.0", {{"other letter case", "other"}}) +
        PackageElement("Test.LongPath_9test0p6zjcqm", "1.0.0.0", {}) +
        // 255 of 300 letters.
        PackageElement("Test.LongText_9test0p6zjcqm", "1.0.0.0", {{longName, "long"}}) +
        PackageElement("Test.Markup_9test0p6zjcqm", "1.0.0.0",
                       {{"salt &amp; pepper &lt;&quot;fine&quot; 'coarse'&gt;", "s&amp;p"}}) +
        PackageElement("Test.NoApplications_9test0p6zjcqm", "1.0.0.0", {}) +
        PackageElement("Test.NoDisplayName_9test0p6zjcqm", "1.0.0.0", {{"", "short only"}}) +
        PackageElement("Test.NoManifest_9test0p6zjcqm", "1.2.3.4", {}) +
        // The search for a tile goes on into the second application.
        PackageElement("Test.NoTile_9test0p6zjcqm", "1.0.0.0",
                       {{"first without tile", "tile of the second"}}) +
        PackageElement("Test.OnlyNoTile_9test0p6zjcqm", "1.0.0.0", {{"tileless", ""}}) +
        // One record for the family: the second package is taken for another version of the first.
        PackageElement("Test.TwoArchitectures_9test0p6zjcqm", "1.0.0.0", {{"thirty-two", "32"}}) +
        PackageElement("Test.Unresolvable_9test0p6zjcqm", "3.0.0.0",
                       {{"ms-resource:nosuchname", "ms-resource:///nowhere/at/all"}}) +
        PackageElement("Vel.Calendar_1vel7kq0n3rta", "2.1.0.14", {{"Calendar", "Days"}}) +
        PackageElement("Vel.Post_1vel7kq0n3rta", "3.0.12.0", {{"Post", "Post"}, {"People", "people"}}) +
        PackageElement("Vel.Runtime_1vel7kq0n3rta", "1.4.0.0", {});
    return CatalogWith(packages, StartMenu());
}

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

    // The names of applications that stand in resources.
    void ExpectCalendarAndPost(const test::AppElement& calendar, const test::AppElement& post,
                               const test::AppElement& people) const
    {
        const std::string packages = Packages();
        for (const std::string& package :
             {PackageElement("Vel.Calendar_1vel7kq0n3rta", "2.1.0.14", {calendar}),
              PackageElement("Vel.Post_1vel7kq0n3rta", "3.0.12.0", {post, people})}) {
            EXPECT_NE(packages.find(package), std::string::npos) << package << "\nin\n" << packages;
        }
    }
};

TEST_F(SampleStoreCatalog, HoldsEveryPackageAndShortcutAndIsWrittenAnewByTheNextProcess)
{
    RunOnePass();
    EXPECT_EQ(Bytes(), SampleCatalog());
    RunOnePass();
    // A version that comes from the file has its last two numbers changed about. It is put right when the
    // names can be read, and stays so when they cannot.
    std::string expected = SampleCatalog();
    expected.replace(expected.find("1.2.3.4"), 7, "1.2.4.3");
    EXPECT_EQ(Bytes(), expected);
    RunOnePass();
    EXPECT_EQ(Bytes(), SampleCatalog());
}

TEST_F(SampleStoreCatalog, HasTheTextsOfTheUsersLanguage)
{
    standin::SetText(standin::TextSetting::Language, L"ja-JP");
    RunOnePass();
    ExpectCalendarAndPost({"カレンダー", "日付"}, {"ポスト", "ポスト"}, {"連絡先", "people"});
}

TEST_F(SampleStoreCatalog, HasTheReferencesWhenNoTextCanBeHad)
{
    SetSetting(Setting::FailResources, static_cast<DWORD>(E_FAIL));
    RunOnePass();
    ExpectCalendarAndPost({"ms-resource:calendarname", "ms-resource:calendarshort"},
                          {"ms-resource:/post/name/", "ms-resource:/post/shortname/"},
                          {"ms-resource:///resources/peoplename", "people"});
}

TEST_F(SampleStoreCatalog, HasTheNamesAsThePlatformGivesThemOnRequest)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    RunOnePass();
    const std::string packages = Packages();
    for (const std::string& package : {
             PackageElement("Lumen.Photos_5lum2d8xw4yhe", "1.0.3.0", {{"Photo Album", ""}}),
             PackageElement("Test.Emoji_9test0p6zjcqm", "1.0.0.0", {{"Post 📮 and 🐦‍⬛", ""}}),
             PackageElement("Test.NoDisplayName_9test0p6zjcqm", "1.0.0.0", {{"", ""}}),
             // Not read to its end: the platform's reader gives nothing of a document that is not well
             // formed.
             PackageElement("Test.Broken_9test0p6zjcqm", "1.0.0.0", {}),
             PackageElement("Test.NoTile_9test0p6zjcqm", "1.0.0.0",
                            {{"First without tile", ""}, {"Second with tile", ""}}),
             PackageElement("Vel.Calendar_1vel7kq0n3rta", "2.1.0.14", {{"ms-resource:CalendarName", ""}}),
             PackageElement("Vel.Post_1vel7kq0n3rta", "3.0.12.0",
                            {{"ms-resource:/Post/Name/", ""}, {"ms-resource:///Resources/PeopleName", ""}}),
         }) {
        EXPECT_NE(packages.find(package), std::string::npos) << package << "\nin\n" << packages;
    }
}

} // namespace
