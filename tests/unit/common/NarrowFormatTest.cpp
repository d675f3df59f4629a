#include "common/NarrowFormat.h"

#include "common/HostEnvironment.h"
#include "unit/common/CodePage.h"
#include "unit/common/InvalidParameter.h"

#include <clocale>
#include <cstdarg>
#include <cstring>

namespace {

using namespace test;

constexpr UINT kJapanese = 932;
constexpr UINT kWestern = 1252;

constexpr wchar_t kUnmappable[] = L"\u0e01\u10d0"; // Thai and Georgian: in neither of these code pages

// Formats into a buffer of this size, and checks that it ends where the result says and that nothing was
// written behind it.
std::string FormatSized(std::size_t size, const char* format, ...)
{
    constexpr char kUntouched = '\x5a';
    std::vector<char> buffer(size + 64, kUntouched);
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatNarrow(buffer.data(), size, format, arguments);
    va_end(arguments);
    EXPECT_GE(length, 0);
    EXPECT_LT(static_cast<std::size_t>(length), size);
    EXPECT_EQ(std::strlen(buffer.data()), static_cast<std::size_t>(length));
    EXPECT_TRUE(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(size), buffer.end(),
                            [](char c) { return c == kUntouched; }));
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

template <typename... Arguments> std::string Format(const char* format, Arguments... arguments)
{
    return FormatSized(kLargestMessage, format, arguments...);
}

std::wstring Repeated(std::wstring_view text, std::size_t times)
{
    std::wstring repeated;
    while (times-- > 0) {
        repeated += text;
    }
    return repeated;
}

TEST(NarrowFormat, FormatsOfTheTrace)
{
    EXPECT_EQ(Format("%S IN\r\n", L"A"), "A IN\r\n");
    EXPECT_EQ(Format("%S(%S, %d, %d) IN\r\n", L"A", L"b", -1, 2), "A(b, -1, 2) IN\r\n");
    EXPECT_EQ(Format("%S(%S, 0x%08X) IN\r\n", L"A", L"b", 0x1234), "A(b, 0x00001234) IN\r\n");
    EXPECT_EQ(Format("%S(0x%04X, 0x%08X) IN\r\n", L"A", 0x5B, 1), "A(0x005B, 0x00000001) IN\r\n");
    EXPECT_EQ(Format("%S OUT(0x%08X)\r\n", L"A", static_cast<unsigned>(E_FAIL)), "A OUT(0x80004005)\r\n");
    EXPECT_EQ(Format("%S|%S|%S", L"a", L"", L"b"), "a||b");
    EXPECT_EQ(Format("%d%%", 100), "100%");
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

struct Conversion
{
    UINT codePage;
    const wchar_t* text;
    const char* bytes;
};

const Conversion kConversions[] = {
    // Letters of the code page pass; in the third row they are of two bytes, one byte and ASCII.
    {kWestern, L"Caf\u00e9 \u20ac \u201c\u0178\u201d", "Caf\xe9 \x80 \x93\x9f\x94"},
    {kJapanese, L"\u30e1\u30fc\u30eb", "\x83\x81\x81\x5b\x83\x8b"},
    {kJapanese, L"\u30bd\uff71x", "\x83\x5c\xb1x"},
    {CP_UTF8, L"\u00e9\u30e1\u0e01\xd83d\xde00z", "\xc3\xa9\xe3\x83\xa1\xe0\xb8\x81\xf0\x9f\x98\x80z"},
    // Other letters become question marks.
    {kWestern, L"\u30e1\u30fc\u30eb x", "??? x"},
    {kWestern, L"\u00e9\u30e1\u00e9", "\xe9?\xe9"},
    {kWestern, kUnmappable, "??"},
    {kJapanese, L"\u30e1\u0e01\u30eb", "\x83\x81?\x83\x8b"},
    // A code page may have a letter that resembles the one that it lacks (a with a macron, wide A,
    // infinity): a name must not turn into another name.
    {kWestern, L"\u0101\uff21\u221e", "???"},
    {kWestern, L"\u0101\u30e1", "??"},
    {kJapanese, L"\u00e9\u00c5", "??"},
    // Halves of surrogate pairs become one mark each.
    {kWestern, L"\xd800", "?"},
    {kWestern, L"a\xdc00z", "a?z"},
    {kWestern, L"a\xd83dz", "a?z"},
    {kJapanese, L"\xd800", "?"},
    {kJapanese, L"a\xdc00z", "a?z"},
    {kJapanese, L"a\xd83dz", "a?z"},
    {CP_UTF8, L"a\xd800z", "a\xef\xbf\xbdz"},
    {CP_UTF8, L"\xdc00", "\xef\xbf\xbd"},
};

TEST(NarrowFormat, TextIsInTheSystemsCodePage)
{
    for (const Conversion& row : kConversions) {
        SCOPED_TRACE(std::string(row.bytes) + " in " + std::to_string(row.codePage));
        const CodePage system(row.codePage);
        EXPECT_EQ(Format("%S", row.text), row.bytes);
        EXPECT_EQ(Format("%S IN(%S)\r\n", L"A", row.text), "A IN(" + std::string(row.bytes) + ")\r\n");
    }
}

TEST(NarrowFormat, SurrogatePairsThatTheCodePageLacksDoNotEndTheText)
{
    for (const UINT codePage : {kWestern, kJapanese}) {
        const CodePage system(codePage);
        // One mark for the pair or one for each half, as the platform has it.
        EXPECT_THAT(Format("%S!", L"a\xd83d\xde00z"), ::testing::AnyOf("a?z!", "a??z!"));
    }
}

// No other code page in the place of the system's. Who runs the tests says which that is, when not the usual
// one.
TEST(NarrowFormat, TheMachinesOwnCodePageIsUsed)
{
    wchar_t said[MAX_PATH];
    const bool isSaid = ReadEnvironmentVariable(L"EXPECTED_CODE_PAGE", said);
    const UINT own = isSaid ? static_cast<UINT>(std::wcstoul(said, nullptr, 10)) : kWestern;
    ASSERT_EQ(GetACP(), own) << "EXPECTED_CODE_PAGE says which one is right on this machine";
    ASSERT_TRUE(own == kWestern || own == kJapanese);
    EXPECT_EQ(Format("%S", L"A \u00e9\u30e1\u0e01"), own == kWestern ? "A \xe9??" : "A ?\x83\x81?");
}

TEST(NarrowFormat, EverythingAroundWideTextStays)
{
    const CodePage western(kWestern);
    EXPECT_EQ(Format("%S(%S, 0x%08X, 0x%04X, %04d, %d, %s, %%) IN\r\n", L"A", kUnmappable, 0xA0000001u, 0x2A,
                     7, -1, "narrow"),
              "A(??, 0xA0000001, 0x002A, 0007, -1, narrow, %) IN\r\n");
    EXPECT_EQ(Format("%S|%S|%S", kUnmappable, L"", kUnmappable), "??||??");
}

TEST(NarrowFormat, HostsLocaleIsLeftAloneAndDoesNotCount)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    (void)Format("%S", L"x");
    (void)Format("%S", kUnmappable);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);

