// The Start screen and its search pane, as the monitor mode brings them up.

#include "unit/launch/MonitorMode.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace monitor_mode_test;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

int g_panePolls = 0;      // how often the foreground window was asked for
int g_paneComesAt = 0;    // at which of them the search pane is in front; 0 for never
std::vector<WORD> g_keys; // virtual keys sent, downs and ups

UINT WINAPI SendKey(UINT, INPUT* input, int)
{
    g_keys.push_back(input->ki.wVk);
    return 1;
}

HWND WINAPI Foreground()
{
    ++g_panePolls;
    return reinterpret_cast<HWND>(static_cast<INT_PTR>(0x77));
}

int WINAPI ClassOfForeground(HWND, wchar_t* name, int)
{
    const bool isPane = g_panePolls == g_paneComesAt;
    lstrcpyW(name, isPane ? L"SearchPane" : L"Shell_TrayWnd");
    return lstrlenW(name);
}

// Without the keys' own lines: those are the key scripts' business.
Lines WithoutKeys(const Lines& all)
{
    Lines lines;
    for (const std::string& line : all) {
        if (line.rfind("CQanhKeyEmulate::Sendinput_Key", 0) != 0) {
            lines.push_back(line);
        }
    }
    return lines;
}

// The lines of one look at the state, of which the mode is asked for in passing.
Lines Look(int mode)
{
    return {"CQanhMonitorMode::GetMonitorState IN", "CQanhMonitorMode::GetMonitorState OUT(0) dwMode(" +
                                                        (mode == -1 ? "" : std::to_string(mode)) + ")"};
}

Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

const Lines kWindowsKeyLines = {"CQanhKeyEmulate::Sendinput_Win IN", "CQanhKeyEmulate::Sendinput_Win OUT"};
const Lines kWindowsQLines = {"CQanhKeyEmulate::SendInput_Win_Q IN", "CQanhKeyEmulate::SendInput_Win_Q OUT"};
const Lines kSwitchIn = {"CQanhMonitorMode::SwitchToStartScreen IN"};
const Lines kSwitchOut = {"CQanhMonitorMode::SwitchToStartScreen OUT(0)"};
const Lines kOpenIn = {"CQanhMonitorMode::OpenAppSearchUI IN"};
const Lines kOpenOut = {"CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)"};

class StartScreen : public MonitorMode
{
protected:
    StartScreen()
        : m_send("SendInput", SendKey), m_foreground("GetForegroundWindow", Foreground),
          m_className("GetClassNameW", ClassOfForeground)
    {
        g_keys.clear();
        g_panePolls = 0;
        g_paneComesAt = 1;
        Ready();
    }

    // What was paused for, as pairs of milliseconds and count of pauses in a row.
    std::vector<std::pair<DWORD, int>> Pauses() const
    {
        std::vector<std::pair<DWORD, int>> pauses;
        for (const DWORD milliseconds : m_sleep.Calls()) {
            if (pauses.empty() || pauses.back().first != milliseconds) {
                pauses.emplace_back(milliseconds, 0);
            }
            ++pauses.back().second;
        }
        return pauses;
    }

    static constexpr FakeVisibility::State kDesktop{FALSE, MAV_NO_APP_VISIBLE};
    static constexpr FakeVisibility::State kStart{TRUE, MAV_NO_APP_VISIBLE};
    static constexpr FakeVisibility::State kStoreApp{FALSE, MAV_APP_VISIBLE};
    static constexpr FakeVisibility::State kUnknown{TRUE, MAV_UNKNOWN};
    static constexpr FakeVisibility::State kLauncherError{TRUE, MAV_NO_APP_VISIBLE, E_FAIL, S_OK};
    static constexpr FakeVisibility::State kMonitorError{TRUE, MAV_NO_APP_VISIBLE, S_OK, E_FAIL};

    test::FakeSleep m_sleep;
    test::ImportPatch<decltype(&SendInput)> m_send;
    test::ImportPatch<decltype(&GetForegroundWindow)> m_foreground;
    test::ImportPatch<decltype(&GetClassNameW)> m_className;
    test::LogCapture m_log;
};

using Pause = std::pair<DWORD, int>;

TEST_F(StartScreen, SwitchDoesNothingWhenItShows)
{
    m_visibility.states = {kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(kSwitchIn + Look(1) + Lines{"dwMode = 1 "} + kSwitchOut));
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyAndPollsUntilItShows)
{
    m_visibility.states = {kDesktop, kDesktop, kStoreApp, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 3)));
    EXPECT_THAT(WithoutKeys(m_log.Lines()),
                ElementsAreArray(kSwitchIn + Look(0) + Lines{"dwMode = 0 "} + kWindowsKeyLines + Look(0) +
                                 Lines{"dwMode = 0 "} + Look(2) + Lines{"dwMode = 2 "} + Look(1) +
                                 Lines{"dwMode = 1 "} + kSwitchOut));
}

