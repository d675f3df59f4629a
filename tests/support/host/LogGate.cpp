#include "support/host/LogGate.h"

#include "support/host/Patch.h"

#include <string_view>

namespace {

constexpr std::wstring_view logName = L"QanHelperLog.txt";

HANDLE g_open = nullptr; // manual-reset event
DWORD g_mainThread = 0;
SRWLOCK g_lineLock = SRWLOCK_INIT; // held from the opening of the log to its closing
HANDLE volatile g_log = INVALID_HANDLE_VALUE;

bool IsLog(const wchar_t* path)
{
    const std::wstring_view text = path ? path : L"";
    return text.size() >= logName.size() && text.substr(text.size() - logName.size()) == logName;
}

HANDLE WINAPI CreateFileInTurn(const wchar_t* path, DWORD access, DWORD sharing,
                               SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags, HANDLE model)
{
    if (!IsLog(path)) {
        return CreateFileW(path, access, sharing, security, disposition, flags, model);
    }
    if (GetCurrentThreadId() != g_mainThread) {
        WaitForSingleObject(g_open, INFINITE);
    }
    AcquireSRWLockExclusive(&g_lineLock);
    const HANDLE file = CreateFileW(path, access, sharing, security, disposition, flags, model);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        ReleaseSRWLockExclusive(&g_lineLock);
        SetLastError(error);
    }
    g_log = file;
    return file;
}

BOOL WINAPI CloseHandleInTurn(HANDLE handle)
{
    const bool isLog = handle == g_log && handle != INVALID_HANDLE_VALUE;
    if (isLog) {
        g_log = INVALID_HANDLE_VALUE;
    }
    const BOOL closed = CloseHandle(handle);
    if (isLog) {
        ReleaseSRWLockExclusive(&g_lineLock);
    }
    return closed;
}

} // namespace

namespace host {

void LogGate::Install(HMODULE library)
{
    g_mainThread = GetCurrentThreadId();
    g_open = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    Patch(library, "CreateFileW", &CreateFileInTurn);
    Patch(library, "CloseHandle", &CloseHandleInTurn);
}

void LogGate::Open()
{
    SetEvent(g_open);
}

} // namespace host
