#pragma once

#include <cstddef>

// What this process holds at the moment, to see what a call leaves behind. What cannot be measured is thrown
// as std::runtime_error: a measure is never 0 for want of a better one.
namespace host {

[[nodiscard]] std::size_t CountHandles();
[[nodiscard]] std::size_t CountThreads();

// Bytes of all blocks in use of the process's heap and of the C runtime's.
[[nodiscard]] std::size_t HeapBytes();

// Pens, brushes, bitmaps and the like.
[[nodiscard]] std::size_t CountGdiObjects();
// Top-level windows, and those that are there for messages only.
[[nodiscard]] std::size_t CountWindows();

// Asks the platform for the package manager's class and lets it go: what the platform itself keeps of that is
// no leak of the library's.
void LookUpPackageManagerClass();

} // namespace host
