#pragma once

#include "common/MemoryPool.h"

#include <cstddef>

// What derives from it can be made in a pool: new (pool) Thing(...).
class PoolObject
{
public:
    static void* operator new(std::size_t size) { return MemoryPool::Allocate(nullptr, size); }
    static void* operator new(std::size_t size, MemoryPool* pool) { return MemoryPool::Allocate(pool, size); }
    static void operator delete(void* block) noexcept { MemoryPool::Free(block); }
    static void operator delete(void* block, MemoryPool*) noexcept { MemoryPool::Free(block); }
};

// For containers whose elements shall be blocks of a pool. All are equal: each frees what any has allocated.
template <typename Value> struct PoolAllocator
{
    using value_type = Value;

    explicit PoolAllocator(MemoryPool* memoryPool = nullptr) noexcept : pool(memoryPool) {}
    template <typename Other>
    explicit PoolAllocator(const PoolAllocator<Other>& other) noexcept : pool(other.pool)
    {
    }

    [[nodiscard]] Value* allocate(std::size_t count)
    {
        static_assert(alignof(Value) <= alignof(void*), "blocks are aligned for pointers");
        return static_cast<Value*>(MemoryPool::Allocate(pool, count * sizeof(Value)));
    }
    void deallocate(Value* block, std::size_t) noexcept { MemoryPool::Free(block); }

    friend bool operator==(const PoolAllocator&, const PoolAllocator&) noexcept { return true; }

    MemoryPool* pool;
};
