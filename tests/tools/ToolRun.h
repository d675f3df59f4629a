#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace test {

// What the tool wrote, as UTF-8 with the line ends "\n", and its exit status.
struct ToolResult
{
    std::string output;
    std::string problems; // on standard error
    DWORD status = 0;

    friend bool operator==(const ToolResult&, const ToolResult&) = default;
    friend void PrintTo(const ToolResult& result, std::ostream* out);
};

// Runs the tool with this command line, which does not name it, and waits until it has ended. Its standard
// output and standard error are pipes. Throws std::runtime_error when it cannot be started or hangs.
ToolResult RunCommandLine(const std::wstring& commandLine);

// The same with a copy of the tool.
ToolResult RunProgram(const std::wstring& program, const std::wstring& commandLine);

// The same with arguments, each of them in quotes; none of them may hold any.
ToolResult RunTool(const std::vector<std::wstring>& arguments);

// The same with other handles, which must be inheritable, in the place of the pipes; returns the exit status.
DWORD RunToolWith(const std::wstring& commandLine, HANDLE output, HANDLE problems);
DWORD RunToolWith(const std::wstring& program, const std::wstring& commandLine, HANDLE output,
                  HANDLE problems);

// Lines with "\r\n" become lines with "\n"; a line that ended otherwise becomes one that shows it.
std::string WithPlainLineEnds(std::string text);

} // namespace test
