// How the package manager stops.

#include "unit/discovery/Stop.h"

namespace {

using namespace discovery_test;

TEST_F(PackageManagerStop, BeforeAnyStartDoesNothing)
{
    m_manager.Finalize();
    EXPECT_EQ(m_log.Lines(), FinalizeLines());
    DiagnosticLog::SetEnabled(false);
    const ClosedHandles closed;
    m_manager.Finalize();
    EXPECT_THAT(closed.Get(), IsEmpty());
}

TEST_F(PackageManagerStop, OfAnotherProcessThanTheOwnerDoesNothing)
{
    WriteFileBytes(PresetFile(), "<Applications />");
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, MutexName().c_str()));
    ASSERT_EQ(m_manager.Initialize(), S_FALSE);
    m_log.Clear();
    const FakeSleep sleep;
    m_manager.Finalize();
    EXPECT_EQ(m_log.Lines(), FinalizeLines());
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    // The owner's mutex is none of its business.
    EXPECT_TRUE(MutexExists());
}

TEST_F(PackageManagerStop, LooksAHundredTimesForTheEndOfTheFirstPass)
{
    Start();
    int pauses = 0;
    const FakeSleep sleep([&](DWORD) {
        if (++pauses == 100) {
            LetThreadWait();
        }
    });
    const MutexLooks looks;
    m_manager.Finalize();
    EXPECT_EQ(sleep.Calls(), std::vector<DWORD>(100, 100));
    EXPECT_EQ(looks.Get().size(), 100u);
    looks.ExpectFor(MutexName());
    // No line tells that the looking was in vain; the thread finds the event signalled at its first wait.
    EXPECT_EQ(ThreadLines(), FinalizeLines(StartLines()));
    EXPECT_FALSE(Exists(CatalogFile()));
    EXPECT_THAT(m_steps, IsEmpty());
    ExpectStopped(true);
    ExpectNameZeroed();
}

TEST_F(PackageManagerStop, ClosesEveryHandleOnce)
{
    Start();
    DiagnosticLog::SetEnabled(false);
    std::vector<HANDLE> expected;
    std::vector<HANDLE> closed;
    {
        int pauses = 0;
        const FakeSleep sleep([&](DWORD) {
            if (++pauses == 100) {
                LetThreadWait();
            }
        });
        const MutexLooks looks;
        const ClosedHandles closedHandles;
        const HANDLE own[] = {CQanhPackageManager::m_hInstanceMutex, m_manager.m_hRefreshThread,
                              m_manager.m_hExitEvent};
        m_manager.Finalize();
        for (const MutexLooks::Look& look : looks.Get()) {
            expected.push_back(look.mutex);
        }
        expected.insert(expected.end(), std::begin(own), std::end(own));
        closed = closedHandles.Get();
    }
    EXPECT_EQ(expected.size(), 103u);
    EXPECT_EQ(closed, expected);
    ExpectNothingHeld();
}

TEST_F(PackageManagerStop, InRealTimeTheFirstPassIsWaitedForAndSaved)
{
    MakeFile(User() + L"\\A.lnk");
    Start();
    LetThreadWait();
    m_manager.Finalize();
    EXPECT_THAT(ReadFileBytes(CatalogFile()), HasSubstr("DisplayName=\"A\""));
    ExpectStopped(false);
    ExpectNameZeroed();
}

TEST_F(PackageManagerStop, AfterTheFirstPassLooksForNoMutex)
{
    PassUntilFinalize();
    Start();
    LetThreadRun();
    WaitForEndOfPass();
    m_log.Clear();
    const FakeSleep sleep;
    const MutexLooks looks;
    m_manager.Finalize();
    EXPECT_THAT(looks.Get(), IsEmpty());
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    EXPECT_EQ(m_log.Lines(), FinalizeLines(kPassesOut));
    ExpectStopped(false);
}

// The thread is held up at a step of its first pass until the third look at the mutex.
class StopDuringPass : public PackageManagerStop
{
protected:
    StopDuringPass() { PassUntilFinalize(); }

    void StopWhileAt(const std::wstring& step)
    {
        Start();
        m_onStart();
        m_onStep = [this, step](const std::wstring& reached) {
            if (reached == step) {
                SetEvent(m_reached.Get());
                m_wait.Original(m_goOn.Get(), 20000);
            }
        };
        LetThreadRun();
        ASSERT_TRUE(IsReached());
        int looks = 0;
        const FakeSleep sleep([&](DWORD) {
            if (++looks == 3) {
                SetEvent(m_goOn.Get());
                WaitForEndOfPass();
            }
        });
        m_manager.Finalize();
        EXPECT_THAT(sleep.Calls(), ElementsAre(100u, 100u, 100u));
    }

