#include "common/MemoryReserve.h"

#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <thread>
#include <vector>

namespace {

using MemoryReserve::kBlocks;
using MemoryReserve::kBlockSize;

// The platform has no memory for this program; what it frees is counted.
class NoMemory
{
public:
    NoMemory() { s_freed = 0; }

    static inline std::atomic<int> s_freed = 0;

private:
    static void Free(void*) { ++s_freed; } // a block less, until the end of the program

    test::ImportPatch<void* (*)(std::size_t)> m_malloc{"malloc",
                                                       [](std::size_t) -> void* { return nullptr; }};
    test::ImportPatch<void* (*)(std::size_t, std::size_t)> m_calloc{
        "calloc", [](std::size_t, std::size_t) -> void* { return nullptr; }};
    test::ImportPatch<void* (*)(void*, std::size_t)> m_realloc{
        "realloc", [](void*, std::size_t) -> void* { return nullptr; }};
    test::ImportPatch<void (*)(void*)> m_free{"free", Free};
};

// The compiler, which may leave an allocation out that nobody uses, does not know that nobody uses this one.
void* Kept(void* block)
{
    void* volatile kept = block;
    return kept;
}

// The checks of a test ask for memory: none while there is none.

TEST(MemoryReserve, StepsInWhereThePlatformHasNone)
{
    void* blocks[kBlocks] = {};
    unsigned count = 0;
    void* oneMore = nullptr;
    void* again = nullptr;
    {
        const NoMemory noMemory;
        for (void*& block : blocks) {
            block = Kept(std::malloc(kBlockSize));
            if (block) {
                std::memset(block, 0xAA, kBlockSize);
                ++count;
            }
        }
        oneMore = Kept(std::malloc(1));
        std::free(blocks[3]);
        again = Kept(std::malloc(1));
        for (void* block : blocks) {
            std::free(block);
        }
    }
    EXPECT_EQ(count, kBlocks);
    EXPECT_EQ(oneMore, nullptr);
    EXPECT_EQ(again, blocks[3]);
    EXPECT_EQ(NoMemory::s_freed, 0) << "its blocks are not the platform's";
    for (std::size_t index = 1; index < kBlocks; ++index) {
        EXPECT_EQ(static_cast<char*>(blocks[index]) - static_cast<char*>(blocks[index - 1]), kBlockSize);
    }
}

TEST(MemoryReserve, LeavesAloneWhatThePlatformGives)
{
    void* const block = Kept(std::malloc(10));
    void* fromReserve = nullptr;
    {
        const NoMemory noMemory;
        fromReserve = Kept(std::malloc(10));
        std::free(block);
    }
    EXPECT_NE(block, fromReserve);
    EXPECT_EQ(NoMemory::s_freed, 1);
    const auto atReserve = static_cast<char*>(fromReserve);
    std::free(fromReserve);
    EXPECT_FALSE(atReserve <= block && block < atReserve + kBlockSize);
}

TEST(MemoryReserve, ClearsWhatIsToBeClear)
{
    bool isClear = true;
    void* tooLarge = nullptr;
    void* tooMany = nullptr;
    void* oneTooLarge = nullptr;
    void* overflowing = nullptr;
    const volatile std::size_t manyTwos = SIZE_MAX / 2 + 2; // twice as much is 2, with the rest cut off
    {
        const NoMemory noMemory;
        void* const used = Kept(std::malloc(kBlockSize));
        std::memset(used, 0xAA, kBlockSize);
        std::free(used);
        auto* const block = static_cast<char*>(Kept(std::calloc(4, kBlockSize / 4)));
        for (unsigned index = 0; index < kBlockSize; ++index) {
            isClear = isClear && block && block[index] == 0;
        }
        std::free(block);
        tooLarge = Kept(std::malloc(kBlockSize + 1));
        tooMany = Kept(std::calloc(2, kBlockSize / 2 + 1));
        oneTooLarge = Kept(std::calloc(1, kBlockSize + 1));
        overflowing = Kept(std::calloc(manyTwos, 2));
    }
    EXPECT_TRUE(isClear);
    EXPECT_EQ(tooLarge, nullptr);
    EXPECT_EQ(tooMany, nullptr);
    EXPECT_EQ(oneTooLarge, nullptr);
    EXPECT_EQ(overflowing, nullptr);
}

TEST(MemoryReserve, GivesRoomToGrow)
{
    void* first = nullptr;
    void* grown = nullptr;
    void* tooLarge = nullptr;
    void* volatile ofPlatform = Kept(std::malloc(10));
    void* stays = nullptr;
    {
        const NoMemory noMemory;
        first = Kept(std::realloc(nullptr, 10));
        if (first) {
            std::memset(first, 'x', 10);
        }
        grown = Kept(std::realloc(first, kBlockSize));
        tooLarge = Kept(std::realloc(grown, kBlockSize + 1));
        stays = Kept(std::realloc(ofPlatform, 20));
    }
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(grown, first);
    EXPECT_EQ(tooLarge, nullptr);
    EXPECT_EQ(stays, nullptr) << "a block of the platform's is not moved here";
    std::free(ofPlatform);

    auto* const moved = static_cast<char*>(std::realloc(first, kBlockSize + 1));
    ASSERT_NE(moved, nullptr);
    EXPECT_NE(moved, first);
    EXPECT_EQ(std::string_view(moved, 10), "xxxxxxxxxx");
    std::free(moved);
    void* next = nullptr;
    void* ended = &next;
    void* last = nullptr;
    {
        const NoMemory noMemory;
        next = Kept(std::malloc(1));
        ended = std::realloc(next, 0);
        last = Kept(std::malloc(1));
        std::free(last);
    }
    EXPECT_EQ(next, first) << "it was given back";
    EXPECT_EQ(ended, nullptr);
    EXPECT_EQ(last, first) << "size 0 gives it back, too";
}

// How many blocks are free. To be called while there is no memory.
unsigned FreeBlocks()
{
    void* blocks[kBlocks + 1] = {};
    unsigned count = 0;
    while (count <= kBlocks && (blocks[count] = Kept(std::malloc(1))) != nullptr) {
        ++count;
    }
    for (unsigned index = 0; index < count; ++index) {
        std::free(blocks[index]);
    }
    return count;
}

// Threads that take and give back all the time: none gets a block that another one has.
TEST(MemoryReserve, GivesABlockToOneThreadAtATime)
{
    constexpr unsigned kThreads = 4;
    constexpr unsigned kTimes = 1000000;
    std::atomic<bool> mayRun = false;
    std::atomic<bool> isTaken[kBlocks] = {};
    std::atomic<unsigned> disturbed = 0;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (unsigned number = 0; number < kThreads; ++number) {
        threads.emplace_back([&] {
            while (!mayRun) {
                SwitchToThread();
            }
            for (unsigned time = 0; time < kTimes; ++time) {
                void* const block = Kept(std::malloc(1));
                // One after the other in memory, they have a place each.
                std::atomic<bool>& isOurs =
                    isTaken[reinterpret_cast<std::uintptr_t>(block) / kBlockSize % kBlocks];
                disturbed += block && !isOurs.exchange(true) ? 0 : 1;
                isOurs = false;
                std::free(block);
            }
        });
    }
    unsigned before = 0;
    unsigned after = 0;
    {
        const NoMemory noMemory;
        before = FreeBlocks();
        mayRun = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
        after = FreeBlocks();
    }
    EXPECT_EQ(disturbed, 0u);
    // A thread of an earlier test may give one back meanwhile.
    EXPECT_GE(after, before);
    EXPECT_GT(before, 0u);
}

TEST(MemoryReserve, IsForTheRuntimeNotForTheLibrary)
{
    bool hasRaised = false;
    unsigned meanwhile = 0;
    {
        const NoMemory noMemory;
        try {
            (void)Kept(::operator new(1));
        } catch (const std::bad_alloc&) {
            hasRaised = true;
            meanwhile = FreeBlocks();
        }
    }
    EXPECT_TRUE(hasRaised);
    EXPECT_LT(meanwhile, kBlocks) << "the exception is there";
    void* const empty = Kept(::operator new(0));
    EXPECT_NE(empty, nullptr);
    ::operator delete(empty);
}

// Threads of the platform's that raise their first exception while there is no memory, all at the same time.
class FirstExceptions
{
public:
    explicit FirstExceptions(int threads)
    {
        for (int thread = 0; thread < threads; ++thread) {
            m_threads.push_back(CreateThread(nullptr, 0, Raise, this, 0, nullptr));
        }
    }
    ~FirstExceptions()
    {
        for (const HANDLE thread : m_threads) {
            CloseHandle(thread);
        }
    }
    FirstExceptions(const FirstExceptions&) = delete;
    FirstExceptions& operator=(const FirstExceptions&) = delete;

