#include "discovery/PackageManager.h"

#include "common/DiagnosticLog.h"
#include "common/UniqueHandle.h"
#include "discovery/CatalogRollback.h"
#include "discovery/CatalogTurn.h"

#include <cstdio>
#include <cwchar>
#include <new>

namespace {

constexpr wchar_t kInitializeName[] = L"CQanhPackageManager::Initialize";
constexpr wchar_t kProductName[] = L"QanHelper";
constexpr wchar_t kExitEventFormat[] = L"Local\\PYX_Event_Exit_RefreshThread%d";

constexpr DWORD kMutexPoll = 100;        // milliseconds
constexpr int kMutexRoundsAtStart = 5;   // about half a second
constexpr int kMutexRoundsAtStop = 100;  // about 10 seconds
constexpr DWORD kThreadStopWait = 30000; // milliseconds
constexpr DWORD kThreadExitPoll = 100;   // milliseconds
constexpr int kThreadExitRounds = 32;

} // namespace

wchar_t CQanhPackageManager::m_szInstanceMutexName[MAX_PATH] = {};
HANDLE CQanhPackageManager::m_hInstanceMutex = nullptr;

HRESULT CQanhPackageManager::Initialize() noexcept
{
    LogIn(kInitializeName);
    if (m_hExitEvent && m_hRefreshThread) {
        return S_FALSE;
    }
    const bool isOwner = ClaimInstanceMutex();
    wchar_t catalogPath[MAX_PATH];
    ComposeCatalogPath(catalogPath);
    // Nobody saves while an owner brings back what a save that was cut off has left, and reads its file.
    const CatalogTurn turn = isOwner ? CatalogTurn(catalogPath) : CatalogTurn();
    const CatalogRollback rollback(catalogPath);
    if (turn.Result() == S_OK) {
        rollback.Restore();
    }
    wchar_t path[MAX_PATH];
    if (!ChooseFile(isOwner ? rollback.WholeFile() : catalogPath, isOwner, path)) {
        GiveUpOwnership();
        return LogOut(kInitializeName, E_FAIL);
    }
    // Another process takes its turn when it is the catalogue file that it reads: a third one may be saving
    // it, or have died while it did, and left the file that counts beside it.
    const CatalogTurn readersTurn =
        !isOwner && std::wcscmp(path, catalogPath) == 0 ? CatalogTurn(catalogPath) : CatalogTurn();
    if (readersTurn.Result() == S_OK && !ChooseFile(rollback.WholeFile(), true, path)) {
        return LogOut(kInitializeName, E_FAIL);
    }
    // The file holds all of it: what an earlier start left in memory would be there twice.
    HRESULT hr = m_isCatalogUsed ? m_AppNameList.Reload(path) : m_AppNameList.Load(path);
    m_isCatalogUsed = true;
    if (FAILED(hr)) {
        DiagnosticLog::WriteLine("m_AppNameList.Load() failed. ErrCode = 0x%08X \r\n",
                                 static_cast<unsigned>(hr));
    }
    if (isOwner) {
        // A catalogue that could not be loaded is found again by the thread.
        hr = StartRefreshThread();
        if (FAILED(hr)) {
            GiveUpOwnership();
        }
    }
    return LogOut(kInitializeName, hr);
}

// What a failed start holds would keep this and every other process of the executable from refreshing.
void CQanhPackageManager::GiveUpOwnership() noexcept
{
    CloseInstanceMutex();
    if (m_hExitEvent) {
        CloseHandle(m_hExitEvent);
        m_hExitEvent = nullptr;
    }
}

bool CQanhPackageManager::ClaimInstanceMutex() noexcept
{
    wchar_t moduleName[MAX_PATH];
    if (SUCCEEDED(GetModuleName(&moduleName))) {
        _snwprintf_s(m_szInstanceMutexName, MAX_PATH, _TRUNCATE, L"%s_%s", kProductName, moduleName);
    } else {
        _snwprintf_s(m_szInstanceMutexName, MAX_PATH, _TRUNCATE, L"%s", kProductName);
    }
    UniqueHandle mutex(CreateMutexW(nullptr, FALSE, m_szInstanceMutexName));
    const DWORD error = GetLastError();
    if (!mutex) {
        DiagnosticLog::WriteLine("%S CreateMutex() failed. \r\n", kInitializeName);
        return false;
    }
    if (error == ERROR_ALREADY_EXISTS) {
        // Deliberate: this line has no end.
        DiagnosticLog::WriteLine("%S CreateMutex()  GetLastError() : ERROR_ALREADY_EXISTS", kInitializeName);
        return false;
    }
    DiagnosticLog::WriteLine("%S CreateMutex() success. \r\n", kInitializeName);
    InterlockedExchangePointer(&m_hInstanceMutex, mutex.Release());
    return true;
}

