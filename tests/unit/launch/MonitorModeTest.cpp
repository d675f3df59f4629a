#include "launch/MonitorMode.h"

#include "support/ImportPatch.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Lines = std::vector<std::string>;

HMONITOR const kMonitor = reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(4660));

// The shell's object: answers as the test says, from a script that moves on with every look at the state.
class FakeVisibility : public IAppVisibility
{
public:
    struct State
    {
        BOOL isLauncherVisible;
        int visibility;
        HRESULT launcherResult = S_OK;
        HRESULT visibilityResult = S_OK;
    };

    // The states that the looks see, one after the other; the last one stays.
    std::vector<State> states{{FALSE, MAV_NO_APP_VISIBLE}};
    std::size_t looks = 0;
    LONG references = 1;
    Lines calls;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        calls.push_back("Release");
        return static_cast<ULONG>(--references);
    }
    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* isVisible) override
    {
        ++looks;
        calls.push_back("IsLauncherVisible");
        if (SUCCEEDED(Now().launcherResult)) {
            *isVisible = Now().isLauncherVisible;
        }
        return Now().launcherResult;
    }
    HRESULT STDMETHODCALLTYPE GetAppVisibilityOnMonitor(HMONITOR monitor, MONITOR_APP_VISIBILITY* mode) override
    {
        calls.push_back(monitor == kMonitor ? "GetAppVisibilityOnMonitor" : "another monitor");
        if (SUCCEEDED(Now().visibilityResult)) {
            *mode = static_cast<MONITOR_APP_VISIBILITY>(Now().visibility);
        }
        return Now().visibilityResult;
    }
    HRESULT STDMETHODCALLTYPE Advise(IAppVisibilityEvents*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }

private:
    const State& Now() const { return states[looks > states.size() ? states.size() - 1 : looks - 1]; }
};

FakeVisibility* g_object = nullptr;
HRESULT g_createResult = S_OK;
HRESULT g_comResult = S_OK;
Lines g_calls;
int g_panePolls = 0;     // how often the foreground window was asked for
int g_paneComesAt = 0;   // at which of them the search pane is in front; 0 for never
std::vector<WORD> g_keys; // virtual keys sent, downs and ups

constexpr GUID kClass = {0x7E5FE3D9, 0x985F, 0x4908, {0x91, 0xF9, 0xEE, 0x19, 0xF9, 0xFD, 0x15, 0x14}};
constexpr GUID kInterface = {0x2246EA2D, 0xCAEA, 0x4444, {0xA3, 0xC4, 0x6D, 0xE8, 0x27, 0xE4, 0x43, 0x13}};

HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId, void** object)
{
    const bool isAsked = IsEqualGUID(classId, kClass) && !outer && context == 1 && IsEqualGUID(interfaceId, kInterface);
    g_calls.push_back(isAsked ? "CoCreateInstance" : "CoCreateInstance of something else");
    *object = g_object;
    return g_createResult;
}

MONITORINFO* g_unused = nullptr;

HMONITOR WINAPI MonitorAt(POINT point, DWORD flags)
{
    const bool isPrimary = point.x == 0 && point.y == 0 && flags == 1;
    return isPrimary ? kMonitor : reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(1));
}

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

class MonitorMode : public ::testing::Test
{
protected:
    MonitorMode() : m_create("CoCreateInstance", Create), m_monitorAt("MonitorFromPoint", MonitorAt)
    {
        g_object = &m_object;
        g_createResult = S_OK;
        g_calls.clear();
    }

    // As after Initialize(), without an apartment: the object here needs none.
    void Ready() { m_mode.m_pImmersiveMode = &m_object; }

    test::ImportPatch<decltype(&CoCreateInstance)> m_create;
    test::ImportPatch<decltype(&MonitorFromPoint)> m_monitorAt;
    FakeVisibility m_object;
    CQanhMonitorMode m_mode;
};

// The thread's apartment: what a change to a multithreaded one answers.
bool HasApartment()
{
    const HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (SUCCEEDED(hr)) {
        CoUninitialize();
    }
    return hr != S_OK;
}

// Apartments belong to threads, so that each of these tests has one of its own.
template <typename Body> void OnAThread(Body body)
{
    std::thread(body).join();
}

