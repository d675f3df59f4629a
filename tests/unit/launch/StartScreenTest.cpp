// The Start screen and its search pane, as the monitor mode brings them up.

#include "unit/launch/MonitorMode.h"

namespace {

using namespace monitor_mode_test;

// A look at the state, of which the mode is asked for in passing.
Lines Look(int mode)
{
    return LookLines("(0) dwMode(" + (mode == -1 ? "" : std::to_string(mode)) + ")");
}
// The same on the way to the Start screen, which tells the mode once more.
Lines Poll(int mode)
{
    return Look(mode) + Lines{"dwMode = " + std::to_string(mode) + " "};
}

const Lines kWindowsKeyLines = Call("CQanhKeyEmulate::Sendinput_Win");
const Lines kWindowsQLines = Call("CQanhKeyEmulate::SendInput_Win_Q");
const std::string kNoObject = "( m_pImmersiveMode NULL : -1)";
const std::string kNoLauncher = "(-2) IsLauncherVisible Err ";
const std::string kNoMonitor = "(-2) MonitorFromPoint(4660)";

class StartScreen : public MonitorMode
{
protected:
    StartScreen() { Ready(); }

    // Switching to the Start screen has this result and writes this, without the keys' own lines: those are
    // the key scripts' business.
    void ExpectSwitch(int result, const std::vector<FakeVisibility::State>& states, const Lines& lines)
    {
        m_visibility.states = states;
        EXPECT_EQ(m_mode.SwitchToStartScreen(), result);
        EXPECT_EQ(WithoutKeys(), SwitchLines(lines, result));
    }
    void ExpectOpen(HRESULT result, const std::vector<FakeVisibility::State>& states,
                    const std::string& logged, const Lines& lines)
    {
        m_visibility.states = states;
        EXPECT_EQ(m_mode.OpenAppSearchUI(), result);
        EXPECT_EQ(WithoutKeys(), Call("CQanhMonitorMode::OpenAppSearchUI", "(" + logged + ")", lines));
    }
    static Lines SwitchLines(const Lines& lines, int result = 0)
    {
        return Call("CQanhMonitorMode::SwitchToStartScreen", "(" + std::to_string(result) + ")", lines);
    }
    // The first look of a switch, which fails. The place of the operation's name stays empty in the last
    // line.
    static Lines FailedLook(const std::string& logged, const std::string& result)
    {
        return LookLines(logged) + Lines{" OUT : GetMonitorState(" + result + ") "};
    }
    Lines WithoutKeys() const { return LinesWithout({"CQanhKeyEmulate::Sendinput_Key"}, m_log.Lines()); }
    void ExpectNothingPressed() const
    {
        EXPECT_THAT(m_keys, IsEmpty());
        EXPECT_THAT(m_sleep.Calls(), IsEmpty());
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

    int m_panePolls = 0;      // how often the foreground window was asked for
    int m_paneComesAt = 1;    // at which of them the search pane is in front; 0 for never
    std::vector<WORD> m_keys; // virtual keys sent, downs and ups
    FakeSleep m_sleep;
    const CapturingPatch<decltype(&SendInput)> m_send{"SendInput", [this](UINT, INPUT* input, int) {
                                                          m_keys.push_back(input->ki.wVk);
                                                          return 1;
                                                      }};
    const CapturingPatch<decltype(&GetForegroundWindow)> m_foreground{"GetForegroundWindow", [this] {
                                                                          ++m_panePolls;
                                                                          return reinterpret_cast<HWND>(
                                                                              static_cast<INT_PTR>(0x77));
                                                                      }};
    const CapturingPatch<decltype(&GetClassNameW)> m_className{
        "GetClassNameW", [this](HWND, wchar_t* name, int) {
            lstrcpyW(name, m_panePolls == m_paneComesAt ? L"SearchPane" : L"Shell_TrayWnd");
            return lstrlenW(name);
        }};
    LogCapture m_log;
};

using Pause = std::pair<DWORD, int>;

TEST_F(StartScreen, SwitchDoesNothingWhenItShows)
{
    ExpectSwitch(0, {kStart}, Poll(1));
    ExpectNothingPressed();
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyAndPollsUntilItShows)
{
    ExpectSwitch(0, {kDesktop, kDesktop, kStoreApp, kStart},
                 Poll(0) + kWindowsKeyLines + Poll(0) + Poll(2) + Poll(1));
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 3)));
}

TEST_F(StartScreen, SwitchGivesUpAfterTwentyPollsWithoutFailing)
{
    Lines polls;
    for (int poll = 0; poll < 20; ++poll) {
        polls = polls + Poll(0);
    }
    ExpectSwitch(0, {kDesktop}, Poll(0) + kWindowsKeyLines + polls);
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 20)));
    EXPECT_EQ(m_visibility.looks, 21u);
}

TEST_F(StartScreen, SwitchSeesItAtTheTwentiethPoll)
{
    m_visibility.states = std::vector<FakeVisibility::State>(20, kDesktop);
    m_visibility.states.push_back(kStart);
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_EQ(m_visibility.looks, 21u);
    EXPECT_EQ(m_log.Lines()[m_log.Lines().size() - 2], "dwMode = 1 ");
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyInAnUnknownState)
{
    ExpectSwitch(0, {kUnknown, kStart}, Poll(-1) + kWindowsKeyLines + Poll(1));
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, VK_LWIN));
}

