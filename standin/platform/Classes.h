#pragma once

#include <windows.h>

namespace standin {

// A class that the platform library serves.
struct ServedClass
{
    CLSID classId;
    const wchar_t* name;
    HRESULT (*create)(REFIID interfaceId, void** object) noexcept;
};

// The class object (IClassFactory) of a served class; CLASS_E_CLASSNOTAVAILABLE for any other.
[[nodiscard]] HRESULT GetClassFactory(REFCLSID classId, REFIID interfaceId, void** object) noexcept;

// Writes, or removes, the registration of all served classes, with the library at path.
[[nodiscard]] HRESULT RegisterClasses(const wchar_t* path) noexcept;
[[nodiscard]] HRESULT UnregisterClasses() noexcept;

} // namespace standin
