// The whole log of one launch in each mode.
#include "system/Golden.h"
#include "system/LaunchGoldens.h"
#include "system/LaunchTest.h"

#include <algorithm>

namespace {

using standin::SetSetting;
using standin::Setting;
using namespace test;

constexpr char ok[] = "0x00000000";

class LaunchLog : public test::LaunchTest
{
protected:
    // The log of a launch alone. Polls of the Start screen count once.
    std::vector<std::string> Launch(const std::string& command, const std::string& result)
    {
        const std::size_t offset = sandbox.LogLength();
        EXPECT_EQ(host->Command(command, 30000), result);
        std::vector<std::string> log = sandbox.Log(offset);
        test::CollapseRepeats(log, R"(
            CQanhMonitorMode::GetMonitorState IN
            CQanhMonitorMode::GetMonitorState OUT(0) dwMode(0)
            dwMode = 0 <end>
        )");
        return log;
    }
};

TEST_F(LaunchLog, ModeZeroWithExclusionsOnTheStartScreen)
{
    Start({L"Gmail.lnk", L"Mail.lnk"});
    desktop->ShowStartScreen();
    EXPECT_TRUE(IsGolden(Launch("search\t0\t1\tMail", ok), {
                                                               R"(
        QanhLaunchBySearch(Mail, 0, 1) IN
        CQanhPackageManager::GetExcludeAppNameList(Mail) IN
        CQanhAppNameList::GetExcludeAppNameList(Mail) IN
        CQanhDesktopApp::AddToExcludeAppNameList(Mail) IN
        CQanhApp::IsSubStrNoOrder(mail, Gmail) IN
        CQanhApp::IsSubStrNoOrder OUT(1)
        CQanhApp::IsSubStrNoOrder(Gmail, mail) IN
        CQanhApp::IsSubStrNoOrder OUT(0)
        CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhDesktopApp::AddToExcludeAppNameList(Mail) IN
        CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)
        CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)
                                                               )",
                                                               KeywordIs("\"Mail\" NOT(\"Gmail\")"),
                                                               searchPaneOpens,
                                                               TextIsCopied("\"Mail\" NOT(\"Gmail\")"),
                                                               shiftInsertIsPressed,
                                                               enterIsPressed,
                                                               launchEnds,
                                                           }));
}

TEST_F(LaunchLog, ModeZeroWithoutExclusionsOnTheDesktopWithALostPaste)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::StartScreenDelay, 300);
    SetSetting(Setting::LosePastes, 1);
    EXPECT_TRUE(
        IsGolden(Launch("search\t0\t0\tMail", ok), {
                                                       "QanhLaunchBySearch(Mail, 0, 0) IN",
                                                       KeywordIs("\"Mail\""),
                                                       R"(
        CQanhMonitorMode::OpenAppSearchUI IN
        CQanhMonitorMode::GetMonitorState IN
        CQanhMonitorMode::GetMonitorState OUT(0) dwMode(0)
        CQanhMonitorMode::SwitchToStartScreen IN
        CQanhMonitorMode::GetMonitorState IN
        CQanhMonitorMode::GetMonitorState OUT(0) dwMode(0)
        dwMode = 0 <end>
        CQanhKeyEmulate::Sendinput_Win IN
        CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000001) IN
        CQanhKeyEmulate::Sendinput_Key OUT
        CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000002) IN
        CQanhKeyEmulate::Sendinput_Key OUT
        CQanhKeyEmulate::Sendinput_Win OUT
        CQanhMonitorMode::GetMonitorState IN
        CQanhMonitorMode::GetMonitorState OUT(0) dwMode(0)
        dwMode = 0 <end>
        CQanhMonitorMode::GetMonitorState IN
        CQanhMonitorMode::GetMonitorState OUT(0) dwMode(1)
        dwMode = 1 <end>
        CQanhMonitorMode::SwitchToStartScreen OUT(0)
                                                               )",
                                                       windowsQIsPressed,
                                                       "CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)",
                                                       TextIsCopied("\"Mail\""),
                                                       shiftInsertIsPressed,
                                                       enterIsPressed,
                                                       shiftInsertIsPressed,
                                                       enterIsPressed,
                                                       launchEnds,
                                                   }));
}

TEST_F(LaunchLog, ModeOne)
{
    Start({L"Mail.lnk"});
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 20);
    desktop->ShowStartScreen();
    EXPECT_TRUE(IsGolden(Launch("search\t1\t0\tMail", ok), {
                                                               "QanhLaunchBySearch(Mail, 1, 0) IN",
                                                               KeywordIs("\"Mail\""),
                                                               searchPaneOpens,
                                                               TextIsCopied("Mail"),
                                                               shiftInsertIsPressed,
                                                               R"(
        CQanhReg::GetClearClipboardWaitTime IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(1)
        CQanhReg::GetClearClipboardWaitTime OUT(20)
                                                               )",
                                                               launchEnds,
                                                           }));
}

TEST_F(LaunchLog, ModeTwoOfACataloguedApplication)
{
    Start({L"Mail.lnk"});
    desktop->ShowStartScreen();
    EXPECT_TRUE(IsGolden(Launch("search\t2\t1\tmail", ok), {
                                                               R"(
        QanhLaunchBySearch(mail, 2, 1) IN
        CQanhPackageManager::GetExcludeAppNameList(mail) IN
        CQanhAppNameList::GetExcludeAppNameList(mail) IN
        CQanhDesktopApp::AddToExcludeAppNameList(mail) IN
        CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)
        CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)
                                                               )",
                                                               KeywordIs("\"mail\""),
                                                               searchPaneOpens,
                                                               TextIsCopied("mail"),
                                                               shiftInsertIsPressed,
                                                               enterIsPressed,
                                                               launchEnds,
                                                           }));
}

TEST_F(LaunchLog, QueriesThatFail)
{
    Start({});
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    EXPECT_TRUE(IsGolden(Launch("search\t2\t1\tMail", "0x80004005"),
                         {"QanhLaunchBySearch(Mail, 2, 1) IN", NothingIsExcluded("Mail"),
                          KeywordIs("\"Mail\""), launcherQueryFails}));
    SetSetting(Setting::FailLauncherQuery, 0);
    SetSetting(Setting::FailMonitorQuery, static_cast<DWORD>(E_FAIL));
    const auto monitor = reinterpret_cast<INT_PTR>(MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY));
    EXPECT_TRUE(IsGolden(Launch("search\t0\t0\tMail", "0x80004005"),
                         {
                             "QanhLaunchBySearch(Mail, 0, 0) IN",
                             KeywordIs("\"Mail\""),
                             R"(
        CQanhMonitorMode::OpenAppSearchUI IN
        CQanhMonitorMode::GetMonitorState IN
                             )",
                             "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(" +
                                 std::to_string(static_cast<int>(monitor)) + ")",
                             R"(
        CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)
        QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)
                             )",
                         }));
}

TEST_F(LaunchLog, ClipboardThatIsHeld)
{
    Start({L"Mail.lnk"});
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 0);
    desktop->ShowStartScreen();
    const test::ClipboardAccess held;
    const std::vector<std::string> log = Launch("search\t1\t0\tMail", ok);
    const auto entry = std::find(log.begin(), log.end(), "CQanhClipboard::SetClipboardData(Mail) IN");
    ASSERT_LT(entry, log.end() - 1);
    EXPECT_EQ(entry[1], "CQanhClipboard::SetClipboardData OUT(0x80004005)");
}

} // namespace
