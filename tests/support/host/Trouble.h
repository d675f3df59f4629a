#pragma once

#include <windows.h>

namespace host {

// What a machine or a host can do to the library. Done from outside, by the imports of the modules in this
// process; with the library loaded, on the main thread.

// From here on files can take so many bytes more, all together; then the disk is full. The log counts too.
void FillDisk(LONGLONG bytesLeft);

// From here on the library writes its catalogue in pieces of 64 bytes and pauses before each, so many
// milliseconds. Call once.
void SlowDownSaves(HMODULE library, DWORD pause);

// From here on the library need not wait until something is on the disk.
void QuickenDisk(HMODULE library);

// From here on each question to the file system about what lies below \\dead\ takes so long; then there is
// nothing. What asks is the library.
void HangShare(HMODULE library, DWORD milliseconds);

// From here on this is called, once, by the thread that asks next whether a file exists: the refresh thread
// in the middle of a pass.
void CallInPass(HMODULE library, void (*function)());

// An access violation on a thread of its own; does not return.
void CrashElsewhere();

} // namespace host
