#pragma once

#include <windows.h>

namespace host {

// From here on the library writes its catalogue in pieces of 64 bytes and pauses before each. Done from
// outside, by the imports of the modules in this process. Call once, with the library loaded.
void SlowDownSaves(DWORD pause);

} // namespace host
