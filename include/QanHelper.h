/*
 * QanHelper: keeps a catalogue of the applications that a launcher may start, and starts them.
 *
 * Order of calls. QanhInitialize first, then any of the other functions, then one QanhFinalize for each
 * successful QanhInitialize. There is no result that means "not initialised": a function called too early
 * works on an empty catalogue, and nothing can be launched by search.
 *
 * Threads. QanhInitialize, QanhFinalize and the launches by search belong to one thread of the host, the one
 * that called QanhInitialize first: its single-threaded COM apartment holds the library's objects. A thread
 * that is in a multithreaded apartment cannot initialise the library. The queries and QanhLaunchByManager may
 * be called on any thread while the library is up. The library runs one thread of its own, which refreshes
 * the catalogue, unless another process of the same executable was in its first refresh when this one
 * started. The keyboard and the clipboard belong to the whole desktop: do not run two launches by search at
 * once.
 *
 * Strings are UTF-16 and end with a null character. A string that the library hands out is released with
 * QanhReleaseString.
 *
 * Results are HRESULTs. Common to all functions with arguments, checked before anything else is done:
 *
 *   E_POINTER     (0x80004003)  a required pointer is null
 *   E_INVALIDARG  (0x80070057)  a required string is empty, or a mode is above 2
 *
 * Every call is traced into the diagnostic log when an administrator has switched it on.
 */
/* The tables in the comments are laid out by hand. */
/* clang-format off */
#ifndef QANHELPER_H
#define QANHELPER_H

#if !defined(_M_X64) && !defined(__x86_64__)
#error "QanHelper is for 64-bit programs on x64 only"
#endif

#include <windows.h>

/* The version of this header. The library's own stands in the version resource of the DLL. */
#define QANH_VERSION_MAJOR 1
#define QANH_VERSION_MINOR 0
#define QANH_VERSION_PATCH 0
/* As one number, 10203 for 1.2.3; a later version has a greater one. */
#define QANH_VERSION (QANH_VERSION_MAJOR * 10000 + QANH_VERSION_MINOR * 100 + QANH_VERSION_PATCH)
/* As text, "1.2.3". */
#define QANH_VERSION_STRING QANH_VERSION_TEXT(QANH_VERSION_MAJOR, QANH_VERSION_MINOR, QANH_VERSION_PATCH)
#define QANH_VERSION_TEXT(major, minor, patch) QANH_VERSION_JOIN(major, minor, patch)
#define QANH_VERSION_JOIN(major, minor, patch) #major "." #minor "." #patch

#define QANH_CALL WINAPI

/* No package of that family is installed for the user. */
#define QANH_E_NO_PACKAGE ((HRESULT)0xA0000001L)
/* The package holds more than one application, so it has no display name of its own. */
#define QANH_E_SEVERAL_APPLICATIONS ((HRESULT)0xA0000002L)

/* What a search launch pastes and presses. */
#define QANH_SEARCH_LAUNCH 0       /* paste the query, press Enter until the search pane is gone */
#define QANH_SEARCH_SHOW 1         /* paste the plain name and leave the choice to the user */
#define QANH_SEARCH_LAUNCH_PLAIN 2 /* as 0, but paste the plain name when the catalogue knows the name, see below */

/* What the browser's tile setting must be during a launch. */
#define QANH_TILE_DESKTOP 0   /* the value 0 */
#define QANH_TILE_IMMERSIVE 1 /* the value 1 */
#define QANH_TILE_UNCHANGED 2 /* as it is */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Brings the library up, or counts one more user of it when it is up. Reads the setting "DebugLog" on every call.
 *
 * Returns S_OK. The call that brings the library up may also return another success code: S_FALSE when another process
 * of the same executable was in its first refresh; this one then works with the catalogue as it was loaded and does not
 * refresh it. Failures leave the library down:
 *
 *   RPC_E_CHANGED_MODE  the thread is in a multithreaded apartment
 *   E_FAIL              the catalogue's place or the refresh thread could not be had
 *   other               the Start screen's visibility object could not be created; or another process of the same
 *                       executable was in its first refresh, and the catalogue could not be loaded
 *
 * Blocks for up to half a second while another process of the same executable is in its first refresh; otherwise for up
 * to 5 s while another one saves the catalogue file or reads it at its start, which takes milliseconds as a rule.
 */
HRESULT QANH_CALL QanhInitialize(void);

/*
 * Takes back one successful QanhInitialize; the last one stops the refresh thread and takes the library down. A call
 * too many does no harm.
 *
 * Blocks until the first refresh pass is over (10 s at most), then until the thread has stopped (30 s at most; it is
 * terminated then). Call it on the thread of QanhInitialize, and before unloading the library: a library that is
 * unloaded while its thread runs stays in memory.
 */
void QANH_CALL QanhFinalize(void);

/*
 * Releases a string that the library handed out. Null is ignored. Any thread.
 */
void QANH_CALL QanhReleaseString(LPWSTR str);

/*
 * Tells whether a Store package is installed for the current user.
 *
 *   packageName   package family name, compared as the system compares it
 *   pIsInstalled  receives 1 or 0; as it was when the call fails
 *
 * Returns S_OK, also when the package manager cannot be reached (which counts as not installed); E_POINTER;
 * E_INVALIDARG; E_FAIL when the package manager fails to answer; E_OUTOFMEMORY. Any thread: the call enters the Windows
 * Runtime for itself, as a single-threaded apartment unless the thread has one.
 */
