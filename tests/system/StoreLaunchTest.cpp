// Launches by search where the Store has a part: as what is wanted, and as what is in the way.
#include "system/Golden.h"
#include "system/LaunchTest.h"
#include "system/Manifest.h"

#include <algorithm>

namespace {

using test::Manifest;

constexpr char ok[] = "0x00000000";

class StoreLaunch : public test::LaunchTest
{
protected:
    // The query that stands in the desktop's journal; it must be the only one.
    std::string Query() const
    {
        std::string query;
        for (const std::string& line : desktop->Journal()) {
            if (line.starts_with("query\t")) {
                EXPECT_EQ(query, "");
                query = line.substr(6);
            }
        }
        return query;
    }
};

TEST_F(StoreLaunch, WithoutExclusionsAShortcutComesFirst)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    Start({L"Big calendar.lnk"});
    EXPECT_EQ(host->Search("Calendar", 0, false), ok);
    EXPECT_EQ(desktop->Started(), "Big calendar");
    EXPECT_EQ(Query(), "\"Calendar\"");
}

TEST_F(StoreLaunch, WithExclusionsTheStoreApplicationIsStarted)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    Start({L"Big calendar.lnk"});
    EXPECT_EQ(host->Search("Calendar", 0, true), ok);
    EXPECT_EQ(desktop->Started(), "Calendar");
    EXPECT_EQ(Query(), "\"Calendar\" NOT(\"Big calendar\")");
    EXPECT_EQ(desktop->Count("activated\tVel.Calendar_1vel7kq0n3rta!Calendar\t(null)"), 1u);
}

TEST_F(StoreLaunch, StoreApplicationIsExcludedByBothItsNames)
{
    sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "Airmail", "Mail by Air"), "");
    Start({L"Mail.lnk"});
    EXPECT_EQ(host->Search("Mail", 0, true), ok);
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_EQ(Query(), "\"Mail\" NOT(\"airmail\" OR \"mail by air\")");
}

TEST_F(StoreLaunch, StoreApplicationsAreExcludedBeforeShortcuts)
{
    sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Zebra mail", ""), "");
    sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "Webmail", ""), "");
    Start({L"Airmail.lnk", L"Mail.lnk"});
    EXPECT_EQ(host->Search("Mail", 0, true), ok);
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_EQ(Query(), "\"Mail\" NOT(\"webmail\" OR \"zebra mail\" OR \"Airmail\")");
}

TEST_F(StoreLaunch, LogOfTheCatalogueThatIsAsked)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    sandbox.AddSamplePackage(L"Vel.Runtime");
    Start({L"Big calendar.lnk"});
    standin::SetSetting(standin::Setting::FailLauncherQuery,
                        static_cast<DWORD>(E_FAIL)); // no hit to wait for
    const std::size_t offset = sandbox.LogLength();
    EXPECT_EQ(host->Search("Days", 0, true), "0x80004005");
    std::vector<std::string> log = sandbox.Log(offset);
    log.erase(std::find(log.begin(), log.end(), "CQanhMonitorMode::OpenAppSearchUI IN"), log.end());
    EXPECT_TRUE(test::IsGolden(log, R"(
        QanhLaunchBySearch(Days, 0, 1) IN
        CQanhPackageManager::GetExcludeAppNameList(Days) IN
        CQanhAppNameList::GetExcludeAppNameList(Days) IN
        CQanhPackage::AddAppNameToExcludeList(Days) IN
        CQanhMetroApp::AddToExcludeAppNameList(Days) IN
        CQanhApp::IsSubStrNoOrder(days, Calendar) IN
        CQanhApp::IsSubStrNoOrder OUT(0)
        CQanhApp::IsSubStrNoOrder(days, Days) IN
        CQanhApp::IsSubStrNoOrder OUT(0)
        CQanhMetroApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhPackage::AddAppNameToExcludeList OUT
        CQanhPackage::AddAppNameToExcludeList(Days) IN
        CQanhPackage::AddAppNameToExcludeList OUT
        CQanhDesktopApp::AddToExcludeAppNameList(Days) IN
        CQanhApp::IsSubStrNoOrder(days, Big calendar) IN
        CQanhApp::IsSubStrNoOrder OUT(0)
        CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)
        CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)
        QanhLaunchBySearch szKeyword = "Days" <end>
    )"));
}

} // namespace
