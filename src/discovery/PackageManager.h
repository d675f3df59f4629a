#pragma once

#include "catalog/AppNameList.h"
#include "platform/WinRtPackages.h"

#include <windows.h>

#include <wrl/client.h>

#include <vector>

// Owns the catalogue while the library is up and keeps it current: loads it from its file, finds out whether
// another process of the same executable is in its first refresh pass, and if not runs the thread that
// refreshes the catalogue and saves it. One static instance exists. Initialize, Finalize and
// GetExcludeAppNameList belong to the host's thread, the refresh operations to the refresh thread; the static
// queries may be called on any thread.
//
// Where its members are: PackageManager.cpp the start and the stop, CatalogPaths.cpp where the files lie,
// RefreshThread.cpp the thread and its passes (what keeps a save from losing the file is in CatalogRollback.h
// and CatalogTurn.h), DesktopDiscovery.cpp the walk through the Start menu, StoreQueries.cpp the questions to
// the system about Store packages.
class CQanhPackageManager
{
public:
    CQanhPackageManager() = default;
    virtual ~CQanhPackageManager() = default;
    CQanhPackageManager(const CQanhPackageManager&) = delete;
    CQanhPackageManager& operator=(const CQanhPackageManager&) = delete;

    // Loads the catalogue and, in the first process of this executable (the owner), starts the refresh
    // thread. Whoever is to read the catalogue file waits for the end of another process's save first, 5 s at
    // most; the owner brings back what a save that was cut off has left. S_OK; S_FALSE when the thread runs
    // already, or in another process when the file was read to its end; E_FAIL when neither file can be found
    // or the thread cannot be started; otherwise the failure of the load, which an owner whose thread runs
    // does not report.
    [[nodiscard]] HRESULT Initialize() noexcept;

    // Waits for the first refresh pass (10 s at most), then stops the thread: 30 s after that it is
    // terminated.
    void Finalize() noexcept;

    // The refresh thread's procedure; the argument is the package manager. It gives back one reference to
    // this module, taken by whoever starts it, so that the library stays loaded while it runs. Exit codes: 0,
    // 87 for a null argument, 2011 when a needed environment variable cannot be read.
    [[nodiscard]] static DWORD WINAPI RefreshThread(void* pPyxPackageManager) noexcept;

    // The base name of the host's executable, up to its first dot. S_OK, E_POINTER, or E_FAIL.
    [[nodiscard]] static HRESULT GetModuleName(wchar_t (*pModuleName)[MAX_PATH]) noexcept;
    // Composes the folder of the catalogue and the log and makes sure that it exists. S_OK also when it
    // cannot be created; E_FAIL, with an empty string, when it cannot be composed.
    [[nodiscard]] static HRESULT CreateAppNameListFolder(wchar_t (&folder)[MAX_PATH]) noexcept;
    // The catalogue file that may stand beside the host's executable.
    [[nodiscard]] static BOOL GetPresetAppNameFullPath(wchar_t (&path)[MAX_PATH]) noexcept;
    // After a forced stop: waits about 3 s at most until the thread has really ended.
    static void WaitThreadExit(HANDLE hThread) noexcept;

    // Adds the shortcuts of a folder and its subfolders to the catalogue, a folder's own before those below
    // it. S_OK, also when the exit event ended the walk; E_POINTER; E_INVALIDARG for an empty path; E_FAIL
    // when the folder cannot be listed.
    [[nodiscard]] HRESULT RefreshDesktopApps(const wchar_t* folder) noexcept;
    // Adds what matches the pattern (a backslash, an asterisk and an extension of four characters) in one
    // folder.
    void AddLinkFileToList(const wchar_t* folder, const wchar_t* pattern) noexcept;

    // Hands every Store package of the user to the catalogue. The result is that of the last package; E_FAIL
    // when the system's package manager cannot be had.
    [[nodiscard]] HRESULT RefreshMetroApps() noexcept;

    // The system's package manager, or none. Enters the Windows Runtime for the calling thread:
    // *pNeedsUninitialize becomes 1 when the caller must leave it with RoUninitialize, whether there is a
    // manager or not, and 0 when the thread is in an apartment of another kind already.
    [[nodiscard]] static Microsoft::WRL::ComPtr<platform::IPackageManager>
    GetPackageManager(BOOL* pNeedsUninitialize) noexcept;

