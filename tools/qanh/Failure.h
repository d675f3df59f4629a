#pragma once

#include <windows.h>

#include <string>

// The exit statuses of the tool.
enum class Status
{
    Done = 0,
    No = 1,       // the answer is no, or problems were found
    WrongUse = 2, // of the command line
    Failed = 3,
};

// Thrown where a command cannot go on because of the system or of a file.
struct Failure
{
    std::wstring what; // "cannot read C:\x.xml"
    HRESULT result;
};

// Thrown for a command line that makes no sense.
struct WrongUse
{
    std::wstring what;
    std::wstring command = L""; // where it is known
};

// A result in hexadecimal, with its name and what it means here:
// "0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)". Where these are not known, what the system has
// to say of it, if anything.
[[nodiscard]] std::wstring Described(HRESULT result);
