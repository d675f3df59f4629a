/* The public header in plain C, without anything included before it; and the import library. */
#include "QanHelper.h"

#include <stddef.h>
#include <string.h>

#ifndef QANH_CALL
#error "the calling convention has no name"
#endif

/* A host chooses by the version before it compiles. */
#if QANH_VERSION < 10000 || QANH_VERSION >= 20000 || QANH_VERSION_MAJOR != 1
#error "not the version 1"
#endif

_Static_assert(QANH_VERSION_MAJOR == 1 && QANH_VERSION_MINOR == 0 && QANH_VERSION_PATCH == 0,
               "version 1.0.0");
_Static_assert(QANH_VERSION == 10000, "version 1.0.0 as a number");

_Static_assert(QANH_E_NO_PACKAGE == (HRESULT)0xA0000001L, "the result of a package that is not there");
_Static_assert(QANH_E_SEVERAL_APPLICATIONS == (HRESULT)0xA0000002L, "the result of several applications");
_Static_assert(FAILED(QANH_E_NO_PACKAGE) && FAILED(QANH_E_SEVERAL_APPLICATIONS), "both are failures");
_Static_assert(QANH_SEARCH_LAUNCH == 0 && QANH_SEARCH_SHOW == 1 && QANH_SEARCH_LAUNCH_PLAIN == 2,
               "search modes");
_Static_assert(QANH_TILE_DESKTOP == 0 && QANH_TILE_IMMERSIVE == 1 && QANH_TILE_UNCHANGED == 2, "tile modes");

/* Another type does not compile. */
static HRESULT(WINAPI* const initialize)(void) = QanhInitialize;
static void(WINAPI* const finalize)(void) = QanhFinalize;
static void(WINAPI* const releaseString)(LPWSTR) = QanhReleaseString;
static HRESULT(WINAPI* const isInstalled)(LPCWSTR, BOOL*) = QanhIsInstalled;
static HRESULT(WINAPI* const isInstalledById)(LPCWSTR, BOOL*) = QanhIsInstalledByAppUserModeID;
static HRESULT(WINAPI* const getDisplayName)(LPCWSTR, LPWSTR*) = QanhGetAppDisplayNameByPFN;
static HRESULT(WINAPI* const launchBySearch)(LPCWSTR, DWORD, BOOL) = QanhLaunchBySearch;
static HRESULT(WINAPI* const launchBrowser)(DWORD, DWORD, BOOL) = QanhLaunchIEBySearch;
static HRESULT(WINAPI* const launchByManager)(LPCWSTR, LPCWSTR) = QanhLaunchByManager;

static int Failed(int condition)
{
    return condition ? 0 : 1;
}

/* These return how many checks failed. */
int CheckInCpp(void); /* PublicHeader.cpp */

static int CheckInC(void)
{
    int failures = 0;
    BOOL flag = 7;
    WCHAR* name = NULL;
    failures += Failed(isInstalled(NULL, &flag) == E_POINTER);
    failures += Failed(isInstalledById(L"", &flag) == E_INVALIDARG);
    failures += Failed(getDisplayName(L"", &name) == E_INVALIDARG);
    failures += Failed(launchBySearch(NULL, QANH_SEARCH_LAUNCH, FALSE) == E_POINTER);
    failures += Failed(launchBrowser(QANH_TILE_UNCHANGED + 1, QANH_SEARCH_SHOW, FALSE) == E_INVALIDARG);
    failures += Failed(launchByManager(NULL, NULL) == E_POINTER);
    failures += Failed(initialize != NULL);
    failures += Failed(strcmp(QANH_VERSION_STRING, "1.0.0") == 0);
    failures += Failed(flag == 7 && name == NULL);
    releaseString(NULL);
    finalize();
    return failures;
}

int main(void)
{
    return CheckInC() + CheckInCpp();
}