    // The first package of the family that is installed for the user, or none; with a fragment, the first one
    // that depends on a package whose family name contains it, whatever the case of Latin letters. The
    // fragment is not null, here and below. A failing call of the platform is raised as a WinRtError. They
    // leave the Windows Runtime before they hand the package out: the caller holds an apartment of its own
    // around the call and all that is done with the package, its release included.
    [[nodiscard]] static Microsoft::WRL::ComPtr<platform::IPackage>
    FindPackageByName(const wchar_t* familyName);
    [[nodiscard]] static Microsoft::WRL::ComPtr<platform::IPackage>
    FindPackageByNameEx(const wchar_t* familyName, const wchar_t* fragment);

    // Whether these find a package: S_OK with *pIsInstalled 1 or 0, also without a package manager;
    // E_POINTER; E_INVALIDARG for an empty name; E_FAIL or E_OUTOFMEMORY, with *pIsInstalled as it was, when
    // the finding failed.
    [[nodiscard]] static HRESULT IsInstalled(const wchar_t* familyName, BOOL* pIsInstalled) noexcept;
    [[nodiscard]] static HRESULT IsInstalledEx(const wchar_t* familyName, const wchar_t* fragment,
                                               BOOL* pIsInstalled) noexcept;

    // The package's display name, for LocalFree: the result of the manifest reader's GetAppDisplayName,
    // 0xA0000001 when no package of the family is installed, E_POINTER, E_INVALIDARG, E_FAIL or
    // E_OUTOFMEMORY.
    [[nodiscard]] static HRESULT GetAppDisplayNameByPFN(const wchar_t* familyName, wchar_t** ppName) noexcept;

    // Passes a launch's question for the names to exclude on to the catalogue, whose result it is.
    [[nodiscard]] HRESULT GetExcludeAppNameList(const wchar_t* wantedName, ExcludeList* pExcludeList,
                                                BOOL* pFound) const noexcept;

    CQanhAppNameList m_AppNameList;
    HANDLE m_hExitEvent = nullptr;     // manual reset; tells the thread to stop
    HANDLE m_hRefreshThread = nullptr; // null when not running

    // The mutex that stands for a first refresh pass that is still running somewhere. It is never waited for
    // or locked: that it exists is what it says. Held by the owner only, and closed by the thread or by
    // Finalize, whichever takes the handle out first.
    static wchar_t m_szInstanceMutexName[MAX_PATH];
    static HANDLE m_hInstanceMutex;

private:
    [[nodiscard]] static bool ClaimInstanceMutex() noexcept;
    [[nodiscard]] static bool IsInstanceMutexGone(int rounds) noexcept;
    static void CloseInstanceMutex() noexcept;
    static void ComposeCatalogPath(wchar_t (&path)[MAX_PATH]) noexcept;
    [[nodiscard]] static bool ChooseFile(const wchar_t* catalogPath, bool isOwner,
                                         wchar_t (&path)[MAX_PATH]) noexcept;

    class InstanceMutexCloser;
    struct RefreshPlaces;
    // The thread's work; the result is its exit code. The exit event is read without a lock: it is made
    // before the thread starts and closed after it has ended.
    [[nodiscard]] static DWORD Refresh(CQanhPackageManager* pPyxPackageManager) noexcept;
    [[nodiscard]] DWORD RunPasses() noexcept;
    void RunPass(const RefreshPlaces& places) noexcept;
    [[nodiscard]] HRESULT SaveCatalog(const wchar_t* path) const noexcept;

    [[nodiscard]] HRESULT StartRefreshThread() noexcept;
    void GiveUpOwnership() noexcept;
    void ForceThreadToEnd() noexcept;
    template <typename Ask>
    [[nodiscard]] std::vector<BOOL> AskStates(const std::vector<WideString>& records, Ask ask) const;
    void MarkPackages() noexcept;
    void MarkDesktopApps() noexcept;
    void RefreshPrograms(const wchar_t* folder) noexcept;
    // The exit event's state now: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
    [[nodiscard]] DWORD PollExitEvent() const noexcept;

    // The catalogue holds what an earlier Initialize brought.
    bool m_isCatalogUsed = false;
};