bool CQanhPackageManager::IsInstanceMutexGone(int rounds) noexcept
{
    for (int round = 0; round < rounds; ++round) {
        const UniqueHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, m_szInstanceMutexName));
        if (!mutex) {
            DiagnosticLog::WriteLine("OpenMutex() : Mutex none. \r\n");
            return true;
        }
        Sleep(kMutexPoll);
    }
    return false;
}

void CQanhPackageManager::CloseInstanceMutex() noexcept
{
    const UniqueHandle mutex(InterlockedExchangePointer(&m_hInstanceMutex, nullptr));
}

bool CQanhPackageManager::ChooseFile(const wchar_t* catalogPath, bool isOwner,
                                     wchar_t (&path)[MAX_PATH]) noexcept
{
    // While another process is in its first refresh pass it may be writing the catalogue file.
    if (catalogPath && GetFileAttributesW(catalogPath) != INVALID_FILE_ATTRIBUTES &&
        (isOwner || IsInstanceMutexGone(kMutexRoundsAtStart))) {
        wcscpy_s(path, MAX_PATH, catalogPath);
        return true;
    }
    return GetPresetAppNameFullPath(path) != FALSE;
}

HRESULT CQanhPackageManager::StartRefreshThread() noexcept
{
    wchar_t eventName[MAX_PATH];
    _snwprintf_s(eventName, MAX_PATH, _TRUNCATE, kExitEventFormat, static_cast<int>(GetCurrentProcessId()));
    m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, eventName);
    if (!m_hExitEvent) {
        DiagnosticLog::WriteLine("CreateEventW() failed. ErrCode = %d \r\n",
                                 static_cast<int>(GetLastError()));
        return E_FAIL;
    }
    // The thread owns a reference to the module from before its first instruction on.
    HMODULE module = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<const wchar_t*>(&CQanhPackageManager::RefreshThread), &module)) {
        m_hRefreshThread = CreateThread(nullptr, 0, RefreshThread, this, 0, nullptr);
    }
    if (!m_hRefreshThread) {
        DiagnosticLog::WriteLine("CreateThread() failed. ErrCode = %d \r\n",
                                 static_cast<int>(GetLastError()));
        if (module) {
            FreeLibrary(module);
        }
        return E_FAIL;
    }
    return S_OK;
}

HRESULT CQanhPackageManager::GetExcludeAppNameList(const wchar_t* wantedName, ExcludeList* pExcludeList,
                                                   BOOL* pFound) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::GetExcludeAppNameList";
    LogIn(kName, wantedName);
    return LogOut(kName, m_AppNameList.GetExcludeAppNameList(wantedName, pExcludeList, pFound));
}

void CQanhPackageManager::Finalize() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::Finalize";
    LogIn(kName);
    if (InterlockedCompareExchangePointer(&m_hInstanceMutex, nullptr, nullptr)) {
        (void)IsInstanceMutexGone(kMutexRoundsAtStop); // the thread is stopped in either case
        CloseInstanceMutex();
        std::wmemset(m_szInstanceMutexName, L'\0', MAX_PATH);
    }
    if (!m_hExitEvent) {
        LogOut(kName);
        return;
    }
    SetEvent(m_hExitEvent);
    if (m_hRefreshThread) {
        if (WaitForSingleObject(m_hRefreshThread, kThreadStopWait) == WAIT_TIMEOUT) {
            ForceThreadToEnd();
        }
        CloseHandle(m_hRefreshThread);
        m_hRefreshThread = nullptr;
    }
    CloseHandle(m_hExitEvent);
    m_hExitEvent = nullptr;
    LogOut(kName);
}

void CQanhPackageManager::ForceThreadToEnd() noexcept
{
    TerminateThread(m_hRefreshThread, 0);
    WaitThreadExit(m_hRefreshThread);
    // The thread may have held the catalogue's lock, or left a list half changed: another catalogue takes the
    // place of that one, which is not destroyed. Its reference to the module is lost with it; that costs
    // memory only.
    new (&m_AppNameList) CQanhAppNameList();
}

void CQanhPackageManager::WaitThreadExit(HANDLE hThread) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::WaitThreadExit";
    LogIn(kName);
    for (int round = 0; round < kThreadExitRounds; ++round) {
        DWORD exitCode = 0;
        GetExitCodeThread(hThread, &exitCode);
        if (exitCode != STILL_ACTIVE) {
            break;
        }
        if (WaitForSingleObject(hThread, kThreadExitPoll) == WAIT_OBJECT_0) {
            break;
        }
        Sleep(1);
    }
    LogOut(kName);
}