TEST_F(StartScreen, SwitchGivesUpAfterTwentyPollsWithoutFailing)
{
    m_visibility.states = {kDesktop};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 20)));
    EXPECT_EQ(m_visibility.looks, 21u);
    Lines expected = kSwitchIn + Look(0) + Lines{"dwMode = 0 "} + kWindowsKeyLines;
    for (int poll = 0; poll < 20; ++poll) {
        expected = expected + Look(0) + Lines{"dwMode = 0 "};
    }
    EXPECT_THAT(WithoutKeys(m_log.Lines()), ElementsAreArray(expected + kSwitchOut));
}

TEST_F(StartScreen, SwitchSeesItAtTheTwentiethPoll)
{
    m_visibility.states = std::vector<FakeVisibility::State>(20, kDesktop);
    m_visibility.states.push_back(kStart);
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_EQ(m_visibility.looks, 21u);
    EXPECT_EQ(m_log.Lines()[m_log.Lines().size() - 2], "dwMode = 1 ");
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyInAStoreApp)
{
    m_visibility.states = {kStoreApp, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 1)));
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyInAnUnknownState)
{
    m_visibility.states = {kUnknown, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(WithoutKeys(m_log.Lines()),
                ElementsAreArray(kSwitchIn + Look(-1) + Lines{"dwMode = -1 "} + kWindowsKeyLines + Look(1) +
                                 Lines{"dwMode = 1 "} + kSwitchOut));
}

TEST_F(StartScreen, SwitchPollsOnWhenALookFails)
{
    m_visibility.states = {kStoreApp, kLauncherError, kMonitorError, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(WithoutKeys(m_log.Lines()),
                ElementsAreArray(kSwitchIn + Look(2) + Lines{"dwMode = 2 "} + kWindowsKeyLines +
                                 Lines{"CQanhMonitorMode::GetMonitorState IN",
                                       "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ",
                                       "dwMode = 2 ", "CQanhMonitorMode::GetMonitorState IN",
                                       "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(4660)",
                                       "dwMode = 2 "} +
                                 Look(1) + Lines{"dwMode = 1 "} + kSwitchOut));
}

TEST_F(StartScreen, SwitchWithoutTheObjectReturnsMinusOneAndPressesNothing)
{
    Unready();
    EXPECT_EQ(m_mode.SwitchToStartScreen(), -1);
    EXPECT_THAT(g_keys, IsEmpty());
    // The place of the operation's name stays empty in the third line.
    EXPECT_THAT(m_log.Lines(),
                ElementsAre("CQanhMonitorMode::SwitchToStartScreen IN",
                            "CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)",
                            " OUT : GetMonitorState(-1) ", "CQanhMonitorMode::SwitchToStartScreen OUT(-1)"));
}

TEST_F(StartScreen, SwitchReturnsMinusTwoWhenTheFirstLookFails)
{
    m_visibility.states = {kLauncherError, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), -2);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAre("CQanhMonitorMode::SwitchToStartScreen IN",
                            "CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ",
                            " OUT : GetMonitorState(-2) ", "CQanhMonitorMode::SwitchToStartScreen OUT(-2)"));
}

TEST_F(StartScreen, SearchPaneOpensWithWindowsQOnly)
{
    m_visibility.states = {kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 100u, 200u, 100u, 200u));
    EXPECT_EQ(g_panePolls, 1);
    EXPECT_THAT(WithoutKeys(m_log.Lines()), ElementsAreArray(kOpenIn + Look(1) + kWindowsQLines + kOpenOut));
}

TEST_F(StartScreen, SearchPaneNeedsTheStartScreenFirst)
{
    m_visibility.states = {kDesktop, kDesktop, kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 100u, 50u, 50u, 100u, 200u, 100u, 200u));
    EXPECT_THAT(WithoutKeys(m_log.Lines()),
                ElementsAreArray(kOpenIn + Look(0) + kSwitchIn + Look(0) + Lines{"dwMode = 0 "} +
                                 kWindowsKeyLines + Look(1) + Lines{"dwMode = 1 "} + kSwitchOut +
                                 kWindowsQLines + kOpenOut));
}

TEST_F(StartScreen, SearchPaneIsAskedForAlsoWhenTheStartScreenNeverShows)
{
    m_visibility.states = {kStoreApp};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_EQ(m_visibility.looks, 22u);
}

