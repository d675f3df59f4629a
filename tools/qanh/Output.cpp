#include "Output.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>
#include <string>

namespace {

// A console takes some 32,000 characters at once.
constexpr std::size_t kConsolePiece = 8000;

// Stand before a word with a colour, and behind it. Shown() takes them out of everything that comes from
// elsewhere.
constexpr wchar_t kWarning = 1;
constexpr wchar_t kProblem = 2;
constexpr wchar_t kPlain = 3;

bool IsMark(wchar_t character) noexcept
{
    return kWarning <= character && character <= kPlain;
}

std::wstring WithoutMarks(std::wstring text)
{
    text.erase(std::remove_if(text.begin(), text.end(), IsMark), text.end());
    return text;
}

WORD AttributesOf(wchar_t mark, WORD plain) noexcept
{
    constexpr WORD kForeground = FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY;
    const auto behind = static_cast<WORD>(plain & ~kForeground);
    switch (mark) {
    case kWarning:
        return behind | FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_INTENSITY;
    case kProblem:
        return behind | FOREGROUND_RED | FOREGROUND_INTENSITY;
    default:
        return plain;
    }
}

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

bool WriteInColour(HANDLE console, std::wstring_view text)
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(console, &info)) {
        return WriteToConsole(console, WithoutMarks(std::wstring(text)));
    }
    bool isWritten = true;
    while (isWritten && !text.empty()) {
        const auto mark = std::find_if(text.begin(), text.end(), IsMark);
        const auto length = static_cast<std::size_t>(mark - text.begin());
        isWritten = WriteToConsole(console, text.substr(0, length));
        text.remove_prefix(length);
        if (!text.empty()) {
            SetConsoleTextAttribute(console, AttributesOf(text.front(), info.wAttributes));
            text.remove_prefix(1);
        }
    }
    return isWritten;
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

bool IsPlainWanted()
{
    return GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) > 1;
}

std::wstring Coloured(std::wstring_view word, Colour colour)
{
    const wchar_t mark = colour == Colour::Warning ? kWarning : kProblem;
    return mark + std::wstring(word) + kPlain;
}

void WriteText(DWORD standardHandle, std::wstring_view text)
{
    const HANDLE handle = GetStdHandle(standardHandle);
    const std::wstring lines = WithLineEnds(text);
    DWORD mode = 0;
    const bool isConsole = GetConsoleMode(handle, &mode) != FALSE;
    bool isWritten = false;
    if (isConsole && !IsPlainWanted()) {
        isWritten = WriteInColour(handle, lines);
    } else if (isConsole) {
        isWritten = WriteToConsole(handle, WithoutMarks(lines));
    } else {
        isWritten = WriteToFile(handle, ToUtf8(WithoutMarks(lines)));
    }
    if (!isWritten) {
        throw Failure{L"cannot write the output", HRESULT_FROM_WIN32(GetLastError())};
    }
}