TEST_F(MonitorMode, InitializeCreatesTheVisibilityObjectInASingleThreadedApartment)
{
    OnAThread([&] {
        const test::LogCapture log;
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        EXPECT_THAT(g_calls, ElementsAre("CoCreateInstance"));
        EXPECT_EQ(m_mode.m_pImmersiveMode, &m_object);
        EXPECT_THAT(log.Lines(),
                    ElementsAre("CQanhMonitorMode::Initialize IN", "CQanhMonitorMode::Initialize OUT(0)"));
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        m_mode.Finalize();
        EXPECT_FALSE(HasApartment());
    });
}

TEST_F(MonitorMode, InitializeAsksForASingleThreadedApartmentWithoutFurtherFlags)
{
    const test::ImportPatch<decltype(&CoInitializeEx)> patch("CoInitializeEx", [](void* reserved, DWORD flags) {
        g_calls.push_back("CoInitializeEx " + std::to_string(flags) + (reserved ? " reserved" : ""));
        return E_OUTOFMEMORY;
    });
    EXPECT_EQ(m_mode.Initialize(), E_OUTOFMEMORY);
    EXPECT_THAT(g_calls, ElementsAre("CoInitializeEx 2"));
}

TEST_F(MonitorMode, InitializeReturnsTheResultOfTheCreation)
{
    OnAThread([&] {
        const test::LogCapture log;
        g_createResult = S_FALSE;
        EXPECT_EQ(m_mode.Initialize(), S_FALSE);
        EXPECT_THAT(log.Lines(),
                    ElementsAre("CQanhMonitorMode::Initialize IN", "CQanhMonitorMode::Initialize OUT(1)"));
        m_mode.Finalize();
    });
}

TEST_F(MonitorMode, InitializeInAnApartmentThatIsThereAlreadySucceeds)
{
    OnAThread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        m_mode.Finalize();
        EXPECT_TRUE(HasApartment());
        CoUninitialize();
        EXPECT_FALSE(HasApartment());
    });
}

TEST_F(MonitorMode, TwoInitializeAndTwoFinalizeLeaveNoApartment)
{
    OnAThread([&] {
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        m_mode.Finalize();
        EXPECT_TRUE(HasApartment());
        m_mode.Finalize();
        EXPECT_FALSE(HasApartment());
    });
}

TEST_F(MonitorMode, InitializeFailsInAMultithreadedApartment)
{
    OnAThread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        const test::LogCapture log;
        EXPECT_EQ(m_mode.Initialize(), RPC_E_CHANGED_MODE);
        EXPECT_THAT(g_calls, IsEmpty());
        EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::Initialize IN",
                                             "CQanhMonitorMode::Initialize OUT CoInitializeEx:(-2147417850)"));
        CoUninitialize();
        // The failed start was not taken back: that would have cost the thread its own apartment earlier.
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        CoUninitialize();
    });
}

TEST_F(MonitorMode, AFailedStartDoesNotEndTheApartmentOfTheHost)
{
    OnAThread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(m_mode.Initialize(), RPC_E_CHANGED_MODE);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
        CoUninitialize();
    });
}

TEST_F(MonitorMode, AFailedCreationLeavesNoApartmentAndNoObject)
{
    OnAThread([&] {
        const test::LogCapture log;
        g_createResult = REGDB_E_CLASSNOTREG;
        EXPECT_EQ(m_mode.Initialize(), REGDB_E_CLASSNOTREG);
        // The call left something behind all the same.
        EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
        EXPECT_FALSE(HasApartment());
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::Initialize IN",
                                             "CQanhMonitorMode::Initialize OUT CoCreateInstance:(-2147221164)"));
    });
}

TEST_F(MonitorMode, FinalizeReleasesTheObjectBeforeItLeavesTheApartment)
{
    const test::ImportPatch<decltype(&CoUninitialize)> patch("CoUninitialize",
                                                             [] { g_object->calls.push_back("CoUninitialize"); });
    const test::LogCapture log;
    Ready();
    m_mode.Finalize();
    EXPECT_THAT(m_object.calls, ElementsAre("Release", "CoUninitialize"));
    EXPECT_EQ(m_object.references, 0);
    EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::Finalize IN", "CQanhMonitorMode::Finalize OUT"));
}

