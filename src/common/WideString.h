#pragma once

#include "common/MemoryPool.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

// An immutable UTF-16 string whose copies share one reference-counted text, which is one block of memory, of
// a pool when it is told one. A null pointer makes an empty string. One object belongs to one thread at a
// time; copies of it may live on any thread.
class WideString
{
public:
    WideString() noexcept = default;
    WideString(const wchar_t* text) : WideString(text ? std::wstring_view(text) : std::wstring_view()) {}
    explicit WideString(std::wstring_view text, MemoryPool* pool = nullptr)
        : m_block(text.empty() ? nullptr : MakeBlock(text, pool))
    {
    }
    WideString(const WideString& other) noexcept : m_block(other.m_block)
    {
        if (m_block) {
            m_block->references.fetch_add(1, std::memory_order_relaxed);
        }
    }
    WideString(WideString&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    WideString& operator=(WideString other) noexcept
    {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~WideString()
    {
        if (m_block && m_block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            MemoryPool::Free(m_block);
        }
    }

    [[nodiscard]] const wchar_t* c_str() const noexcept { return m_block ? Characters(m_block) : L""; }
    [[nodiscard]] std::wstring_view View() const noexcept
    {
        return m_block ? std::wstring_view(Characters(m_block), m_block->length) : std::wstring_view();
    }
    [[nodiscard]] bool empty() const noexcept { return !m_block; }

    friend bool operator==(const WideString& left, const WideString& right) noexcept
    {
        return left.View() == right.View();
    }

private:
    // Stands before the characters, which end with a null character.
    struct Block
    {
        std::atomic<std::uint32_t> references;
        std::uint32_t length;
    };

    [[nodiscard]] static wchar_t* Characters(Block* block) noexcept
    {
        return reinterpret_cast<wchar_t*>(block + 1);
    }

    [[nodiscard]] static Block* MakeBlock(std::wstring_view text, MemoryPool* pool)
    {
        if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
            throw std::bad_alloc();
        }
        void* memory = MemoryPool::Allocate(pool, sizeof(Block) + (text.size() + 1) * sizeof(wchar_t));
        auto* block = new (memory) Block{{1}, static_cast<std::uint32_t>(text.size())};
        wchar_t* characters = Characters(block);
        text.copy(characters, text.size());
        characters[text.size()] = L'\0';
        return block;
    }

    Block* m_block = nullptr;
};
