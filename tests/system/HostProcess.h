#pragma once

#include "system/Sandbox.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test {

// A launcher in a process of its own that does what it is told; the commands are listed in
// support/host/Commands.h. The library is loaded already. What goes wrong with the process itself is thrown
// as std::runtime_error with the command's text: a host that does not answer in time is killed. Ended at the
// end of the scope.
class HostProcess
{
public:
    explicit HostProcess(Sandbox& sandbox, const std::wstring& fileName = L"TestHost.exe",
                         bool isLoaded = true);
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    // The answer to a command; fields are joined by tabs in both. Time-outs are in milliseconds.
    std::string Command(std::string_view command, DWORD timeout = 15000);
    // A command that must be answered with "ok".
    void Do(std::string_view command, DWORD timeout = 15000);
    // A command's result as a number.
    std::size_t Measure(std::string_view command);

    // The two halves of Command, for what happens meanwhile.
    void Send(std::string_view command);
    std::string Answer(DWORD timeout = 15000);

    // Brings the library up, which must work, and waits for the end of the first pass.
    void InitializeAndPass();

    // QanhLaunchBySearch.
    std::string Search(std::string_view name, int mode, bool useExcludeList, DWORD timeout = 30000);

    // Lets the process end by itself and returns its exit code.
    DWORD Exit(int code = 0);
    // Its exit code when it ends without being asked; throws when it does not.
    DWORD WaitForEnd(DWORD timeout = 10000);

    [[nodiscard]] DWORD ProcessId() const { return m_process.id; }
    // Whether the event exists by which the refresh thread is told to stop: while the library is up as an
    // owner.
    [[nodiscard]] bool HasExitEvent() const;
    // Sets that event, as if the library were stopped.
    void SetExitEvent();
    // Throws when nobody sets it in time.
    void WaitForExitEvent();

private:
    using Event = std::unique_ptr<void, decltype(&CloseHandle)>;

    // Null: there is none.
    [[nodiscard]] Event OpenExitEvent() const;
    // The same; throws when there is none.
    [[nodiscard]] Event ExitEvent();
    [[noreturn]] void Fail(const std::string& what);

    StartedProcess m_process;
    HANDLE m_input = nullptr;  // what the host reads
    HANDLE m_output = nullptr; // what the host writes
    std::string m_command;     // the last one sent
};

} // namespace test