TEST_F(MonitorMode, FinalizeLeavesTheApartmentWithoutAnObjectToo)
{
    const test::ImportPatch<decltype(&CoUninitialize)> patch("CoUninitialize",
                                                             [] { g_object->calls.push_back("CoUninitialize"); });
    const test::LogCapture log;
    m_mode.Finalize();
    EXPECT_THAT(m_object.calls, ElementsAre("CoUninitialize"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::Finalize IN", "CQanhMonitorMode::Finalize OUT"));
}

TEST_F(MonitorMode, StateNeedsAPlaceForTheResult)
{
    const test::LogCapture log;
    Ready();
    EXPECT_EQ(m_mode.GetMonitorState(nullptr), -1);
    EXPECT_THAT(m_object.calls, IsEmpty());
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMonitorMode::GetMonitorState IN", "CQanhMonitorMode::GetMonitorState OUT(-1)"));
}

TEST_F(MonitorMode, StateNeedsAPlaceForTheResultBeforeItNeedsTheObject)
{
    const test::LogCapture log;
    EXPECT_EQ(m_mode.GetMonitorState(nullptr), -1);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMonitorMode::GetMonitorState IN", "CQanhMonitorMode::GetMonitorState OUT(-1)"));
}

TEST_F(MonitorMode, StateNeedsTheObject)
{
    const test::LogCapture log;
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), -1);
    EXPECT_EQ(state, 7);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)"));
}

TEST_F(MonitorMode, StateFailsWhenTheLauncherCannotBeAskedFor)
{
    const test::LogCapture log;
    Ready();
    m_object.states = {{TRUE, MAV_NO_APP_VISIBLE, E_ACCESSDENIED, S_OK}};
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), -2);
    EXPECT_EQ(state, 7);
    EXPECT_THAT(m_object.calls, ElementsAre("IsLauncherVisible"));
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err "));
}

TEST_F(MonitorMode, StateFailsWhenTheMonitorCannotBeAskedFor)
{
    const test::LogCapture log;
    Ready();
    m_object.states = {{TRUE, MAV_NO_APP_VISIBLE, S_OK, E_ACCESSDENIED}};
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), -2);
    EXPECT_EQ(state, 7);
    EXPECT_THAT(m_object.calls, ElementsAre("IsLauncherVisible", "GetAppVisibilityOnMonitor"));
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                            "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(4660)"));
}

TEST_F(MonitorMode, StateIsThatOfThePrimaryMonitor)
{
    Ready();
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), 0);
    EXPECT_THAT(m_object.calls, ElementsAre("IsLauncherVisible", "GetAppVisibilityOnMonitor"));
}

struct StateRow
{
    BOOL isLauncherVisible;
    int visibility;
    int mode;
};

class MonitorState : public MonitorMode, public ::testing::WithParamInterface<StateRow>
{
};

TEST_P(MonitorState, FollowsFromLauncherAndVisibility)
{
    const test::LogCapture log;
    Ready();
    m_object.states = {{GetParam().isLauncherVisible, GetParam().visibility}};
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), 0);
    EXPECT_EQ(state, GetParam().mode);
    const std::string mode = GetParam().mode == -1 ? "" : std::to_string(GetParam().mode);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                                         "CQanhMonitorMode::GetMonitorState OUT(0) dwMode(" + mode + ")"));
}

INSTANTIATE_TEST_SUITE_P(LauncherVisible, MonitorState,
                         ::testing::Values(StateRow{TRUE, 1, 1}, StateRow{TRUE, 2, 1}, StateRow{TRUE, 0, -1},
                                           StateRow{TRUE, 3, 2}, StateRow{TRUE, -1, 2}, StateRow{TRUE, 0x10001, 2},
                                           StateRow{-1, 1, 1}, StateRow{2, 2, 1}));
