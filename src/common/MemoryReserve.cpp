#include "common/MemoryReserve.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__GLIBCXX__)
namespace __gnu_cxx {
// Frees what the C++ library keeps for exceptions when memory has run out. No header of it declares this.
void __freeres();
} // namespace __gnu_cxx
#endif

namespace {

// A few times of what the exceptions of some threads need at the same moment.
constexpr std::size_t kReserveSize = 32768;

// Given back when the library is unloaded, with what the C++ library sets aside at its start for the same
// purpose and never gives back itself: each loading anew would take these 73 KiB again.
class Reserve
{
public:
    constexpr Reserve() noexcept = default;
    ~Reserve()
    {
        Put(nullptr);
#if defined(__GLIBCXX__)
        __gnu_cxx::__freeres();
#endif
    }
    Reserve(const Reserve&) = delete;
    Reserve& operator=(const Reserve&) = delete;

    [[nodiscard]] bool IsThere() const noexcept
    {
        return m_block != nullptr;
    }
    // Frees what was there.
    void Put(void* block) noexcept
    {
        std::free(m_block.exchange(block));
    }

private:
    std::atomic<void*> m_block = nullptr;
};

Reserve s_reserve;

// The new handler: there is no memory for an allocation of this library.
void GiveBack()
{
    s_reserve.Put(nullptr);
    throw std::bad_alloc();
}

} // namespace

namespace MemoryReserve {

bool Take() noexcept
{
    if (s_reserve.IsThere()) {
        return true;
    }
    void* const block = std::malloc(kReserveSize);
    if (!block) {
        return false;
    }
    // When two threads come here, the reserve of one takes the place of the other's.
    s_reserve.Put(block);
    std::set_new_handler(GiveBack);
    return true;
}

} // namespace MemoryReserve
