#include <windows.h>

BOOL WINAPI DllMain([[maybe_unused]] HINSTANCE instance, [[maybe_unused]] DWORD reason, void* /*reserved*/)
{
    // The C runtime of Visual C++ frees what it holds for a thread when it hears that the thread ends. Linked
    // into this DLL, it hears of that only here.
#if !defined(_MSC_VER) || defined(_DLL)
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
    }
#endif
    return TRUE;
}
