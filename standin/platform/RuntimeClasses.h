#pragma once

#include <windows.h>

#include <activation.h>

namespace standin {

// A class of the Windows Runtime that the platform library serves.
struct ServedRuntimeClass
{
    const wchar_t* name;
    HRESULT (*create)(IInspectable** instance) noexcept;
};

// The activation factory of a served class; CLASS_E_CLASSNOTAVAILABLE for any other.
[[nodiscard]] HRESULT GetActivationFactory(HSTRING className, IActivationFactory** factory) noexcept;

// Writes, or removes, the registration of all served classes, with the library at path.
[[nodiscard]] HRESULT RegisterRuntimeClasses(const wchar_t* path) noexcept;
[[nodiscard]] HRESULT UnregisterRuntimeClasses() noexcept;

} // namespace standin
