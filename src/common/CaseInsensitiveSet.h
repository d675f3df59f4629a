#pragma once

#include <cstddef>
#include <utility>
#include <vector>

// Texts of which two are the same when _wcsicmp says so. That depends on the locale of the thread that asks,
// which the host may change at any time: so the texts are sorted by what they share in every locale, and
// _wcsicmp decides among those. It borrows the texts, which must live until Clear(). Not synchronised.
//
// A hash table without a block of memory for each text: the catalogue adds one for each record that it reads.
class CaseInsensitiveSet
{
public:
    // Throws std::bad_alloc, with the set as before.
    void Add(const wchar_t* text);

    [[nodiscard]] bool Contains(const wchar_t* text) const noexcept;

    // Gives the memory back too.
    void Clear() noexcept
    {
        m_slots = std::vector<Slot>();
        m_used = 0;
    }
    void Swap(CaseInsensitiveSet& other) noexcept
    {
        m_slots.swap(other.m_slots);
        std::swap(m_used, other.m_used);
    }

private:
    struct Slot
    {
        std::size_t hash = 0; // ignores case
        const wchar_t* text = nullptr;
    };

    [[nodiscard]] std::size_t FirstSlot(std::size_t hash) const noexcept
    {
        return hash & (m_slots.size() - 1);
    }
    [[nodiscard]] std::size_t NextSlot(std::size_t slot) const noexcept
    {
        return (slot + 1) & (m_slots.size() - 1);
    }
    void Grow();

    // A power of two, or none; a text stands in the first free slot from that of its hash on.
    std::vector<Slot> m_slots;
    std::size_t m_used = 0;
};
