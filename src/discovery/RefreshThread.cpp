// The background thread that keeps the catalogue current.

#include "QanHelper.h"
#include "common/DiagnosticLog.h"
#include "common/HostEnvironment.h"
#include "common/Reg.h"
#include "discovery/PackageManager.h"

#include <shlwapi.h>

#include <cstdio>

namespace {

constexpr wchar_t kRefreshThreadName[] = L"CQanhPackageManager::RefreshThread";
constexpr wchar_t kProgramsFolder[] = L"Microsoft\\Windows\\Start Menu\\Programs";
constexpr DWORD kFirstWait = 1000; // milliseconds
constexpr DWORD kExitNoManager = ERROR_INVALID_PARAMETER;
constexpr DWORD kExitNoEnvironment = 2011;

bool ComposeProgramsFolder(const wchar_t* variable, wchar_t (&folder)[MAX_PATH]) noexcept
{
    wchar_t base[MAX_PATH];
    if (!ReadEnvironmentVariable(variable, base)) {
        return false;
    }
    _snwprintf_s(folder, MAX_PATH, _TRUNCATE, L"%s\\%s", base, kProgramsFolder);
    return true;
}

// The thread's exit line has a form of its own.
void LogExit(HRESULT result) noexcept
{
    DiagnosticLog::WriteLine("%S OUT : nRet(0x%08X)\r\n", kRefreshThreadName, static_cast<unsigned>(result));
}

// A package whose state cannot be read counts as installed.
BOOL IsPackageInstalled(const wchar_t* packageFamilyName) noexcept
{
    BOOL isInstalled = TRUE;
    try {
        if (FAILED(QanhIsInstalled(packageFamilyName, &isInstalled))) {
            isInstalled = TRUE;
        }
    } catch (...) {
        isInstalled = TRUE;
    }
    return isInstalled;
}

} // namespace

DWORD WINAPI CQanhPackageManager::RefreshThread(void* pPyxPackageManager) noexcept
{
    const DWORD exitCode = Refresh(static_cast<CQanhPackageManager*>(pPyxPackageManager));
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&CQanhPackageManager::RefreshThread), &module);
    // Nothing of this module may run once its reference is gone.
    FreeLibraryAndExitThread(module, exitCode);
}

DWORD CQanhPackageManager::Refresh(CQanhPackageManager* pPyxPackageManager) noexcept
{
    LogIn(kRefreshThreadName);
    if (!pPyxPackageManager) {
        LogExit(E_POINTER);
        CloseInstanceMutex();
        return kExitNoManager;
    }
    wchar_t catalogPath[MAX_PATH];
    ComposeCatalogPath(catalogPath);
    wchar_t commonPrograms[MAX_PATH];
    wchar_t userPrograms[MAX_PATH];
    if (!ComposeProgramsFolder(L"ALLUSERSPROFILE", commonPrograms) ||
        !ComposeProgramsFolder(L"APPDATA", userPrograms)) {
        CloseInstanceMutex();
        return kExitNoEnvironment;
    }
    const DWORD interval = CQanhReg::GetRefreshInterval();
    const HANDLE exitEvent = pPyxPackageManager->m_hExitEvent;
    if (WaitForSingleObject(exitEvent, kFirstWait) == WAIT_OBJECT_0) {
        CloseInstanceMutex();
        return 0;
    }
    do {
        pPyxPackageManager->RunPass(catalogPath, commonPrograms, userPrograms);
        // From the end of the first pass on the file is current, and other processes may load it.
        CloseInstanceMutex();
    } while (WaitForSingleObject(exitEvent, interval) == WAIT_TIMEOUT);
    ResetEvent(exitEvent);
    LogExit(S_OK);
    return 0;
}

void CQanhPackageManager::RunPass(const wchar_t* catalogPath, const wchar_t* commonPrograms,
                                  const wchar_t* userPrograms) noexcept
{
    DiagnosticLog::WriteLine("%S Refresh app name list!\r\n", kRefreshThreadName);
    try {
        RefreshPackageStates();
    } catch (...) {
        // Out of memory: the states stay as they were.
    }
    try {
        RefreshDesktopStates();
    } catch (...) {
    }
    HRESULT hr = RefreshMetroApps();
    if (FAILED(hr)) {
        DiagnosticLog::WriteLine("%S RefreshMetroApps() failed. ErrCode = 0x%08X \r\n", kRefreshThreadName,
                                 static_cast<unsigned>(hr));
    }
    if (PollExitEvent() == WAIT_TIMEOUT) {
        RefreshPrograms(commonPrograms);
    }
    if (PollExitEvent() == WAIT_TIMEOUT) {
        RefreshPrograms(userPrograms);
    }
    if (PollExitEvent() == WAIT_TIMEOUT) {
        hr = m_AppNameList.Save(catalogPath);
        if (FAILED(hr)) {
            DiagnosticLog::WriteLine(
                "%S pPyxPackageManager->m_AppNameList.Save() failed. ErrCode = 0x%08X \r\n",
                kRefreshThreadName, static_cast<unsigned>(hr));
        }
    }
}

// The states are collected without the catalogue's lock and set together, so that a launch meanwhile sees
// those from before or those from after.
void CQanhPackageManager::RefreshPackageStates()
{
    std::vector<BOOL> states;
    for (const WideString& name : m_AppNameList.PackageFamilyNames()) {
        states.push_back(IsPackageInstalled(name.c_str()));
    }
    m_AppNameList.SetPackagesInstalled(states);
}

void CQanhPackageManager::RefreshDesktopStates()
{
    std::vector<BOOL> states;
    for (const WideString& shortcut : m_AppNameList.DesktopShortcuts()) {
        states.push_back(PathFileExistsW(shortcut.c_str()) ? TRUE : FALSE);
    }
    m_AppNameList.SetDesktopAppsInstalled(states);
}

void CQanhPackageManager::RefreshPrograms(const wchar_t* folder) noexcept
{
    const HRESULT hr = RefreshDesktopApps(folder);
    if (FAILED(hr)) {
        // Deliberate: the wide folder is printed with the narrow "%s", which shows what stands before the
        // first zero byte.
        DiagnosticLog::WriteLine(
            "%S pPyxPackageManager->RefreshDesktopApps(%s) failed. ErrCode = 0x%08X \r\n", kRefreshThreadName,
            reinterpret_cast<const char*>(folder), static_cast<unsigned>(hr));
    }
}

DWORD CQanhPackageManager::PollExitEvent() const noexcept
{
    return WaitForSingleObject(m_hExitEvent, 0);
}
