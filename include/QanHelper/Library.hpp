// The library while it is up, and the strings that it hands out. Part of QanHelper.hpp.
#ifndef QANHELPER_LIBRARY_HPP
#define QANHELPER_LIBRARY_HPP

#include "Results.hpp"

#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace qanh {

// What a launch by search pastes and presses; see QanhLaunchBySearch.
enum class SearchMode : DWORD
{
    Launch = QANH_SEARCH_LAUNCH,
    Show = QANH_SEARCH_SHOW,
    LaunchPlain = QANH_SEARCH_LAUNCH_PLAIN,
};

// What the browser's tile setting must be during a launch; see QanhLaunchIEBySearch.
enum class TileMode : DWORD
{
    Desktop = QANH_TILE_DESKTOP,
    Immersive = QANH_TILE_IMMERSIVE,
    Unchanged = QANH_TILE_UNCHANGED,
};

// The nine functions, wherever they come from.
struct Functions
{
    decltype(&::QanhInitialize) initialize = nullptr;
    decltype(&::QanhFinalize) finalize = nullptr;
    decltype(&::QanhReleaseString) releaseString = nullptr;
    decltype(&::QanhIsInstalled) isInstalled = nullptr;
    decltype(&::QanhIsInstalledByAppUserModeID) isInstalledById = nullptr;
    decltype(&::QanhGetAppDisplayNameByPFN) getDisplayName = nullptr;
    decltype(&::QanhLaunchBySearch) launchBySearch = nullptr;
    decltype(&::QanhLaunchIEBySearch) launchBrowser = nullptr;
    decltype(&::QanhLaunchByManager) activate = nullptr;
};

// Where the library is taken from.
class Source
{
public:
    // The DLL that the program is linked with. Only a program that calls this needs the import library.
    static Source Linked() noexcept
    {
        return Given({&::QanhInitialize, &::QanhFinalize, &::QanhReleaseString, &::QanhIsInstalled,
                      &::QanhIsInstalledByAppUserModeID, &::QanhGetAppDisplayNameByPFN, &::QanhLaunchBySearch,
                      &::QanhLaunchIEBySearch, &::QanhLaunchByManager});
    }

    // Functions that the host has already, such as those that its own tests play the library with. All are
    // needed.
    static Source Given(const Functions& functions) noexcept
    {
        Source source;
        source.m_functions = functions;
        return source;
    }

    // A file by its full path, with backslashes; what it needs is taken from the system's folder only. It is
    // loaded when a Library is made.
    static Source File(std::wstring path)
    {
        Source source;
        source.m_path = std::move(path);
        return source;
    }

    // "": nothing is to be loaded.
    const std::wstring& Path() const noexcept { return m_path; }
    // Null pointers: it is to be loaded.
    const Functions& GivenFunctions() const noexcept { return m_functions; }

private:
    Source() = default;

    std::wstring m_path;
    Functions m_functions;
};