INSTANTIATE_TEST_SUITE_P(LauncherHidden, MonitorState,
                         ::testing::Values(StateRow{FALSE, 1, 0}, StateRow{FALSE, 2, 2}, StateRow{FALSE, 0, -1},
                                           StateRow{FALSE, 3, 2}, StateRow{FALSE, -1, 2},
                                           StateRow{FALSE, 0x10001, 2}));

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
    return {"CQanhMonitorMode::GetMonitorState IN",
            "CQanhMonitorMode::GetMonitorState OUT(0) dwMode(" + (mode == -1 ? "" : std::to_string(mode)) + ")"};
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
    m_object.states = {kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_sleep.Calls(), IsEmpty());
    EXPECT_EQ(m_log.Lines(), kSwitchIn + Look(1) + Lines{"dwMode = 1 "} + kSwitchOut);
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyAndPollsUntilItShows)
{
    m_object.states = {kDesktop, kDesktop, kStoreApp, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 3)));
    EXPECT_EQ(WithoutKeys(m_log.Lines()),
              kSwitchIn + Look(0) + Lines{"dwMode = 0 "} + kWindowsKeyLines + Look(0) + Lines{"dwMode = 0 "} +
                  Look(2) + Lines{"dwMode = 2 "} + Look(1) + Lines{"dwMode = 1 "} + kSwitchOut);
}

TEST_F(StartScreen, SwitchGivesUpAfterTwentyPollsWithoutFailing)
{
    m_object.states = {kDesktop};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 20)));
    EXPECT_EQ(m_object.looks, 21u);
    Lines expected = kSwitchIn + Look(0) + Lines{"dwMode = 0 "} + kWindowsKeyLines;
    for (int poll = 0; poll < 20; ++poll) {
        expected = expected + Look(0) + Lines{"dwMode = 0 "};
    }
    EXPECT_EQ(WithoutKeys(m_log.Lines()), expected + kSwitchOut);
}

TEST_F(StartScreen, SwitchSeesItAtTheTwentiethPoll)
{
    m_object.states = std::vector<FakeVisibility::State>(20, kDesktop);
    m_object.states.push_back(kStart);
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_EQ(m_object.looks, 21u);
    EXPECT_EQ(m_log.Lines()[m_log.Lines().size() - 2], "dwMode = 1 ");
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyInAStoreApp)
{
    m_object.states = {kStoreApp, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 1)));
}

TEST_F(StartScreen, SwitchPressesTheWindowsKeyInAnUnknownState)
{
    m_object.states = {kUnknown, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN));
    EXPECT_EQ(WithoutKeys(m_log.Lines()), kSwitchIn + Look(-1) + Lines{"dwMode = -1 "} + kWindowsKeyLines + Look(1) +
                                              Lines{"dwMode = 1 "} + kSwitchOut);
}

TEST_F(StartScreen, SwitchPollsOnWhenALookFails)
{
    m_object.states = {kStoreApp, kLauncherError, kMonitorError, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), 0);
    EXPECT_EQ(WithoutKeys(m_log.Lines()),
              kSwitchIn + Look(2) + Lines{"dwMode = 2 "} + kWindowsKeyLines +
                  Lines{"CQanhMonitorMode::GetMonitorState IN",
                        "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ", "dwMode = 2 ",
                        "CQanhMonitorMode::GetMonitorState IN",
                        "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(4660)", "dwMode = 2 "} +
                  Look(1) + Lines{"dwMode = 1 "} + kSwitchOut);
}

TEST_F(StartScreen, SwitchWithoutTheObjectReturnsMinusOneAndPressesNothing)
{
    m_mode.m_pImmersiveMode = nullptr;
    EXPECT_EQ(m_mode.SwitchToStartScreen(), -1);
    EXPECT_THAT(g_keys, IsEmpty());
    // The place of the operation's name stays empty in the third line.
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhMonitorMode::SwitchToStartScreen IN",
                                           "CQanhMonitorMode::GetMonitorState IN",
                                           "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)",
                                           " OUT : GetMonitorState(-1) ",
                                           "CQanhMonitorMode::SwitchToStartScreen OUT(-1)"));
}

TEST_F(StartScreen, SwitchReturnsMinusTwoWhenTheFirstLookFails)
{
    m_object.states = {kLauncherError, kStart};
    EXPECT_EQ(m_mode.SwitchToStartScreen(), -2);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhMonitorMode::SwitchToStartScreen IN",
                                           "CQanhMonitorMode::GetMonitorState IN",
                                           "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ",
                                           " OUT : GetMonitorState(-2) ",
                                           "CQanhMonitorMode::SwitchToStartScreen OUT(-2)"));
}

