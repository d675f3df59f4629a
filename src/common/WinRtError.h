#pragma once

#include <windows.h>

#include <exception>
#include <string>

// A call into the Windows Runtime that failed. Message() is the system's text for the result.
class WinRtError : public std::exception
{
public:
    explicit WinRtError(HRESULT result);

    [[nodiscard]] HRESULT Result() const noexcept { return m_result; }
    [[nodiscard]] const wchar_t* Message() const noexcept { return m_message.c_str(); }
    [[nodiscard]] const char* what() const noexcept override { return "Windows Runtime error"; }

private:
    HRESULT m_result;
    std::wstring m_message;
};

// Throws a WinRtError for a failure.
void ThrowIfFailed(HRESULT result);

// The exit line of an operation that such a call ended: with its message.
void LogOut(const wchar_t* operation, const WinRtError& error) noexcept;

// For the catch (...) at an operation's boundary: writes the exit line for the exception at hand and returns
// the result that the line stands for. A WinRtError leaves with its message, as E_FAIL; every other exception
// with the result that the operation has for it.
[[nodiscard]] HRESULT LogCaught(const wchar_t* operation, HRESULT resultOfOthers) noexcept;
