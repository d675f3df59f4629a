#include "tools/ToolRun.h"

#include "standin/ModulePath.h"
#include "standin/TryStart.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <stdexcept>

namespace test {

namespace {

constexpr DWORD kTimeout = 60000; // milliseconds

using Handle = std::unique_ptr<void, decltype(&CloseHandle)>;

struct Pipe
{
    Handle readEnd{nullptr, &CloseHandle};
    Handle writeEnd{nullptr, &CloseHandle}; // inherited

    Pipe()
    {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE readHandle = nullptr;
        HANDLE writeHandle = nullptr;
        CreatePipe(&readHandle, &writeHandle, &inherited, 0);
        SetHandleInformation(readHandle, HANDLE_FLAG_INHERIT, 0);
        readEnd.reset(readHandle);
        writeEnd.reset(writeHandle);
    }

    // What is in it now.
    void ReadTo(std::string& text) const
    {
        char piece[4096];
        DWORD read = 0;
        while (PeekNamedPipe(readEnd.get(), nullptr, 0, nullptr, &read, nullptr) && read > 0 &&
               ReadFile(readEnd.get(), piece, sizeof piece, &read, nullptr)) {
            text.append(piece, read);
        }
    }
};

std::wstring Tool()
{
    return standin::ModuleFolder() + L"\\qanh.exe";
}

Handle Start(const std::wstring& program, const std::wstring& arguments, HANDLE output, HANDLE problems)
{
    std::wstring commandLine = L"\"" + program + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
    startup.hStdError = problems;
    PROCESS_INFORMATION process{};
    const BOOL isStarted = standin::TryStart([&] {
        return CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                              nullptr, &startup, &process);
    });
    if (!isStarted) {
        throw std::runtime_error("the tool cannot be started: error " + std::to_string(GetLastError()));
    }
    CloseHandle(process.hThread);
    return Handle(process.hProcess, &CloseHandle);
}

DWORD WaitForEnd(HANDLE process, DWORD timeout)
{
    if (WaitForSingleObject(process, timeout) != WAIT_OBJECT_0) {
        TerminateProcess(process, 1);
        throw std::runtime_error("the tool does not end");
    }
    DWORD status = 0;
    GetExitCodeProcess(process, &status);
    return status;
}

} // namespace

void PrintTo(const ToolResult& result, std::ostream* out)
{
    *out << "status " << result.status << ", output:\n" << result.output << "problems:\n" << result.problems;
}

std::string WithPlainLineEnds(std::string text)
{
    ReplaceAll(text, "\r\n", "\r");
    ReplaceAll(text, "\n", "<LF alone>");
    ReplaceAll(text, "\r", "\n");
    return text;
}

ToolResult RunProgram(const std::wstring& program, const std::wstring& commandLine)
{
    Pipe output;
    Pipe problems;
    const Handle process = Start(program, commandLine, output.writeEnd.get(), problems.writeEnd.get());
    ToolResult result;
    // The pipes stay open for longer than the tool lives when it has started others.
    const ULONGLONG end = GetTickCount64() + kTimeout;
    while (WaitForSingleObject(process.get(), 1) == WAIT_TIMEOUT && GetTickCount64() < end) {
        output.ReadTo(result.output);
        problems.ReadTo(result.problems);
    }
    result.status = WaitForEnd(process.get(), 0);
    output.ReadTo(result.output);
    problems.ReadTo(result.problems);
    result.output = WithPlainLineEnds(result.output);
    result.problems = WithPlainLineEnds(result.problems);
    return result;
}

ToolResult RunCommandLine(const std::wstring& commandLine)
{
    return RunProgram(Tool(), commandLine);
}

ToolResult RunTool(const std::vector<std::wstring>& arguments)
{
    std::wstring commandLine;
    for (const std::wstring& argument : arguments) {
        commandLine += L" \"" + argument + L"\"";
    }
    return RunCommandLine(commandLine);
}

DWORD RunToolWith(const std::wstring& commandLine, HANDLE output, HANDLE problems)
{
    return RunToolWith(Tool(), commandLine, output, problems);
}

DWORD RunToolWith(const std::wstring& program, const std::wstring& commandLine, HANDLE output,
                  HANDLE problems)
{
    return WaitForEnd(Start(program, commandLine, output, problems).get(), kTimeout);
}

} // namespace test