    const UniqueHandle m_goOn{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::function<void()> m_onStart = [] {};
};

TEST_F(StopDuringPass, LooksUntilTheThreadHasClosedTheMutex)
{
    StopWhileAt(L"save " + CatalogFile());
    EXPECT_TRUE(Exists(CatalogFile()));
    ExpectStopped(false);
    ExpectNameZeroed();
    EXPECT_EQ(ThreadLines(),
              StartLines() + kPassIn + kStore + WalksLines() + Lines{SaveLines()[0]} +
                  FinalizeLines(Lines{SaveLines()[1], "OpenMutex() : Mutex none. "} + kPassesOut));
}

TEST_F(StopDuringPass, DoesNotCutTheFirstPassShort)
{
    MakeFile(User() + L"\\A.lnk");
    StopWhileAt(L"search " + Common() + L"\\*.lnk");
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(User() + L"\\A.lnk"));
    EXPECT_TRUE(Exists(CatalogFile()));
}

TEST_F(StopDuringPass, DoesNotCloseTheMutexThatTheThreadHasClosed)
{
    DiagnosticLog::SetEnabled(false);
    HANDLE mutex = nullptr;
    m_onStart = [&] { mutex = CQanhPackageManager::m_hInstanceMutex; };
    const ClosedHandles closed;
    StopWhileAt(L"store");
    EXPECT_THAT(closed.Get(), Contains(mutex).Times(1));
    EXPECT_THAT(closed.Get(), Not(Contains(INVALID_HANDLE_VALUE)));
}

// The thread is in its second pass.

TEST_F(PackageManagerStop, InALaterPassTheThreadSkipsWhatIsLeft)
{
    m_passes = 1000; // only Finalize ends them
    int pass = 0;
    m_onStep = [&](const std::wstring& step) {
        if (step == L"store" && ++pass == 2) {
            WaitForFinalize();
        }
    };
    Start();
    LetThreadRun();
    ASSERT_TRUE(IsReached());
    const FakeSleep sleep;
    m_manager.Finalize();
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    EXPECT_EQ(ThreadExitCode(), 0u);
    EXPECT_EQ(pass, 2);
    EXPECT_THAT(m_steps, Contains(L"save " + CatalogFile()).Times(1));
    ExpectNothingHeld();
}

// Each look for a shortcut may take seconds, on a network share that is gone.
TEST_F(PackageManagerStop, AListOfSlowShortcutsIsNotLookedThroughToItsEnd)
{
    std::wstring xml = L"<Applications><DesktopApps>";
    for (int index = 0; index < 100; ++index) {
        xml += L"<DesktopApp DisplayName=\"x\" LnkFileName=\"C:\\" + std::to_wstring(index) +
               L".lnk\" NeedReserve=\"1\" />";
    }
    WriteFileBytes(CatalogFile(), ToUtf8(xml + L"</DesktopApps></Applications>"));
    m_passes = 1000; // only Finalize ends them
    int pass = 0;
    int looks = 0; // of the second pass
    m_onStep = [&](const std::wstring& step) {
        if (step == L"wait 180000") {
            ++pass;
        } else if (pass == 1 && step.starts_with(L"exists ") && ++looks == 3) {
            WaitForFinalize();
        }
    };
    Start();
    DiagnosticLog::SetEnabled(false);
    LetThreadRun();
    ASSERT_TRUE(IsReached());
    m_manager.Finalize();
    EXPECT_EQ(looks, 3);
    ExpectNothingHeld();
}

TEST_F(PackageManagerStop, WithoutAThreadTheEventIsSignalledAndClosed)
{
    m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    m_event = Duplicate(m_manager.m_hExitEvent);
    const FakeSleep sleep;
    m_manager.Finalize();
    EXPECT_TRUE(IsEventSignalled());
    EXPECT_EQ(m_log.Lines(), FinalizeLines());
    ExpectNothingHeld();
}

TEST_F(PackageManagerStop, WithoutAnEventTheMutexIsGivenBack)
{
    lstrcpyW(CQanhPackageManager::m_szInstanceMutexName, MutexName().c_str());
    CQanhPackageManager::m_hInstanceMutex = CreateMutexW(nullptr, FALSE, MutexName().c_str());
    const FakeSleep sleep;
    m_manager.Finalize();
    EXPECT_EQ(sleep.Calls().size(), 100u);
    EXPECT_EQ(m_log.Lines(), FinalizeLines());
    ExpectNameZeroed();
    ExpectNothingHeld();
}

TEST_F(PackageManagerStop, AFailedStartLeavesNothingToStop)
{
    m_threadError = ERROR_NOT_ENOUGH_MEMORY;
    ASSERT_EQ(m_manager.Initialize(), E_FAIL);
    const FakeSleep sleep;
    m_log.Clear();
    m_manager.Finalize();
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    EXPECT_EQ(m_log.Lines(), FinalizeLines());
    ExpectNothingHeld();
}

TEST_F(PackageManagerStop, AStartAfterwardsIsThatOfAnOwner)
{
    const FakeSleep sleep;
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(m_manager.Initialize(), S_OK);
        EXPECT_TRUE(MutexExists());
        m_exitEvent = m_manager.m_hExitEvent;
        m_waits = 0;
        LetThreadRun();
        m_manager.Finalize();
        ExpectNothingHeld();
        m_manager.Finalize();
    }
}

} // namespace
