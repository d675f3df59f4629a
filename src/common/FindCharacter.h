#pragma once

#include <bit>
#include <cstddef>
#include <string_view>

#include <emmintrin.h>

// The first place of the character in the text, or npos: eight characters at a time, as every x64 processor
// can.
[[nodiscard]] inline std::size_t FindCharacter(std::wstring_view text, wchar_t character) noexcept
{
    constexpr std::size_t step = 8;
    if (text.size() < step) {
        return text.find(character);
    }
    const __m128i wanted = _mm_set1_epi16(static_cast<short>(character));
    const std::size_t last = text.size() - step;
    for (std::size_t at = 0;; at += step) {
        // The last eight may have been looked at in part.
        at = at < last ? at : last;
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(eight, wanted)));
        if (found != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(found)) / sizeof(wchar_t);
        }
        if (at == last) {
            return std::wstring_view::npos;
        }
    }
}
