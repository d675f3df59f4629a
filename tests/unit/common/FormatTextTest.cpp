#include "common/FormatText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(FormatText, ArgumentsTakeTheirPlacesInOrder)
{
    EXPECT_EQ(FormatText(L"%s\\%s", {L"C:\\Tools", L"x.xml"}), L"C:\\Tools\\x.xml");
    EXPECT_EQ(FormatText(L" NOT(%s)", {L"\"a\""}), L" NOT(\"a\")");
    EXPECT_EQ(FormatText(L"%s", {L""}), L"");
    EXPECT_EQ(FormatText(L"nothing", {}), L"nothing");
}

TEST(FormatText, ArgumentsAreTextAndNoFormats)
{
    EXPECT_EQ(FormatText(L"<%s|%s>", {L"%s %d %n", L"100%"}), L"<%s %d %n|100%>");
}

TEST(FormatText, ArgumentsMayBeOfAnyLength)
{
    const std::wstring text(100000, L'x');
    EXPECT_EQ(FormatText(L"\"%s\"", {text}), L"\"" + text + L"\"");
}

TEST(FormatText, LowerCaseIsThatOfTheLatinLettersOnly)
{
    EXPECT_EQ(ToLowerCase(L"Microsoft.OFFICE_8WEKY\u00c9\u0416\uff21"),
              L"microsoft.office_8weky\u00c9\u0416\uff21");
    EXPECT_EQ(ToLowerCase(L""), L"");
}

} // namespace
