#pragma once

#include "discovery/PackageManager.h"
#include "support/HostExecutable.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <mutex>
#include <string>
#include <vector>

namespace discovery_test {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

// A handle of the test's own to the same object.
inline HANDLE Duplicate(HANDLE handle)
{
    HANDLE copy = nullptr;
    DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return copy;
}

// A catalogue file with these shortcuts.
inline std::string CatalogOf(std::initializer_list<std::wstring> shortcuts)
{
    std::wstring xml = L"<Applications><DesktopApps>";
    for (const std::wstring& shortcut : shortcuts) {
        xml += L"<DesktopApp DisplayName=\"x\" LnkFileName=\"" + shortcut + L"\" />";
    }
    return test::ToUtf8(xml + L"</DesktopApps></Applications>");
}

// The paths of the catalogue's desktop applications, in its order.
inline std::vector<std::wstring> Shortcuts(const CQanhPackageManager& manager)
{
    std::vector<std::wstring> shortcuts;
    for (const WideString& shortcut : manager.m_AppNameList.DesktopShortcuts()) {
        shortcuts.emplace_back(shortcut.c_str());
    }
    return shortcuts;
}

// A package manager in a host of its own: the executable, its preset file and its catalogue folder lie in
// temporary folders, and the instance mutex has a name that no other program uses. A refresh thread that
// Initialize starts stays suspended until LetThreadRun(), so that the log of a call has no lines of another
// thread.
class Manager : public ::testing::Test
{
protected:
    Manager()
        : m_createThread(
              "CreateThread",
              [](SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start, void* argument,
                 DWORD flags, DWORD* id) -> HANDLE {
                  s_current->m_threadStarts.push_back({security, stack, start, argument, flags, id});
                  if (s_current->m_threadError != 0) {
                      SetLastError(s_current->m_threadError);
                      return nullptr;
                  }
                  return s_current->m_createThread.Original()(security, stack, start, argument,
                                                              flags | CREATE_SUSPENDED, id);
              })
    {
        s_current = this;
        std::wmemset(CQanhPackageManager::m_szInstanceMutexName, L'\0', MAX_PATH);
    }

    ~Manager() override
    {
        // What a test left running is stopped the short way.
        if (m_manager.m_hExitEvent) {
            SetEvent(m_manager.m_hExitEvent);
        }
        if (m_manager.m_hRefreshThread) {
            LetThreadRun();
            WaitForSingleObject(m_manager.m_hRefreshThread, 20000);
            CloseHandle(m_manager.m_hRefreshThread);
        }
        if (m_manager.m_hExitEvent) {
            CloseHandle(m_manager.m_hExitEvent);
        }
        m_manager.m_hRefreshThread = nullptr;
        m_manager.m_hExitEvent = nullptr;
        if (CQanhPackageManager::m_hInstanceMutex) {
            CloseHandle(CQanhPackageManager::m_hInstanceMutex);
            CQanhPackageManager::m_hInstanceMutex = nullptr;
        }
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
        const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, MutexName().c_str());
        if (mutex) {
            CloseHandle(mutex);
        }
        return mutex != nullptr;
    }

    // The lines of a log, as the operations write them. A path is printed as a narrow text: its first letter.
    Lines ModuleNameLines() const
    {
        return {"CQanhPackageManager::GetModuleName IN", "CQanhPackageManager::GetModuleName OUT(L)"};
    }
    Lines FolderLines() const
    {
        return {"CQanhPackageManager::CreateAppNameListFolder IN",
                "CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)",
                std::string("CQanhPackageManager::CreateAppNameListFolder OUT(") +
                    static_cast<char>(m_log.LocalAppData()[0]) + ")"};
    }
    Lines PresetLines() const
    {
        return {"CQanhPackageManager::GetPresetAppNameFullPath IN",
                std::string("CQanhPackageManager::GetPresetAppNameFullPath OUT(") +
                    static_cast<char>(m_folder.Path()[0]) + ")"};
    }
    static Lines LoadLines(const std::wstring& file, const std::string& result)
    {
        return {"CQanhAppNameList::Load(" + test::ToUtf8(file) + ") IN",
                "CQanhAppNameList::Load OUT(" + result + ")"};
    }

    struct ThreadStart
    {
        SECURITY_ATTRIBUTES* security;
        SIZE_T stack;
        LPTHREAD_START_ROUTINE start;
        void* argument;
        DWORD flags;
        DWORD* id;
    };

    test::TemporaryFolder m_folder;
    test::HostExecutable m_host{m_folder / (BaseName() + L".x.exe")};
    test::LogCapture m_log;
    CQanhPackageManager m_manager;
    std::vector<ThreadStart> m_threadStarts;
    DWORD m_threadError = 0; // when not 0, no thread can be started

private:
    static inline Manager* s_current = nullptr;
    test::ImportPatch<decltype(&CreateThread)> m_createThread;
};

// Sees every handle that the library closes, until the end of the scope. A handle that is closed twice shows
// as one that could not be closed, or as two closings of one value: use it with the log off, whose file may
// get the value of a handle that is gone. One at a time.
class ClosedHandles
{
public:
    ClosedHandles()
        : m_patch("CloseHandle", [](HANDLE handle) -> BOOL {
              const BOOL done = s_current->m_patch.Original()(handle);
              const std::lock_guard lock(s_current->m_lock);
              s_current->m_closed.push_back(done ? handle : INVALID_HANDLE_VALUE);
              return done;
          })
    {
        s_current = this;
    }

    [[nodiscard]] std::vector<HANDLE> Get() const
    {
        const std::lock_guard lock(m_lock);
        return m_closed;
    }

private:
    static inline ClosedHandles* s_current = nullptr;
    mutable std::mutex m_lock;
    test::ImportPatch<decltype(&CloseHandle)> m_patch;
    std::vector<HANDLE> m_closed;
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

    MutexLooks()
        : m_patch("OpenMutexW", [](DWORD access, BOOL inherit, const wchar_t* name) -> HANDLE {
              const HANDLE mutex = s_current->m_patch.Original()(access, inherit, name);
              const DWORD error = GetLastError();
              s_current->m_looks.push_back({access, inherit, name, mutex});
              SetLastError(error);
              return mutex;
          })
    {
        s_current = this;
    }

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
    static inline MutexLooks* s_current = nullptr;
    test::ImportPatch<decltype(&OpenMutexW)> m_patch;
    std::vector<Look> m_looks;
};

} // namespace discovery_test
