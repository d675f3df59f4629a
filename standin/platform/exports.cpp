// The doors of the platform library: COM finds its classes here, regsvr32 registers it here. Nothing calls it
// by name otherwise.
#include "standin/ModulePath.h"
#include "standin/Result.h"
#include "standin/platform/Classes.h"
#include "standin/platform/Patches.h"

#include <windows.h>

#include <olectl.h>

#include <string>

namespace {

HMODULE ownModule = nullptr;

// Reaches the modules that have been loaded since the last time, too.
void PatchImports() noexcept
{
    standin::PatchXmlWriter(ownModule);
    standin::PatchIndirectString(ownModule);
}

} // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        ownModule = module;
        DisableThreadLibraryCalls(module);
        // Patched imports lead into this module from now on, so it must stay.
        HMODULE pinned = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<LPCWSTR>(module), &pinned);
        PatchImports();
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object)
{
    PatchImports();
    return standin::GetClassFactory(classId, interfaceId, object);
}

STDAPI DllGetActivationFactory(HSTRING className, IActivationFactory** factory)
{
    PatchImports();
    return standin::GetActivationFactory(className, factory);
}

STDAPI DllCanUnloadNow()
{
    return S_FALSE;
}

STDAPI DllRegisterServer()
{
    return standin::ResultOf([] {
        const std::wstring path = standin::ModulePath(ownModule);
        return path.empty() ? SELFREG_E_CLASS : standin::RegisterClasses(path.c_str());
    });
}

STDAPI DllUnregisterServer()
{
    return standin::UnregisterClasses();
}
