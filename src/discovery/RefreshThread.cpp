// The background thread that keeps the catalogue current.

#include "QanHelper.h"
#include "common/DiagnosticLog.h"
#include "common/HostEnvironment.h"
#include "common/Reg.h"
#include "discovery/CatalogRollback.h"
#include "discovery/CatalogTurn.h"
#include "discovery/PackageManager.h"

#include <shlwapi.h>

#include <cstdio>

namespace {

constexpr wchar_t kRefreshThreadName[] = L"CQanhPackageManager::RefreshThread";
constexpr wchar_t kProgramsFolder[] = L"Microsoft\\Windows\\Start Menu\\Programs";
constexpr DWORD kFirstWait = 1000; // milliseconds
constexpr DWORD kExitNoManager = ERROR_INVALID_PARAMETER;
constexpr DWORD kExitNoEnvironment = 2011;

[[nodiscard]] bool ComposeProgramsFolder(const wchar_t* variable, wchar_t (&folder)[MAX_PATH]) noexcept
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
[[nodiscard]] BOOL IsPackageInstalled(const wchar_t* packageFamilyName) noexcept
{
    BOOL isInstalled = TRUE;
    if (FAILED(QanhIsInstalled(packageFamilyName, &isInstalled))) {
        isInstalled = TRUE;
    }
    return isInstalled;
}

} // namespace

// Where a pass finds the shortcuts, and where it saves.
struct CQanhPackageManager::RefreshPlaces
{
    wchar_t catalogFile[MAX_PATH];
    wchar_t commonPrograms[MAX_PATH];
    wchar_t userPrograms[MAX_PATH];
};

// However the thread ends, other processes need not wait for its first pass any longer.
class CQanhPackageManager::InstanceMutexCloser
{
public:
    InstanceMutexCloser() noexcept = default;
    ~InstanceMutexCloser() { CloseInstanceMutex(); }
    InstanceMutexCloser(const InstanceMutexCloser&) = delete;
    InstanceMutexCloser& operator=(const InstanceMutexCloser&) = delete;
};

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
    const InstanceMutexCloser mutexCloser;
    LogIn(kRefreshThreadName);
    if (!pPyxPackageManager) {
        LogExit(E_POINTER);
        return kExitNoManager;
    }
    return pPyxPackageManager->RunPasses();
}

DWORD CQanhPackageManager::RunPasses() noexcept
{
    RefreshPlaces places;
    ComposeCatalogPath(places.catalogFile);
    if (!ComposeProgramsFolder(L"ALLUSERSPROFILE", places.commonPrograms) ||
        !ComposeProgramsFolder(L"APPDATA", places.userPrograms)) {
        return kExitNoEnvironment;
    }
    const DWORD interval = CQanhReg::GetRefreshInterval();
    if (WaitForSingleObject(m_hExitEvent, kFirstWait) == WAIT_OBJECT_0) {
        return 0;
    }
    do {
        RunPass(places);
        // From the end of the first pass on the file is current, and other processes may load it.
        CloseInstanceMutex();
    } while (WaitForSingleObject(m_hExitEvent, interval) == WAIT_TIMEOUT);
    ResetEvent(m_hExitEvent);
    LogExit(S_OK);
    return 0;
}

void CQanhPackageManager::RunPass(const RefreshPlaces& places) noexcept
{
    DiagnosticLog::WriteLine("%S Refresh app name list!\r\n", kRefreshThreadName);
    MarkPackages();
    MarkDesktopApps();
    HRESULT hr = RefreshMetroApps();
    if (FAILED(hr)) {
        DiagnosticLog::WriteLine("%S RefreshMetroApps() failed. ErrCode = 0x%08X \r\n", kRefreshThreadName,
                                 static_cast<unsigned>(hr));
    }
    if (PollExitEvent() == WAIT_TIMEOUT) {
        RefreshPrograms(places.commonPrograms);
    }
    if (PollExitEvent() == WAIT_TIMEOUT) {
        RefreshPrograms(places.userPrograms);
    }
    if (PollExitEvent() == WAIT_TIMEOUT) {
        hr = SaveCatalog(places.catalogFile);
        if (FAILED(hr)) {
            DiagnosticLog::WriteLine(
                "%S pPyxPackageManager->m_AppNameList.Save() failed. ErrCode = 0x%08X \r\n",
                kRefreshThreadName, static_cast<unsigned>(hr));
        }
    }
}

// S_FALSE, with nothing saved, when the thread was told to stop while another process had its turn at the
// file; otherwise the result of the save, or why it was not tried.
HRESULT CQanhPackageManager::SaveCatalog(const wchar_t* path) const noexcept
{
    const CatalogTurn turn(path, m_hExitEvent);
    if (turn.Result() != S_OK) {
        return turn.Result();
    }
    CatalogRollback rollback(path);
    const HRESULT hr = rollback.Begin();
    return FAILED(hr) ? hr : rollback.End(m_AppNameList.Save(path));
}

// Asks about the records one after the other, without the catalogue's lock. When the thread is to stop, those
// that are left are not asked about: a shortcut on a dead network share takes its time.
template <typename Ask>
std::vector<BOOL> CQanhPackageManager::AskStates(const std::vector<WideString>& records, Ask ask) const
{
    std::vector<BOOL> states;
    for (const WideString& record : records) {
        if (PollExitEvent() == WAIT_OBJECT_0) {
            break;
        }
        states.push_back(ask(record.c_str()));
    }
    return states;
}

// The states are set together, so that a launch meanwhile sees those from before or those from after. The
// records that were not asked about stay as they are.
void CQanhPackageManager::MarkPackages() noexcept
{
    try {
        m_AppNameList.SetPackagesInstalled(AskStates(m_AppNameList.PackageFamilyNames(), IsPackageInstalled));
    } catch (...) {
        // Out of memory: all states stay as they were.
    }
}

void CQanhPackageManager::MarkDesktopApps() noexcept
{
    try {
        m_AppNameList.SetDesktopAppsInstalled(
            AskStates(m_AppNameList.DesktopShortcuts(),
                      [](const wchar_t* shortcut) { return PathFileExistsW(shortcut) ? TRUE : FALSE; }));
    } catch (...) {
        // Likewise.
    }
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
