#include "unit/launch/MonitorMode.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>

namespace {

using namespace monitor_mode_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
        EXPECT_THAT(Journal(), ElementsAre("CoCreateInstance"));
        EXPECT_EQ(m_mode.m_pImmersiveMode, &m_visibility);
        EXPECT_THAT(log.Lines(),
                    ElementsAre("CQanhMonitorMode::Initialize IN", "CQanhMonitorMode::Initialize OUT(0)"));
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        m_mode.Finalize();
        EXPECT_FALSE(HasApartment());
    });
}

TEST_F(MonitorMode, InitializeAsksForASingleThreadedApartmentWithoutFurtherFlags)
{
    const test::ImportPatch<decltype(&CoInitializeEx)> patch(
        "CoInitializeEx", [](void* reserved, DWORD flags) {
            Note("CoInitializeEx " + std::to_string(flags) + (reserved ? " reserved" : ""));
            return E_OUTOFMEMORY;
        });
    EXPECT_EQ(m_mode.Initialize(), E_OUTOFMEMORY);
    EXPECT_THAT(Journal(), ElementsAre("CoInitializeEx 2"));
}

TEST_F(MonitorMode, InitializeReturnsTheResultOfTheCreation)
{
    OnAThread([&] {
        const test::LogCapture log;
        m_shell.createResult = S_FALSE;
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
        m_visibility.Release(); // the first one is lost: the library initializes only what is down
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
        EXPECT_THAT(Journal(), IsEmpty());
        EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
        EXPECT_THAT(log.Lines(),
                    ElementsAre("CQanhMonitorMode::Initialize IN",
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
        m_shell.createResult = REGDB_E_CLASSNOTREG;
        EXPECT_EQ(m_mode.Initialize(), REGDB_E_CLASSNOTREG);
        // The call left something behind all the same.
        EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
        EXPECT_FALSE(HasApartment());
        EXPECT_THAT(log.Lines(),
                    ElementsAre("CQanhMonitorMode::Initialize IN",
                                "CQanhMonitorMode::Initialize OUT CoCreateInstance:(-2147221164)"));
    });
}

TEST_F(MonitorMode, FinalizeReleasesTheObjectBeforeItLeavesTheApartment)
{
    const test::ImportPatch<decltype(&CoUninitialize)> patch("CoUninitialize",
                                                             [] { Note("CoUninitialize"); });
    const test::LogCapture log;
    Ready();
    m_mode.Finalize();
    EXPECT_THAT(Journal(), ElementsAre("Release", "CoUninitialize"));
    EXPECT_EQ(m_visibility.References(), 0);
    EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::Finalize IN", "CQanhMonitorMode::Finalize OUT"));
}

TEST_F(MonitorMode, FinalizeLeavesTheApartmentWithoutAnObjectToo)
{
    const test::ImportPatch<decltype(&CoUninitialize)> patch("CoUninitialize",
                                                             [] { Note("CoUninitialize"); });
    const test::LogCapture log;
    m_mode.Finalize();
    EXPECT_THAT(Journal(), ElementsAre("CoUninitialize"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::Finalize IN", "CQanhMonitorMode::Finalize OUT"));
}

TEST_F(MonitorMode, StateNeedsAPlaceForTheResult)
{
    const test::LogCapture log;
    Ready();
    EXPECT_EQ(m_mode.GetMonitorState(nullptr), -1);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                                         "CQanhMonitorMode::GetMonitorState OUT(-1)"));
}

TEST_F(MonitorMode, StateNeedsAPlaceForTheResultBeforeItNeedsTheObject)
{
    const test::LogCapture log;
    EXPECT_EQ(m_mode.GetMonitorState(nullptr), -1);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                                         "CQanhMonitorMode::GetMonitorState OUT(-1)"));
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
    m_visibility.states = {{TRUE, MAV_NO_APP_VISIBLE, E_ACCESSDENIED, S_OK}};
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), -2);
    EXPECT_EQ(state, 7);
    EXPECT_THAT(Journal(), ElementsAre("IsLauncherVisible"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                                         "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err "));
}

TEST_F(MonitorMode, StateFailsWhenTheMonitorCannotBeAskedFor)
{
    const test::LogCapture log;
    Ready();
    m_visibility.states = {{TRUE, MAV_NO_APP_VISIBLE, S_OK, E_ACCESSDENIED}};
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), -2);
    EXPECT_EQ(state, 7);
    EXPECT_THAT(Journal(), ElementsAre("IsLauncherVisible", "GetAppVisibilityOnMonitor"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                                         "CQanhMonitorMode::GetMonitorState OUT(-2) MonitorFromPoint(4660)"));
}

TEST_F(MonitorMode, StateIsThatOfThePrimaryMonitor)
{
    Ready();
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), 0);
    EXPECT_THAT(Journal(), ElementsAre("IsLauncherVisible", "GetAppVisibilityOnMonitor"));
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
    m_visibility.states = {{GetParam().isLauncherVisible, GetParam().visibility}};
    int state = 7;
    EXPECT_EQ(m_mode.GetMonitorState(&state), 0);
    EXPECT_EQ(state, GetParam().mode);
    const std::string mode = GetParam().mode == -1 ? "" : std::to_string(GetParam().mode);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMonitorMode::GetMonitorState IN",
                                         "CQanhMonitorMode::GetMonitorState OUT(0) dwMode(" + mode + ")"));
}

INSTANTIATE_TEST_SUITE_P(LauncherVisible, MonitorState,
                         ::testing::Values(StateRow{TRUE, 1, 1}, StateRow{TRUE, 2, 1}, StateRow{TRUE, 0, -1},
                                           StateRow{TRUE, 3, 2}, StateRow{TRUE, -1, 2},
                                           StateRow{TRUE, 0x10001, 2}, StateRow{-1, 1, 1},
                                           StateRow{2, 2, 1}));
INSTANTIATE_TEST_SUITE_P(LauncherHidden, MonitorState,
                         ::testing::Values(StateRow{FALSE, 1, 0}, StateRow{FALSE, 2, 2},
                                           StateRow{FALSE, 0, -1}, StateRow{FALSE, 3, 2},
                                           StateRow{FALSE, -1, 2}, StateRow{FALSE, 0x10001, 2}));

} // namespace