TEST_F(StartScreen, SearchPaneNeedsTheWindowsKeyInAnUnknownState)
{
    m_visibility.states = {kUnknown, kUnknown, kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
}

TEST_F(StartScreen, SearchPaneIsPolledForUntilItIsInFront)
{
    m_visibility.states = {kStart};
    g_paneComesAt = 7;
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_EQ(g_panePolls, 7);
    EXPECT_THAT(Pauses(),
                ElementsAre(Pause(50, 2), Pause(100, 1), Pause(200, 1), Pause(100, 7), Pause(200, 1)));
}

TEST_F(StartScreen, SearchPaneThatNeverComesIsPolledForTwoHundredTimes)
{
    m_visibility.states = {kStart};
    g_paneComesAt = 0;
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_EQ(g_panePolls, 200);
    EXPECT_THAT(Pauses(),
                ElementsAre(Pause(50, 2), Pause(100, 1), Pause(200, 1), Pause(100, 200), Pause(200, 1)));
    EXPECT_THAT(WithoutKeys(m_log.Lines()), ElementsAreArray(kOpenIn + Look(1) + kWindowsQLines + kOpenOut));
}

TEST_F(StartScreen, SearchPaneFailsWithoutTheObject)
{
    Unready();
    EXPECT_EQ(m_mode.OpenAppSearchUI(), E_FAIL);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAre("CQanhMonitorMode::OpenAppSearchUI IN", "CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)",
                            "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)"));
}

TEST_F(StartScreen, SearchPaneFailsWhenTheStateCannotBeRead)
{
    m_visibility.states = {kMonitorError};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), E_FAIL);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAre("CQanhMonitorMode::OpenAppSearchUI IN", "CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(4660)",
                            "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)"));
}

TEST_F(StartScreen, SearchPaneFailsWhenTheSwitchFails)
{
    m_visibility.states = {kDesktop, kLauncherError};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), E_FAIL);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_EQ(g_panePolls, 0);
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(
                    kOpenIn + Look(0) +
                    Lines{"CQanhMonitorMode::SwitchToStartScreen IN", "CQanhMonitorMode::GetMonitorState IN",
                          "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ",
                          " OUT : GetMonitorState(-2) ", "CQanhMonitorMode::SwitchToStartScreen OUT(-2)",
                          "CQanhMonitorMode::OpenAppSearchUI OUT(OpenAppSearchUI : ret=0xFFFFFFFE)"}));
}

// A window of the class in front of all others.
class ForegroundWindow
{
public:
    explicit ForegroundWindow(const wchar_t* className) : m_className(className)
    {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = DefWindowProcW;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = className;
        RegisterClassW(&windowClass);
        m_window = CreateWindowExW(WS_EX_TOPMOST, className, L"SearchPane", WS_POPUP | WS_VISIBLE, 0, 0, 100,
                                   100, nullptr, nullptr, windowClass.hInstance, nullptr);
        SetForegroundWindow(m_window);
    }
    ~ForegroundWindow()
    {
        DestroyWindow(m_window);
        UnregisterClassW(m_className, GetModuleHandleW(nullptr));
    }
    ForegroundWindow(const ForegroundWindow&) = delete;
    ForegroundWindow& operator=(const ForegroundWindow&) = delete;

    [[nodiscard]] bool IsInFront() const { return m_window && GetForegroundWindow() == m_window; }

private:
    const wchar_t* m_className;
    HWND m_window;
};

class SearchPaneClass : public ::testing::TestWithParam<std::pair<const wchar_t*, BOOL>>
{
};

TEST_P(SearchPaneClass, IsComparedWholeAndToTheLetter)
{
    const ForegroundWindow window(GetParam().first);
    ASSERT_TRUE(window.IsInFront());
    const test::LogCapture log;
    EXPECT_EQ(CQanhMonitorMode::IsSearchPaneForeground(), GetParam().second);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, SearchPaneClass,
                         ::testing::Values(std::pair(L"SearchPane", TRUE), std::pair(L"searchpane", FALSE),
                                           std::pair(L"SEARCHPANE", FALSE), std::pair(L"SearchPaneX", FALSE),
                                           std::pair(L"SearchPan", FALSE), std::pair(L" SearchPane", FALSE),
                                           std::pair(L"\u30e1\u30fc\u30eb", FALSE)));

TEST(SearchPane, NoForegroundWindowIsNotThePane)
{
    const test::ImportPatch<decltype(&GetForegroundWindow)> patch("GetForegroundWindow",
                                                                  []() -> HWND { return nullptr; });
    EXPECT_EQ(CQanhMonitorMode::IsSearchPaneForeground(), FALSE);
}

TEST(SearchPane, WindowThatIsGoneIsNotThePane)
{
    const test::ImportPatch<decltype(&GetForegroundWindow)> patch("GetForegroundWindow", []() -> HWND {
        return reinterpret_cast<HWND>(static_cast<INT_PTR>(0x7ffffffe));
    });
    EXPECT_EQ(CQanhMonitorMode::IsSearchPaneForeground(), FALSE);
}

TEST(SearchPane, LongestClassNameIsNotThePane)
{
    const std::wstring name(255, L'S');
    const ForegroundWindow window(name.c_str());
    ASSERT_TRUE(window.IsInFront());
    EXPECT_EQ(CQanhMonitorMode::IsSearchPaneForeground(), FALSE);
}

} // namespace
