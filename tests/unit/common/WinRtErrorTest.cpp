#include "common/WinRtError.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

namespace {

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

} // namespace
