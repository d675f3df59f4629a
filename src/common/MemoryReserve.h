#pragma once

// Memory for the moment when there is none left. The C++ runtime asks for some to raise an exception (for the
// exception, for what it keeps for each thread, for its locks), and ends the process when it gets none: then
// running out of memory could not even be reported. It is linked in and finds this library's malloc() and
// calloc(), which give it blocks of the reserve where the platform has no memory. The blocks stand in the
// library's data: neither the host nor another library can take them. What the library itself asks for, by
// operator new, is never of the reserve. Any thread.
namespace MemoryReserve {

// There are so many blocks of this size, in bytes. When nothing else is left, the first exception of all
// takes 12 for good; a thread's first one takes 7, a further one 1. Most of the 7 stay taken until the thread
// ends, also when the exception is long gone and there is memory again; then 1 stays and serves the next
// thread. So what counts is the threads that are alive at the same time and raised their first exception
// while there was no memory: seven when all exceptions are there at once, eleven when each is gone before the
// next one. One thread more ends the process. A thread whose first exception came while there was memory
// takes 1 at most for each that it raises later. Larger requests, and more of them, find nothing.
constexpr unsigned kBlockSize = 512;
constexpr unsigned kBlocks = 64;

// Frees what the C++ library sets aside at its start for the same purpose and never gives back itself: each
// loading anew would take these 73 KiB again. When the library is unloaded, after which nothing of it raises
// anything.
void FreeRuntimePool() noexcept;

} // namespace MemoryReserve
