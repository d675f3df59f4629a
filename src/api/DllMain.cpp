#include <windows.h>

#include <cstddef>

#if defined(__GLIBCXX__)
namespace __gnu_cxx {
// Frees what the C++ library keeps for exceptions when memory has run out. No header of it declares this.
void __freeres();
} // namespace __gnu_cxx
#endif

BOOL WINAPI DllMain([[maybe_unused]] HINSTANCE instance, [[maybe_unused]] DWORD reason,
                    [[maybe_unused]] void* reserved)
{
    // The C runtime of Visual C++ frees what it holds for a thread when it hears that the thread ends. Linked
    // into this DLL, it hears of that only here.
#if !defined(_MSC_VER) || defined(_DLL)
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
    }
#endif
    // The library is unloaded and its process goes on (reserved is null): each loading anew would take those
    // 73 KiB again. Nothing that still runs here throws. When the process ends, they go with it.
#if defined(__GLIBCXX__)
    if (reason == DLL_PROCESS_DETACH && !reserved) {
        __gnu_cxx::__freeres();
    }
#endif
    return TRUE;
}
