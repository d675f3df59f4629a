#pragma once

#include <windows.h>

namespace host {

// Makes the library's log fit to be compared line by line. The library's threads append to it without a lock,
// so that lines of two threads may run into each other or fall upon each other. From Install() on a line is
// written as a whole, and threads other than the main one wait with their lines until Open() is called. Done
// from outside, by the library's imports; what is written stays the library's own. Call both on the main
// thread, Install() once, with the library loaded and down.
class LogGate
{
public:
    static void Install(HMODULE library);
    static void Open();
};

} // namespace host