TEST_F(StartScreen, SearchPaneOpensWithWindowsQOnly)
{
    m_object.states = {kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 100u, 200u, 100u, 200u));
    EXPECT_EQ(g_panePolls, 1);
    EXPECT_EQ(WithoutKeys(m_log.Lines()), kOpenIn + Look(1) + kWindowsQLines + kOpenOut);
}

TEST_F(StartScreen, SearchPaneNeedsTheStartScreenFirst)
{
    m_object.states = {kDesktop, kDesktop, kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 100u, 50u, 50u, 100u, 200u, 100u, 200u));
    EXPECT_EQ(WithoutKeys(m_log.Lines()), kOpenIn + Look(0) + kSwitchIn + Look(0) + Lines{"dwMode = 0 "} +
                                              kWindowsKeyLines + Look(1) + Lines{"dwMode = 1 "} + kSwitchOut +
                                              kWindowsQLines + kOpenOut);
}

TEST_F(StartScreen, SearchPaneIsAskedForAlsoWhenTheStartScreenNeverShows)
{
    m_object.states = {kStoreApp};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
    EXPECT_EQ(m_object.looks, 22u);
}

TEST_F(StartScreen, SearchPaneNeedsTheWindowsKeyInAnUnknownState)
{
    m_object.states = {kUnknown, kUnknown, kStart};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_THAT(g_keys, ElementsAre(VK_LWIN, VK_LWIN, VK_LWIN, 'Q', 'Q', VK_LWIN));
}

TEST_F(StartScreen, SearchPaneIsPolledForUntilItIsInFront)
{
    m_object.states = {kStart};
    g_paneComesAt = 7;
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_EQ(g_panePolls, 7);
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 1), Pause(200, 1), Pause(100, 7), Pause(200, 1)));
}

TEST_F(StartScreen, SearchPaneThatNeverComesIsPolledForTwoHundredTimes)
{
    m_object.states = {kStart};
    g_paneComesAt = 0;
    EXPECT_EQ(m_mode.OpenAppSearchUI(), S_OK);
    EXPECT_EQ(g_panePolls, 200);
    EXPECT_THAT(Pauses(), ElementsAre(Pause(50, 2), Pause(100, 1), Pause(200, 1), Pause(100, 200), Pause(200, 1)));
    EXPECT_EQ(WithoutKeys(m_log.Lines()), kOpenIn + Look(1) + kWindowsQLines + kOpenOut);
}

TEST_F(StartScreen, SearchPaneFailsWithoutTheObject)
{
    m_mode.m_pImmersiveMode = nullptr;
    EXPECT_EQ(m_mode.OpenAppSearchUI(), E_FAIL);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhMonitorMode::OpenAppSearchUI IN",
                                           "CQanhMonitorMode::GetMonitorState IN",
                                           "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)",
                                           "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)"));
}

TEST_F(StartScreen, SearchPaneFailsWhenTheStateCannotBeRead)
{
    m_object.states = {kMonitorError};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), E_FAIL);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhMonitorMode::OpenAppSearchUI IN",
                                           "CQanhMonitorMode::GetMonitorState IN",
                                           "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(4660)",
                                           "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)"));
}

TEST_F(StartScreen, SearchPaneFailsWhenTheSwitchFails)
{
    m_object.states = {kDesktop, kLauncherError};
    EXPECT_EQ(m_mode.OpenAppSearchUI(), E_FAIL);
    EXPECT_THAT(g_keys, IsEmpty());
    EXPECT_EQ(g_panePolls, 0);
    EXPECT_EQ(m_log.Lines(),
              kOpenIn + Look(0) +
                  Lines{"CQanhMonitorMode::SwitchToStartScreen IN", "CQanhMonitorMode::GetMonitorState IN",
                        "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ",
                        " OUT : GetMonitorState(-2) ", "CQanhMonitorMode::SwitchToStartScreen OUT(-2)",
                        "CQanhMonitorMode::OpenAppSearchUI OUT(OpenAppSearchUI : ret=0xFFFFFFFE)"});
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
        m_window = CreateWindowExW(WS_EX_TOPMOST, className, L"SearchPane", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100,
                                   nullptr, nullptr, windowClass.hInstance, nullptr);
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
