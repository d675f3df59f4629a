#include "common/MemoryReserve.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#if defined(__GLIBCXX__)
namespace __gnu_cxx {
// Frees what the C++ library keeps for exceptions when memory has run out. No header of it declares this.
void __freeres(); // NOLINT(bugprone-reserved-identifier)
} // namespace __gnu_cxx
#endif

namespace MemoryReserve {

void FreeRuntimePool() noexcept
{
#if defined(__GLIBCXX__)
    __gnu_cxx::__freeres();
#endif
}

} // namespace MemoryReserve

// The library's own malloc(), calloc(), realloc() and free() stand before the platform's, which have other
// names here (cmake/ImportLibraries.cmake): the runtime, linked in, finds these. The runtime of Visual C++
// has its exceptions on the stack, and needs no such thing.
#if defined(__MINGW32__)

#if defined(_UCRT)
#error "The platform's functions are imported from msvcrt.dll"
#endif

extern "C" {
__declspec(dllimport) void* PlatformMalloc(std::size_t size);
__declspec(dllimport) void* PlatformCalloc(std::size_t count, std::size_t size);
__declspec(dllimport) void* PlatformRealloc(void* block, std::size_t size);
__declspec(dllimport) void PlatformFree(void* block);
}

namespace {

using MemoryReserve::kBlocks;
using MemoryReserve::kBlockSize;

struct Block
{
    alignas(std::max_align_t) unsigned char bytes[kBlockSize];
};

Block s_blocks[kBlocks];

// A bit for each block that is taken. No lock: any thread may come here, one that is being killed too.
std::atomic<std::uint64_t> s_taken = 0;
static_assert(kBlocks == 64);

// Null when there is none.
void* Take(std::size_t size) noexcept
{
    std::uint64_t taken = s_taken;
    while (size <= kBlockSize && ~taken != 0) {
        const int index = std::countr_one(taken);
        if (s_taken.compare_exchange_weak(taken, taken | std::uint64_t{1} << index)) {
            return s_blocks[index].bytes;
        }
    }
    return nullptr;
}

bool IsOfReserve(const void* block) noexcept
{
    return reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(s_blocks) <
           sizeof s_blocks;
}

void GiveBack(const void* block) noexcept
{
    const auto index = static_cast<const Block*>(block) - s_blocks;
    s_taken &= ~(std::uint64_t{1} << index);
}

} // namespace

extern "C" void* malloc(std::size_t size)
{
    void* const block = PlatformMalloc(size);
    return block ? block : Take(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size)
{
    if (void* const block = PlatformCalloc(count, size)) {
        return block;
    }
    void* const block = count <= kBlockSize && size <= kBlockSize ? Take(count * size) : nullptr;
    return block ? std::memset(block, 0, kBlockSize) : nullptr;
}

// A block of the platform's that cannot grow stays one: it may be the library's.
extern "C" void* realloc(void* block, std::size_t size)
{
    if (!block) {
        return malloc(size);
    }
    if (!IsOfReserve(block)) {
        return PlatformRealloc(block, size);
    }
    if (size != 0 && size <= kBlockSize) {
        return block;
    }
    void* const larger = size != 0 ? PlatformMalloc(size) : nullptr;
    if (larger) {
        std::memcpy(larger, block, kBlockSize);
    }
    if (larger || size == 0) {
        GiveBack(block);
    }
    return larger;
}

extern "C" void free(void* block)
{
    if (IsOfReserve(block)) {
        GiveBack(block);
    } else {
        PlatformFree(block);
    }
}

// The C++ library's would take blocks of the reserve for the library.
void* operator new(std::size_t size)
{
    if (void* const block = PlatformMalloc(std::max<std::size_t>(size, 1))) {
        return block;
    }
    throw std::bad_alloc();
}

#endif