    const CodePage western(kWestern);
    ASSERT_NE(std::setlocale(LC_ALL, ".1251"), nullptr);
    EXPECT_EQ(Format("%S", L"\u00e9\u0436"), "\xe9?");
    std::setlocale(LC_ALL, before.c_str());
}

TEST(NarrowFormat, LongestMessageFits)
{
    const std::string narrow(1023, 'x');
    const std::wstring wide(1023, L'x');
    EXPECT_EQ(Format("%s", narrow.c_str()), narrow);
    EXPECT_EQ(Format("%S", wide.c_str()), narrow);
    EXPECT_EQ(Format("%S%s\r\n", wide.substr(500).c_str(), narrow.substr(525).c_str()),
              narrow.substr(2) + "\r\n");
}

// Bytes count, not letters.
TEST(NarrowFormat, LongestTextHas1023BytesHoweverManyLetters)
{
    const std::pair<UINT, std::wstring> longest[] = {{kWestern, Repeated(L"\u00e9", 1023)},
                                                     {kWestern, Repeated(L"\u30e1", 1023)},
                                                     {kJapanese, Repeated(L"\u30e1", 511) + L"x"},
                                                     {kJapanese, L"x" + Repeated(L"\u30e1", 511)},
                                                     {kJapanese, Repeated(L"\u0e01", 1023)},
                                                     {CP_UTF8, Repeated(L"\u30e1", 341)},
                                                     {CP_UTF8, Repeated(L"\xd83d\xde00", 255) + L"xyz"},
                                                     {CP_UTF8, Repeated(L"\xd800", 341)}};
    const InvalidParameterHandler handler;
    for (const auto& [codePage, fits] : longest) {
        SCOPED_TRACE(ToUtf8(fits) + " in " + std::to_string(codePage));
        const CodePage system(codePage);
        EXPECT_EQ(Format("%S", fits.c_str()).size(), 1023u);
        EXPECT_EQ(Format("%Sx", fits.c_str()), "");
        EXPECT_EQ(Format("x%S", fits.c_str()), "");
        EXPECT_EQ(Format("%S", (fits + L"x").c_str()), "");
        EXPECT_EQ(Format("%S", (fits + fits.front()).c_str()), "");
        EXPECT_EQ(Format("%S%S", fits.c_str(), fits.c_str()), "");
        EXPECT_EQ(Format("%S%S", fits.c_str(), L""), Format("%S", fits.c_str()));
    }
}

