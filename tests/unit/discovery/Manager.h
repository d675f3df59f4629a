#pragma once

#include "common/UniqueHandle.h"
#include "discovery/PackageManager.h"
#include "support/HostExecutable.h"
#include "unit/discovery/Records.h"

#include <cwchar>
#include <mutex>
#include <tuple>

namespace discovery_test {

using namespace test;

// A handle of the test's own to the same object.
inline UniqueHandle Duplicate(HANDLE handle)
{
    UniqueHandle copy;
    DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), copy.Put(), 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    return copy;
}

// A catalogue file with these shortcuts.
inline std::string CatalogOf(std::initializer_list<std::wstring> shortcuts)
{
    std::wstring xml = L"<Applications><DesktopApps>";
    for (const std::wstring& shortcut : shortcuts) {
        xml += L"<DesktopApp DisplayName=\"x\" LnkFileName=\"" + shortcut + L"\" />";
    }
    return ToUtf8(xml + L"</DesktopApps></Applications>");
}

// A package manager in a host of its own: the executable, its preset file and its catalogue folder lie in
// temporary folders, and the instance mutex has a name that no other program uses. A refresh thread that
// Initialize starts stays suspended until LetThreadRun(), so that the log of a call has no lines of another
// thread.
class Manager : public ::testing::Test
{
protected:
    Manager() { std::wmemset(CQanhPackageManager::m_szInstanceMutexName, L'\0', MAX_PATH); }

    ~Manager() override
    {
        // What a test left running is stopped the short way.
        SetEvent(m_manager.m_hExitEvent);
        if (m_manager.m_hRefreshThread) {
            LetThreadRun();
            WaitForSingleObject(m_manager.m_hRefreshThread, 20000);
        }
        Close(m_manager.m_hRefreshThread);
        Close(m_manager.m_hExitEvent);
        Close(CQanhPackageManager::m_hInstanceMutex);
    }

    // When there is one.
    static void Close(HANDLE& handle)
    {
        if (handle) {
            CloseHandle(handle);
        }
        handle = nullptr;
    }

    void LetThreadRun() const { ResumeThread(m_manager.m_hRefreshThread); }

    static std::wstring BaseName() { return L"Launcher" + std::to_wstring(GetCurrentProcessId()); }
    static std::wstring MutexName() { return L"QanHelper_" + BaseName(); }
    static std::wstring EventName()
    {
        return L"Local\\PYX_Event_Exit_RefreshThread" + std::to_wstring(GetCurrentProcessId());
    }
    std::wstring CatalogFolder() const { return m_log.LocalAppData() + L"\\Vel\\QanHelper\\" + BaseName(); }
    std::wstring CatalogFile() const { return CatalogFolder() + L"\\AppNameList.xml"; }
    std::wstring PresetFile() const { return m_folder / L"PresetAppNameList.xml"; }

    static bool MutexExists()
    {
        return static_cast<bool>(UniqueHandle(OpenMutexW(SYNCHRONIZE, FALSE, MutexName().c_str())));
    }

    void ExpectNoHandles() const
    {
        EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
        EXPECT_EQ(m_manager.m_hExitEvent, nullptr);
        EXPECT_EQ(m_manager.m_hRefreshThread, nullptr);
    }
    // Another process of the executable can be the owner.
    void ExpectNothingHeld() const
    {
        ExpectNoHandles();
        EXPECT_FALSE(MutexExists());
    }

    // The lines of a log, as the operations write them. A path is printed as a narrow text: its first letter.
    static Lines ModuleNameLines() { return Call("CQanhPackageManager::GetModuleName", "(L)"); }
    // The folder is there already, or cannot be made for another reason.
    Lines FolderLines(int code = 183) const
    {
        return Call("CQanhPackageManager::CreateAppNameListFolder", FirstLetter(m_log.LocalAppData()),
                    {"CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (" +
                     std::to_string(code) + ")"});
    }
    Lines PresetLines() const
    {
        return Call("CQanhPackageManager::GetPresetAppNameFullPath", FirstLetter(m_folder.Path()));
    }
    static Lines LoadLines(const std::wstring& file, const std::string& result)
    {
        return Call("CQanhAppNameList::Load(" + ToUtf8(file) + ")", "(" + result + ")");
    }
    static std::string FirstLetter(const std::wstring& path)
    {
        return std::string("(") + static_cast<char>(path[0]) + ")";
    }

    // Security, stack, start, argument, and flags.
    using ThreadStart = std::tuple<SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD>;

    TemporaryFolder m_folder;
    HostExecutable m_host{m_folder / (BaseName() + L".x.exe")};
    LogCapture m_log;
    CQanhPackageManager m_manager;
    std::vector<ThreadStart> m_threadStarts;
    DWORD m_threadError = 0; // when not 0, no thread can be started

private:
    CapturingPatch<decltype(&CreateThread)> m_createThread{
        "CreateThread",
        [this](SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start, void* argument,
               DWORD flags, DWORD* id) -> HANDLE {
            m_threadStarts.emplace_back(security, stack, start, argument, flags);
            if (m_threadError != 0) {
                SetLastError(m_threadError);
                return nullptr;
            }
            return m_createThread.Original(security, stack, start, argument, flags | CREATE_SUSPENDED, id);
        }};
};

// Sees every handle that the library closes, until the end of the scope. A handle that is closed twice shows
// as one that could not be closed, or as two closings of one value: use it with the log off, whose file may
// get the value of a handle that is gone. One at a time.
class ClosedHandles
{
public:
    [[nodiscard]] std::vector<HANDLE> Get() const
    {
        const std::lock_guard lock(m_lock);
        return m_closed;
    }

private:
    mutable std::mutex m_lock;
    std::vector<HANDLE> m_closed;
    CapturingPatch<decltype(&CloseHandle), 1> m_patch{"CloseHandle", [this](HANDLE handle) -> BOOL {
                                                          const BOOL done = m_patch.Original(handle);
                                                          const std::lock_guard lock(m_lock);
                                                          m_closed.push_back(done ? handle
                                                                                  : INVALID_HANDLE_VALUE);
                                                          return done;
                                                      }};
};

// Sees every look at a named mutex, until the end of the scope. One at a time.
class MutexLooks
{
public:
    struct Look
    {
        DWORD access;
        BOOL inherit;
        std::wstring name;
        HANDLE mutex; // null when there was none
    };

    [[nodiscard]] const std::vector<Look>& Get() const { return m_looks; }

    // Every look was for the right to wait only, not inherited, and for the mutex of this name.
    void ExpectFor(const std::wstring& name) const
    {
        for (const Look& look : m_looks) {
            EXPECT_EQ(look.access, 0x00100000u);
            EXPECT_FALSE(look.inherit);
            EXPECT_EQ(look.name, name);
        }
    }

private:
    std::vector<Look> m_looks;
    CapturingPatch<decltype(&OpenMutexW)> m_patch{
        "OpenMutexW", [this](DWORD access, BOOL inherit, const wchar_t* name) -> HANDLE {
            const HANDLE mutex = m_patch.Original(access, inherit, name);
            const DWORD error = GetLastError();
            m_looks.push_back({access, inherit, name, mutex});
            SetLastError(error);
            return mutex;
        }};
};

} // namespace discovery_test
