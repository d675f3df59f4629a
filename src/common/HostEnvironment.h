#pragma once

#include <windows.h>

// What the library learns from the process that it lives in. Every buffer holds 260 characters (MAX_PATH).
// Callable from every thread.

// Reads an environment variable. False when it is absent or too long for the buffer; an empty one is read.
// The platform is asked, not the C runtime: the wide copy of the latter may have come through the code page
// and lack letters. Changes the thread's last error.
[[nodiscard]] bool ReadEnvironmentVariable(const wchar_t* name, wchar_t (&value)[MAX_PATH]) noexcept;

// The full path of the host's executable (the process image, not this library). False when it cannot be had.
[[nodiscard]] bool GetHostExecutablePath(wchar_t (&path)[MAX_PATH]) noexcept;

// Cuts the last component of the path at its first "." and returns where the component's backslash stands:
// "C:\Tools\a.b.exe" becomes "C:\Tools\a", and the result is "\a".
[[nodiscard]] wchar_t* CutHostName(wchar_t* path) noexcept;
