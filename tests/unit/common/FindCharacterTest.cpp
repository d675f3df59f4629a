#include "common/FindCharacter.h"

#include "support/Test.h"

#include <string>

namespace {

// Wherever it stands, whatever the length, and also when it stands there more than once.
TEST(FindCharacter, FindsTheFirst)
{
    for (std::size_t length = 0; length <= 40; ++length) {
        const std::wstring without(length, L'b');
        EXPECT_EQ(FindCharacter(without, L'a'), std::wstring::npos) << length;
        for (std::size_t first = 0; first < length; ++first) {
            for (std::size_t second = first; second < length; ++second) {
                std::wstring text = without;
                text[first] = text[second] = L'a';
                ASSERT_EQ(FindCharacter(text, L'a'), first) << length << ", " << second;
            }
        }
    }
}

TEST(FindCharacter, LooksAtTheTextOnly)
{
    const std::wstring text = L"abbbbbbbbbbba";
    for (std::size_t length = 0; length < 12; ++length) {
        EXPECT_EQ(FindCharacter(std::wstring_view(text).substr(1, length), L'a'), std::wstring::npos);
    }
}

TEST(FindCharacter, TellsAllSixteenBitsApart)
{
    const std::wstring text(16, L'\u0161');
    for (const wchar_t other : {L'\u0061', L'\u0162', L'\u6101', L'\uFF61'}) {
        EXPECT_EQ(FindCharacter(text, other), std::wstring::npos);
    }
    EXPECT_EQ(FindCharacter(L"\u30E1\u30E1\u30E1\u30E1\u30E1\u30E1\u30E1\u30E1\uFF41", L'\uFF41'), 8u);
}

} // namespace
