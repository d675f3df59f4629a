// Finds out from outside what a launch has started. Part of QanHelper.hpp; not for hosts.
#ifndef QANHELPER_FOREGROUND_HPP
#define QANHELPER_FOREGROUND_HPP

#include "Outcome.hpp"

#include <chrono>
#include <cstring>
#include <cwchar>
#include <optional>
#include <string>

namespace qanh {
namespace detail {

using Clock = std::chrono::steady_clock;

inline constexpr wchar_t kSearchPaneClass[] = L"SearchPane";

// The library presses Enter no earlier than this after the pane has come to the front: it pauses 200 ms until
// the pane has settled and 1,100 for the paste, and pauses may be a little short.
inline constexpr std::chrono::milliseconds kEnterIsPressed{1200};

inline DWORD ProcessOf(HWND window) noexcept
{
    DWORD process = 0;
    if (window) {
        GetWindowThreadProcessId(window, &process);
    }
    return process;
}

inline bool IsSearchPane(HWND window) noexcept
{
    wchar_t name[64] = L"";
    return GetClassNameW(window, name, 64) > 0 && std::wcscmp(name, kSearchPaneClass) == 0;
}

// Start screen, desktop and task bar are windows of the process that has the search pane, without a title
// bar; the file manager's windows are of the same process and have one.
inline bool IsOfShell(HWND window) noexcept
{
    if (window == GetDesktopWindow() || window == GetShellWindow()) {
        return true;
    }
    const DWORD process = ProcessOf(window);
    const bool isShell = process == ProcessOf(GetShellWindow()) ||
                         process == ProcessOf(FindWindowW(kSearchPaneClass, nullptr));
    return isShell && (GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION) != WS_CAPTION;
}

inline ULONGLONG ToNumber(const FILETIME& time) noexcept
{
    return (ULONGLONG{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

// What is known of the window, for a launch that began at that moment. Takes its time, as the system is asked
// for files: not to be called with a lock held. May throw std::bad_alloc.
inline StartedWindow DescribeWindow(HWND window, ULONGLONG begin)
{
    StartedWindow described;
    described.handle = window;
    described.processId = ProcessOf(window);
    // Another process's title is read without asking that process. For one of the host's own the system would
    // send a message to its thread, which may be waiting for this very outcome.
    if (described.processId != GetCurrentProcessId()) {
        wchar_t title[512] = L"";
        GetWindowTextW(window, title, 512);
        described.title = title;
    }
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, described.processId);
    if (process) {
        FILETIME created = {};
        FILETIME unused = {};
        described.isNewProcess =
            GetProcessTimes(process, &created, &unused, &unused, &unused) && ToNumber(created) >= begin;
        wchar_t path[MAX_PATH * 4] = L"";
        DWORD size = MAX_PATH * 4;
        if (QueryFullProcessImageNameW(process, 0, path, &size)) {
            described.program = path;
        }
        CloseHandle(process);
    }
    return described;
}

// Looks at the window in front again and again, from right before the library is called. Not thread-safe.
class ForegroundWatch
{
public:
    explicit ForegroundWatch(bool isSearch) noexcept
        : m_isSearch(isSearch), m_before(GetForegroundWindow()), m_lastLook(Clock::now())
    {
        FILETIME begin = {};
        GetSystemTimeAsFileTime(&begin);
        m_begin = ToNumber(begin);
    }

    // To be called every few milliseconds.
    void Look() noexcept
    {
        const Clock::time_point now = Clock::now();
        const HWND window = GetForegroundWindow();
        if (window && IsSearchPane(window)) {
            // It may have come at any time since the last look.
            m_paneCame = m_paneCame ? m_paneCame : m_lastLook;
            m_isPaneInFront = true;
            m_isTaken = false;
            m_found = nullptr;
        } else {
            if (m_isPaneInFront) {
                m_isPaneInFront = false;
                m_isTaken = now - *m_paneCame < kEnterIsPressed;
            }
            if (window && IsOther(window) && (!m_isSearch || m_paneCame)) {
                m_found = window;
            }
        }
        m_lastLook = now;
    }

    bool HasPaneCome() const noexcept { return m_paneCame.has_value(); }

    // The pane lost the front before Enter can have been pressed.
    bool IsFocusTaken() const noexcept { return m_isTaken; }

    // The other program's window that came to the front last, behind the pane where there is one; null: none.
    HWND Found() const noexcept { return m_found && IsWindow(m_found) ? m_found : nullptr; }

    // When the watch began, as DescribeWindow takes it.
    ULONGLONG Begin() const noexcept { return m_begin; }

private:
    // A window that was not in front before and belongs neither to the host nor to the shell.
    bool IsOther(HWND window) const noexcept
    {
        return window != m_before && IsWindowVisible(window) && ProcessOf(window) != GetCurrentProcessId() &&
               !IsOfShell(window);
    }

    bool m_isSearch;
    HWND m_before;
    ULONGLONG m_begin;
    Clock::time_point m_lastLook;
    std::optional<Clock::time_point> m_paneCame; // not later than it did
    bool m_isPaneInFront = false;
    bool m_isTaken = false;
    HWND m_found = nullptr;
};

} // namespace detail
} // namespace qanh

#endif
