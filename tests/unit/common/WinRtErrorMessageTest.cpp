// The message that an error of the Windows Runtime brings into the log.

#include "common/WinRtError.h"

#include "support/ImportPatch.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <exception>
#include <string>
#include <vector>

namespace {

// The system's text for every result, as the test says.
const wchar_t* g_text;
DWORD g_flags;
DWORD g_id;

DWORD WINAPI Text(DWORD flags, const void*, DWORD id, DWORD, wchar_t* buffer, DWORD size, void*)
{
    g_flags = flags;
    g_id = id;
    const std::wstring text = std::wstring(g_text).substr(0, size - 1);
    std::wmemcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<DWORD>(text.size());
}

std::wstring MessageWith(const wchar_t* text, HRESULT result = E_FAIL)
{
    g_text = text;
    const test::ImportPatch<decltype(&Text)> patch("FormatMessageW", Text);
    return WinRtError(result).Message();
}

TEST(WinRtErrorMessage, IsTheSystemsTextForTheResult)
{
    EXPECT_EQ(MessageWith(L"No such thing.", E_ACCESSDENIED), L"No such thing.");
    EXPECT_EQ(g_id, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(g_flags & FORMAT_MESSAGE_FROM_SYSTEM);
    // A text with places for inserts has none here.
    EXPECT_TRUE(g_flags & FORMAT_MESSAGE_IGNORE_INSERTS);
    EXPECT_FALSE(g_flags & FORMAT_MESSAGE_ALLOCATE_BUFFER);
}

TEST(WinRtErrorMessage, StandsInTheExitLine)
{
    g_text = L"No such thing.";
    const test::ImportPatch<decltype(&Text)> patch("FormatMessageW", Text);
    const test::LogCapture log;
    try {
        throw WinRtError(E_ACCESSDENIED);
    } catch (...) {
        EXPECT_EQ(LogCaught(L"CQanhX::Do", E_OUTOFMEMORY), E_FAIL);
    }
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"CQanhX::Do OUT(No such thing.)"});
}

TEST(WinRtErrorMessage, HasNoBlanksBehindIt)
{
    EXPECT_EQ(MessageWith(L"Denied.  "), L"Denied.");
    EXPECT_EQ(MessageWith(L" Two words "), L" Two words");
}

TEST(WinRtErrorMessage, IsTheNumberWhereTheSystemHasNoText)
{
    EXPECT_EQ(MessageWith(L"", static_cast<HRESULT>(0x8ABCDEF0)), L"0x8ABCDEF0");
    EXPECT_EQ(MessageWith(L"   ", E_FAIL), L"0x80004005");
}

// It has to fit in a line of the trace, whatever its characters become there.
TEST(WinRtErrorMessage, IsCutWhenItIsTooLong)
{
    EXPECT_EQ(MessageWith(std::wstring(250, L'x').c_str()), std::wstring(250, L'x'));
    EXPECT_EQ(MessageWith(std::wstring(2000, L'x').c_str()), std::wstring(250, L'x'));
    EXPECT_EQ(MessageWith((std::wstring(249, L'x') + L" " + std::wstring(100, L'y')).c_str()),
              std::wstring(249, L'x'));
}

TEST(WinRtErrorMessage, OutlivesACopyOfTheError)
{
    std::wstring message;
    try {
        throw WinRtError(static_cast<HRESULT>(0xA0000001));
    } catch (const WinRtError& error) {
        const WinRtError copy(error); // NOLINT(performance-unnecessary-copy-initialization)
        message = copy.Message();
    }
    EXPECT_EQ(message, L"0xA0000001");
}

TEST(WinRtErrorMessage, IsNotNeededToCatchTheError)
{
    EXPECT_THROW(throw WinRtError(E_FAIL), std::exception);
    EXPECT_STRNE(WinRtError(E_FAIL).what(), "");
}

TEST(WinRtErrorMessage, NoSuccessRaisesIt)
{
    for (const HRESULT result : {S_OK, S_FALSE, HRESULT(0x7FFFFFFF)}) {
        EXPECT_NO_THROW(ThrowIfFailed(result));
    }
    for (const HRESULT result : {E_FAIL, E_POINTER, static_cast<HRESULT>(0xFFFFFFFF)}) {
        EXPECT_THROW(ThrowIfFailed(result), WinRtError);
    }
}

} // namespace
