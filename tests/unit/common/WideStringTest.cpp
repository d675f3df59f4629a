#include "common/WideString.h"

#include "support/Test.h"

namespace {

TEST(WideString, NullMakesAnEmptyString)
{
    const WideString text(nullptr);
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), L"");
}

TEST(WideString, CopiesShareOneText)
{
    const WideString text(L"Mail");
    const WideString copy = text; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.c_str(), text.c_str());
    EXPECT_TRUE(copy == text);
}

TEST(WideString, ComparesToTheLetter)
{
    EXPECT_FALSE(WideString(L"Mail") == WideString(L"mail"));
    EXPECT_TRUE(WideString(L"") == WideString());
}

} // namespace
