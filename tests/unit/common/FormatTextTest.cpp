#include "common/FormatText.h"

#include "support/Allocations.h"

#include "support/Test.h"

namespace {

TEST(FormatText, ArgumentsTakeTheirPlacesInOrder)
{
    EXPECT_EQ(FormatText(L"%s\\%s", {L"C:\\Tools", L"x.xml"}), L"C:\\Tools\\x.xml");
    EXPECT_EQ(FormatText(L" NOT(%s)", {L"\"a\""}), L" NOT(\"a\")");
    EXPECT_EQ(FormatText(L"%s", {L""}), L"");
    EXPECT_EQ(FormatText(L"nothing", {}), L"nothing");
    EXPECT_EQ(FormatText(L"%s%s", {L"a", L"b"}), L"ab");
    EXPECT_EQ(FormatText(L"%s-%s", {L"a", L"b"}), L"a-b");
    EXPECT_EQ(FormatText(L"@{%s?ms-resource://%s/%s}", {L"F", L"N", L"key"}), L"@{F?ms-resource://N/key}");
}

TEST(FormatText, EverythingElseIsText)
{
    EXPECT_EQ(FormatText(L"<%s|%s>", {L"%s %d %n", L"100%"}), L"<%s %d %n|100%>") << "in arguments";
    EXPECT_EQ(FormatText(L"100% %d %S %s", {L"a"}), L"100% %d %S a");
    EXPECT_EQ(FormatText(L"  %s  ", {L" a "}), L"   a   ");
    EXPECT_EQ(FormatText(L"a%sb%sc", {L"", L""}), L"abc");
    EXPECT_EQ(FormatText(L"", {}), L"");
    EXPECT_EQ(FormatText(L"\u30e1%s", {L"\xD83D \x5929"}), L"\u30e1\xD83D \x5929") << "halves of pairs";
}

TEST(FormatText, ArgumentsMayBeOfAnyLength)
{
    const std::wstring text(100000, L'x');
    EXPECT_EQ(FormatText(L"\"%s\"", {text}), L"\"" + text + L"\"");
}

TEST(FormatText, WithoutMemoryIsRaised)
{
    const std::wstring longText(1000, L'x');
    const auto format = [&] { (void)FormatText(L"%s", {longText}); };
    EXPECT_EQ(test::TryRaisingWithFailingAllocation(0, format).result, E_OUTOFMEMORY);
}

TEST(LowerCase, ChangesNothingButLatinLetters)
{
    EXPECT_EQ(ToLowerCase(L"ABCXYZ abcxyz 0129 @[`{"), L"abcxyz abcxyz 0129 @[`{");
    EXPECT_EQ(ToLowerCase(L"Microsoft.OFFICE_8WEKY\u00c9\u0416\uff21"),
              L"microsoft.office_8weky\u00c9\u0416\uff21");
    // The I with a dot and the Kelvin sign, which other rules make Latin letters of.
    EXPECT_EQ(ToLowerCase(L"\u0130\u212a"), L"\u0130\u212a");
    EXPECT_EQ(ToLowerCase(L"A\xDC00\xD800Z"), L"a\xDC00\xD800z") << "halves of pairs";
}

TEST(LowerCase, TakesTextsOfAnyLength)
{
    EXPECT_EQ(ToLowerCase(L""), L"");
    EXPECT_EQ(ToLowerCase(std::wstring(100000, L'A')), std::wstring(100000, L'a'));
}

} // namespace
