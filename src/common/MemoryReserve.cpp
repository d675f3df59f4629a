#include "common/MemoryReserve.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// A few times of what the exceptions of some threads need at the same moment.
constexpr std::size_t kReserveSize = 32768;

// Given back at the end of the process or of the library, too.
class Reserve
{
public:
    constexpr Reserve() noexcept = default;
    ~Reserve() { Put(nullptr); }
    Reserve(const Reserve&) = delete;
    Reserve& operator=(const Reserve&) = delete;

    [[nodiscard]] bool IsThere() const noexcept { return m_block != nullptr; }
    // Frees what was there.
    void Put(void* block) noexcept { std::free(m_block.exchange(block)); }

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
