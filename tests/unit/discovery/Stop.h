#pragma once

#include "unit/discovery/Pass.h"

#include <algorithm>

namespace discovery_test {

inline const Lines kFinalizeIn = {"CQanhPackageManager::Finalize IN"};
inline const Lines kFinalizeOut = {"CQanhPackageManager::Finalize OUT"};
inline const Lines kNoMutex = {"OpenMutex() : Mutex none. "};

// A package manager that is stopped, in every state of its refresh thread.
class PackageManagerStop : public Pass
{
public:
    // Lets the suspended thread run, with a real wait for its first second.
    void LetThreadWait()
    {
        m_exitEvent = nullptr;
        LetThreadRun();
    }

protected:
    PackageManagerStop() { s_stop = this; }
    ~PackageManagerStop() override
    {
        for (const HANDLE handle : {m_thread, m_event}) {
            if (handle) {
                CloseHandle(handle);
            }
        }
    }

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

    DWORD ThreadExitCode() const
    {
        DWORD exitCode = 0;
        GetExitCodeThread(m_thread, &exitCode);
        return exitCode;
    }
    bool IsEventSignalled() const { return m_wait.Original()(m_event, 0) == WAIT_OBJECT_0; }
    void ExpectNothingHeld() const
    {
        EXPECT_EQ(m_manager.m_hExitEvent, nullptr);
        EXPECT_EQ(m_manager.m_hRefreshThread, nullptr);
        EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
        EXPECT_FALSE(MutexExists());
    }
    static void ExpectNameZeroed()
    {
        EXPECT_TRUE(std::all_of(std::begin(CQanhPackageManager::m_szInstanceMutexName),
                                std::end(CQanhPackageManager::m_szInstanceMutexName),
                                [](wchar_t unit) { return unit == L'\0'; }));
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

    static inline PackageManagerStop* s_stop = nullptr;
    HANDLE m_event = nullptr;
    HANDLE m_thread = nullptr;
};

} // namespace discovery_test