TEST(NarrowFormat, MessageThatDoesNotFitIsEmpty)
{
    const InvalidParameterHandler handler;
    for (const std::size_t size : {1024u, 1025u, 1026u, 2000u, 2048u, 2049u, 100000u}) {
        EXPECT_EQ(Format("%s", std::string(size, 'x').c_str()), "") << size;
        EXPECT_EQ(Format("%S", std::wstring(size, L'x').c_str()), "") << size;
        EXPECT_EQ(Format("%S", (kUnmappable + std::wstring(size, L'x')).c_str()), "") << size;
        EXPECT_EQ(Format("%S", (std::wstring(size, L'x') + kUnmappable).c_str()), "") << size;
        EXPECT_EQ(Format("%S", (L"x" + Repeated(L"\xd83d\xde00", size)).c_str()), "") << size;
        EXPECT_EQ(Format("%s%d%S\r\n", std::string(size, 'x').c_str(), 7, L"A"), "") << size;
        EXPECT_EQ(Format(std::string(size, 'x').c_str()), "") << size;
    }
}

std::vector<std::size_t> g_lengths; // of the messages that the C runtime was given

int GiveToCRuntime(char*, std::size_t size, const char* format, _locale_t locale, ...)
{
    EXPECT_EQ(size, 1024u);
    EXPECT_STREQ(format, "%s");
    va_list arguments;
    va_start(arguments, locale);
    g_lengths.push_back(std::strlen(va_arg(arguments, const char*)));
    va_end(arguments);
    return -1;
}

// What becomes of a message that does not fit is for the C runtime to say: as a rule it ends the process.
TEST(NarrowFormat, MessageThatDoesNotFitIsGivenToTheCRuntime)
{
    g_lengths.clear();
    const ImportPatch<decltype(&GiveToCRuntime)> patch("_sprintf_s_l", GiveToCRuntime);
    EXPECT_EQ(Format("%S", std::wstring(1024, L'x').c_str()), "");
    EXPECT_EQ(Format("%S", std::wstring(100000, L'x').c_str()), "");
    EXPECT_THAT(g_lengths, ::testing::ElementsAre(1024u, 1024u)); // too long for it, by one
}

// The platform may leave anything in a buffer that is too small, zeros too: the message must not end there
// and pass for a short one.
TEST(NarrowFormat, TextWithoutRoomIsTooLongWhateverTheConversionLeft)
{
    const ImportPatch<decltype(&WideCharToMultiByte)> convert(
        "WideCharToMultiByte",
        [](UINT, DWORD, const wchar_t*, int, char* bytes, int size, const char*, BOOL*) -> int {
            std::memset(bytes, 0, static_cast<std::size_t>(size));
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        });
    g_lengths.clear();
    const ImportPatch<decltype(&GiveToCRuntime)> patch("_sprintf_s_l", GiveToCRuntime);
    EXPECT_EQ(Format("ab%S", L"x"), "");
    EXPECT_THAT(g_lengths, ::testing::ElementsAre(1024u)); // too long, by one
}

// What it would convert is not there, so nothing is read for it.
TEST(NarrowFormat, FormatThatEndsWithinAConversionEndsBeforeIt)
{
    for (const char* format : {"ab%", "ab%08", "ab%-"}) {
        EXPECT_EQ(Format(format), "ab") << format;
    }
}

TEST(NarrowFormat, SmallerBufferIsKeptToo)
{
    const InvalidParameterHandler handler;
    EXPECT_EQ(FormatSized(4, "%S", L"abc"), "abc");
    for (const wchar_t* text : {L"abcd", L"abcdefgh", L"\u0e01\u10d0xyz"}) {
        EXPECT_EQ(FormatSized(4, "%S", text), "");
    }
    EXPECT_EQ(FormatSized(1, "%S", L""), "");
}

// A code page that the platform cannot convert to.
TEST(NarrowFormat, TextThatCannotBeConvertedIsAQuestionMark)
{
    const ImportPatch<decltype(&WideCharToMultiByte)> patch(
        "WideCharToMultiByte", [](UINT, DWORD, const wchar_t*, int, char*, int, const char*, BOOL*) -> int {
            SetLastError(ERROR_INVALID_PARAMETER);
            return 0;
        });
    EXPECT_EQ(Format("%S OUT(%S)\r\n", L"CQanhX::Do", L"text"), "? OUT(?)\r\n");
}

} // namespace
