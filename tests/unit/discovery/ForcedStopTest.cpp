// How the package manager stops when its thread does not.

#include "unit/discovery/Stop.h"

namespace {

using namespace discovery_test;

// A thread that is not the refresh thread, and does not stop.
class StopOfAStubbornThread : public PackageManagerStop
{
protected:
    StopOfAStubbornThread()
    {
        m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        // A thread that is terminated on its way in or out would take locks of the system with it.
        const UniqueHandle sleeps(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        m_manager.m_hRefreshThread = CreateThread(
            nullptr, 0,
            [](void* event) -> DWORD {
                SetEvent(event);
                return SleepEx(INFINITE, FALSE);
            },
            sleeps.Get(), 0, nullptr);
        LetThreadRun();
        m_wait.Original(sleeps.Get(), 20000);
        SleepEx(20, FALSE);
        m_stubborn = m_manager.m_hRefreshThread;
        m_event = Duplicate(m_manager.m_hExitEvent);
        m_thread = Duplicate(m_stubborn);
        m_onOtherWait = [this](HANDLE handle, DWORD milliseconds) -> std::optional<DWORD> {
            if (handle != m_stubborn) {
                return std::nullopt;
            }
            m_threadWaits.push_back(milliseconds);
            m_wasSignalled = m_wasSignalled && IsEventSignalled();
            return milliseconds == 30000 ? m_answer : std::nullopt;
        };
    }
    ~StopOfAStubbornThread() override { m_terminate.Original(m_thread.Get(), 0); }

    HANDLE m_stubborn;
    std::vector<std::pair<HANDLE, DWORD>> m_terminated;
    std::vector<DWORD> m_threadWaits;
    bool m_wasSignalled = true;
    std::optional<DWORD> m_answer = WAIT_TIMEOUT; // of the long wait
    CapturingPatch<decltype(&TerminateThread)> m_terminate{"TerminateThread",
                                                           [this](HANDLE thread, DWORD exitCode) {
                                                               m_terminated.emplace_back(thread, exitCode);
                                                               return m_terminate.Original(thread, exitCode);
                                                           }};
};

TEST_F(StopOfAStubbornThread, IsTerminatedAfterThirtySeconds)
{
    m_manager.Finalize();
    EXPECT_THAT(m_terminated, ElementsAre(std::pair(m_stubborn, DWORD{0})));
    ASSERT_FALSE(m_threadWaits.empty());
    EXPECT_EQ(m_threadWaits[0], 30000u);
    EXPECT_TRUE(m_wasSignalled);
    EXPECT_EQ(ThreadExitCode(), 0u);
    EXPECT_TRUE(IsEventSignalled());
    ExpectNothingHeld();
    EXPECT_EQ(m_log.Lines(), FinalizeLines(Call("CQanhPackageManager::WaitThreadExit")));
}

TEST_F(StopOfAStubbornThread, LeavesACatalogThatCanBeUsed)
{
    ASSERT_EQ(m_manager.m_AppNameList.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    m_manager.Finalize();
    EXPECT_EQ(m_manager.m_AppNameList.AddDesktopApp(L"b", L"C:\\b.lnk"), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), Contains(L"C:\\b.lnk"));
}

TEST_F(StopOfAStubbornThread, IsNotTerminatedWhenTheWaitFails)
{
    m_answer = WAIT_FAILED;
    m_manager.Finalize();
    EXPECT_THAT(m_terminated, IsEmpty());
    EXPECT_THAT(m_threadWaits, ElementsAre(30000u));
    ExpectNothingHeld();
    EXPECT_EQ(m_log.Lines(), FinalizeLines());
}

TEST_F(StopOfAStubbornThread, ClosesEveryHandleOnce)
{
    DiagnosticLog::SetEnabled(false);
    const HANDLE event = m_manager.m_hExitEvent;
    const ClosedHandles closed;
    m_manager.Finalize();
    EXPECT_THAT(closed.Get(), ElementsAre(m_stubborn, event));
}

// What WaitThreadExit asks for, with answers of the test's.
class ThreadExit : public Pass
{
protected:
    ThreadExit()
    {
        m_onOtherWait = [this](HANDLE handle, DWORD milliseconds) -> std::optional<DWORD> {
            if (handle != kThread) {
                return std::nullopt;
            }
            m_steps.push_back(L"wait " + std::to_wstring(milliseconds));
            return m_rounds >= m_signalledRound ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
        };
    }

    // So many whole rounds, and this much of one more.
    static std::vector<std::wstring> Rounds(int count, const std::vector<std::wstring>& more)
    {
        std::vector<std::wstring> steps;
        for (int round = 0; round < count; ++round) {
            steps.insert(steps.end(), {L"exit code", L"wait 100", L"sleep 1"});
        }
        steps.insert(steps.end(), more.begin(), more.end());
        return steps;
    }

    static inline HANDLE const kThread = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(0x7654));
    int m_rounds = 0;
    int m_activeRounds = 1000;   // how often the thread is still active
    int m_signalledRound = 1000; // when its handle is signalled
    const FakeSleep m_sleep{
        [this](DWORD milliseconds) { m_steps.push_back(L"sleep " + std::to_wstring(milliseconds)); }};
    const CapturingPatch<decltype(&GetExitCodeThread)> m_exitCode{
        "GetExitCodeThread", [this](HANDLE thread, DWORD* exitCode) {
            EXPECT_EQ(thread, kThread);
            m_steps.push_back(L"exit code");
            *exitCode = ++m_rounds > m_activeRounds ? 5 : STILL_ACTIVE;
            return TRUE;
        }};
};

TEST_F(ThreadExit, IsWaitedForInThirtyTwoRounds)
{
    CQanhPackageManager::WaitThreadExit(kThread);
    EXPECT_EQ(m_steps, Rounds(32, {}));
    EXPECT_EQ(m_log.Lines(), Call("CQanhPackageManager::WaitThreadExit"));
}

TEST_F(ThreadExit, IsNotWaitedForOnceItHasAnExitCode)
{
    for (const int activeRounds : {0, 2}) {
        m_steps.clear();
        m_rounds = 0;
        m_activeRounds = activeRounds;
        CQanhPackageManager::WaitThreadExit(kThread);
        EXPECT_EQ(m_steps, Rounds(activeRounds, {L"exit code"}));
    }
}

TEST_F(ThreadExit, IsNotWaitedForOnceItsHandleIsSignalled)
{
    // A thread may end with the very code that means that it is active.
    m_signalledRound = 3;
    CQanhPackageManager::WaitThreadExit(kThread);
    EXPECT_EQ(m_steps, Rounds(2, {L"exit code", L"wait 100"}));
}

} // namespace
