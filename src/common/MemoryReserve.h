#pragma once

// Memory that is kept for the moment when there is none left. The C++ runtime needs some to raise an
// exception (on a thread's first one it asks for what it keeps for that thread), and ends the process when it
// gets none: then running out of memory could not be reported as E_OUTOFMEMORY. An allocation of the library
// that fails gives the reserve back first, so that its exception can be raised.
namespace MemoryReserve {

// Makes sure that the reserve is there: where the library begins to work, at a start, a pass, a launch, a
// query. False: there is no memory for it, and what follows could not even report that; the operation then
// fails with E_OUTOFMEMORY before it begins. Any thread.
[[nodiscard]] bool Take() noexcept;

// Gives it back for good, with what the C++ library sets aside at its start for the same purpose and never
// gives back itself: each loading anew would take these 73 KiB again. When the library is unloaded, after
// which nothing of it raises anything.
void Release() noexcept;

} // namespace MemoryReserve
