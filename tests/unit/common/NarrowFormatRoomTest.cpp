#include "common/NarrowFormat.h"

#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdarg>
#include <cstring>

namespace {

int Format(char* buffer, std::size_t size, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatNarrow(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

std::size_t g_given; // the length of the message that the C runtime was given

int GiveToCRuntime(char*, std::size_t, const char*, _locale_t locale, ...)
{
    va_list arguments;
    va_start(arguments, locale);
    g_given = std::strlen(va_arg(arguments, const char*));
    va_end(arguments);
    return -1;
}

// The platform may leave anything in a buffer that is too small, zeros too: the message must not end there
// and pass for a short one.
TEST(NarrowFormatRoom, TextWithoutRoomIsTooLongWhateverTheConversionLeft)
{
    const test::ImportPatch<decltype(&WideCharToMultiByte)> convert(
        "WideCharToMultiByte",
        [](UINT, DWORD, const wchar_t*, int, char* bytes, int size, const char*, BOOL*) -> int {
            std::memset(bytes, 0, static_cast<std::size_t>(size));
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        });
    const test::ImportPatch<decltype(&GiveToCRuntime)> copy("_sprintf_s_l", GiveToCRuntime);
    g_given = 0;
    char buffer[kLargestMessage] = {};
    EXPECT_EQ(Format(buffer, sizeof buffer, "ab%S", L"x"), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(g_given, kLargestMessage); // too long, by one
}

// What it would convert is not there, so nothing is read for it.
TEST(NarrowFormatRoom, FormatThatEndsWithinAConversionEndsBeforeIt)
{
    char buffer[kLargestMessage] = {};
    for (const char* format : {"ab%", "ab%08", "ab%-"}) {
        EXPECT_EQ(Format(buffer, sizeof buffer, format), 2) << format;
        EXPECT_STREQ(buffer, "ab") << format;
    }
}

} // namespace
