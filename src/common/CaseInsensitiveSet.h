#pragma once

#include <cstddef>
#include <unordered_map>

// Texts of which two are the same when _wcsicmp says so. That depends on the locale of the thread that asks,
// which the host may change at any time: so the texts are sorted by what they share in every locale, and
// _wcsicmp decides among those. It borrows the texts, which must live until Clear(). Not synchronised.
class CaseInsensitiveSet
{
public:
    // Throws std::bad_alloc, with the set as before.
    void Add(const wchar_t* text);

    [[nodiscard]] bool Contains(const wchar_t* text) const noexcept;

    void Clear() noexcept { m_texts = decltype(m_texts)(); } // gives its memory back too
    void Swap(CaseInsensitiveSet& other) noexcept { m_texts.swap(other.m_texts); }

private:
    std::unordered_multimap<std::size_t, const wchar_t*> m_texts; // by a hash that ignores case
};
