#pragma once

#include <windows.h>

#include <inspectable.h>

namespace standin {

inline constexpr wchar_t packageManagerClass[] = L"Windows.Management.Deployment.PackageManager";

// Makes a package manager of the store folder (Settings.h), for an activation factory. Any thread.
[[nodiscard]] HRESULT CreatePackageManager(IInspectable** instance) noexcept;

} // namespace standin