namespace detail {

// The functions, and the DLL in memory for as long as this lives when it was loaded.
class Module
{
public:
    // Throws Error: E_INVALIDARG when the path is not a full one, the system's error when the file cannot be
    // loaded, ERROR_PROC_NOT_FOUND when it is another DLL.
    explicit Module(const Source& source) : m_functions(source.GivenFunctions())
    {
        if (source.Path().empty()) {
            return;
        }
        ThrowIfFailed(IsFull(source.Path()) ? S_OK : ToResult(0x80070057), "the path of QanHelper.dll");
        m_module = LoadLibraryExW(source.Path().c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        ThrowIfFailed(m_module ? S_OK : HRESULT_FROM_WIN32(GetLastError()), "LoadLibraryExW");
        const bool isWhole = Find(m_functions.initialize, "QanhInitialize") &&
                             Find(m_functions.finalize, "QanhFinalize") &&
                             Find(m_functions.releaseString, "QanhReleaseString") &&
                             Find(m_functions.isInstalled, "QanhIsInstalled") &&
                             Find(m_functions.isInstalledById, "QanhIsInstalledByAppUserModeID") &&
                             Find(m_functions.getDisplayName, "QanhGetAppDisplayNameByPFN") &&
                             Find(m_functions.launchBySearch, "QanhLaunchBySearch") &&
                             Find(m_functions.launchBrowser, "QanhLaunchIEBySearch") &&
                             Find(m_functions.activate, "QanhLaunchByManager");
        if (!isWhole) {
            FreeLibrary(m_module);
            throw Error(ToResult(0x8007007F), "QanHelper.dll");
        }
    }
    ~Module()
    {
        if (m_module) {
            FreeLibrary(m_module);
        }
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    const Functions& operator*() const noexcept { return m_functions; }
    const Functions* operator->() const noexcept { return &m_functions; }

private:
    // "C:\..." or "\\server\...".
    static bool IsFull(const std::wstring& path) noexcept
    {
        return path.size() > 3 && (path.compare(1, 2, L":\\") == 0 || path.compare(0, 2, L"\\\\") == 0);
    }

    template <typename Function> bool Find(Function& function, const char* name) noexcept
    {
        const FARPROC address = GetProcAddress(m_module, name);
        static_assert(sizeof address == sizeof function);
        std::memcpy(&function, &address, sizeof function);
        return address != nullptr;
    }

    Functions m_functions;
    HMODULE m_module = nullptr;
};

} // namespace detail

// A string of the library's that goes back to it at the end of the scope. Belongs to one thread at a time.
// Release it before the Library that it came from goes.
class String
{
public:
    // An empty one.
    String() noexcept = default;
    // Takes over a string that is given back through the function; null is an empty one.
    String(wchar_t* text, decltype(&::QanhReleaseString) release) noexcept : m_text(text), m_release(release)
    {
    }
    ~String()
    {
        if (m_text) {
            m_release(m_text);
        }
    }
    String(String&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)), m_release(other.m_release)
    {
    }
    String& operator=(String&& other) noexcept
    {
        std::swap(m_text, other.m_text);
        std::swap(m_release, other.m_release);
        return *this;
    }

    // Never null.
    const wchar_t* c_str() const noexcept { return m_text ? m_text : L""; }
    std::wstring_view View() const noexcept { return c_str(); }
    // A copy that lives as long as it likes.
    std::wstring ToString() const { return c_str(); }
    bool IsEmpty() const noexcept { return *c_str() == L'\0'; }

private:
    wchar_t* m_text = nullptr;
    decltype(&::QanhReleaseString) m_release = nullptr;
};

// The library, up for as long as this lives: QanhInitialize at the beginning, QanhFinalize at the end. Every
// text is UTF-16 and ends at its first null character. A launcher is better off with Launcher, which brings
// the thread along.
//
// Thread: it is made, used for launches by search and destroyed on one thread, which enters a single-threaded
// apartment by it. The const functions may be called on any thread while it lives.
//
// Failures are thrown as Error; memory that runs out also as std::bad_alloc.
class Library
{
public:
    // Brings the library up; may take up to 5 s (see QanhInitialize). Throws Error: RPC_E_CHANGED_MODE in a
    // multithreaded apartment, the failure to load the DLL, or another one, which may pass: try again after a
    // second or two.
    explicit Library(const Source& source) : m_module(source), m_result(m_module->initialize())
    {
        detail::ThrowIfFailed(m_result, "QanhInitialize");
    }

    // Takes it down, and unloads the DLL that was loaded for it; may take up to 43 s (see docs/embedding.md).
    ~Library() { m_module->finalize(); }

    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // False: another process of this executable was in its first refresh, and this one works with the
    // catalogue as it was loaded.
    bool IsRefreshing() const noexcept { return m_result != S_FALSE; }

    // Whether a Store package is installed for the user; "no" also when the system's package manager cannot
    // be reached. Throws E_INVALIDARG for an empty name, E_FAIL, E_OUTOFMEMORY. Any thread.
    bool IsInstalled(const std::wstring& packageFamily) const
    {
        BOOL isInstalled = FALSE;
        detail::ThrowIfFailed(m_module->isInstalled(packageFamily.c_str(), &isInstalled), "QanhIsInstalled");
        return isInstalled != FALSE;
    }

