// Texts and formats out of the ordinary.

#include "common/FormatText.h"

#include "support/Allocations.h"

#include <gmock/gmock.h>

#include <new>
#include <string>

namespace {

TEST(FormatTextEdges, PlacesAtTheEndsAndSideBySide)
{
    EXPECT_EQ(FormatText(L"%s%s", {L"a", L"b"}), L"ab");
    EXPECT_EQ(FormatText(L"%s-%s", {L"a", L"b"}), L"a-b");
    EXPECT_EQ(FormatText(L"@{%s?ms-resource://%s/%s}", {L"F", L"N", L"key"}), L"@{F?ms-resource://N/key}");
}

TEST(FormatTextEdges, BlanksStay)
{
    EXPECT_EQ(FormatText(L"  %s  ", {L" a "}), L"   a   ");
}

TEST(FormatTextEdges, EmptyArgumentsLeaveNothing)
{
    EXPECT_EQ(FormatText(L"a%sb%sc", {L"", L""}), L"abc");
    EXPECT_EQ(FormatText(L"", {}), L"");
}

TEST(FormatTextEdges, OtherPercentSignsAreText)
{
    EXPECT_EQ(FormatText(L"100% %d %S %s", {L"a"}), L"100% %d %S a");
}

TEST(FormatTextEdges, UnpairedSurrogatesStay)
{
    const std::wstring unpaired = L"\xD83D \x5929";
    EXPECT_EQ(FormatText(L"\u30e1%s", {unpaired}), L"\u30e1" + unpaired);
}

TEST(FormatTextEdges, WithoutMemoryIsRaised)
{
    const std::wstring longText(1000, L'x');
    bool raised = false;
    {
        const test::AllocationWatch watch(0);
        try {
            (void)FormatText(L"%s", {longText});
        } catch (const std::bad_alloc&) {
            raised = true;
        }
    }
    EXPECT_TRUE(raised);
}

TEST(LowerCase, ChangesNothingButLatinLetters)
{
    EXPECT_EQ(ToLowerCase(L"ABCXYZ abcxyz 0129 @[`{"), L"abcxyz abcxyz 0129 @[`{");
    // The I with a dot and the Kelvin sign, which other rules make Latin letters of.
    EXPECT_EQ(ToLowerCase(L"\u0130\u212a"), L"\u0130\u212a");
}

TEST(LowerCase, TakesTextsOfAnyLength)
{
    EXPECT_EQ(ToLowerCase(std::wstring(100000, L'A')), std::wstring(100000, L'a'));
}

TEST(LowerCase, KeepsUnpairedSurrogates)
{
    EXPECT_EQ(ToLowerCase(L"A\xDC00\xD800Z"), L"a\xDC00\xD800z");
}

} // namespace
