#pragma once

#include <windows.h>

#include <exception>
#include <string>

// A call into the Windows Runtime that failed, raised where the operations that use packages say so.
// Message() is the system's text for the result.
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
