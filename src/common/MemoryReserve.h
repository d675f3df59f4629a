#pragma once

// Memory for the moment when there is none left. The C++ runtime asks for some to raise an exception (for the
// exception, for what it keeps for each thread, for its locks), and ends the process when it gets none: then
// running out of memory could not even be reported. It is linked in and finds this library's malloc() and
// calloc(), which give it blocks of the reserve where the platform has no memory. The blocks stand in the
// library's data: neither the host nor another library can take them. What the library itself asks for, by
// operator new, is never of the reserve. Any thread.
namespace MemoryReserve {

// There are so many blocks of this size, in bytes. When nothing else is left, the first exception of all
// takes 8 for good, and a thread's first one 6: its own, which comes back with it, and 5 that stay taken
// until the thread ends, also when the exception is long gone and there is memory again; then 1 stays and
// serves the next thread. Threads at the same moment may take 1 more each on the way. A further exception
// takes 1. So what counts is the threads that are alive at the same time and raised their first exception
// while there was no memory: there is enough for seven whose exceptions are there at once, and for eleven
// when each is gone before the next one. With ten and with twelve the process ends. Larger requests, and more
// of them, find nothing.
constexpr unsigned kBlockSize = 512;
constexpr unsigned kBlocks = 64;

// Frees what the C++ library sets aside at its start for the same purpose and never gives back itself: each
// loading anew would take these 73 KiB again. When the library is unloaded, after which nothing of it raises
// anything.
void FreeRuntimePool() noexcept;

} // namespace MemoryReserve
