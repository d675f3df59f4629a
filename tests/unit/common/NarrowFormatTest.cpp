#include "common/NarrowFormat.h"

#include "unit/common/InvalidParameter.h"

#include <gmock/gmock.h>

#include <windows.h>

#include <algorithm>
#include <clocale>
#include <cstdarg>
#include <cstring>
#include <string>
#include <vector>

namespace {

using ::testing::AllOf;

constexpr wchar_t kUnmappable[] = L"\u0e01\u10d0"; // Thai and Georgian: at least one is in no code page

// Formats into a buffer of this size, and checks that it ends where the result says and that nothing was
// written behind it.
std::string FormatInto(std::size_t size, const char* format, va_list arguments)
{
    constexpr char kUntouched = '\x5a';
    std::vector<char> buffer(size + 64, kUntouched);
    const int length = FormatNarrow(buffer.data(), size, format, arguments);
    EXPECT_GE(length, 0);
    EXPECT_LT(static_cast<std::size_t>(length), size);
    EXPECT_EQ(std::strlen(buffer.data()), static_cast<std::size_t>(length));
    EXPECT_TRUE(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(size), buffer.end(),
                            [](char c) { return c == kUntouched; }));
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::string Format(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = FormatInto(kLargestMessage, format, arguments);
    va_end(arguments);
    return text;
}

std::string FormatSized(std::size_t size, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = FormatInto(size, format, arguments);
    va_end(arguments);
    return text;
}

bool HasCodePage1252()
{
    return GetACP() == 1252;
}

TEST(NarrowFormat, MessageMayTake1023Bytes)
{
    EXPECT_EQ(kLargestMessage, 1024u);
}

TEST(NarrowFormat, FormatsOfTheTrace)
{
    EXPECT_EQ(Format("%S IN\r\n", L"A"), "A IN\r\n");
    EXPECT_EQ(Format("%S(%S, %d, %d) IN\r\n", L"A", L"b", -1, 2), "A(b, -1, 2) IN\r\n");
    EXPECT_EQ(Format("%S(%S, 0x%08X) IN\r\n", L"A", L"b", 0x1234), "A(b, 0x00001234) IN\r\n");
    EXPECT_EQ(Format("%S(0x%04X, 0x%08X) IN\r\n", L"A", 0x5B, 1), "A(0x005B, 0x00000001) IN\r\n");
    EXPECT_EQ(Format("%S OUT(0x%08X)\r\n", L"A", static_cast<unsigned>(E_FAIL)), "A OUT(0x80004005)\r\n");
    EXPECT_EQ(Format(""), "");
}

TEST(NarrowFormat, WideStringUnderNarrowFormatShowsItsFirstLetter)
{
    EXPECT_EQ(Format("%S OUT(%s)\r\n", L"A", reinterpret_cast<const char*>(L"Mail")), "A OUT(M)\r\n");
}

TEST(NarrowFormat, NullStringsPrintAsSuch)
{
    const wchar_t* wide = nullptr;
    const char* narrow = nullptr;
    EXPECT_EQ(Format("%S|%s|%d", wide, narrow, 3), "(null)|(null)|3");
    EXPECT_THAT(Format("%S|%s|%d|%S", wide, narrow, 3, kUnmappable), testing::StartsWith("(null)|(null)|3|"));
}

TEST(NarrowFormat, LettersOfTheSystemCodePagePass)
{
    if (!HasCodePage1252()) {
        GTEST_SKIP() << "for code page 1252";
    }
    EXPECT_EQ(Format("%S", L"Caf\u00e9 \u20ac"), "Caf\xe9 \x80");
}

TEST(NarrowFormat, JapanesePassesUnderItsCodePage)
{
    if (GetACP() != 932) {
        GTEST_SKIP() << "for code page 932";
    }
    EXPECT_EQ(Format("%S", L"\u30e1\u30fc\u30eb"), "\x83\x81\x81\x5b\x83\x8b");
    EXPECT_EQ(Format("%S", L"\u30e1\u30fc\u30eb\u0e01"), "\x83\x81\x81\x5b\x83\x8b?");
}

TEST(NarrowFormat, UnmappableLettersBecomeQuestionMarks)
{
    if (!HasCodePage1252()) {
        GTEST_SKIP() << "for code page 1252";
    }
    EXPECT_EQ(Format("%S IN(%S)\r\n", L"A", L"\u30e1\u30fc\u30eb x"), "A IN(??? x)\r\n");
    EXPECT_EQ(Format("%S", L"\u00e9\u30e1\u00e9"), "\xe9?\xe9");
    EXPECT_EQ(Format("%S", L"\xd800"), "?");
    EXPECT_EQ(Format("%S", L"a\xdc00z"), "a?z");
}

TEST(NarrowFormat, SurrogatePairDoesNotEndTheText)
{
    EXPECT_THAT(Format("%S!", L"a\xd83d\xde00z"), AllOf(testing::StartsWith("a"), testing::EndsWith("z!")));
}

TEST(NarrowFormat, EverythingAroundUnmappableTextStays)
{
    if (!HasCodePage1252()) {
        GTEST_SKIP() << "for code page 1252";
    }
    EXPECT_EQ(Format("%S(%S, 0x%08X, 0x%04X, %04d, %d, %s, %%) IN\r\n", L"A", kUnmappable, 0xA0000001u, 0x2A,
                     7, -1, "narrow"),
              "A(??, 0xA0000001, 0x002A, 0007, -1, narrow, %) IN\r\n");
    EXPECT_EQ(Format("%S|%S|%S", kUnmappable, L"", kUnmappable), "??||??");
    EXPECT_EQ(Format("%S", kUnmappable), "??");
}

TEST(NarrowFormat, HostsLocaleIsLeftAlone)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    Format("%S", L"x");
    Format("%S", kUnmappable);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

TEST(NarrowFormat, LongestMessageFits)
{
    const std::string narrow(1023, 'x');
    const std::wstring wide(1023, L'x');
    EXPECT_EQ(Format("%s", narrow.c_str()), narrow);
    EXPECT_EQ(Format("%S", wide.c_str()), narrow);
}

TEST(NarrowFormat, LongestMessageWithUnmappableTextFits)
{
    if (!HasCodePage1252()) {
        GTEST_SKIP() << "for code page 1252";
    }
    const std::wstring wide = L"\u30e1" + std::wstring(1022, L'x');
    EXPECT_EQ(Format("%S", wide.c_str()), "?" + std::string(1022, 'x'));
}

TEST(NarrowFormat, MessageThatDoesNotFitIsEmpty)
{
    const test::InvalidParameterHandler handler;
    for (const std::size_t size : {1024u, 1025u, 1026u, 2000u, 100000u}) {
        EXPECT_EQ(Format("%s", std::string(size, 'x').c_str()), "") << size;
        EXPECT_EQ(Format("%S", std::wstring(size, L'x').c_str()), "") << size;
        EXPECT_EQ(Format("%S", (kUnmappable + std::wstring(size, L'x')).c_str()), "") << size;
        EXPECT_EQ(Format("%S", (std::wstring(size, L'x') + kUnmappable).c_str()), "") << size;
    }
}

TEST(NarrowFormat, SmallerBufferIsKeptToo)
{
    const test::InvalidParameterHandler handler;
    EXPECT_EQ(FormatSized(4, "%S", L"abc"), "abc");
    EXPECT_EQ(FormatSized(4, "%S", L"abcd"), "");
    EXPECT_EQ(FormatSized(4, "%S", L"abcdefgh"), "");
    EXPECT_EQ(FormatSized(4, "%S", L"\u0e01\u10d0xyz"), "");
    EXPECT_EQ(FormatSized(1, "%S", L""), "");
}

} // namespace
