#pragma once

#include <windows.h>

// What callers of the platform library did wrong without being told by a result. The counts live in the
// registry beside the switches (Settings.h), so that a test sees those of every process, and go with them.
namespace standin {

enum class Fault
{
    // An object was used, or a reference taken or given back, on a thread without an apartment of its own.
    UseOutsideApartment,
    ReleaseOutsideApartment,
};

// Two processes that count at the same moment may count one. Any thread.
void CountFault(Fault fault) noexcept;

[[nodiscard]] DWORD GetFaults(Fault fault) noexcept;

} // namespace standin
