#include "common/Guarded.h"

#include "support/LockWatch.h"

#include "support/Test.h"

#include <atomic>
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
    const test::LockWatch locks;
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
    const test::LockWatch locks;
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
    const test::LockWatch locks;
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
    const test::LockWatch locks;
    std::optional<WriteAccess> writing(std::in_place, pair);
    std::thread writer([&] { pair.Write()->first = 9; });
    EXPECT_TRUE(locks.WaitForBlocked());
    (*writing)->first = 8;
    writing.reset();
    writer.join();
    EXPECT_EQ(pair.Read()->first, 9);
}

// Each state is one in which the two numbers are the same.
TEST(Guarded, ReadersSeeWholeChangesOnly)
{
    Guarded<Pair> pair(0);
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        for (int next = 1; !isOver; next = 1 - next) {
            const auto access = pair.Write();
            access->first = next;
            access->second = next;
        }
    });
    int seen[] = {0, 0};
    for (const ULONGLONG end = GetTickCount64() + 30000;
         (seen[0] < 100 || seen[1] < 100) && GetTickCount64() < end;) {
        const auto access = pair.Read();
        EXPECT_EQ(access->first, access->second);
        ++seen[access->first];
    }
    isOver = true;
    writer.join();
    EXPECT_GE(seen[0], 100);
    EXPECT_GE(seen[1], 100);
}

} // namespace
