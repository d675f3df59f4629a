#pragma once

#include <windows.h>

namespace standin {

// Creates the object that starts the applications of packages by their IDs (IApplicationActivationManager),
// for a class factory. Any thread.
[[nodiscard]] HRESULT CreateActivationManager(REFIID interfaceId, void** object) noexcept;

} // namespace standin