    // While there is no memory.
    void Begin()
    {
        m_mayRaise = true;
        while (m_raised < static_cast<int>(m_threads.size())) {
            SwitchToThread();
        }
    }
    void End()
    {
        m_mayEnd = true;
        for (const HANDLE thread : m_threads) {
            WaitForSingleObject(thread, INFINITE);
        }
    }

private:
    static DWORD WINAPI Raise(void* parameter)
    {
        auto* const self = static_cast<FirstExceptions*>(parameter);
        while (!self->m_mayRaise) {
            SwitchToThread();
        }
        try {
            (void)Kept(::operator new(1));
        } catch (const std::bad_alloc&) {
            ++self->m_raised;
            while (!self->m_mayEnd) {
                SwitchToThread();
            }
        }
        return 0;
    }

    std::vector<HANDLE> m_threads;
    std::atomic<bool> m_mayRaise = false;
    std::atomic<bool> m_mayEnd = false;
    std::atomic<int> m_raised = 0;
};

unsigned FreeBlocksAtOnce(int threads)
{
    FirstExceptions exceptions(threads);
    unsigned free = 0;
    {
        const NoMemory noMemory;
        exceptions.Begin();
        free = FreeBlocks();
    }
    exceptions.End();
    return free;
}

TEST(MemoryReserve, SufficesForSevenThreadsAtOnce)
{
    EXPECT_GT(FreeBlocksAtOnce(7), 0u);
}

TEST(MemoryReserve, IsThereForTheNextThreadsAgain)
{
    const unsigned free = FreeBlocksAtOnce(7);
    EXPECT_GT(free, 0u);
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(FreeBlocksAtOnce(7), free) << round;
    }
}

} // namespace
