#include <windows.h>

BOOL WINAPI DllMain([[maybe_unused]] HINSTANCE instance, [[maybe_unused]] DWORD reason, void* /*reserved*/)
{
    // No code of the library's needs to hear of threads. What the compiler's runtime, linked in, holds for a
    // thread is freed when that ends: Visual C++'s hears of it only here; mingw's by a callback of the DLL's
    // static thread-local storage, and for a DLL that has any the call below does nothing.
#if !defined(_MSC_VER) || defined(_DLL)
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
    }
#endif
    return TRUE;
}
