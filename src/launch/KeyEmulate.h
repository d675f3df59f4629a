#pragma once

#include <windows.h>

// The few key strokes that drive the Start screen and its search pane. Each operation is a fixed script of
// single key events with fixed pauses, sent to the whole desktop; it blocks the calling thread for the sum of
// the pauses and does not look at what becomes of the events. Stateless; called on the host's launching
// thread.
class CQanhKeyEmulate
{
public:
    CQanhKeyEmulate() = delete;

    // The Windows key alone. 100 ms.
    static void Sendinput_Win() noexcept;
    // Windows+Q, which opens the search pane. 400 ms.
    static void SendInput_Win_Q() noexcept;
    // 100 ms.
    static void SendInput_Enter() noexcept;
    // Paste. Leaves Shift pressed: SendInput_ShiftUp() releases it. 1100 ms.
    static void SendInput_Shift_Insert() noexcept;
    // Releases Shift. 50 ms.
    static void SendInput_ShiftUp() noexcept;

private:
    // One event without a scan code or extra information, and one with both; each is followed by the pause.
    static void Sendinput_Key(WORD virtualKey, DWORD flags, DWORD pause) noexcept;
    static void Sendinput_Key(WORD virtualKey, WORD scanCode, DWORD flags, DWORD pause) noexcept;
};
