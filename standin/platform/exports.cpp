// The doors of the platform library: COM finds its classes here, regsvr32 registers it here. Nothing calls it
// by name otherwise.
#include "standin/platform/Classes.h"
#include "standin/platform/XmlWriter.h"

#include <windows.h>

#include <olectl.h>

#include <iterator>

namespace {

HMODULE ownModule = nullptr;

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
        standin::PatchXmlWriter(module);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object)
{
    standin::PatchXmlWriter(ownModule);
    return standin::GetClassFactory(classId, interfaceId, object);
}

STDAPI DllCanUnloadNow()
{
    return S_FALSE;
}

STDAPI DllRegisterServer()
{
    wchar_t path[4096] = L"";
    const DWORD length = GetModuleFileNameW(ownModule, path, static_cast<DWORD>(std::size(path)));
    if (length == 0 || length == std::size(path)) {
        return SELFREG_E_CLASS;
    }
    return standin::RegisterClasses(path);
}

STDAPI DllUnregisterServer()
{
    return standin::UnregisterClasses();
}
