#include "common/WinRtError.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <new>
#include <string>

namespace {

using ::testing::ElementsAre;

TEST(WinRtError, SuccessIsNotRaised)
{
    EXPECT_NO_THROW(ThrowIfFailed(S_OK));
    EXPECT_NO_THROW(ThrowIfFailed(S_FALSE));
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

TEST(WinRtError, FailureWithoutATextShowsItsCode)
{
    EXPECT_STREQ(WinRtError(static_cast<HRESULT>(0xA0000001)).Message(), L"0xA0000001");
}

// At an operation's boundary.

TEST(LogCaught, APlatformErrorLeavesWithItsMessage)
{
    const test::LogCapture log;
    try {
        throw WinRtError(static_cast<HRESULT>(0xA0000001));
    } catch (...) {
        EXPECT_EQ(LogCaught(L"CQanhX::Do", E_OUTOFMEMORY), E_FAIL);
    }
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhX::Do OUT(0xA0000001)"));
}

TEST(LogCaught, WhateverElseLeavesWithTheOperationsResultForIt)
{
    const test::LogCapture log;
    try {
        throw std::bad_alloc();
    } catch (...) {
        EXPECT_EQ(LogCaught(L"CQanhX::Do", E_OUTOFMEMORY), E_OUTOFMEMORY);
    }
    try {
        throw 4711;
    } catch (...) {
        EXPECT_EQ(LogCaught(L"CQanhX::Do", E_FAIL), E_FAIL);
    }
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhX::Do OUT(0x8007000E)", "CQanhX::Do OUT(0x80004005)"));
}

} // namespace
