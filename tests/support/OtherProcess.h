#pragma once

#include "standin/TryStart.h"

#include <windows.h>

#include <string>

namespace test {

// What another process does for a test. The test program starts itself again; the copy plays the part before
// main() and ends with the part's result. So parts are declared at namespace scope and use nothing but the
// platform.
//
//     const test::Part g_holdMutex(L"HoldMutex", [](const test::Part::Context& context) {
//         const HANDLE mutex = CreateMutexW(nullptr, FALSE, context.Argument().c_str());
//         context.ReadyUntilEnd();
//         CloseHandle(mutex);
//         return 0; });
//     ... test::OtherProcess holder(L"HoldMutex", L"QanHelper_Launcher"); // returns when the part is ready
class Part
{
public:
    class Context
    {
    public:
        [[nodiscard]] std::wstring Argument() const { return Variable(L"QANH_TEST_ARGUMENT"); }
        // Tells the test that it may go on, and waits until it has done what it wanted.
        void ReadyUntilEnd() const
        {
            const HANDLE ready = Open(L"_ready");
            const HANDLE end = Open(L"_end");
            SetEvent(ready);
            WaitForSingleObject(end, 20000);
            CloseHandle(ready);
            CloseHandle(end);
        }

    private:
        static HANDLE Open(const wchar_t* suffix)
        {
            return OpenEventW(EVENT_ALL_ACCESS, FALSE, (Variable(L"QANH_TEST_EVENTS") + suffix).c_str());
        }
    };

    Part(const wchar_t* name, int (*play)(const Context&))
    {
        if (Variable(L"QANH_TEST_PART") == name) {
            ExitProcess(static_cast<UINT>(play(Context())));
        }
    }

private:
    friend class OtherProcess;

    static std::wstring Variable(const wchar_t* name)
    {
        wchar_t value[1024];
        const DWORD length = GetEnvironmentVariableW(name, value, 1024);
        return std::wstring(value, length < 1024 ? length : 0);
    }
};

// A copy of this program that plays a part. It is ended at the end of the scope.
class OtherProcess
{
public:
    OtherProcess(const wchar_t* part, const std::wstring& argument = L"")
    {
        static int s_count = 0;
        const std::wstring events =
            L"QanhTest" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++s_count);
        m_ready = CreateEventW(nullptr, TRUE, FALSE, (events + L"_ready").c_str());
        m_end = CreateEventW(nullptr, TRUE, FALSE, (events + L"_end").c_str());
        SetEnvironmentVariableW(L"QANH_TEST_PART", part);
        SetEnvironmentVariableW(L"QANH_TEST_ARGUMENT", argument.c_str());
        SetEnvironmentVariableW(L"QANH_TEST_EVENTS", events.c_str());
        // The command line is that of this process: a test may have the executable's path patched.
        std::wstring commandLine = GetCommandLineW();
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        const BOOL isStarted = standin::TryStart([&] {
            return CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                  &startup, &process);
        });
        if (isStarted) {
            m_process = process.hProcess;
            CloseHandle(process.hThread);
            const HANDLE handles[] = {m_ready, m_process};
            WaitForMultipleObjects(2, handles, FALSE, 20000);
        }
        SetEnvironmentVariableW(L"QANH_TEST_PART", nullptr);
    }
    ~OtherProcess()
    {
        End();
        if (m_process) {
            CloseHandle(m_process);
        }
        CloseHandle(m_ready);
        CloseHandle(m_end);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    // Lets the part end, when it is not over already, and returns its result.
    DWORD End()
    {
        SetEvent(m_end);
        DWORD result = ERROR_NOT_FOUND;
        if (m_process) {
            WaitForSingleObject(m_process, 20000);
            GetExitCodeProcess(m_process, &result);
        }
        return result;
    }

private:
    HANDLE m_ready;
    HANDLE m_end;
    HANDLE m_process = nullptr;
};

} // namespace test
