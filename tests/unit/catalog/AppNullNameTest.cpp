#include "catalog/MetroApp.h"

#include <gtest/gtest.h>

namespace {

TEST(AppNullName, IsInNothingAndHoldsNothing)
{
    EXPECT_EQ(CQanhMetroApp().IsSubStrNoOrder(nullptr, L"mail"), FALSE);
    EXPECT_EQ(CQanhMetroApp().IsSubStrNoOrder(L"mail", nullptr), FALSE);
    EXPECT_EQ(CQanhMetroApp().IsSubStrNoOrder(nullptr, nullptr), FALSE);
    EXPECT_EQ(CQanhMetroApp().IsSubStrNoOrder(L"mail", L"mail"), TRUE);
}

} // namespace
