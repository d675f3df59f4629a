#include "catalog/SearchTokens.h"

#include <algorithm>
#include <iterator>

namespace {

struct CharacterRange
{
    wchar_t first;
    wchar_t last;
};

constexpr CharacterRange kWordRanges[] = {
    // Deliberate: "/" stands right before the digits and belongs to them.
    {L'/', L'9'},
    {L'A', L'Z'},
    {L'_', L'_'},
    {L'a', L'z'},
};

// Scripts written without blanks between words, so that each character is looked up alone.
constexpr CharacterRange kSingleRanges[] = {
    {L'\\', L'\\'},   {0x3041, 0x30FF},                                     // Hiragana, Katakana
    {0x3400, 0x4DB5},                                                       // CJK ideographs
    {0x4E00, 0x9FC3}, {0xF900, 0xFA2D}, {0xFA30, 0xFA6A}, {0xFF10, 0xFF19}, // full-width digits and letters
    {0xFF21, 0xFF3A}, {0xFF41, 0xFF5A}, {0xFF66, 0xFF9F},                   // half-width Katakana
};

template <std::size_t count>
bool IsInRanges(wchar_t character, const CharacterRange (&ranges)[count]) noexcept
{
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const CharacterRange& range) {
        return range.first <= character && character <= range.last;
    });
}

} // namespace

namespace SearchTokens {

std::size_t LengthOfFirst(std::wstring_view text) noexcept
{
    const auto end = std::find_if_not(text.begin(), text.end(),
                                      [](wchar_t character) { return IsInRanges(character, kWordRanges); });
    if (end != text.begin()) {
        return static_cast<std::size_t>(end - text.begin());
    }
    return IsInRanges(text.front(), kSingleRanges) ? 1 : 0;
}

} // namespace SearchTokens
