#pragma once

#include <windows.h>

namespace test {

// This program in the part of another process of TestHost.exe whose first refresh pass runs: as long as it
// lasts, hosts are not the first process of their executable.
class FirstPassOfAnother
{
public:
    FirstPassOfAnother() : m_mutex(CreateMutexW(nullptr, FALSE, L"QanHelper_TestHost")) {}
    ~FirstPassOfAnother() { End(); }
    FirstPassOfAnother(const FirstPassOfAnother&) = delete;
    FirstPassOfAnother& operator=(const FirstPassOfAnother&) = delete;

    void End()
    {
        if (m_mutex) {
            CloseHandle(m_mutex);
            m_mutex = nullptr;
        }
    }

private:
    HANDLE m_mutex;
};

} // namespace test