    // The same for the package of an application user model ID.
    bool IsInstalledById(const std::wstring& appUserModelId) const
    {
        HRESULT result = detail::ToResult(0x8007000E); // E_OUTOFMEMORY, unless the call returns
        BOOL isInstalled = FALSE;
        try {
            result = m_module->isInstalledById(appUserModelId.c_str(), &isInstalled);
        } catch (const std::bad_alloc&) {
            // It may lie in the DLL, where nobody else can free it: it ends here, and Error is the host's.
        }
        detail::ThrowIfFailed(result, "QanhIsInstalledByAppUserModeID");
        return isInstalled != FALSE;
    }

    // The display name of a package's only application; empty when its manifest gives none. Throws
    // QANH_E_NO_PACKAGE, QANH_E_SEVERAL_APPLICATIONS, E_INVALIDARG, E_FAIL, E_OUTOFMEMORY or the failure to
    // read the manifest. Any thread; the string is the caller's.
    String DisplayName(const std::wstring& packageFamily) const
    {
        wchar_t* text = nullptr;
        const HRESULT result = m_module->getDisplayName(packageFamily.c_str(), &text);
        String name(text, m_module->releaseString); // also when the call failed
        detail::ThrowIfFailed(result, "QanhGetAppDisplayNameByPFN");
        return name;
    }

    // Starts a Store application by its ID. Null arguments: none. Returns the activation manager's result
    // unchanged, or the failure to reach it: only S_OK is a launch. Nothing is thrown. Any thread; blocks for
    // the activation and 100 ms.
    HRESULT Activate(const wchar_t* appUserModelId, const wchar_t* arguments = nullptr) const noexcept
    {
        return m_module->activate(appUserModelId, arguments);
    }

    // Starts an application by the Start screen's search. Returns what QanhLaunchBySearch returns: S_OK says
    // that keys were pressed. The library's thread only; blocks for 2 s at least, and as long as the pane
    // stays in front. What is on the clipboard is lost.
    HRESULT LaunchBySearch(const wchar_t* name, SearchMode mode = SearchMode::Launch,
                           bool excludeOthers = true) noexcept
    {
        return m_module->launchBySearch(name, static_cast<DWORD>(mode), excludeOthers ? TRUE : FALSE);
    }

    // Starts the browser in the same way, with its tile setting forced during the launch.
    HRESULT LaunchBrowser(TileMode tile, SearchMode mode = SearchMode::Launch,
                          bool excludeOthers = true) noexcept
    {
        return m_module->launchBrowser(static_cast<DWORD>(tile), static_cast<DWORD>(mode),
                                       excludeOthers ? TRUE : FALSE);
    }

private:
    detail::Module m_module;
    HRESULT m_result;
};

// Waits until the first refresh of the catalogue in the processes of this executable is over, which takes a
// second and one pass after the first start; before it, launches exclude only what the catalogue held
// already.
//
//   limit    milliseconds
//
// Returns false when the time is over first. Any thread; looks every 100 ms. Throws std::bad_alloc.
inline bool WaitForFirstRefresh(DWORD limit)
{
    // The library names things after the executable, up to its first dot.
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size())));
    const std::wstring file = path.substr(path.rfind(L'\\') + 1);
    const std::wstring name = L"QanHelper_" + file.substr(0, file.find(L'.'));
    for (const ULONGLONG end = GetTickCount64() + limit;; Sleep(100)) {
        const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, name.c_str());
        if (mutex) {
            CloseHandle(mutex);                             // one that is kept open would keep it in being
        } else if (GetLastError() != ERROR_ACCESS_DENIED) { // an elevated process's is there, too
            return true;
        }
        if (GetTickCount64() >= end) {
            return false;
        }
    }
}

} // namespace qanh

#endif
