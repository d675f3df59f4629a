#include "common/Arguments.h"

#include "support/Test.h"

namespace {

TEST(Arguments, StringMustBeThereAndHoldSomething)
{
    EXPECT_EQ(CheckString(nullptr), E_POINTER);
    EXPECT_EQ(CheckString(L""), E_INVALIDARG);
    EXPECT_EQ(CheckString(L" "), S_OK);
}

TEST(Arguments, NullComesBeforeEmpty)
{
    const int object = 0;
    EXPECT_EQ(CheckStringAndPointer(nullptr, &object), E_POINTER);
    EXPECT_EQ(CheckStringAndPointer(L"x", nullptr), E_POINTER);
    EXPECT_EQ(CheckStringAndPointer(L"", nullptr), E_POINTER);
    EXPECT_EQ(CheckStringAndPointer(L"", &object), E_INVALIDARG);
    EXPECT_EQ(CheckStringAndPointer(L"x", &object), S_OK);
}

} // namespace
