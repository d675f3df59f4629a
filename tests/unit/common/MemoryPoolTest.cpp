#include "common/MemoryPool.h"

#include "common/Pooled.h"
#include "common/UniqueHandle.h"
#include "common/WideString.h"
#include "support/Allocations.h"
#include "support/Test.h"

#include <cstdint>
#include <cstring>
#include <list>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using test::AllocationWatch;

// A block and what was written into it.
struct Written
{
    unsigned char* block;
    std::size_t size;
    unsigned char value;
};

Written Write(MemoryPool* pool, std::size_t size, unsigned char value)
{
    auto* block = static_cast<unsigned char*>(MemoryPool::Allocate(pool, size));
    std::memset(block, value, size);
    return {block, size, value};
}

bool IsIntact(const Written& written)
{
    return std::string(written.size, static_cast<char>(written.value)) ==
           std::string(reinterpret_cast<const char*>(written.block), written.size);
}

TEST(MemoryPool, BlocksAreApartAndAlignedForPointers)
{
    std::mt19937 random(1);
    MemoryPool pool;
    std::vector<Written> all;
    for (int i = 0; i < 20000; ++i) {
        const std::size_t size = random() % (i % 100 == 0 ? 5000 : 300);
        all.push_back(Write(i % 3 == 0 ? nullptr : &pool, size, static_cast<unsigned char>(random())));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(all.back().block) % alignof(void*), 0u);
    }
    for (const Written& written : all) {
        ASSERT_TRUE(IsIntact(written));
        MemoryPool::Free(written.block);
    }
}

TEST(MemoryPool, TakesFewAllocations)
{
    std::vector<void*> blocks;
    blocks.reserve(200);
    std::size_t live = 0;
    {
        const AllocationWatch watch;
        MemoryPool pool;
        for (int i = 0; i < 100; ++i) {
            blocks.push_back(MemoryPool::Allocate(&pool, 60));
            blocks.push_back(MemoryPool::Allocate(&pool, 160));
        }
        live = watch.Live();
        for (void* block : blocks) {
            MemoryPool::Free(block);
        }
    }
    EXPECT_GE(live, 2u);
    EXPECT_LE(live, 10u);
}

TEST(MemoryPool, BlocksOutliveItAndTheLastOneEndsTheChunk)
{
    const AllocationWatch watch;
    std::vector<Written> kept;
    kept.reserve(3);
    const std::size_t before = watch.Live();
    {
        MemoryPool pool;
        kept.push_back(Write(&pool, 60, 1));
        MemoryPool::Free(Write(&pool, 60, 2).block); // before the chunk is full
        kept.push_back(Write(&pool, 60, 3));
        kept.push_back(Write(&pool, 60, 4));
    }
    for (const Written& written : kept) {
        EXPECT_GT(watch.Live(), before);
        EXPECT_TRUE(IsIntact(written));
        MemoryPool::Free(written.block);
    }
    EXPECT_EQ(watch.Live(), before);
}

TEST(MemoryPool, LeavesNothingBehindWhenItsBlocksGoFirst)
{
    const AllocationWatch watch;
    {
        MemoryPool pool;
        for (int i = 0; i < 1000; ++i) {
            MemoryPool::Free(MemoryPool::Allocate(&pool, 100));
            MemoryPool::Free(MemoryPool::Allocate(&pool, 1000));
        }
    }
    EXPECT_EQ(watch.Live(), 0u);
}

