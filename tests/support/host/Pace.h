#pragma once

#include <windows.h>

namespace host {

// How fast time goes for the library: its pauses and its waits for one object take a part of what it asks
// for, 1 ms at least. Done from outside, by the library's imports; other modules, and waits without a limit
// or without a pause, stay as they are. Main thread.
class Pace
{
public:
    // For a library that has just been loaded; without a call before or after it changes nothing.
    static void Install(HMODULE library);

    static void Set(DWORD divisor);

    // From here on the calling thread's pauses take so many times as long, for what must happen in them.
    static void Stretch(DWORD factor);

    // From here on the refresh thread's wait before its first pass does not end before Go(), or before the
    // thread is told to stop.
    static void Hold();
    static void Go();
};

// As long as it lasts, pauses of the calling thread take no time at all. One at a time on a thread.
class NoPauses
{
public:
    NoPauses();
    // What the pauses would have taken so far, in milliseconds.
    [[nodiscard]] static ULONGLONG Total();
    ~NoPauses();
    NoPauses(const NoPauses&) = delete;
    NoPauses& operator=(const NoPauses&) = delete;
};

} // namespace host
