#include "common/Guarded.h"

#include "support/LockWatch.h"

#include "support/Test.h"

#include <thread>
#include <type_traits>

namespace {

struct Pair
{
    explicit Pair(int start) : first(start), second(start) {}
    int first;
    int second;
};

using ReadAccess = Guarded<Pair>::ReadAccess;
using WriteAccess = Guarded<Pair>::WriteAccess;

TEST(Guarded, ArgumentsMakeTheValue)
{
    Guarded<Pair> pair(7);
    EXPECT_EQ(pair.Read()->first, 7);
    EXPECT_EQ((*pair.Read()).second, 7);
    pair.Write()->second = 8;
    EXPECT_EQ(pair.Read()->second, 8);
}

TEST(Guarded, ReadersCannotWrite)
{
    static_assert(std::is_same_v<decltype(*std::declval<ReadAccess>()), const Pair&>);
    static_assert(std::is_same_v<decltype(std::declval<ReadAccess>().operator->()), const Pair*>);
}

TEST(Guarded, ReadersShareTheValue)
{
    const Guarded<Pair> pair(7);
    const test::LockWatch locks(pair);
    std::optional<ReadAccess> reading(std::in_place, pair);
    const HANDLE hasRead = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&] {
        EXPECT_EQ(pair.Read()->first, 7);
        SetEvent(hasRead);
    });
    EXPECT_EQ(WaitForSingleObject(hasRead, 30000), WAIT_OBJECT_0);
    EXPECT_FALSE(locks.HasBlocked());
    reading.reset();
    other.join();
    CloseHandle(hasRead);
}

TEST(Guarded, WriterWaitsForAReader)
{
    Guarded<Pair> pair(7);
    const test::LockWatch locks(pair);
    std::optional<ReadAccess> reading(std::in_place, pair);
    std::thread writer([&] { pair.Write()->first = 8; });
    EXPECT_TRUE(locks.WaitForBlocked());
    EXPECT_EQ((*reading)->first, 7);
    reading.reset();
    writer.join();
    EXPECT_EQ(pair.Read()->first, 8);
}

TEST(Guarded, ReaderWaitsForAWriter)
{
    Guarded<Pair> pair(7);
    const test::LockWatch locks(pair);
    std::optional<WriteAccess> writing(std::in_place, pair);
    (*writing)->first = 8;
    std::thread reader([&] {
        const auto access = pair.Read();
        EXPECT_EQ(access->first, 8);
        EXPECT_EQ(access->second, 8);
    });
    EXPECT_TRUE(locks.WaitForBlocked());
    (*writing)->second = 8;
    writing.reset();
    reader.join();
}

TEST(Guarded, WriterWaitsForAWriter)
{
    Guarded<Pair> pair(7);
    const test::LockWatch locks(pair);
    std::optional<WriteAccess> writing(std::in_place, pair);
    std::thread writer([&] { pair.Write()->first = 9; });
    EXPECT_TRUE(locks.WaitForBlocked());
    (*writing)->first = 8;
    writing.reset();
    writer.join();
    EXPECT_EQ(pair.Read()->first, 9);
}

} // namespace