TEST(MemoryPool, GoesOnWhereItWasWhenMemoryRanOut)
{
    std::vector<void*> blocks;
    blocks.reserve(1000);
    bool failed = false;
    std::size_t inTheFirstChunk = 0;
    // After its own first chunk, the pool gets neither another one nor memory for one block.
    const AllocationWatch watch(1, 2);
    {
        MemoryPool pool;
        blocks.push_back(MemoryPool::Allocate(&pool, 100));
        try {
            while (blocks.size() < 1000) {
                blocks.push_back(MemoryPool::Allocate(&pool, 100));
            }
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        inTheFirstChunk = blocks.size();
        blocks.push_back(MemoryPool::Allocate(&pool, 100));
        for (void* block : blocks) {
            MemoryPool::Free(block);
        }
    }
    EXPECT_EQ(watch.Live(), 0u);
    EXPECT_TRUE(failed);
    EXPECT_GT(inTheFirstChunk, 1u);
}

TEST(MemoryPool, TakesABlockOfItsOwnWhenThereIsNoMemoryForAChunk)
{
    std::size_t left = 1;
    bool failed = false;
    {
        const AllocationWatch watch(0);
        {
            MemoryPool pool;
            const Written alone = Write(&pool, 60, 1);
            failed = watch.Failed();
            const Written ofAChunk = Write(&pool, 60, 2);
            EXPECT_TRUE(IsIntact(alone));
            EXPECT_TRUE(IsIntact(ofAChunk));
            MemoryPool::Free(alone.block);
            MemoryPool::Free(ofAChunk.block);
        }
        left = watch.Live();
    }
    EXPECT_TRUE(failed);
    EXPECT_EQ(left, 0u);
}

TEST(MemoryPool, BlocksMayBeFreedOnAnotherThreadWhileItGoesOn)
{
    MemoryPool pool;
    std::vector<Written> kept;
    for (int round = 0; round < 50; ++round) {
        std::vector<Written> freed;
        for (int i = 0; i < 40; ++i) {
            const std::size_t size = i % 4 == 0 ? 500 : 60;
            freed.push_back(Write(&pool, size, static_cast<unsigned char>(i)));
            kept.push_back(Write(&pool, size, static_cast<unsigned char>(round)));
        }
        std::thread other([&freed] {
            for (const Written& written : freed) {
                EXPECT_TRUE(IsIntact(written));
                MemoryPool::Free(written.block);
            }
        });
        // The pool goes on with a chunk of which the other thread frees blocks.
        for (int i = 0; i < 40; ++i) {
            kept.push_back(Write(&pool, 60, static_cast<unsigned char>(i)));
        }
        other.join();
    }
    for (const Written& written : kept) {
        EXPECT_TRUE(IsIntact(written));
        MemoryPool::Free(written.block);
    }
}

TEST(MemoryPool, CountsBlocksThatAnotherThreadFrees)
{
    // Not by means of the C++ library, which may ask for memory themselves.
    const UniqueHandle isMade(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const UniqueHandle isFreed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    void* block = nullptr;
    std::thread other([&] {
        WaitForSingleObject(isMade.Get(), INFINITE);
        MemoryPool::Free(block);
        SignalObjectAndWait(isFreed.Get(), isMade.Get(), INFINITE, FALSE);
    });
    std::size_t live = 0;
    std::size_t left = 1;
    {
        const AllocationWatch watch;
        {
            MemoryPool pool;
            block = MemoryPool::Allocate(&pool, 60);
            SignalObjectAndWait(isMade.Get(), isFreed.Get(), INFINITE, FALSE);
            live = watch.Live();
        }
        // The chunk has gone with the pool, on this thread.
        left = watch.Live();
    }
    SetEvent(isMade.Get());
    other.join();
    EXPECT_EQ(live, 1u);
    EXPECT_EQ(left, 0u);
}

TEST(MemoryPool, TextsOfItAreLikeOthers)
{
    WideString kept;
    {
        MemoryPool pool;
        const WideString text(std::wstring_view(L"Mail"), &pool);
        EXPECT_STREQ(text.c_str(), L"Mail");
        EXPECT_TRUE(WideString(std::wstring_view(), &pool).empty());
        kept = text;
    }
    EXPECT_TRUE(kept == WideString(L"Mail"));
}

TEST(PoolAllocator, ListsTradeElementsWhateverThePool)
{
    using Texts = std::list<std::wstring, PoolAllocator<std::wstring>>;
    Texts kept;
    {
        MemoryPool pool;
        Texts texts{PoolAllocator<std::wstring>(&pool)};
        texts.emplace_back(L"a");
        kept.splice(kept.end(), texts);
        texts.emplace_back(L"b");
        kept.swap(texts);
        EXPECT_EQ(kept.front(), L"b");
        EXPECT_EQ(texts.front(), L"a");
    }
    EXPECT_EQ(kept.front(), L"b");
}

struct Thing : PoolObject
{
    explicit Thing(bool fails)
    {
        if (fails) {
            throw std::bad_alloc();
        }
    }
};

TEST(PoolObject, LeavesNothingBehindWhenItCannotBeMade)
{
    const AllocationWatch watch;
    for (const bool isPooled : {false, true}) {
        MemoryPool pool;
        EXPECT_THROW(delete new (isPooled ? &pool : nullptr) Thing(true), std::bad_alloc);
        delete new (isPooled ? &pool : nullptr) Thing(false);
    }
    EXPECT_THROW(delete new Thing(true), std::bad_alloc);
    delete new Thing(false);
    EXPECT_EQ(watch.Live(), 0u);
}

} // namespace
