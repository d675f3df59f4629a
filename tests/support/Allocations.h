#pragma once

#include "standin/ModulePath.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

namespace test {

struct AllocationState
{
    DWORD thread = 0; // that is watched
    std::size_t failingIndex = 0;
    std::size_t failures = 0;
    std::size_t next = 0;
    bool failed = false;
    std::array<void*, 2000> blocks{};
};

// Watches what this thread allocates until the end of the scope, and can make one of the allocations fail: to
// see that an operation survives that, and that nothing is left behind. The operator new of the program
// allocates with malloc. One at a time; keep the scope tight, since the checks of a test allocate too.
class AllocationWatch
{
public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    // So many allocations from this index on (0 is the first) fail.
    explicit AllocationWatch(std::size_t failingIndex = kNone, std::size_t failures = 1)
        : m_malloc("malloc", Allocate), m_free("free", Free)
    {
        // The first exception of a thread allocates what the C++ runtime keeps for the next ones.
        try {
            throw std::bad_alloc();
        } catch (const std::bad_alloc&) {
            s_state = AllocationState();
        }
        s_state.failingIndex = failingIndex;
        s_state.failures = failures;
        s_state.thread = GetCurrentThreadId();
    }
    ~AllocationWatch() { s_state.thread = 0; }
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    [[nodiscard]] bool Failed() const { return s_state.failed; }
    // What was allocated in the scope and is not freed yet.
    [[nodiscard]] std::size_t Live() const
    {
        return static_cast<std::size_t>(std::count_if(s_state.blocks.begin(), s_state.blocks.end(),
                                                      [](const void* block) { return block; }));
    }

private:
    using AllocateFunction = void* (*)(std::size_t);
    using FreeFunction = void (*)(void*);

    static void* Allocate(std::size_t size)
    {
        // Other threads may come here before the patch knows the function that it stands in for.
        static const auto s_malloc =
            standin::FunctionOf<AllocateFunction>(GetModuleHandleW(L"msvcrt.dll"), "malloc");
        if (GetCurrentThreadId() != s_state.thread) {
            return s_malloc(size);
        }
        const std::size_t index = s_state.next++;
        if (index >= s_state.failingIndex && index - s_state.failingIndex < s_state.failures) {
            s_state.failed = true;
            return nullptr;
        }
        void* block = s_malloc(size);
        Replace(nullptr, block);
        return block;
    }

    static void Free(void* block)
    {
        static const auto s_free = standin::FunctionOf<FreeFunction>(GetModuleHandleW(L"msvcrt.dll"), "free");
        if (block && GetCurrentThreadId() == s_state.thread) {
            Replace(block, nullptr);
        }
        s_free(block);
    }

    static void Replace(void* old, void* block)
    {
        const auto place = std::find(s_state.blocks.begin(), s_state.blocks.end(), old);
        if (place != s_state.blocks.end()) {
            *place = block;
        }
    }

    static inline AllocationState s_state;

    ImportPatch<AllocateFunction> m_malloc;
    ImportPatch<FreeFunction> m_free;
};

// Calls attempt(index) with 0, 1, 2, ... until it returns false. An attempt runs an operation whose
// allocation of that index fails, and returns whether the operation came that far. Returns how many attempts
// saw a failure, of which there must be an end.
template <typename Attempt> std::size_t ForEachFailingAllocation(Attempt attempt)
{
    std::size_t index = 0;
    while (index < 1000 && attempt(index)) {
        ++index;
    }
    EXPECT_LT(index, 1000u) << "the allocations have no end";
    return index;
}

// How an operation went one of whose allocations failed, if it came that far.
struct Attempt
{
    HRESULT result = E_UNEXPECTED;
    bool failed = false;  // the allocation
    std::size_t left = 0; // blocks that the operation allocated and did not free
};

template <typename Operation> Attempt TryWithFailingAllocation(std::size_t index, Operation operation)
{
    Attempt attempt;
    const AllocationWatch watch(index);
    attempt.result = operation();
    attempt.failed = watch.Failed();
    attempt.left = watch.Live();
    return attempt;
}

// The same for an operation that raises when there is no memory: E_OUTOFMEMORY then, otherwise S_OK.
template <typename Operation> Attempt TryRaisingWithFailingAllocation(std::size_t index, Operation operation)
{
    return TryWithFailingAllocation(index, [&] {
        try {
            operation();
            return S_OK;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
    });
}

} // namespace test
