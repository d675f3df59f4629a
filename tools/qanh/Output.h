#pragma once

#include <windows.h>

#include <string_view>

// Writes text to STD_OUTPUT_HANDLE or STD_ERROR_HANDLE: as it is to a console, as UTF-8 to a file or a pipe.
// A line ends with "\n" in the text and with CR and LF in what is written. Throws Failure.
void WriteText(DWORD standardHandle, std::wstring_view text);
