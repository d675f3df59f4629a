#include "Output.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>
#include <string>

namespace {

// A console takes some 32,000 characters at once.
constexpr std::size_t kConsolePiece = 8000;

std::wstring WithLineEnds(std::wstring_view text)
{
    std::wstring lines;
    lines.reserve(text.size());
    for (const wchar_t character : text) {
        if (character == L'\n') {
            lines += L'\r';
        }
        lines += character;
    }
    return lines;
}

bool WriteToConsole(HANDLE console, std::wstring_view text)
{
    while (!text.empty()) {
        const auto piece = static_cast<DWORD>(std::min(text.size(), kConsolePiece));
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data(), piece, &written, nullptr) || written == 0) {
            return false;
        }
        text.remove_prefix(written);
    }
    return true;
}

bool WriteToFile(HANDLE file, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

} // namespace

void WriteText(DWORD standardHandle, std::wstring_view text)
{
    const HANDLE handle = GetStdHandle(standardHandle);
    const std::wstring lines = WithLineEnds(text);
    DWORD mode = 0;
    const bool isWritten =
        GetConsoleMode(handle, &mode) ? WriteToConsole(handle, lines) : WriteToFile(handle, ToUtf8(lines));
    if (!isWritten) {
        throw Failure{L"cannot write the output", HRESULT_FROM_WIN32(GetLastError())};
    }
}
