// The whole log of one launch in each mode.
#include "system/LaunchGoldens.h"
#include "system/LaunchTest.h"

namespace {

using standin::SetSetting;
using standin::Setting;
using namespace test;

class LaunchLog : public LaunchTest
{
protected:
    // Polls of the Start screen count once.
    std::vector<std::string> Launch(const std::string& command, const std::string& result = "0x00000000")
    {
        std::vector<std::string> log = LogOf(command, result);
        CollapseRepeats(log, R"(
            CQanhMonitorMode::GetMonitorState IN ... OUT(0) dwMode(0)
            dwMode = 0 <end>
        )");
        return log;
    }
};

TEST_F(LaunchLog, ModeZeroWithExclusionsOnTheStartScreen)
{
    Start({L"Gmail.lnk", L"Mail.lnk"});
    desktop->ShowStartScreen();
    EXPECT_TRUE(IsGolden(Launch("search\t0\t1\tMail"),
                         {"QanhLaunchBySearch(Mail, 0, 1) IN", Excluded("Mail", R"(
        CQanhDesktopApp::AddToExcludeAppNameList(Mail) IN
        CQanhApp::IsSubStrNoOrder(mail, Gmail) IN ... OUT(1)
        CQanhApp::IsSubStrNoOrder(Gmail, mail) IN ... OUT(0)
        CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)
        CQanhDesktopApp::AddToExcludeAppNameList(Mail) IN ... OUT(0x00000000)
    )"),
                          KeywordIs("\"Mail\" NOT(\"Gmail\")"), TextIsSearched("\"Mail\" NOT(\"Gmail\")")}));
}

TEST_F(LaunchLog, ModeZeroWithoutExclusionsOnTheDesktopWithALostPaste)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::StartScreenDelay, 300);
    SetSetting(Setting::LosePastes, 1);
    EXPECT_TRUE(IsGolden(Launch("search\t0\t0\tMail"),
                         {"QanhLaunchBySearch(Mail, 0, 0) IN", KeywordIs("\"Mail\""), R"(
        CQanhMonitorMode::OpenAppSearchUI IN
        CQanhMonitorMode::GetMonitorState IN ... OUT(0) dwMode(0)
        CQanhMonitorMode::SwitchToStartScreen IN
        CQanhMonitorMode::GetMonitorState IN ... OUT(0) dwMode(0)
        dwMode = 0 <end>
        CQanhKeyEmulate::Sendinput_Win IN
        CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000001) IN ... OUT
        CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000002) IN ... OUT
        CQanhKeyEmulate::Sendinput_Win OUT
        CQanhMonitorMode::GetMonitorState IN ... OUT(0) dwMode(0)
        dwMode = 0 <end>
        CQanhMonitorMode::GetMonitorState IN ... OUT(0) dwMode(1)
        dwMode = 1 <end>
        CQanhMonitorMode::SwitchToStartScreen OUT(0)
    )",
                          windowsQIsPressed, "CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)",
                          TextIsCopied("\"Mail\""), shiftInsertIsPressed, enterIsPressed,
                          shiftInsertIsPressed, enterIsPressed, launchEnds}));
}

TEST_F(LaunchLog, ModeOne)
{
    Start({L"Mail.lnk"});
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 20);
    desktop->ShowStartScreen();
    EXPECT_TRUE(IsGolden(Launch("search\t1\t0\tMail"),
                         {"QanhLaunchBySearch(Mail, 1, 0) IN", KeywordIs("\"Mail\""), SearchPaneOpens(),
                          TextIsCopied("Mail"), shiftInsertIsPressed, R"(
        CQanhReg::GetClearClipboardWaitTime IN
        CQanhReg::GetDWORDRegVal IN ... OUT(1)
        CQanhReg::GetClearClipboardWaitTime OUT(20)
    )",
                          launchEnds}));
}

TEST_F(LaunchLog, ModeTwoOfACataloguedApplication)
{
    Start({L"Mail.lnk"});
    desktop->ShowStartScreen();
    EXPECT_TRUE(
        IsGolden(Launch("search\t2\t1\tmail"),
                 {"QanhLaunchBySearch(mail, 2, 1) IN",
                  Excluded("mail", "CQanhDesktopApp::AddToExcludeAppNameList(mail) IN ... OUT(0x00000000)"),
                  KeywordIs("\"mail\""), TextIsSearched("mail")}));
}

TEST_F(LaunchLog, QueriesThatFail)
{
    Start({});
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    EXPECT_TRUE(IsGolden(Launch("search\t2\t1\tMail", "0x80004005"),
                         {"QanhLaunchBySearch(Mail, 2, 1) IN", Excluded("Mail", ""), KeywordIs("\"Mail\""),
                          ScreenIsUnknown(launcherQueryFails)}));
    SetSetting(Setting::FailLauncherQuery, 0);
    SetSetting(Setting::FailMonitorQuery, static_cast<DWORD>(E_FAIL));
    const auto monitor = reinterpret_cast<INT_PTR>(MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY));
    EXPECT_TRUE(
        IsGolden(Launch("search\t0\t0\tMail", "0x80004005"),
                 {"QanhLaunchBySearch(Mail, 0, 0) IN", KeywordIs("\"Mail\""),
                  ScreenIsUnknown("MonitorFromPoint(" + std::to_string(static_cast<int>(monitor)) + ")")}));
}

} // namespace
