#pragma once

// Memory that is kept for the moment when there is none left. The C++ runtime asks for some to raise an
// exception (for the exception, for what it keeps for each thread, for its locks), and ends the process when
// it gets none: then running out of memory could not even be reported. It shares the library's functions
// malloc() and calloc(), which give it blocks of the reserve when the platform has none. They are there from
// the loading on and belong to nobody else: neither the host nor another thread can take them meanwhile.
// What the library itself asks for, by operator new, never comes from the reserve.
namespace MemoryReserve {

// There are so many blocks of this size, in bytes. A thread's first exception takes up to ... of them and
// keeps all but one as long as the thread lives; a further one takes one.
// Larger requests, and more at the same time, fail as without a reserve.
constexpr unsigned kBlockSize = 512;
constexpr unsigned kBlocks = 64;

// Frees what the C++ library sets aside at its start for the same purpose and never gives back itself: each
// loading anew would take these 73 KiB again. When the library is unloaded, after which nothing of it raises
// anything.
void FreeRuntimePool() noexcept;

} // namespace MemoryReserve
