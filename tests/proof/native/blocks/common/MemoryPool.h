#pragma once

#include <cstddef>
#include <new>

// In the place of the library's own: each block is an allocation, so that AddressSanitizer sees where it
// ends, when it is freed and whether it ever is. In a chunk it would see none of that.
class MemoryPool
{
public:
    MemoryPool() noexcept = default;
    MemoryPool(const MemoryPool&) = delete;
    MemoryPool& operator=(const MemoryPool&) = delete;

    [[nodiscard]] static void* Allocate(MemoryPool*, std::size_t size) { return ::operator new(size); }
    static void Free(void* block) noexcept { ::operator delete(block); }
};