TEST_F(StartScreen, SwitchPollsOnWhenALookFails)
{
    // Which leaves the mode as it was.
    ExpectSwitch(0, {kStoreApp, kLauncherError, kMonitorError, kStart},
                 Poll(2) + kWindowsKeyLines + LookLines(kNoLauncher) + Lines{"dwMode = 2 "} +
                     LookLines(kNoMonitor) + Lines{"dwMode = 2 "} + Poll(1));
}

TEST_F(StartScreen, SwitchWithoutTheObjectReturnsMinusOneAndPressesNothing)
{
    Unready();
    ExpectSwitch(-1, {kStart}, FailedLook(kNoObject, "-1"));
    ExpectNothingPressed();
}

TEST_F(StartScreen, SwitchReturnsMinusTwoWhenTheFirstLookFails)
{
    ExpectSwitch(-2, {kLauncherError, kStart}, FailedLook(kNoLauncher, "-2"));
    ExpectNothingPressed();
}

TEST_F(StartScreen, SearchPaneOpensWithWindowsQOnly)
{
    ExpectOpen(S_OK, {kStart}, "0x00000000", Look(1) + kWindowsQLines);
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 100u, 200u, 100u, 200u));
    EXPECT_EQ(m_panePolls, 1);
}

TEST_F(StartScreen, SearchPaneNeedsTheStartScreenFirst)
{
    ExpectOpen(S_OK, {kDesktop, kDesktop, kStart}, "0x00000000",
               Look(0) + SwitchLines(Poll(0) + kWindowsKeyLines + Poll(1)) + kWindowsQLines);
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 100u, 50u, 50u, 100u, 200u, 100u, 200u));
}

TEST_F(StartScreen, SearchPaneIsAskedForAlsoWhenTheStartScreenNeverShows)
{
    m_visibility.states = {kStoreApp};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_EQ(m_visibility.looks, 22u);
}

TEST_F(StartScreen, SearchPaneNeedsTheWindowsKeyInAnUnknownState)
{
    m_visibility.states = {kUnknown, kUnknown, kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(m_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
}

TEST_F(StartScreen, SearchPaneIsPolledForUntilItIsInFrontTwoHundredTimesAtMost)
{
    for (const auto& [comesAt, polls] : {std::pair(7, 7), std::pair(0, 200)}) {
        const std::size_t before = Pauses().size();
        m_panePolls = 0;
        m_paneComesAt = comesAt;
        m_log.Clear();
        ExpectOpen(S_OK, {kStart}, "0x00000000", Look(1) + kWindowsQLines);
        EXPECT_EQ(m_panePolls, polls);
        const std::vector<Pause> pauses = Pauses();
        EXPECT_THAT(
            std::vector<Pause>(pauses.begin() + static_cast<std::ptrdiff_t>(before), pauses.end()),
            ElementsAre(Pause(50, 2), Pause(100, 1), Pause(200, 1), Pause(100, polls), Pause(200, 1)));
    }
}

TEST_F(StartScreen, SearchPaneFailsWithoutTheObject)
{
    Unready();
    ExpectOpen(E_FAIL, {kStart}, "GetMonitorState : ret=0x80004005", LookLines(kNoObject));
    ExpectNothingPressed();
}

TEST_F(StartScreen, SearchPaneFailsWhenTheStateCannotBeRead)
{
    ExpectOpen(E_FAIL, {kMonitorError}, "GetMonitorState : ret=0x80004005", LookLines(kNoMonitor));
    ExpectNothingPressed();
}

TEST_F(StartScreen, SearchPaneFailsWhenTheSwitchFails)
{
    ExpectOpen(E_FAIL, {kDesktop, kLauncherError}, "OpenAppSearchUI : ret=0xFFFFFFFE",
               Look(0) + SwitchLines(FailedLook(kNoLauncher, "-2"), -2));
    ExpectNothingPressed();
    EXPECT_EQ(m_panePolls, 0);
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

class SearchPaneClass : public ::testing::TestWithParam<std::pair<std::wstring, BOOL>>
{
};

TEST_P(SearchPaneClass, IsComparedWholeAndToTheLetter)
{
    const ForegroundWindow window(GetParam().first.c_str());
    ASSERT_TRUE(window.IsInFront());
    const LogCapture log;
    EXPECT_EQ(CQanhMonitorMode::IsSearchPaneForeground(), GetParam().second);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, SearchPaneClass,
                         ::testing::Values(std::pair(L"SearchPane", TRUE), std::pair(L"searchpane", FALSE),
                                           std::pair(L"SEARCHPANE", FALSE), std::pair(L"SearchPaneX", FALSE),
                                           std::pair(L"SearchPan", FALSE), std::pair(L" SearchPane", FALSE),
                                           std::pair(L"\u30e1\u30fc\u30eb", FALSE),
                                           std::pair(std::wstring(255, L'S'), FALSE)));

TEST(SearchPane, NoForegroundWindowAndOneThatIsGoneAreNotThePane)
{
    for (const INT_PTR window : {INT_PTR{0}, INT_PTR{0x7ffffffe}}) {
        const CapturingPatch<decltype(&GetForegroundWindow)> patch("GetForegroundWindow",
                                                                   Answer(reinterpret_cast<HWND>(window)));
        EXPECT_EQ(CQanhMonitorMode::IsSearchPaneForeground(), FALSE);
    }
}

} // namespace
