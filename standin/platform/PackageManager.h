#pragma once

#include <windows.h>

#include <inspectable.h>

namespace standin {

// Makes a package manager of the store folder (Settings.h), for an activation factory. Any thread.
[[nodiscard]] HRESULT CreatePackageManager(IInspectable** instance) noexcept;

} // namespace standin