HRESULT QANH_CALL QanhIsInstalled(LPCWSTR packageName, BOOL* pIsInstalled);

/*
 * The same for the package of an application. (The name is spelt "UserMode", without an "l", deliberately: it is the
 * name that hosts look up in the library.)
 *
 *   appUserModelId  application user model ID: package family name, "!", application ID, split at the last "!". An ID
 *                   without "!" is a package family name. For an ID that names the desktop package of the Office
 *                   suite the answer is whether that depends on a package whose family name contains the
 *                   application ID.
 *   pIsInstalled    receives 1 or 0; as it was when the call fails
 *
 * Results and threads as QanhIsInstalled. Memory that runs out while the ID is split is reported by a C++ exception,
 * std::bad_alloc, the only one that leaves the library. Take it as fatal: another compiler's code cannot catch it. One
 * that does must not keep it beyond its catch block (std::current_exception, std::async, a promise): it may lie in the
 * library's data, which whoever keeps it would free as a block of its own heap.
 */
HRESULT QANH_CALL QanhIsInstalledByAppUserModeID(LPCWSTR appUserModelId, BOOL* pIsInstalled);

/*
 * Gets the display name of a Store package, in lower case unless it is a resource of the package.
 *
 *   packageFamilyName  package family name
 *   ppDisplayName      receives a string of at most 255 characters, released with QanhReleaseString. Set it to null
 *                      before the call: it stays as it is when there is no such package, and may hold a string to be
 *                      released although the call failed. While the log is on, what it points to is read in any case.
 *
 * Returns S_OK; S_FALSE with an empty string when the manifest gives no name; E_POINTER; E_INVALIDARG;
 * QANH_E_NO_PACKAGE, also when the package manager cannot be reached; QANH_E_SEVERAL_APPLICATIONS; E_FAIL when there
 * is no application, its name cannot be resolved or the package manager fails to answer; E_OUTOFMEMORY; or the error of
 * reading the manifest. Any thread, as QanhIsInstalled.
 */
HRESULT QANH_CALL QanhGetAppDisplayNameByPFN(LPCWSTR packageFamilyName, LPWSTR* ppDisplayName);

/*
 * Starts an application by the Start screen's search: brings up the Start screen, opens the search pane, pastes a
 * query and, unless the choice is left to the user, presses Enter until the pane has gone.
 *
 *   appName         the name that the search shows
 *   searchMode      QANH_SEARCH_LAUNCH, QANH_SEARCH_SHOW or QANH_SEARCH_LAUNCH_PLAIN
 *   useExcludeList  not 0: the query excludes the other applications of the catalogue that a search for this name
 *                   would hit too, so that the wanted one comes first. A name counts as hit when it contains every
 *                   word of the wanted name in small letters: for "Mail", "Gmail" is excluded and "Add Mail" is not.
 *
 * QANH_SEARCH_LAUNCH_PLAIN pastes the plain name when useExcludeList is not 0 and an application of the catalogue
 * reports the name as its own: a desktop application of this name (unless the catalogue file says otherwise), or any
 * application whose name and the wanted one contain each other's words.
 *
 * Returns S_OK, whatever the search made of the query; also when the pane did not come to the front within 20 s: the
 * keys then go to the window that is there. E_POINTER; E_INVALIDARG; E_OUTOFMEMORY; E_FAIL when it is not known what
 * the screen shows, as before QanhInitialize.
 *
 * Call it on the thread of QanhInitialize. It presses keys on the user's desktop and replaces what is on the
 * clipboard, which it empties afterwards. It blocks for the pauses that the pane needs, at least 2 s, and as long as
 * the pane stays in front: a pane that finds nothing keeps the call.
 */
HRESULT QANH_CALL QanhLaunchBySearch(LPCWSTR appName, DWORD searchMode, BOOL useExcludeList);

/*
 * Starts the browser by the Start screen's search, with its tile setting forced for the duration of the launch and
 * put back afterwards.
 *
 *   tileMode                    QANH_TILE_DESKTOP, QANH_TILE_IMMERSIVE or QANH_TILE_UNCHANGED
 *   searchMode, useExcludeList  as for QanhLaunchBySearch
 *
 * Returns what QanhLaunchBySearch returns. Trouble with the setting is not reported. Threads as there.
 */
HRESULT QANH_CALL QanhLaunchIEBySearch(DWORD tileMode, DWORD searchMode, BOOL useExcludeList);

/*
 * Starts a Store application by its ID, without the search pane.
 *
 *   appUserModelId  application user model ID
 *   arguments       handed to the application; may be null
 *
 * Returns E_POINTER, E_INVALIDARG, the failure to reach the activation manager, or that manager's result unchanged:
 * only S_OK is a launch, since that manager has other success codes.
 * Any thread: the call enters and leaves a COM apartment for itself. Blocks for the activation and 100 ms.
 */
HRESULT QANH_CALL QanhLaunchByManager(LPCWSTR appUserModelId, LPCWSTR arguments);

#ifdef __cplusplus
}
#endif

#endif
