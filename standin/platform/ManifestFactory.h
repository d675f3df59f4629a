#pragma once

#include <windows.h>

namespace standin {

// Creates the object that reads package manifests (IAppxFactory), for a class factory. Any thread.
[[nodiscard]] HRESULT CreateManifestFactory(REFIID interfaceId, void** object) noexcept;

} // namespace standin
