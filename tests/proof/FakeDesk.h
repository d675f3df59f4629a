#pragma once

#include <windows.h>

#include <map>
#include <string>

namespace proof {

// What stands below the library instead of the desktop, so that an operation takes no time and touches
// nothing of the machine: pauses that end at once, a search pane that keys open and close, a clipboard that
// is only looked at, and a refresh thread that the library makes but the test runs.
struct FakeDesk
{
    // Functions for CallGate.
    [[nodiscard]] static std::map<std::string, void*> Functions();

    static void Reset();

    // The host's executable.
    static std::wstring executable;
    // What the clipboard was given last.
    static std::wstring pasted;

    // The procedure of the thread that the library made, with its argument; null: it made none.
    static LPTHREAD_START_ROUTINE refreshThread;
    static void* refreshArgument;
    // How many threads were made of which none was run.
    static int waitingThreads;
    // The thread that runs it.
    static DWORD refreshThreadId;
    // The library's thread does not end by itself.
    static bool isThreadHung;

    // Called when the library ends the process.
    static void (*onEnd)(const char* function);
};

} // namespace proof
