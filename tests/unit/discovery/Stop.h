#pragma once

#include "common/DiagnosticLog.h"
#include "unit/discovery/Pass.h"

namespace discovery_test {

// What Finalize writes, around what the refresh thread writes meanwhile.
inline Lines FinalizeLines(const Lines& thread = {})
{
    return Call("CQanhPackageManager::Finalize", "", thread);
}

// A package manager that is stopped, in every state of its refresh thread.
class PackageManagerStop : public Pass
{
protected:
    // Starts as the owner, with the thread suspended and an empty log, and keeps handles of the test's own.
    void Start()
    {
        ASSERT_EQ(m_manager.Initialize(), S_OK);
        m_exitEvent = m_manager.m_hExitEvent;
        m_event = Duplicate(m_manager.m_hExitEvent);
        m_thread = Duplicate(m_manager.m_hRefreshThread);
        m_log.Clear();
        m_steps.clear();
    }

    // Lets the suspended thread run, with a real wait for its first second.
    void LetThreadWait()
    {
        m_exitEvent = nullptr;
        LetThreadRun();
    }

    DWORD ThreadExitCode() const
    {
        DWORD exitCode = 0;
        GetExitCodeThread(m_thread.Get(), &exitCode);
        return exitCode;
    }
    bool IsEventSignalled() const { return m_wait.Original(m_event.Get(), 0) == WAIT_OBJECT_0; }

    // Only Finalize ends the passes and the wait behind the first of them.
    void PassUntilFinalize()
    {
        m_passes = 1000;
        m_shortWaits = 1;
    }
    // The refresh thread is where the test wants it, and tells that by m_reached; only a failing test waits
    // for long.
    [[nodiscard]] bool IsReached() const { return m_wait.Original(m_reached.Get(), 20000) == WAIT_OBJECT_0; }
    // For the refresh thread in its second pass: tells that it is there, and goes on when Finalize wants its
    // end.
    void WaitForFinalize()
    {
        m_shortWaits = 0; // what follows needs the end of the second pass
        SetEvent(m_reached.Get());
        m_wait.Original(m_event.Get(), 20000);
    }
    // The thread has ended by itself, and all is given back.
    void ExpectStopped(bool isEventSignalled)
    {
        EXPECT_EQ(ThreadExitCode(), 0u);
        EXPECT_EQ(IsEventSignalled(), isEventSignalled);
        ExpectNothingHeld();
    }
    static void ExpectNameZeroed()
    {
        EXPECT_EQ(std::wstring(CQanhPackageManager::m_szInstanceMutexName, MAX_PATH),
                  std::wstring(MAX_PATH, L'\0'));
    }
    // Waits until the refresh thread has closed the mutex, which ends its pass.
    static void WaitForEndOfPass()
    {
        for (int wait = 0; wait < 10000 && InterlockedCompareExchangePointer(
                                               &CQanhPackageManager::m_hInstanceMutex, nullptr, nullptr);
             ++wait) {
            SleepEx(1, FALSE);
        }
    }

    UniqueHandle m_event;
    UniqueHandle m_reached{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    UniqueHandle m_thread;
};

} // namespace discovery_test
