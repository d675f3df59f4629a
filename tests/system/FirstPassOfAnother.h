#pragma once

#include <gtest/gtest.h>

#include <windows.h>

namespace test {

// This program in the part of another process, which has made an object by this name before.
class Squatter
{
public:
    // What the call has returned that made it, right after the call.
    explicit Squatter(HANDLE object) : m_object(object)
    {
        EXPECT_NE(GetLastError(), ERROR_ALREADY_EXISTS);
        EXPECT_NE(object, nullptr);
    }
    ~Squatter() { Leave(); }
    Squatter(const Squatter&) = delete;
    Squatter& operator=(const Squatter&) = delete;

    void Leave()
    {
        if (m_object) {
            CloseHandle(m_object);
            m_object = nullptr;
        }
    }
    [[nodiscard]] HANDLE Get() const { return m_object; }

private:
    HANDLE m_object;
};

// This program in the part of another process of TestHost.exe whose first refresh pass runs: as long as it
// lasts, hosts are not the first process of their executable.
struct FirstPassOfAnother : Squatter
{
    FirstPassOfAnother() : Squatter(CreateMutexW(nullptr, FALSE, L"QanHelper_TestHost")) {}
};

} // namespace test
