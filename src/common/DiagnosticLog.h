#pragma once

#include <windows.h>

#include <atomic>

// One compiler checks the formats against their arguments; gcc refuses "%S" as not being ISO C++.
#if defined(__clang__)
#define QANHELPER_PRINTF_LIKE __attribute__((format(printf, 1, 2)))
#else
#define QANHELPER_PRINTF_LIKE
#endif

// The diagnostic trace of the library: one text file per host program, off unless the administrator switches
// "DebugLog" on. Callable from every thread. There is no lock and no open handle between two lines: a line is
// two appends (time stamp, message) to a file that is opened for it, so lines that two threads or processes
// write at the same time may stand in each other or overwrite each other.
//
// A line is never the caller's concern: the results of writing one are not [[nodiscard]].
namespace DiagnosticLog {

// Switches the trace. Off at start.
inline std::atomic<bool> s_bLogEnabled = false;
inline void SetEnabled(bool enabled) noexcept
{
    s_bLogEnabled = enabled;
}
[[nodiscard]] inline bool IsEnabled() noexcept
{
    return s_bLogEnabled.load(std::memory_order_relaxed);
}

// Points the trace at the host's own folder below LOCALAPPDATA, which is not created here. Returns 1 on
// success and 0 on failure; until it succeeded, lines go to "QanHelperLog.txt" in the current directory.
[[nodiscard]] int ComposePath() noexcept;

// Appends the time stamp and the formatted message; the message brings its own line end. Wide strings ("%S")
// are converted to the system code page, with "?" for what it cannot hold; a null string prints as "(null)".
// A message of more than 1,023 bytes is an invalid parameter to the C runtime, which ends the process unless
// the host has installed a handler. Returns 1 when the trace is off, 0 when the format is null or the file
// cannot be opened, otherwise the result of the last write. The thread's last error and errno stay as they
// were.
QANHELPER_PRINTF_LIKE int WriteLine(const char* format, ...) noexcept;

} // namespace DiagnosticLog

// The entry line of an operation, without arguments or with one or two texts. Where there is no trace it
// costs a look: operations write these for each record.
inline void LogIn(const wchar_t* operation) noexcept
{
    if (DiagnosticLog::IsEnabled()) {
        DiagnosticLog::WriteLine("%S IN\r\n", operation);
    }
}
inline void LogIn(const wchar_t* operation, const wchar_t* argument) noexcept
{
    if (DiagnosticLog::IsEnabled()) {
        DiagnosticLog::WriteLine("%S(%S) IN\r\n", operation, argument);
    }
}
inline void LogIn(const wchar_t* operation, const wchar_t* first, const wchar_t* second) noexcept
{
    if (DiagnosticLog::IsEnabled()) {
        DiagnosticLog::WriteLine("%S(%S, %S) IN\r\n", operation, first, second);
    }
}

// The exit lines of an operation. Each returns the result that it logs, so that leaving is one expression;
// the caller knows it anyway, so they are not [[nodiscard]] either.
inline HRESULT LogOut(const wchar_t* operation, HRESULT result) noexcept
{
    if (DiagnosticLog::IsEnabled()) {
        DiagnosticLog::WriteLine("%S OUT(0x%08X)\r\n", operation, static_cast<unsigned>(result));
    }
    return result;
}
inline int LogOutNumber(const wchar_t* operation, int result) noexcept
{
    if (DiagnosticLog::IsEnabled()) {
        DiagnosticLog::WriteLine("%S OUT(%d)\r\n", operation, result);
    }
    return result;
}
inline void LogOut(const wchar_t* operation) noexcept
{
    if (DiagnosticLog::IsEnabled()) {
        DiagnosticLog::WriteLine("%S OUT\r\n", operation);
    }
}
