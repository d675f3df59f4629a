#include "support/HeapCheck.h"

#include "standin/ModulePath.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace test {

bool AreHeapsChecked()
{
    constexpr ULONG kTailCheck = 0x10; // FLG_HEAP_ENABLE_TAIL_CHECK
    using GlobalFlags = ULONG(WINAPI*)();
    static const auto s_globalFlags =
        standin::FunctionOf<GlobalFlags>(GetModuleHandleW(L"ntdll.dll"), "RtlGetNtGlobalFlags");
    return s_globalFlags && (s_globalFlags() & kTailCheck);
}

bool AreHeapsSound()
{
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr) + 8);
    heaps.resize(
        std::min<std::size_t>(heaps.size(), GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data())));
    // Another thread's block may be between freed and marked as such: only what lasts is damage.
    for (int tries = 3; tries > 0; --tries) {
        if (std::all_of(heaps.begin(), heaps.end(),
                        [](HANDLE heap) { return HeapValidate(heap, 0, nullptr) != FALSE; })) {
            return true;
        }
        Sleep(100);
    }
    return false;
}

} // namespace test
