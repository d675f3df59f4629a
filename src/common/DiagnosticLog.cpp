#include "common/DiagnosticLog.h"

#include "common/HostEnvironment.h"
#include "common/NarrowFormat.h"
#include "common/UniqueHandle.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

constexpr wchar_t kLogFileName[] = L"QanHelperLog.txt";
constexpr wchar_t kLogPathFormat[] = L"%s\\Vel\\QanHelper\\%s\\%s";

wchar_t s_szLogPath[MAX_PATH] = {}; // empty: the bare file name, in the current directory

// Gives the thread's last error and the C runtime's errno back at the end of the scope: callers log between a
// failed call and their look at its error.
class LastErrorKeeper
{
public:
    LastErrorKeeper() noexcept : m_lastError(GetLastError()) { _get_errno(&m_errno); }
    ~LastErrorKeeper()
    {
        _set_errno(m_errno);
        SetLastError(m_lastError);
    }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD m_lastError;
    int m_errno = 0;
};

int FormatTimeStamp(char* buffer, std::size_t size) noexcept
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return _snprintf_s(buffer, size, _TRUNCATE, "[%04d/%02d/%02d %02d:%02d:%02d.%03d]", now.wYear, now.wMonth,
                       now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

BOOL Append(HANDLE file, const char* text, int length) noexcept
{
    DWORD written = 0;
    return WriteFile(file, text, length > 0 ? static_cast<DWORD>(length) : 0, &written, nullptr);
}

} // namespace

namespace DiagnosticLog {

int ComposePath() noexcept
{
    wchar_t localAppData[MAX_PATH];
    if (!ReadEnvironmentVariable(L"LOCALAPPDATA", localAppData)) {
        return 0;
    }
    wchar_t executable[MAX_PATH];
    if (!GetHostExecutablePath(executable)) {
        return 0;
    }
    // The host name brings its backslash along, so the path holds two in a row: that is its required form.
    const wchar_t* hostName = CutHostName(executable);
    // The bounded formatter refuses a path that does not fit through the C runtime's
    // invalid-parameter handling. Some C runtimes put a terminator right behind the buffer then: one
    // character to spare.
    wchar_t path[MAX_PATH + 1] = {};
    if (swprintf_s(path, MAX_PATH, kLogPathFormat, localAppData, hostName, kLogFileName) < 0) {
        return 0;
    }
    // Another thread may be reading the path: what stands there already is not written again.
    if (std::wcscmp(path, s_szLogPath) != 0) {
        std::memcpy(s_szLogPath, path, sizeof s_szLogPath);
    }
    return 1;
}

int WriteLine(const char* format, ...) noexcept
{
    if (!IsEnabled()) {
        return 1;
    }
    if (!format) {
        return 0;
    }
    const LastErrorKeeper lastError;
    const UniqueFile file(CreateFileW(s_szLogPath[0] != L'\0' ? s_szLogPath : kLogFileName, GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return 0;
    }
    SetFilePointer(file.Get(), 0, nullptr, FILE_END);

    char buffer[kLargestMessage] = {};
    Append(file.Get(), buffer, FormatTimeStamp(buffer, sizeof buffer));

    va_list arguments;
    va_start(arguments, format);
    const int length = FormatNarrow(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return Append(file.Get(), buffer, length);
}

} // namespace DiagnosticLog
