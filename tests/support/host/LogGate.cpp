#include "support/host/LogGate.h"

#include "standin/platform/ImportPatch.h"

#include <windows.h>

#include <stdexcept>
#include <string>
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

void Patch(const char* function, void* replacement)
{
    if (standin::PatchImports({"kernel32.dll", function, replacement}, GetModuleHandleW(nullptr)) == 0) {
        throw std::runtime_error(std::string("no module imports ") + function);
    }
}

} // namespace

namespace host {

void LogGate::Install()
{
    g_mainThread = GetCurrentThreadId();
    g_open = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    Patch("CreateFileW", reinterpret_cast<void*>(&CreateFileInTurn));
    Patch("CloseHandle", reinterpret_cast<void*>(&CloseHandleInTurn));
}

void LogGate::Open()
{
    SetEvent(g_open);
}

} // namespace host
