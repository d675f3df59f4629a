#include "common/MemoryReserve.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__GLIBCXX__)
namespace __gnu_cxx {
// Frees what the C++ library keeps for exceptions when memory has run out. No header of it declares this.
void __freeres(); // NOLINT(bugprone-reserved-identifier)
} // namespace __gnu_cxx
#endif

namespace {

// A few times of what the exceptions of some threads need at the same moment.
constexpr std::size_t kReserveSize = 32768;

// Freed by nobody at the end of the process, when threads may have been killed in the middle of an
// allocation.
std::atomic<void*> s_reserve = nullptr;

// Frees what was there.
void Put(void* block) noexcept
{
    std::free(s_reserve.exchange(block));
}

// The new handler: there is no memory for an allocation of this library.
void GiveBack()
{
    Put(nullptr);
    throw std::bad_alloc();
}

} // namespace

namespace MemoryReserve {

bool Take() noexcept
{
    if (s_reserve != nullptr) {
        return true;
    }
    void* const block = std::malloc(kReserveSize);
    if (!block) {
        return false;
    }
    // When two threads come here, the reserve of one takes the place of the other's.
    Put(block);
    std::set_new_handler(GiveBack);
    return true;
}

void Release() noexcept
{
    Put(nullptr);
#if defined(__GLIBCXX__)
    __gnu_cxx::__freeres();
#endif
}

} // namespace MemoryReserve
