// Launches while the refresh thread works on the catalogue.
#include "system/LaunchTest.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/QueryFor.h"
#include "system/SlowManifest.h"

#include <algorithm>
#include <set>

namespace {

using standin::SetSetting;
using standin::Setting;

class LaunchDuringRefresh : public test::LaunchTest
{
protected:
    void SetUp() override
    {
        sandbox.Settings().SetDword(L"RefreshInterval", 0); // one pass after the other
        for (int index = 0; index < 12; ++index) {
            sandbox.AddCommonShortcut(std::to_wstring(index) + L"\\mail " + std::to_wstring(index) + L".lnk");
            wanted += (index == 0 ? "\"mail " : " OR \"mail ") + std::to_string(Order(index)) + "\"";
        }
        wanted = "\"mail\" NOT(" + wanted + ")";
    }

    // The folders are found in the order of their names: 0, 1, 10, 11, 2, ...
    static int Order(int index)
    {
        constexpr int order[] = {0, 1, 10, 11, 2, 3, 4, 5, 6, 7, 8, 9};
        return order[index];
    }

    std::string wanted; // the query
};

using LaunchDuringFirstPass = test::LaunchTest;

TEST_F(LaunchDuringRefresh, TheQueryIsAlwaysTheSameWhenNothingChanges)
{
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL)); // ends each launch behind its query
    host = std::make_unique<test::HostProcess>(sandbox);
    host->Do("line-up");
    ASSERT_EQ(host->Command("init"), "0x00000000");
    host->Do("open");
    test::WaitForFirstPass();
    const std::size_t offset = sandbox.LogLength();
    // As long as it takes to meet several passes.
    std::vector<std::string> log;
    int searches = 0;
    const bool met = test::WaitUntil(
        [&] {
            EXPECT_EQ(host->Command("searches\t25\tmail"), "0x80004005");
            searches += 25;
            log = sandbox.Log(offset);
            return std::count(log.begin(), log.end(), test::passBegin) > 4;
        },
        20000);
    EXPECT_TRUE(met) << "nothing was refreshed meanwhile";
    constexpr std::string_view begin = "QanhLaunchBySearch szKeyword = ";
    std::set<std::string> queries;
    int count = 0;
    for (const std::string& line : log) {
        if (line.starts_with(begin)) {
            queries.insert(line.substr(begin.size()));
            ++count;
        }
    }
    EXPECT_EQ(count, searches);
    EXPECT_EQ(queries, std::set<std::string>{wanted + " "});
}

TEST_F(LaunchDuringRefresh, TheApplicationIsStarted)
{
    sandbox.Settings().DeleteValue(L"DebugLog");
    Start({L"mail.lnk"});
    ExpectLaunch("mail", 0, true, "mail", "query\t" + wanted);
    host->Do("finalize");
    EXPECT_EQ(host->Exit(), 0u);
}

// On a first start nothing is known before the pass; a launch need not wait for its end to know more.
TEST_F(LaunchDuringFirstPass, SeesAtOnceWhatThePassHasFound)
{
    const std::string manifest = test::Manifest("Vel.B", "1.0.0.0", "Webmail", "B");
    test::SlowManifest slow;
    sandbox.WritePackage(L"A", test::Manifest("Vel.A", "1.0.0.0", "Airmail", "A"), "");
    sandbox.WritePackage(L"B", manifest, "location = " + slow.Folder());
    sandbox.AddCommonShortcut(L"my mail.lnk");
    host = std::make_unique<test::HostProcess>(sandbox);
    ASSERT_EQ(host->Command("init"), "0x00000000");
    EXPECT_EQ(test::QueryFor(sandbox, *host, "mail"), "\"mail\"");
    slow.WaitForReader();
    EXPECT_EQ(test::QueryFor(sandbox, *host, "mail"), "\"mail\" NOT(\"airmail\")");
    EXPECT_TRUE(test::IsFirstPassRunning());
    slow.Answer(manifest);
    test::WaitForFirstPass();
    EXPECT_EQ(test::QueryFor(sandbox, *host, "mail"),
              "\"mail\" NOT(\"airmail\" OR \"webmail\" OR \"my mail\")");
}

} // namespace
