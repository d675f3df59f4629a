#pragma once

#include "support/FakePackages.h"
#include "support/Registry.h"
#include "unit/discovery/Manager.h"
#include "unit/discovery/Walk.h"

#include <shlwapi.h>

namespace discovery_test {

// A package manager whose refresh passes are watched and steered: what a pass asks of the platform is noted
// as one step each ("wait 1000", "family <name>", "exists <path>", "store", "search <pattern>", "save
// <path>", "wait <interval>"), and the exit event can be signalled at any of them. The long waits do not
// wait: the first one times out, and the interval ends with a signal after as many passes as the test wants.
class Pass : public Manager
{
protected:
    Pass()
    {
        m_store.objects.At("FindPackagesByUserSecurityId", [this] { Step(L"store"); });
        m_store.contents.onFamily = [this](const std::wstring& name) { Step(L"family " + name); };
        m_settings.SetDword(L"RefreshInterval", 3);
        test::MakeFolder(Common());
        test::MakeFolder(User());
    }

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
            return answer ? *answer : m_wait.Original(handle, milliseconds);
        }
        if (milliseconds == 0) {
            return m_wait.Original(handle, milliseconds);
        }
        ++m_waits;
        Step(L"wait " + std::to_wstring(milliseconds));
        if (m_waitAnswer && m_waits > 1) {
            return *m_waitAnswer;
        }
        if (m_waits > m_passes) {
            SetEvent(handle);
        }
        return m_wait.Original(handle, m_waits > m_shortWaits ? 20000 : 0);
    }

    // Of a folder without shortcuts and folders; or with this error, without a folder.
    static Lines WalkLines(const std::wstring& folder, int error = 2)
    {
        return walk_test::FolderLines(test::ToUtf8(folder), error, error) +
               (error == 2 ? walk_test::kOut : Lines{"Errcode = " + std::to_string(error) + " "});
    }
    Lines WalksLines() const { return WalkLines(Common()) + WalkLines(User()); }
    Lines StartLines() const
    {
        return Lines{"CQanhPackageManager::RefreshThread IN"} + FolderLines() +
               Call("CQanhReg::GetRefreshInterval", "(3)", Call("CQanhReg::GetDWORDRegVal", "(1)"));
    }
    Lines SaveLines(const std::string& result = "0x00000000") const
    {
        return Call("CQanhAppNameList::Save(" + test::ToUtf8(CatalogFile()) + ")", "(" + result + ")");
    }

    // The log without what the Store queries and the catalogue's records write: of those, one line each.
    Lines ThreadLines() const
    {
        const std::string store = "CQanhPackageManager::RefreshMetroApps";
        const std::string package = "QanhIsInstalled";
        Lines lines;
        std::string inside; // the operation whose lines are left out
        for (const std::string& line :
             LinesWithout({"CQanhAppNameList::AddDesktopApp", "CQanhAppNameList::IsInDesktopAppList",
                           "CQanhDesktopApp::", "CQanhPackage::"},
                          m_log.Lines())) {
            if (!inside.empty()) {
                inside = line.starts_with(inside + " OUT") ? "" : inside;
            } else if (line == store + " IN") {
                inside = store;
                lines.push_back("(store)");
            } else {
                inside = line.starts_with(package + "(") ? package : "";
                lines.push_back(line);
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

    test::CapturingPatch<decltype(&WaitForSingleObject)> m_wait{
        "WaitForSingleObject",
        [this](HANDLE handle, DWORD milliseconds) { return Wait(handle, milliseconds); }};
    test::CapturingPatch<decltype(&PathFileExistsW)> m_exists{"PathFileExistsW", [this](const wchar_t* path) {
                                                                  Step(L"exists " + std::wstring(path));
                                                                  return m_exists.Original(path);
                                                              }};
    test::CapturingPatch<decltype(&FindFirstFileW)> m_search{
        "FindFirstFileW", [this](const wchar_t* pattern, WIN32_FIND_DATAW* found) {
            Step(L"search " + std::wstring(pattern));
            return m_search.Original(pattern, found);
        }};
    test::CapturingPatch<decltype(&SHCreateStreamOnFileW)> m_save{
        "SHCreateStreamOnFileW", [this](const wchar_t* path, DWORD mode, IStream** stream) {
            // The same call opens files for reading.
            if (mode != STGM_READ) {
                Step(L"save " + std::wstring(path));
            }
            return m_saveResult != S_OK ? m_saveResult : m_save.Original(path, mode, stream);
        }};
};

} // namespace discovery_test
