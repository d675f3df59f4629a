#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// Writes text to STD_OUTPUT_HANDLE or STD_ERROR_HANDLE: as it is to a console, as UTF-8 to a file or a pipe.
// A line ends with "\n" in the text and with CR and LF in what is written. Throws Failure.
void WriteText(DWORD standardHandle, std::wstring_view text);

enum class Colour
{
    Warning,
    Problem,
};

// A word for WriteText() that a console shows in a colour; in a pipe and in a file, and when plain output is
// wanted, it is the word alone. Not for JSON.
[[nodiscard]] std::wstring Coloured(std::wstring_view word, Colour colour);

// NO_COLOR is set to anything but the empty text.
[[nodiscard]] bool IsPlainWanted();
