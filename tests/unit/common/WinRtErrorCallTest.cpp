// How the system is asked for the message of an error.

#include "common/WinRtError.h"

#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

// Any language but "none" would end the look-up where the system has no text in it.
TEST(WinRtErrorCall, LanguageAndSourceAreTheSystemsOwnChoice)
{
    static bool isAsItMustBe;
    isAsItMustBe = false;
    const test::ImportPatch<DWORD(WINAPI*)(DWORD, const void*, DWORD, DWORD, wchar_t*, DWORD, void*)> patch(
        "FormatMessageW",
        [](DWORD, const void* source, DWORD, DWORD language, wchar_t*, DWORD, void* arguments) -> DWORD {
            isAsItMustBe = !source && language == 0 && !arguments;
            return 0;
        });
    EXPECT_STREQ(WinRtError(E_FAIL).Message(), L"0x80004005");
    EXPECT_TRUE(isAsItMustBe);
}

} // namespace
