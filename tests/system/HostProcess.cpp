#include "system/HostProcess.h"

#include "support/Text.h"

#include <stdexcept>

namespace test {

HostProcess::HostProcess(Sandbox& sandbox, const std::wstring& fileName, bool isLoaded)
{
    const std::wstring program = sandbox.AddHost(fileName);
    SECURITY_ATTRIBUTES inherited = {};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    HANDLE hostInput = nullptr;
    HANDLE hostOutput = nullptr;
    CreatePipe(&hostInput, &m_input, &inherited, 0);
    CreatePipe(&m_output, &hostOutput, &inherited, 0);
    SetHandleInformation(m_input, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(m_output, HANDLE_FLAG_INHERIT, 0);
    m_process = sandbox.Start(program, hostInput, hostOutput);
    CloseHandle(hostInput);
    CloseHandle(hostOutput);
    if (isLoaded) {
        Do("load");
    }
}

HostProcess::~HostProcess()
{
    TerminateProcess(m_process.process, 1);
    WaitForSingleObject(m_process.process, 5000);
    CloseHandle(m_process.process);
    CloseHandle(m_input);
    CloseHandle(m_output);
}

std::string HostProcess::Command(std::string_view command, DWORD timeout)
{
    Send(command);
    return Answer(timeout);
}

void HostProcess::Do(std::string_view command, DWORD timeout)
{
    const std::string answer = Command(command, timeout);
    if (answer != "ok") {
        Fail("answered " + answer);
    }
}

std::size_t HostProcess::Measure(std::string_view command)
{
    const std::string answer = Command(command);
    if (answer.empty() || answer.find_first_not_of("0123456789") != std::string::npos) {
        Fail("answered " + answer);
    }
    return std::stoul(answer);
}

void HostProcess::Send(std::string_view command)
{
    m_command = command;
    const std::string line = m_command + "\n";
    DWORD written = 0;
    if (!WriteFile(m_input, line.data(), static_cast<DWORD>(line.size()), &written, nullptr)) {
        Fail("does not listen");
    }
}

std::string HostProcess::Answer(DWORD timeout)
{
    std::string line;
    for (const ULONGLONG end = GetTickCount64() + timeout;;) {
        DWORD available = 0;
        if (!PeekNamedPipe(m_output, nullptr, 0, nullptr, &available, nullptr)) {
            Fail("ended");
        }
        if (available == 0) {
            if (GetTickCount64() > end) {
                TerminateProcess(m_process.process, 1);
                Fail("hung and was killed");
            }
            Sleep(1);
            continue;
        }
        char character = 0;
        DWORD read = 0;
        ReadFile(m_output, &character, 1, &read, nullptr);
        if (character == '\n') {
            return line;
        }
        line += character;
    }
}

void HostProcess::InitializeAndPass()
{
    const std::string result = Command("init");
    if (result != "0x00000000") {
        Fail("answered " + result);
    }
    WaitForFirstPass();
}

std::string HostProcess::Search(std::string_view name, int mode, bool useExcludeList, DWORD timeout)
{
    return Command("search\t" + std::to_string(mode) + (useExcludeList ? "\t1\t" : "\t0\t") +
                       std::string(name),
                   timeout);
}

DWORD HostProcess::Exit(int code)
{
    Do("exit\t" + std::to_string(code));
    return WaitForEnd();
}

DWORD HostProcess::WaitForEnd(DWORD timeout)
{
    DWORD exitCode = STILL_ACTIVE;
    if (WaitForSingleObject(m_process.process, timeout) != WAIT_OBJECT_0) {
        Fail("does not end");
    }
    GetExitCodeProcess(m_process.process, &exitCode);
    return exitCode;
}

bool HostProcess::HasExitEvent() const
{
    return OpenExitEvent() != nullptr;
}

void HostProcess::SetExitEvent()
{
    SetEvent(ExitEvent().get());
}

void HostProcess::WaitForExitEvent()
{
    if (WaitForSingleObject(ExitEvent().get(), 10000) != WAIT_OBJECT_0) {
        Fail("does not set its exit event");
    }
}

HostProcess::Event HostProcess::OpenExitEvent() const
{
    const std::wstring name = L"Local\\PYX_Event_Exit_RefreshThread" + std::to_wstring(m_process.id);
    return Event(OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, name.c_str()), &CloseHandle);
}

HostProcess::Event HostProcess::ExitEvent()
{
    Event event = OpenExitEvent();
    if (!event) {
        Fail("has no exit event");
    }
    return event;
}

void HostProcess::Fail(const std::string& what)
{
    std::string state;
    DWORD exitCode = 0;
    if (WaitForSingleObject(m_process.process, 100) == WAIT_OBJECT_0 &&
        GetExitCodeProcess(m_process.process, &exitCode)) {
        state = ", exit code " + std::to_string(exitCode);
    }
    throw std::runtime_error("the host " + what + " at the command \"" + m_command + "\"" + state);
}

} // namespace test
