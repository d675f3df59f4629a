#include "common/MemoryReserve.h"

#include "support/CapturingPatch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <malloc.h>
#include <new>
#include <vector>

namespace {

// What this program frees and asks for, in bytes: "free" as negative numbers.
class MemoryWatch
{
public:
    MemoryWatch() : m_malloc("malloc", Allocate), m_free("free", Free) { s_calls.clear(); }
    ~MemoryWatch() { s_refuses = false; }

    static inline bool s_refuses = false;
    static inline std::vector<long long> s_calls = std::vector<long long>();

private:
    static void* Allocate(std::size_t size)
    {
        const bool isRefused = s_refuses;
        Note(static_cast<long long>(size));
        return isRefused ? nullptr : std::calloc(1, size);
    }
    static void Free(void* block)
    {
        if (block) {
            // What was freed is there again.
            s_refuses = false;
            Note(-static_cast<long long>(_msize(block)));
        }
        void* const freed = std::realloc(block, 0);
        (void)freed;
    }
    static void Note(long long call)
    {
        // The notes ask for no memory while it is watched.
        if (s_calls.size() < s_calls.capacity()) {
            s_calls.push_back(call);
        }
    }

    test::ImportPatch<void* (*)(std::size_t)> m_malloc;
    test::ImportPatch<void (*)(void*)> m_free;
};

constexpr long long kReserve = 32768;

// Not known to the compiler, which may leave an allocation out that nobody uses.
void* volatile g_block = nullptr;

class MemoryReserveUse : public testing::Test
{
protected:
    MemoryReserveUse()
    {
        MemoryWatch::s_calls.reserve(64);
        EXPECT_TRUE(MemoryReserve::Take());
    }

    // Leaves the process without a reserve.
    static bool RaisesWithoutMemory()
    {
        MemoryWatch::s_refuses = true;
        try {
            g_block = ::operator new(100);
        } catch (const std::bad_alloc&) {
            return true;
        }
        return false;
    }
};

TEST_F(MemoryReserveUse, IsGivenBackBeforeTheExceptionIsMade)
{
    const MemoryWatch watch;
    EXPECT_TRUE(RaisesWithoutMemory());
    ASSERT_GE(MemoryWatch::s_calls.size(), 3u);
    EXPECT_EQ(MemoryWatch::s_calls[0], 100);
    EXPECT_EQ(MemoryWatch::s_calls[1], -kReserve);
    EXPECT_GT(MemoryWatch::s_calls[2], 0) << "the exception";
}

TEST_F(MemoryReserveUse, IsTakenAgain)
{
    const MemoryWatch watch;
    EXPECT_TRUE(RaisesWithoutMemory());
    MemoryWatch::s_calls.clear();
    const bool isTaken = MemoryReserve::Take() && MemoryReserve::Take();
    const std::size_t calls = MemoryWatch::s_calls.size();
    EXPECT_TRUE(isTaken);
    EXPECT_EQ(calls, 1u) << "once";
    EXPECT_EQ(MemoryWatch::s_calls[0], kReserve);
}

TEST_F(MemoryReserveUse, IsMissedWithoutMemory)
{
    const MemoryWatch watch;
    EXPECT_TRUE(RaisesWithoutMemory());
    MemoryWatch::s_refuses = true;
    EXPECT_FALSE(MemoryReserve::Take());
    MemoryWatch::s_refuses = false;
    EXPECT_TRUE(MemoryReserve::Take());
}

} // namespace
