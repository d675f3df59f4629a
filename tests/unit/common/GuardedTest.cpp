#include "common/Guarded.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <optional>
#include <thread>
#include <utility>

namespace {

struct Pair
{
    explicit Pair(int start) : first(start), second(start) {}
    int first;
    int second;
};

// Runs the body on another thread and tells whether it came to its end while this scope lasted.
template <typename Body> class OtherThread
{
public:
    explicit OtherThread(Body body)
        : m_thread([this, body] {
              body();
              SetEvent(m_done);
          })
    {
    }
    ~OtherThread()
    {
        m_thread.join();
        CloseHandle(m_done);
    }
    OtherThread(const OtherThread&) = delete;
    OtherThread& operator=(const OtherThread&) = delete;

    [[nodiscard]] bool EndsWithin(DWORD milliseconds) const
    {
        return WaitForSingleObject(m_done, milliseconds) == WAIT_OBJECT_0;
    }

private:
    HANDLE m_done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread m_thread;
};

constexpr DWORD kLong = 10000; // milliseconds: only a failing test waits for them
constexpr DWORD kShort = 50;

TEST(Guarded, ArgumentsMakeTheValue)
{
    Guarded<Pair> pair(7);
    EXPECT_EQ(pair.Read()->first, 7);
    EXPECT_EQ((*pair.Read()).second, 7);
    pair.Write()->second = 8;
    EXPECT_EQ(pair.Read()->second, 8);
}

TEST(Guarded, ReadersShareTheValue)
{
    const Guarded<Pair> pair(7);
    const auto access = pair.Read();
    const OtherThread other([&] { EXPECT_EQ(pair.Read()->first, 7); });
    EXPECT_TRUE(other.EndsWithin(kLong));
}

TEST(Guarded, WriterWaitsForAReader)
{
    Guarded<Pair> pair(7);
    std::optional<Guarded<Pair>::ReadAccess> reading(std::in_place, pair);
    const OtherThread writer([&] { pair.Write()->first = 8; });
    EXPECT_FALSE(writer.EndsWithin(kShort));
    EXPECT_EQ((*reading)->first, 7);
    reading.reset();
    EXPECT_TRUE(writer.EndsWithin(kLong));
    EXPECT_EQ(pair.Read()->first, 8);
}

TEST(Guarded, ReaderWaitsForAWriter)
{
    Guarded<Pair> pair(7);
    std::optional<Guarded<Pair>::WriteAccess> writing(std::in_place, pair);
    (*writing)->first = 8;
    const OtherThread reader([&] {
        const auto access = pair.Read();
        EXPECT_EQ(access->first, 8);
        EXPECT_EQ(access->second, 8);
    });
    EXPECT_FALSE(reader.EndsWithin(kShort));
    (*writing)->second = 8;
    writing.reset();
    EXPECT_TRUE(reader.EndsWithin(kLong));
}

TEST(Guarded, WriterWaitsForAWriter)
{
    Guarded<Pair> pair(7);
    std::optional<Guarded<Pair>::WriteAccess> writing(std::in_place, pair);
    const OtherThread writer([&] { pair.Write()->first = 9; });
    EXPECT_FALSE(writer.EndsWithin(kShort));
    (*writing)->first = 8;
    writing.reset();
    EXPECT_TRUE(writer.EndsWithin(kLong));
    EXPECT_EQ(pair.Read()->first, 9);
}

} // namespace
