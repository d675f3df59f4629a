#include "unit/launch/MonitorMode.h"

namespace {

using namespace monitor_mode_test;

TEST_F(MonitorMode, InitializeCreatesTheVisibilityObjectInASingleThreadedApartment)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [&] {
        const LogCapture log;
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        EXPECT_THAT(Journal(), ElementsAre("CoCreateInstance"));
        EXPECT_EQ(m_mode.m_pImmersiveMode, &m_visibility);
        EXPECT_EQ(log.Lines(), Call("CQanhMonitorMode::Initialize", "(0)"));
        EXPECT_EQ(ApartmentOfThread(), Apartment::kSingleThreaded);
        m_mode.Finalize();
    }));
}

TEST_F(MonitorMode, InitializeAsksForASingleThreadedApartmentWithoutFurtherFlags)
{
    const CapturingPatch<decltype(&CoInitializeEx)> patch(
        "CoInitializeEx", [this](void* reserved, DWORD flags) {
            Journal().push_back("CoInitializeEx " + std::to_string(flags) + (reserved ? " reserved" : ""));
            return E_OUTOFMEMORY;
        });
    EXPECT_EQ(m_mode.Initialize(), E_OUTOFMEMORY);
    EXPECT_THAT(Journal(), ElementsAre("CoInitializeEx 2"));
}

TEST_F(MonitorMode, InitializeReturnsTheResultOfTheCreation)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [&] {
        const LogCapture log;
        m_shell.createResult = S_FALSE;
        EXPECT_EQ(m_mode.Initialize(), S_FALSE);
        EXPECT_EQ(log.Lines(), Call("CQanhMonitorMode::Initialize", "(1)"));
        m_mode.Finalize();
    }));
}

TEST_F(MonitorMode, InitializeInAnApartmentThatIsThereAlreadySucceeds)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kSingleThreaded, [&] {
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        m_mode.Finalize();
    }));
}

TEST_F(MonitorMode, TwoInitializeAndTwoFinalizeLeaveNoApartment)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [&] {
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        EXPECT_EQ(m_mode.Initialize(), S_OK);
        m_visibility.Release(); // the first one is lost: the library initializes only what is down
        m_mode.Finalize();
        EXPECT_EQ(ApartmentOfThread(), Apartment::kSingleThreaded);
        m_mode.Finalize();
    }));
}

TEST_F(MonitorMode, InitializeFailsInAMultithreadedApartment)
{
    // The failed start is not taken back: that would cost the thread its own apartment.
    EXPECT_TRUE(KeepsApartment(Apartment::kMultithreaded, [&] {
        const LogCapture log;
        EXPECT_EQ(m_mode.Initialize(), RPC_E_CHANGED_MODE);
        EXPECT_THAT(Journal(), IsEmpty());
        EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
        EXPECT_EQ(log.Lines(), Call("CQanhMonitorMode::Initialize", " CoInitializeEx:(-2147417850)"));
    }));
}

TEST_F(MonitorMode, AFailedCreationLeavesNoApartmentAndNoObject)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [&] {
        const LogCapture log;
        m_shell.createResult = REGDB_E_CLASSNOTREG;
        EXPECT_EQ(m_mode.Initialize(), REGDB_E_CLASSNOTREG);
        // The call left something behind all the same.
        EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
        EXPECT_EQ(log.Lines(), Call("CQanhMonitorMode::Initialize", " CoCreateInstance:(-2147221164)"));
    }));
}

TEST_F(MonitorMode, FinalizeReleasesTheObjectIfThereIsOneBeforeItLeavesTheApartment)
{
    const CapturingPatch<decltype(&CoUninitialize)> patch("CoUninitialize",
                                                          [this] { Journal().push_back("CoUninitialize"); });
    const LogCapture log;
    Ready();
    m_mode.Finalize();
    EXPECT_THAT(Journal(), ElementsAre("Release", "CoUninitialize"));
    EXPECT_EQ(m_visibility.References(), 0);
    EXPECT_EQ(m_mode.m_pImmersiveMode, nullptr);
    m_mode.Finalize();
    EXPECT_THAT(Journal(), ElementsAre("Release", "CoUninitialize", "CoUninitialize"));
    EXPECT_EQ(log.Lines(), Call("CQanhMonitorMode::Finalize") + Call("CQanhMonitorMode::Finalize"));
}

TEST_F(MonitorMode, StateNeedsAPlaceForTheResultBeforeItNeedsTheObject)
{
    const LogCapture log;
    EXPECT_EQ(m_mode.GetMonitorState(nullptr), -1);
    Ready();
    EXPECT_EQ(m_mode.GetMonitorState(nullptr), -1);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_EQ(log.Lines(), LookLines("(-1)") + LookLines("(-1)"));
}

// A look at the state.
class MonitorLook : public MonitorMode
{
protected:
    void ExpectLook(int result, int state, const std::string& logged)
    {
        const LogCapture log;
        int found = 7;
        EXPECT_EQ(m_mode.GetMonitorState(&found), result);
        EXPECT_EQ(found, state);
        EXPECT_EQ(log.Lines(), LookLines(logged));
    }
};

TEST_F(MonitorLook, NeedsTheObject)
{
    ExpectLook(-1, 7, "( m_pImmersiveMode NULL : -1)");
}

TEST_F(MonitorLook, FailsWhenTheLauncherCannotBeAskedFor)
{
    Ready();
    m_visibility.states = {{TRUE, MAV_NO_APP_VISIBLE, E_ACCESSDENIED, S_OK}};
    ExpectLook(-2, 7, "(-2) IsLauncherVisible Err ");
    EXPECT_THAT(Journal(), ElementsAre("IsLauncherVisible"));
}

TEST_F(MonitorLook, FailsWhenTheMonitorCannotBeAskedFor)
{
    Ready();
    m_visibility.states = {{TRUE, MAV_NO_APP_VISIBLE, S_OK, E_ACCESSDENIED}};
    ExpectLook(-2, 7, "(-2) MonitorFromPoint(4660)");
    EXPECT_THAT(Journal(), ElementsAre("IsLauncherVisible", "GetAppVisibilityOnMonitor"));
}

struct StateRow
{
    BOOL isLauncherVisible;
    int visibility;
    int mode;
};

class MonitorState : public MonitorLook, public ::testing::WithParamInterface<StateRow>
{
};

TEST_P(MonitorState, OfThePrimaryMonitorFollowsFromLauncherAndVisibility)
{
    Ready();
    m_visibility.states = {{GetParam().isLauncherVisible, GetParam().visibility}};
    const std::string mode = GetParam().mode == -1 ? "" : std::to_string(GetParam().mode);
    ExpectLook(0, GetParam().mode, "(0) dwMode(" + mode + ")");
    EXPECT_THAT(Journal(), ElementsAre("IsLauncherVisible", "GetAppVisibilityOnMonitor"));
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
