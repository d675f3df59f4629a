#pragma once

#include <windows.h>

#include <inspectable.h>

namespace standin {

// Creates the object that tells what the stand-in desktop shows (IAppVisibility), for a class factory. Any
// thread.
[[nodiscard]] HRESULT CreateAppVisibility(REFIID interfaceId, void** object) noexcept;

// Creates the object that reads package manifests (IAppxFactory), for a class factory. Any thread.
[[nodiscard]] HRESULT CreateManifestFactory(REFIID interfaceId, void** object) noexcept;

// Creates the object that starts the applications of packages by their IDs (IApplicationActivationManager),
// for a class factory. Any thread.
[[nodiscard]] HRESULT CreateActivationManager(REFIID interfaceId, void** object) noexcept;

// Makes a package manager of the store folder (Settings.h), for an activation factory. Any thread.
[[nodiscard]] HRESULT CreatePackageManager(IInspectable** instance) noexcept;

} // namespace standin
