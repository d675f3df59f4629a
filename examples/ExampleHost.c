/*
 * A small launcher, in plain C: what a host does with QanHelper, step by step.
 *
 *     ExampleHost NAME...                  launches each application by search, without and with exclusions
 *     ExampleHost --find NAME              launches it by search, with exclusions only
 *     ExampleHost --activate ID            launches a Store application by its application user model ID
 *     ExampleHost --installed FAMILY       asks whether a package is installed, and for its display name
 *     ExampleHost --browser                launches the browser, with its tile setting forced to 0
 *
 * The arguments are carried out in order, between one QanhInitialize and one QanhFinalize. The exit code is 0
 * when every call succeeded.
 *
 * It has no windows, so it can use the library on its only thread. A host with windows uses a thread of its
 * own for the library: a launch by search does not process messages, for two seconds at least.
 */
#include <windows.h>

#include <stdio.h>
#include <wchar.h>

#include "QanHelper.h"

static int g_failures = 0;

static void Check(const wchar_t* what, HRESULT hr)
{
    wprintf(L"  %ls: 0x%08X\n", what, (unsigned)hr);
    if (FAILED(hr)) {
        ++g_failures;
    }
    fflush(stdout);
}

/* The name of this executable up to its first dot: the library names things after it. */
static void GetHostName(wchar_t* name, size_t size)
{
    wchar_t path[MAX_PATH];
    wchar_t* start;
    GetModuleFileNameW(NULL, path, MAX_PATH);
    start = wcsrchr(path, L'\\') + 1;
    start[wcscspn(start, L".")] = L'\0';
    _snwprintf_s(name, size, _TRUNCATE, L"%s", start);
}

/* The library refreshes its catalogue in the background, for the first time a second after the start. A mutex
   with the host's name exists until that is done and the catalogue is saved. The mutex is closed again at
   each look: a handle that is kept would keep it in being. */
static BOOL WaitForFirstRefresh(void)
{
    wchar_t host[MAX_PATH];
    wchar_t mutexName[MAX_PATH];
    int round;
    GetHostName(host, MAX_PATH);
    _snwprintf_s(mutexName, MAX_PATH, _TRUNCATE, L"QanHelper_%s", host);
    for (round = 0; round < 300; ++round) {
        HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, mutexName);
        if (!mutex) {
            return TRUE;
        }
        CloseHandle(mutex);
        Sleep(100);
    }
    return FALSE;
}

/* Waits until a window with a title has come to the front after `before`, and prints its title. */
static void ShowWhatStarted(HWND before)
{
    wchar_t title[256];
    int round;
    for (round = 0; round < 50; ++round) {
        HWND window = GetForegroundWindow();
        if (window && window != before && GetWindowTextW(window, title, 256) > 0) {
            wprintf(L"  started: %ls\n", title);
            fflush(stdout);
            return;
        }
        Sleep(100);
    }
    wprintf(L"  nothing came to the front\n");
    ++g_failures;
}

static void LaunchBySearch(const wchar_t* name, BOOL useExcludeList)
{
    HWND before = GetForegroundWindow();
    wprintf(L"Launching \"%ls\" by search, %ls exclusions\n", name, useExcludeList ? L"with" : L"without");
    fflush(stdout);
    Check(L"QanhLaunchBySearch", QanhLaunchBySearch(name, QANH_SEARCH_LAUNCH, useExcludeList));
    ShowWhatStarted(before);
}

static void LaunchById(const wchar_t* appUserModelId)
{
    HWND before = GetForegroundWindow();
    wprintf(L"Launching %ls\n", appUserModelId);
    fflush(stdout);
    /* That manager has success codes that are no launch: what counts is the window. */
    Check(L"QanhLaunchByManager", QanhLaunchByManager(appUserModelId, NULL));
    ShowWhatStarted(before);
}

static void AskAboutPackage(const wchar_t* family)
{
    BOOL isInstalled = FALSE;
    wchar_t* displayName = NULL; /* null before the call: the library may leave it as it is */
    HRESULT hr;
    wprintf(L"Asking about %ls\n", family);
    Check(L"QanhIsInstalled", QanhIsInstalled(family, &isInstalled));
    wprintf(L"  installed: %ls\n", isInstalled ? L"yes" : L"no");
    hr = QanhGetAppDisplayNameByPFN(family, &displayName);
    if (hr == QANH_E_NO_PACKAGE) {
        wprintf(L"  display name: none, there is no such package\n");
    } else if (hr == QANH_E_SEVERAL_APPLICATIONS) {
        wprintf(L"  display name: none, the package holds several applications\n");
    } else {
        Check(L"QanhGetAppDisplayNameByPFN", hr);
        wprintf(L"  display name: %ls\n", displayName ? displayName : L"");
    }
    QanhReleaseString(displayName);
    fflush(stdout);
}

/* The browser's tile setting as text. */
static void PrintTileSetting(const wchar_t* when)
{
    DWORD value = 0;
    DWORD size = sizeof value;
    LSTATUS status =
        RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Internet Explorer\\Main",
                     L"ApplicationTileImmersiveActivation", RRF_RT_REG_DWORD, NULL, &value, &size);
    if (status == ERROR_SUCCESS) {
        wprintf(L"  tile setting %ls: %lu\n", when, value);
    } else {
        wprintf(L"  tile setting %ls: not set\n", when);
    }
    fflush(stdout);
}

static DWORD WINAPI PrintTileSettingSoon(void* unused)
{
    (void)unused;
    Sleep(1000);
    PrintTileSetting(L"during the launch");
    return 0;
}

static void LaunchBrowser(void)
{
    HWND before = GetForegroundWindow();
    HANDLE thread;
    wprintf(L"Launching the browser\n");
    PrintTileSetting(L"before");
    thread = CreateThread(NULL, 0, PrintTileSettingSoon, NULL, 0, NULL);
    Check(L"QanhLaunchIEBySearch", QanhLaunchIEBySearch(QANH_TILE_DESKTOP, QANH_SEARCH_LAUNCH, TRUE));
    if (thread) {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    PrintTileSetting(L"after");
    ShowWhatStarted(before);
}

static void CarryOut(int argc, wchar_t** argv)
{
    int index;
    for (index = 1; index < argc; ++index) {
        const wchar_t* value = index + 1 < argc ? argv[index + 1] : L"";
        if (wcscmp(argv[index], L"--browser") == 0) {
            LaunchBrowser();
        } else if (wcscmp(argv[index], L"--find") == 0) {
            LaunchBySearch(value, TRUE);
            ++index;
        } else if (wcscmp(argv[index], L"--activate") == 0) {
            LaunchById(value);
            ++index;
        } else if (wcscmp(argv[index], L"--installed") == 0) {
            AskAboutPackage(value);
            ++index;
        } else {
            LaunchBySearch(argv[index], FALSE);
            LaunchBySearch(argv[index], TRUE);
        }
    }
}

int wmain(int argc, wchar_t** argv)
{
    HRESULT hr = QanhInitialize();
    Check(L"QanhInitialize", hr);
    if (FAILED(hr)) {
        return 1;
    }
    wprintf(L"Waiting for the first refresh of the catalogue\n");
    fflush(stdout);
    if (WaitForFirstRefresh()) {
        CarryOut(argc, argv);
    } else {
        wprintf(L"  it did not end\n");
        ++g_failures;
    }
    QanhFinalize();
    wprintf(L"Done, %d failed\n", g_failures);
    return g_failures == 0 ? 0 : 1;
}
