#include "common/CaseInsensitiveSet.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <functional>
#include <string_view>

namespace {

constexpr std::size_t kFirstSlots = 16; // a power of two
constexpr wchar_t kFirstNonAscii = 0x80;
constexpr wchar_t kFirstOfTwoBytes = 0x100;

// The letter i is the other case of one outside of ASCII where the locale's code page is Turkish.
[[nodiscard]] constexpr wchar_t FoldLetter(wchar_t character) noexcept
{
    const wchar_t lower =
        L'A' <= character && character <= L'Z' ? static_cast<wchar_t>(character + (L'a' - L'A')) : character;
    return lower == L'i' ? kFirstNonAscii : lower;
}

// Locales differ in which letters outside of ASCII they lower. Those of a wide range they lower as the system
// does or not at all, those below it by the locale's code page, in which any can be the other case of any,
// or of i.
void FoldNonAscii(wchar_t* text, std::size_t length) noexcept
{
    CharLowerBuffW(text, static_cast<DWORD>(length));
    std::transform(text, text + length, text, [](wchar_t character) {
        return kFirstNonAscii <= character && character < kFirstOfTwoBytes ? kFirstNonAscii
                                                                           : FoldLetter(character);
    });
}

// Lowers a part of a text in the same way for all texts that _wcsicmp calls equal, in whatever locale.
void Fold(wchar_t* text, std::size_t length) noexcept
{
    wchar_t bits = 0;
    for (std::size_t i = 0; i < length; ++i) {
        bits = static_cast<wchar_t>(bits | text[i]);
    }
    if (bits < kFirstNonAscii) {
        std::transform(text, text + length, text, FoldLetter);
    } else {
        FoldNonAscii(text, length);
    }
}

[[nodiscard]] std::size_t HashIgnoringCase(const wchar_t* text) noexcept
{
    std::size_t hash = 0;
    std::wstring_view rest(text);
    do {
        wchar_t part[MAX_PATH];
        const std::size_t length = rest.copy(part, MAX_PATH);
        rest.remove_prefix(length);
        Fold(part, length);
        hash = hash * 31 + std::hash<std::wstring_view>()(std::wstring_view(part, length));
    } while (!rest.empty());
    return hash;
}

} // namespace

void CaseInsensitiveSet::Add(const wchar_t* text)
{
    // A quarter of the slots stays free, so that a search soon comes to one.
    if (m_used + 1 > m_slots.size() / 4 * 3) {
        Grow();
    }
    const std::size_t hash = HashIgnoringCase(text);
    std::size_t slot = FirstSlot(hash);
    for (; m_slots[slot].text; slot = NextSlot(slot)) {
        // The same to the letter is the same in every locale.
        if (m_slots[slot].hash == hash && std::wcscmp(m_slots[slot].text, text) == 0) {
            return;
        }
    }
    m_slots[slot] = {hash, text};
    ++m_used;
}

bool CaseInsensitiveSet::Contains(const wchar_t* text) const noexcept
{
    if (m_used == 0) {
        return false;
    }
    const std::size_t hash = HashIgnoringCase(text);
    for (std::size_t slot = FirstSlot(hash); m_slots[slot].text; slot = NextSlot(slot)) {
        if (m_slots[slot].hash == hash && _wcsicmp(m_slots[slot].text, text) == 0) {
            return true;
        }
    }
    return false;
}

void CaseInsensitiveSet::Grow()
{
    std::vector<Slot> old(std::max<std::size_t>(kFirstSlots, m_slots.size() * 2));
    old.swap(m_slots);
    for (const Slot& moved : old) {
        if (moved.text) {
            std::size_t slot = FirstSlot(moved.hash);
            while (m_slots[slot].text) {
                slot = NextSlot(slot);
            }
            m_slots[slot] = moved;
        }
    }
}
