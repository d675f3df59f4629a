#pragma once

#include "support/Current.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <cwchar>
#include <string>
#include <utility>

namespace test {

// Makes the library believe that its host is this executable, until the end of the scope. The file need not
// exist. One at a time.
class HostExecutable : private Current<HostExecutable>
{
public:
    explicit HostExecutable(std::wstring path)
        : m_patch("GetModuleFileNameW", GetPath), m_path(std::move(path))
    {
    }

    // For FailNext: until the end of the scope.
    static constexpr int kAlways = 1000000;

    void Set(std::wstring path) { m_path = std::move(path); }
    // This many of the next calls, and none after them, get no path.
    void FailNext(int calls) { m_failures = calls; }
    // As systems before Windows Vista did: a path that does not fit has no terminator.
    void LeaveTerminatorOut() { m_terminates = false; }

    [[nodiscard]] const std::wstring& Path() const { return m_path; }

private:
    static DWORD WINAPI GetPath(HMODULE module, wchar_t* buffer, DWORD size)
    {
        if (module) {
            return s_current->m_patch.Original()(module, buffer, size);
        }
        if (s_current->m_failures > 0) {
            --s_current->m_failures;
            SetLastError(ERROR_ACCESS_DENIED);
            return 0;
        }
        const std::wstring& path = s_current->m_path;
        if (path.size() < size) {
            std::wmemcpy(buffer, path.c_str(), path.size() + 1);
            return static_cast<DWORD>(path.size());
        }
        std::wmemcpy(buffer, path.c_str(), size);
        if (s_current->m_terminates) {
            buffer[size - 1] = L'\0';
        }
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    }

    friend Current<HostExecutable>;
    ImportPatch<decltype(&GetModuleFileNameW)> m_patch;
    std::wstring m_path;
    int m_failures = 0;
    bool m_terminates = true;
};

} // namespace test
