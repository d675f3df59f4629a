#pragma once

#include "QanHelper.h"
#include "api/Statics.h"
#include "common/DiagnosticLog.h"
#include "standin/ModulePath.h"
#include "support/FakeShell.h"
#include "support/HostExecutable.h"
#include "support/Registry.h"
#include "support/Test.h"

namespace api_test {

using namespace test;
constexpr DWORD kThreadPatience = 20000; // milliseconds; only a failing test waits for them

// In place of the refresh thread: runs until it is told to stop, and writes nothing into the log meanwhile.
inline DWORD WINAPI WaitForExit(void* manager)
{
    WaitForSingleObject(static_cast<CQanhPackageManager*>(manager)->m_hExitEvent, kThreadPatience);
    return 0;
}

inline HANDLE WINAPI StartWaiting(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE,
                                  void* argument, DWORD flags, DWORD* id)
{
    static const auto s_createThread =
        standin::FunctionOf<decltype(&CreateThread)>(GetModuleHandleW(L"kernel32.dll"), "CreateThread");
    return s_createThread(security, stack, WaitForExit, argument, flags, id);
}

// A host of a name that no other test uses: "QanHelper_" and this is the name of its instance mutex.
inline std::wstring NewHostName()
{
    static int s_count = 0;
    return L"Launcher" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++s_count);
}

// The lines of the exports, the settings and the two static objects; what the package manager writes besides
// is its own business.
inline Lines Outline(const Lines& all)
{
    return LinesWith({"Qanh", "CQanhReg::", "CQanhMonitorMode::", "CQanhPackageManager::Initialize IN",
                      "CQanhPackageManager::Initialize OUT", "CQanhPackageManager::Finalize "},
                     all);
}

// What the reading of the setting writes, when the log is on already and stays so.
inline const Lines kSettingLines =
    Call("CQanhReg::IsDebugLogOn", "(1)", Call("CQanhReg::GetDWORDRegVal", "(1)"));

// The library is down: nothing is left of a start, or of what was started.
inline void ExpectDown()
{
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, nullptr);
    EXPECT_EQ(s_PackageManager.m_hExitEvent, nullptr);
    EXPECT_EQ(s_PackageManager.m_hRefreshThread, nullptr);
    EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
}

// A host with a folder of its own, in a session without a shell; "DebugLog" is 1, and the log is off yet.
class Lifecycle : public ::testing::Test
{
protected:
    Lifecycle()
    {
        m_settings.SetDword(L"DebugLog", 1);
        DiagnosticLog::SetEnabled(false);
    }
    ~Lifecycle() override
    {
        TakeDown();
        s_PackageManager.m_AppNameList.Clear();
        DiagnosticLog::SetEnabled(false);
    }

    static void TakeDown()
    {
        while (s_nCount > 0) {
            QanhFinalize();
        }
    }

    [[nodiscard]] std::wstring MutexName() const { return L"QanHelper_" + m_hostName; }

    const std::wstring m_hostName = NewHostName();
    ScopedKey m_settings{HKEY_LOCAL_MACHINE, kSettingsKey};
    NoShell m_noShell;
    TemporaryFolder m_folder;
    HostExecutable m_host{m_folder / (m_hostName + L".exe")};
    LogCapture m_log;
    FakeSleep m_sleep; // finalizing does not wait for the first refresh pass then
    ImportPatch<decltype(&CreateThread)> m_createThread{"CreateThread", StartWaiting};
};

// The same with a shell, whose object must be given back.
class LifecycleInShell : public Lifecycle
{
protected:
    ~LifecycleInShell() override { TakeDown(); }

    // It has been started so often, and is not down.
    void ExpectUp(int count) const
    {
        EXPECT_EQ(s_nCount, count);
        EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, m_shell.visibility);
        EXPECT_NE(s_PackageManager.m_hExitEvent, nullptr);
        EXPECT_NE(s_PackageManager.m_hRefreshThread, nullptr);
    }
    void ExpectDown() const
    {
        api_test::ExpectDown();
        EXPECT_EQ(m_shell.visibility->References(), 0);
    }
    // The outline of a start whose package manager has this result, up to there.
    static Lines StartLines(const std::string& result)
    {
        return Call("CQanhMonitorMode::Initialize", "(0)") +
               Call("CQanhPackageManager::Initialize", "(" + result + ")");
    }

    FakeShell m_shell;
};

} // namespace api_test
