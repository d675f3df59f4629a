// Launches by search where the Store has a part: as what is wanted, and as what is in the way.
#include "system/LaunchGoldens.h"
#include "system/LaunchTest.h"
#include "system/Manifest.h"

#include <algorithm>

namespace {

using test::Manifest;

using StoreLaunch = test::LaunchTest;

TEST_F(StoreLaunch, WithoutExclusionsAShortcutComesFirst)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    Start({L"Big calendar.lnk"});
    ExpectLaunch("Calendar", 0, false, "Big calendar", "query\t\"Calendar\"");
}

TEST_F(StoreLaunch, WithExclusionsTheStoreApplicationIsStarted)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    Start({L"Big calendar.lnk"});
    ExpectLaunch("Calendar", 0, true, "Calendar", "query\t\"Calendar\" NOT(\"Big calendar\")");
    EXPECT_EQ(desktop->Count("activated\tVel.Calendar_1vel7kq0n3rta!Calendar\t(null)"), 1u);
}

TEST_F(StoreLaunch, StoreApplicationIsExcludedByBothItsNames)
{
    sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "Airmail", "Mail by Air"), "");
    Start({L"Mail.lnk"});
    ExpectLaunch("Mail", 0, true, "Mail", "query\t\"Mail\" NOT(\"airmail\" OR \"mail by air\")");
}

TEST_F(StoreLaunch, StoreApplicationsAreExcludedBeforeShortcuts)
{
    sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Zebra mail", ""), "");
    sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "Webmail", ""), "");
    Start({L"Airmail.lnk", L"Mail.lnk"});
    ExpectLaunch("Mail", 0, true, "Mail",
                 "query\t\"Mail\" NOT(\"webmail\" OR \"zebra mail\" OR \"Airmail\")");
}

TEST_F(StoreLaunch, LogOfTheCatalogueThatIsAsked)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    sandbox.AddSamplePackage(L"Vel.Runtime");
    Start({L"Big calendar.lnk"});
    standin::SetSetting(standin::Setting::FailLauncherQuery,
                        static_cast<DWORD>(E_FAIL)); // no hit to wait for
    std::vector<std::string> log = LogOf("search\t0\t1\tDays", "0x80004005");
    log.erase(std::find(log.begin(), log.end(), "CQanhMonitorMode::OpenAppSearchUI IN"), log.end());
    EXPECT_TRUE(test::IsGolden(log, {"QanhLaunchBySearch(Days, 0, 1) IN", test::Excluded("Days", R"(
        CQanhPackage::AddAppNameToExcludeList(Days) IN
        CQanhMetroApp::AddToExcludeAppNameList(Days) IN
        CQanhApp::IsSubStrNoOrder(days, Calendar) IN ... OUT(0)
        CQanhApp::IsSubStrNoOrder(days, Days) IN ... OUT(0)
        CQanhMetroApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhPackage::AddAppNameToExcludeList OUT
        CQanhPackage::AddAppNameToExcludeList(Days) IN ... OUT
        CQanhDesktopApp::AddToExcludeAppNameList(Days) IN
        CQanhApp::IsSubStrNoOrder(days, Big calendar) IN ... OUT(0)
        CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)
    )"),
                                     test::KeywordIs("\"Days\"")}));
}

} // namespace
