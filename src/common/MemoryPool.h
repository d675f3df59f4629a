#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

// Memory for many small things that are made one after the other and live about as long as each other, such
// as the records of a file with their texts: they are cut from large chunks, which takes much less than an
// allocation each and keeps them together. Small blocks do not share a chunk with large ones: who reads one
// small thing after the other finds them side by side. A chunk is freed with the last of its blocks, which
// may outlive the pool. The pool belongs to one thread; blocks may be freed on any. Where there is no memory
// for a chunk, a block is an allocation of its own: only what finds no memory itself is lost.
class MemoryPool
{
public:
    MemoryPool() noexcept = default;
    ~MemoryPool() = default;
    MemoryPool(const MemoryPool&) = delete;
    MemoryPool& operator=(const MemoryPool&) = delete;

    // A block of the pool, or without one, when it is null, an allocation of its own; for Free() in both
    // cases. Throws std::bad_alloc.
    [[nodiscard]] static void* Allocate(MemoryPool* pool, std::size_t size)
    {
        const std::size_t whole = (sizeof(Head) + size + sizeof(Head) - 1) / sizeof(Head) * sizeof(Head);
        if (pool && whole <= kLargestBlock) {
            if (void* block = pool->ChunkFor(whole).Cut(whole)) {
                return block;
            }
        }
        return new (::operator new(whole)) Head{nullptr} + 1;
    }

    static void Free(void* block) noexcept
    {
        Head* head = static_cast<Head*>(block) - 1;
        if (head->chunk) {
            Release(head->chunk, 1);
        } else {
            ::operator delete(head);
        }
    }

private:
    struct Chunk
    {
        // How many blocks are not freed yet; while the pool cuts from it, kOpen less those that are.
        std::atomic<std::size_t> references;
    };
    // Stands before each block.
    struct Head
    {
        Chunk* chunk; // null: the block is an allocation of its own
    };
    static_assert(sizeof(Head) == 8 && sizeof(Chunk) == 8, "blocks must be aligned for pointers");

    static constexpr std::size_t kSmallestChunk = 4096;
    static constexpr std::size_t kLargestChunk = 262144;
    static constexpr std::size_t kLargestSmallBlock = 128;
    static constexpr std::size_t kLargestBlock = kSmallestChunk / 4;
    static constexpr std::size_t kOpen = std::numeric_limits<std::size_t>::max() / 2;

    static void Release(Chunk* chunk, std::size_t references) noexcept
    {
        if (chunk->references.fetch_sub(references, std::memory_order_acq_rel) == references) {
            std::free(chunk);
        }
    }

    // The chunk that blocks are being cut from.
    class OpenChunk
    {
    public:
        OpenChunk() noexcept = default;
        ~OpenChunk() { Close(); }
        OpenChunk(const OpenChunk&) = delete;
        OpenChunk& operator=(const OpenChunk&) = delete;

        // Null when there is no memory.
        [[nodiscard]] void* Cut(std::size_t whole) noexcept
        {
            if (whole > m_free) {
                // Little is left over at the end when a chunk is a small part of what is there already.
                const std::size_t size = std::clamp(m_total / 16, kSmallestChunk, kLargestChunk);
                // Not by operator new, which would raise an exception for what can be done without.
                void* memory = std::malloc(size);
                if (!memory) {
                    return nullptr;
                }
                Close();
                m_chunk = new (memory) Chunk{{kOpen}};
                m_next = static_cast<char*>(memory) + sizeof(Chunk);
                m_free = size - sizeof(Chunk);
                m_blocks = 0;
                m_total += size;
            }
            Head* head = new (m_next) Head{m_chunk};
            m_next += whole;
            m_free -= whole;
            ++m_blocks;
            return head + 1;
        }

    private:
        void Close() noexcept
        {
            if (m_chunk) {
                Release(m_chunk, kOpen - m_blocks);
            }
        }

        Chunk* m_chunk = nullptr;
        char* m_next = nullptr;
        std::size_t m_free = 0;
        std::size_t m_blocks = 0; // of this chunk
        std::size_t m_total = 0;  // of all chunks
    };

    [[nodiscard]] OpenChunk& ChunkFor(std::size_t whole) noexcept
    {
        return whole <= kLargestSmallBlock ? m_small : m_large;
    }

    OpenChunk m_small;
    OpenChunk m_large;
};
