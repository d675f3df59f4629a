#pragma once

#include "support/Test.h"
#include "system/Sandbox.h"
#include "tools/ToolRun.h"

#include <stdexcept>
#include <string>

namespace test {

using namespace testing;

// A copy of the tool in a sandbox, with the library beside it: for the library it is the host "qanh". The log
// is off unless the test switches it on.
class DrivingTest : public Test
{
protected:
    DrivingTest()
    {
        sandbox.Settings().DeleteValue(L"DebugLog");
        Copy(L"qanh.exe", L"qanh.exe");
        Copy(L"QanHelper.dll", L"QanHelper.dll");
    }

    // A file of the build, under a name of the test's choice beside the tool.
    void Copy(const std::wstring& from, const std::wstring& to) const
    {
        if (!CopyFileW((BuildFolder() + L"\\" + from).c_str(), InHostFolder(to).c_str(), FALSE)) {
            throw std::runtime_error("cannot copy a file of the build");
        }
    }

    [[nodiscard]] std::wstring InHostFolder(const std::wstring& file) const
    {
        return sandbox.HostFolder() + L"\\" + file;
    }

    ToolResult Run(const std::wstring& commandLine) const
    {
        return RunProgram(InHostFolder(L"qanh.exe"), commandLine);
    }

    // What is announced when the library is brought up, up to the end of the line.
    [[nodiscard]] std::string StartLine() const
    {
        return "qanh: starts the library as the host qanh, which refreshes " +
               ToUtf8(sandbox.CatalogFile(L"qanh"));
    }

    // A text as a literal of JSON holds it.
    static std::string InJson(const std::wstring& text)
    {
        std::string escaped = ToUtf8(text);
        ReplaceAll(escaped, "\\", "\\\\");
        return escaped;
    }

    Sandbox sandbox;
};

} // namespace test
