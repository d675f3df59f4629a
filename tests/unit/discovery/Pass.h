#pragma once

#include "support/FakePackages.h"
#include "support/Registry.h"
#include "unit/discovery/Manager.h"

#include <shlwapi.h>

#include <optional>

namespace discovery_test {

// A package manager whose refresh passes are watched and steered: what a pass asks of the platform is noted
// as one step each ("wait 1000", "family <name>", "exists <path>", "store", "search <pattern>", "save
// <path>", "wait <interval>"), and the exit event can be signalled at any of them. The long waits do not
// wait: the first one times out, and the interval ends with a signal after as many passes as the test wants.
class Pass : public Manager
{
protected:
    Pass()
        : m_wait("WaitForSingleObject",
                 [](HANDLE handle, DWORD milliseconds) -> DWORD {
                     return s_current->Wait(handle, milliseconds);
                 }),
          m_exists("PathFileExistsW",
                   [](const wchar_t* path) -> BOOL {
                       s_current->Step(L"exists " + std::wstring(path));
                       return s_current->m_exists.Original()(path);
                   }),
          m_search("FindFirstFileW",
                   [](const wchar_t* pattern, WIN32_FIND_DATAW* found) -> HANDLE {
                       s_current->Step(L"search " + std::wstring(pattern));
                       return s_current->m_search.Original()(pattern, found);
                   }),
          m_save("SHCreateStreamOnFileW", [](const wchar_t* path, DWORD mode, IStream** stream) -> HRESULT {
              // The same call opens files for reading.
              if (mode != STGM_READ) {
                  s_current->Step(L"save " + std::wstring(path));
              }
              return s_current->m_saveResult != S_OK ? s_current->m_saveResult
                                                     : s_current->m_save.Original()(path, mode, stream);
          })
    {
        s_current = this;
        m_store.objects.At("FindPackagesByUserSecurityId", [this] { Step(L"store"); });
        m_store.contents.onFamily = [this](const std::wstring& name) { Step(L"family " + name); };
        m_settings.SetDword(L"RefreshInterval", 3);
        test::MakeFolder(Common());
        test::MakeFolder(User());
    }
    ~Pass() override { EXPECT_THAT(m_store.objects.Leaks(), ::testing::IsEmpty()); }

    std::wstring Common() const { return m_folder / L"All\\Microsoft\\Windows\\Start Menu\\Programs"; }
    std::wstring User() const { return m_folder / L"Me\\Microsoft\\Windows\\Start Menu\\Programs"; }

    void Step(const std::wstring& step)
    {
        m_steps.push_back(step);
        if (step == m_exitAt) {
            SetEvent(m_manager.m_hExitEvent);
        }
        m_onStep(step);
    }

    DWORD Wait(HANDLE handle, DWORD milliseconds)
    {
        if (handle != m_exitEvent) {
            const std::optional<DWORD> answer = m_onOtherWait(handle, milliseconds);
            return answer ? *answer : m_wait.Original()(handle, milliseconds);
        }
        if (milliseconds == 0) {
            return m_wait.Original()(handle, milliseconds);
        }
        ++m_waits;
        Step(L"wait " + std::to_wstring(milliseconds));
        if (m_waitAnswer && m_waits > 1) {
            return *m_waitAnswer;
        }
        if (m_waits > m_passes) {
            SetEvent(handle);
        }
        return m_wait.Original()(handle, m_waits > m_shortWaits ? 20000 : 0);
    }

    static Lines WalkLines(const std::wstring& folder)
    {
        const std::string narrow = test::ToUtf8(folder);
        const std::string walk = "CQanhPackageManager::RefreshDesktopApps";
        const std::string add = "CQanhPackageManager::AddLinkFileToList";
        return {walk + "(" + narrow + ") IN",    add + "(" + narrow + ") IN",
                narrow + "\\*.lnk Errcode = 2 ", add + "(" + narrow + ") IN",
                narrow + "\\*.url Errcode = 2 ", walk + " OUT(0x00000000)"};
    }
    Lines StartLines() const
    {
        return Lines{"CQanhPackageManager::RefreshThread IN"} + FolderLines() +
               Lines{"CQanhReg::GetRefreshInterval IN", "CQanhReg::GetDWORDRegVal IN",
                     "CQanhReg::GetDWORDRegVal OUT(1)", "CQanhReg::GetRefreshInterval OUT(3)"};
    }
    Lines SaveLines() const
    {
        return {"CQanhAppNameList::Save(" + test::ToUtf8(CatalogFile()) + ") IN",
                "CQanhAppNameList::Save OUT(0x00000000)"};
    }
    // A whole pass over an empty catalogue and empty folders.
    Lines PassLines() const
    {
        return kPassIn + kStore + WalkLines(Common()) + WalkLines(User()) + SaveLines();
    }

    // The log without what the Store queries and the catalogue's records write: of those, one line each.
    Lines ThreadLines() const
    {
        const std::string store = "CQanhPackageManager::RefreshMetroApps";
        const std::string package = "QanhIsInstalled";
        Lines lines;
        std::string inside; // the operation whose lines are left out
        for (const std::string& line : m_log.Lines()) {
            if (inside.empty()) {
                if (line == store + " IN") {
                    inside = store;
                    lines.push_back("(store)");
                } else if (line.rfind(package + "(", 0) == 0) {
                    inside = package;
                    lines.push_back(line);
                } else if (line.rfind("CQanhAppNameList::AddDesktopApp", 0) != 0 &&
                           line.rfind("CQanhAppNameList::IsInDesktopAppList", 0) != 0 &&
                           line.rfind("CQanhDesktopApp::", 0) != 0 && line.rfind("CQanhPackage::", 0) != 0) {
                    lines.push_back(line);
                }
            } else if (line.rfind(inside + " OUT", 0) == 0) {
                inside.clear();
            }
        }
        return lines;
    }

    const Lines kPassIn = {"CQanhPackageManager::RefreshThread Refresh app name list!"};
    const Lines kStore = {"(store)"};
    const Lines kPassesOut = {"CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)"};

    test::ScopedEnvironment m_allUsers{L"ALLUSERSPROFILE", (m_folder / L"All").c_str()};
    test::ScopedEnvironment m_appData{L"APPDATA", (m_folder / L"Me").c_str()};
    test::ScopedKey m_settings{HKEY_LOCAL_MACHINE, test::kSettingsKey};
    test::FakeStore m_store;      // of no packages
    HANDLE m_exitEvent = nullptr; // whose waits are steered
    std::vector<std::wstring> m_steps;
    std::wstring m_exitAt; // the step at which the exit event is signalled
    std::function<void(const std::wstring&)> m_onStep = [](const std::wstring&) {};
    int m_passes = 1; // after which the event is signalled
    int m_waits = 0;
    std::optional<DWORD> m_waitAnswer; // of the waits for the interval
    int m_shortWaits = 1000000;        // this many waits end at once, those after them wait for a signal
    // May answer the waits for other handles.
    std::function<std::optional<DWORD>(HANDLE, DWORD)> m_onOtherWait = [](HANDLE, DWORD) {
        return std::nullopt;
    };
    HRESULT m_saveResult = S_OK;

    test::ImportPatch<decltype(&WaitForSingleObject)> m_wait;
    test::ImportPatch<decltype(&PathFileExistsW)> m_exists;
    test::ImportPatch<decltype(&FindFirstFileW)> m_search;
    test::ImportPatch<decltype(&SHCreateStreamOnFileW)> m_save;

private:
    static inline Pass* s_current = nullptr;
};

} // namespace discovery_test
