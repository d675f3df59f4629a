#include "common/HostEnvironment.h"

#include <cstdlib>
#include <cwchar>

bool ReadEnvironmentVariable(const wchar_t* name, wchar_t (&value)[MAX_PATH]) noexcept
{
    std::size_t size = 0;
    value[0] = L'\0';
    // A size of 0 tells an absent variable from an empty one.
    return _wgetenv_s(&size, value, MAX_PATH, name) == 0 && size != 0;
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
