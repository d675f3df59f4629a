#include "standin/store/Ini.h"

#include <gtest/gtest.h>

using standin::Ini;

namespace {

// "(none)" when there is none.
std::wstring Value(const Ini& ini, const wchar_t* section, const wchar_t* key)
{
    const std::wstring* value = ini.Find(section, key);
    return value ? *value : L"(none)";
}

} // namespace

TEST(StandInIni, EmptyTextHasNothing)
{
    const Ini ini("");
    EXPECT_EQ(ini.Find(L"", L"name"), nullptr);
    EXPECT_EQ(ini.Text(L"name"), L"");
    EXPECT_EQ(ini.Number(L"installed", 1), 1u);
}

TEST(StandInIni, ValuesAboveTheFirstHeadingHaveNoSection)
{
    const Ini ini("name = Vel.Post\n[en-US]\nname = Mail\n");
    EXPECT_EQ(ini.Text(L"name"), L"Vel.Post");
    EXPECT_EQ(Value(ini, L"en-US", L"name"), L"Mail");
    EXPECT_EQ(ini.Find(L"ja-JP", L"name"), nullptr);
}

TEST(StandInIni, LetterCaseOfSectionsAndKeysDoesNotCount)
{
    const Ini ini("[EN-us]\nResources/AppName = Mail\n");
    EXPECT_EQ(Value(ini, L"en-US", L"resources/appname"), L"Mail");
}

TEST(StandInIni, BlanksAroundPartsAreCutOffAndThoseWithinStay)
{
    const Ini ini("\t name \t=  Two  words \t\r\n[ ja-JP ]\r\n key= value");
    EXPECT_EQ(ini.Text(L"name"), L"Two  words");
    EXPECT_EQ(Value(ini, L"ja-JP", L"key"), L"value");
}

TEST(StandInIni, CommentsAndOtherLinesSayNothing)
{
    const Ini ini("; name = a\n# name = b\nname\n\n  ; name = c\nname = d\n");
    EXPECT_EQ(ini.Text(L"name"), L"d");
}

TEST(StandInIni, ValueMayHoldWhatTheFormatIsMadeOf)
{
    const Ini ini("key = a = b ; c # [d]\n");
    EXPECT_EQ(ini.Text(L"key"), L"a = b ; c # [d]");
}

TEST(StandInIni, EmptyValueIsAValue)
{
    const Ini ini("[en-US]\nkey =\n");
    EXPECT_EQ(Value(ini, L"en-US", L"key"), L"");
}

TEST(StandInIni, FirstOfTwoEqualKeysHolds)
{
    EXPECT_EQ(Ini("a = 1\nA = 2\n").Text(L"a"), L"1");
}

TEST(StandInIni, TextIsUtf8)
{
    const Ini ini("\xEF\xBB\xBFname = \xE3\x83\xA1\xE3\x83\xBC\xE3\x83\xAB \xF0\x9F\x93\xAE\n");
    EXPECT_EQ(ini.Text(L"name"), L"\u30E1\u30FC\u30EB \U0001F4EE");
}

TEST(StandInIni, NumbersAreDecimalOrHexadecimal)
{
    const Ini ini("a = 12\nb = 0x80070005\nc = 0X1f\nd =\ne = no\nf = 010\n");
    EXPECT_EQ(ini.Number(L"a"), 12u);
    EXPECT_EQ(ini.Number(L"b"), 0x80070005u);
    EXPECT_EQ(ini.Number(L"c"), 0x1Fu);
    EXPECT_EQ(ini.Number(L"d", 3), 3u);
    EXPECT_EQ(ini.Number(L"e", 3), 0u);
    EXPECT_EQ(ini.Number(L"f"), 10u);
}
