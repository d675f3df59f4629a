#pragma once

#include <windows.h>

#include <activation.h>

// The classes that the platform library serves, of COM and of the Windows Runtime. Any thread.
namespace standin {

// The class object (IClassFactory) of a served class; CLASS_E_CLASSNOTAVAILABLE for any other.
[[nodiscard]] HRESULT GetClassFactory(REFCLSID classId, REFIID interfaceId, void** object) noexcept;

// The activation factory of a served class of the Windows Runtime; likewise.
[[nodiscard]] HRESULT GetActivationFactory(HSTRING className, IActivationFactory** factory) noexcept;

// Writes, or removes, the registration of all served classes, with the library at path.
[[nodiscard]] HRESULT RegisterClasses(const wchar_t* path) noexcept;
[[nodiscard]] HRESULT UnregisterClasses() noexcept;

} // namespace standin
