#include "common/WinRtError.h"

#include "support/Test.h"

#include <cwchar>
#include <exception>
#include <new>

namespace {

using namespace test;

TEST(WinRtError, NoSuccessRaisesIt)
{
    for (const HRESULT result : {S_OK, S_FALSE, HRESULT(0x7FFFFFFF)}) {
        EXPECT_NO_THROW(ThrowIfFailed(result));
    }
    for (const HRESULT result : {E_FAIL, E_POINTER, static_cast<HRESULT>(0xFFFFFFFF)}) {
        EXPECT_THROW(ThrowIfFailed(result), WinRtError);
    }
}

TEST(WinRtError, FailureIsRaisedWithItsResultAndText)
{
    try {
        ThrowIfFailed(E_ACCESSDENIED);
        FAIL() << "nothing was raised";
    } catch (const WinRtError& error) {
        EXPECT_EQ(error.Result(), E_ACCESSDENIED);
        const std::wstring message = error.Message();
        ASSERT_FALSE(message.empty());
        // It stands inside a line of the log.
        EXPECT_EQ(message.find_first_of(L"\r\n"), std::wstring::npos);
        EXPECT_NE(message.back(), L' ');
    }
}

TEST(WinRtError, FailureWithoutATextShowsItsCodeInACopyToo)
{
    EXPECT_STREQ(WinRtError(static_cast<HRESULT>(0xA0000001)).Message(), L"0xA0000001");
    std::wstring message;
    try {
        throw WinRtError(static_cast<HRESULT>(0xA0000001));
    } catch (const WinRtError& error) {
        const WinRtError copy(error); // NOLINT(performance-unnecessary-copy-initialization)
        message = copy.Message();
    }
    EXPECT_EQ(message, L"0xA0000001");
}

TEST(WinRtError, IsAnExceptionWithoutItsMessageToo)
{
    EXPECT_THROW(throw WinRtError(E_FAIL), std::exception);
    EXPECT_STRNE(WinRtError(E_FAIL).what(), "");
}

// The message that it brings into the log.
class WinRtErrorMessage : public ::testing::Test
{
protected:
    // The system has this text for every result.
    std::wstring MessageWith(const std::wstring& text, HRESULT result = E_FAIL)
    {
        m_text = text;
        return WinRtError(result).Message();
    }

    std::wstring m_text;
    DWORD m_flags = 0; // that were asked with
    DWORD m_id = 0;
    bool m_isSystemsChoice = false; // of source and language
    const CapturingPatch<DWORD(WINAPI*)(DWORD, const void*, DWORD, DWORD, wchar_t*, DWORD, void*)> m_patch{
        "FormatMessageW", [this](DWORD flags, const void* source, DWORD id, DWORD language, wchar_t* buffer,
                                 DWORD size, void* arguments) {
            m_isSystemsChoice = !source && language == 0 && !arguments;
            m_flags = flags;
            m_id = id;
            const std::wstring text = m_text.substr(0, size - 1);
            std::wmemcpy(buffer, text.c_str(), text.size() + 1);
            return static_cast<DWORD>(text.size());
        }};
};

TEST_F(WinRtErrorMessage, IsTheSystemsTextForTheResult)
{
    EXPECT_EQ(MessageWith(L"No such thing.", E_ACCESSDENIED), L"No such thing.");
    EXPECT_EQ(m_id, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(m_flags & FORMAT_MESSAGE_FROM_SYSTEM);
    // A text with places for inserts has none here.
    EXPECT_TRUE(m_flags & FORMAT_MESSAGE_IGNORE_INSERTS);
    EXPECT_FALSE(m_flags & FORMAT_MESSAGE_ALLOCATE_BUFFER);
    // Any language but "none" would end the look-up where the system has no text in it.
    EXPECT_TRUE(m_isSystemsChoice);
}

TEST_F(WinRtErrorMessage, HasNoBlanksBehindIt)
{
    EXPECT_EQ(MessageWith(L"Denied.  "), L"Denied.");
    EXPECT_EQ(MessageWith(L" Two words "), L" Two words");
}

TEST_F(WinRtErrorMessage, IsTheNumberWhereTheSystemHasNoText)
{
    EXPECT_EQ(MessageWith(L"", static_cast<HRESULT>(0x8ABCDEF0)), L"0x8ABCDEF0");
    EXPECT_EQ(MessageWith(L"   ", E_FAIL), L"0x80004005");
}

// It has to fit in a line of the trace, whatever its characters become there.
TEST_F(WinRtErrorMessage, IsCutWhenItIsTooLong)
{
    EXPECT_EQ(MessageWith(std::wstring(250, L'x')), std::wstring(250, L'x'));
    EXPECT_EQ(MessageWith(std::wstring(2000, L'x')), std::wstring(250, L'x'));
    EXPECT_EQ(MessageWith(std::wstring(249, L'x') + L" " + std::wstring(100, L'y')), std::wstring(249, L'x'));
}

// At an operation's boundary.

// The result of an operation that raises, and has this one for whatever it does not know.
template <typename Raise> HRESULT ResultOf(Raise raise, HRESULT otherwise)
{
    try {
        raise();
    } catch (...) {
        return LogCaught(L"CQanhX::Do", otherwise);
    }
    return S_OK;
}

TEST_F(WinRtErrorMessage, StandsInTheExitLine)
{
    m_text = L"No such thing.";
    const LogCapture log;
    EXPECT_EQ(ResultOf([] { throw WinRtError(E_ACCESSDENIED); }, E_OUTOFMEMORY), E_FAIL);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhX::Do OUT(No such thing.)"));
}

TEST(LogCaught, WhateverElseLeavesWithTheOperationsResultForIt)
{
    const LogCapture log;
    EXPECT_EQ(ResultOf([] { throw WinRtError(static_cast<HRESULT>(0xA0000001)); }, E_OUTOFMEMORY), E_FAIL);
    EXPECT_EQ(ResultOf([] { throw std::bad_alloc(); }, E_OUTOFMEMORY), E_OUTOFMEMORY);
    EXPECT_EQ(ResultOf([] { throw 4711; }, E_FAIL), E_FAIL);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhX::Do OUT(0xA0000001)", "CQanhX::Do OUT(0x8007000E)",
                                         "CQanhX::Do OUT(0x80004005)"));
}

} // namespace
