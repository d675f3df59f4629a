#include "common/WinRtError.h"

#include "common/DiagnosticLog.h"

#include <algorithm>
#include <cstdio>

namespace {

// In characters. A line of the trace must hold the message, in whatever code page.
constexpr DWORD kLongestMessage = 250;

std::wstring MessageOf(HRESULT result)
{
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, static_cast<DWORD>(result), 0, text, 512, nullptr);
    // One line, and no blanks behind it: the message stands inside a line of the trace.
    length = std::min(length, kLongestMessage);
    while (length > 0 && text[length - 1] == L' ') {
        --length;
    }
    if (length == 0) {
        wchar_t code[16];
        _snwprintf_s(code, 16, _TRUNCATE, L"0x%08X", static_cast<unsigned>(result));
        return code;
    }
    return std::wstring(text, length);
}

} // namespace

WinRtError::WinRtError(HRESULT result) : m_result(result), m_message(MessageOf(result)) {}

void ThrowIfFailed(HRESULT result)
{
    if (FAILED(result)) {
        throw WinRtError(result);
    }
}

void LogOut(const wchar_t* operation, const WinRtError& error) noexcept
{
    DiagnosticLog::WriteLine("%S OUT(%S)\r\n", operation, error.Message());
}

HRESULT LogCaught(const wchar_t* operation, HRESULT resultOfOthers) noexcept
{
    try {
        throw;
    } catch (const WinRtError& error) {
        LogOut(operation, error);
        return E_FAIL;
    } catch (...) {
        return LogOut(operation, resultOfOthers);
    }
}
