#include "common/HostEnvironment.h"

#include <cwchar>

bool ReadEnvironmentVariable(const wchar_t* name, wchar_t (&value)[MAX_PATH]) noexcept
{
    value[0] = L'\0';
    // An empty variable has the length 0 too: the last error tells it from an absent one.
    SetLastError(ERROR_SUCCESS);
    const DWORD length = GetEnvironmentVariableW(name, value, MAX_PATH);
    return length != 0 ? length < MAX_PATH : GetLastError() == ERROR_SUCCESS;
}

bool GetHostExecutablePath(wchar_t (&path)[MAX_PATH]) noexcept
{
    path[0] = L'\0';
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    path[MAX_PATH - 1] = L'\0';
    return length != 0;
}

wchar_t* CutHostName(wchar_t* path) noexcept
{
    wchar_t* position = path + std::wcslen(path);
    while (position != path && *position != L'\\') {
        if (*position == L'.') {
            *position = L'\0';
        }
        --position;
    }
    return position;
}
