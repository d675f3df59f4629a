#include "common/UniqueHandle.h"

#include "support/Test.h"

#include <type_traits>

namespace {

using namespace test;

std::vector<int> g_closed;

struct NumberPolicy
{
    using Type = int;
    static Type None() noexcept { return -1; }
    static void Close(Type value) noexcept { g_closed.push_back(value); }
};
using UniqueNumber = UniqueResource<NumberPolicy>;

class UniqueHandleTest : public ::testing::Test
{
protected:
    UniqueHandleTest() { g_closed.clear(); }
};

TEST_F(UniqueHandleTest, EmptyOneClosesNothing)
{
    {
        const UniqueNumber none;
        EXPECT_FALSE(none);
        const UniqueNumber alsoNone(-1);
        EXPECT_FALSE(alsoNone);
    }
    EXPECT_THAT(g_closed, IsEmpty());
}

TEST_F(UniqueHandleTest, HandleIsClosedOnceAtTheEndOfTheScope)
{
    {
        const UniqueNumber number(0); // not "none" for this kind
        EXPECT_TRUE(number);
        EXPECT_EQ(number.Get(), 0);
        EXPECT_THAT(g_closed, IsEmpty());
    }
    EXPECT_THAT(g_closed, ElementsAre(0));
}

TEST_F(UniqueHandleTest, ReleasedHandleIsNotClosed)
{
    {
        UniqueNumber number(7);
        EXPECT_EQ(number.Release(), 7);
        EXPECT_FALSE(number);
    }
    EXPECT_THAT(g_closed, IsEmpty());
}

TEST_F(UniqueHandleTest, ResetClosesTheOldOneAtOnce)
{
    {
        UniqueNumber number(7);
        number.Reset(8);
        EXPECT_THAT(g_closed, ElementsAre(7));
        EXPECT_EQ(number.Get(), 8);
        number.Reset();
        EXPECT_THAT(g_closed, ElementsAre(7, 8));
        EXPECT_FALSE(number);
    }
    EXPECT_THAT(g_closed, ElementsAre(7, 8));
}

TEST_F(UniqueHandleTest, PutClosesTheOldOneAndTakesTheNewOne)
{
    {
        UniqueNumber number(7);
        int* place = number.Put();
        EXPECT_THAT(g_closed, ElementsAre(7));
        EXPECT_EQ(*place, -1);
        *place = 8;
        EXPECT_EQ(number.Get(), 8);
    }
    EXPECT_THAT(g_closed, ElementsAre(7, 8));
}

TEST_F(UniqueHandleTest, MovingHandsTheHandleOver)
{
    {
        UniqueNumber first(7);
        UniqueNumber second(std::move(first));
        EXPECT_EQ(second.Get(), 7);
        UniqueNumber third(8);
        third = std::move(second);
        EXPECT_THAT(g_closed, ElementsAre(8));
        EXPECT_EQ(third.Get(), 7);
    }
    EXPECT_THAT(g_closed, ElementsAre(8, 7));
}

TEST_F(UniqueHandleTest, HandlesAreNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<UniqueNumber>);
    EXPECT_FALSE(std::is_copy_assignable_v<UniqueNumber>);
}

TEST_F(UniqueHandleTest, KernelObjectIsClosed)
{
    HANDLE event = nullptr;
    {
        const UniqueHandle handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        event = handle.Get();
        ASSERT_TRUE(handle);
        EXPECT_TRUE(SetEvent(event));
    }
    EXPECT_FALSE(SetEvent(event));
}

TEST_F(UniqueHandleTest, FileThatDoesNotOpenIsNoHandle)
{
    const UniqueFile file(
        CreateFileW(L"C:\\no such folder\\x", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(file);
    EXPECT_FALSE(UniqueFile());
}

TEST_F(UniqueHandleTest, SearchOfFilesIsClosed)
{
    const TemporaryFolder folder;
    MakeFile(folder / L"x");
    WIN32_FIND_DATAW entry{};
    {
        const UniqueFind find(FindFirstFileW((folder / L"*").c_str(), &entry));
        ASSERT_TRUE(find);
    }
    const UniqueFind none(FindFirstFileW((folder / L"*.none").c_str(), &entry));
    EXPECT_FALSE(none);
}

TEST_F(UniqueHandleTest, RegistryKeyIsClosed)
{
    HKEY opened = nullptr;
    {
        UniqueRegistryKey key;
        ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, key.Put()), ERROR_SUCCESS);
        opened = key.Get();
        EXPECT_EQ(RegQueryInfoKeyW(opened, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
    }
    EXPECT_NE(RegQueryInfoKeyW(opened, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
}

} // namespace
