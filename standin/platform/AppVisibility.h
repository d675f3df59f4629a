#pragma once

#include <windows.h>

namespace standin {

// Creates the object that tells what the stand-in desktop shows (IAppVisibility), for a class factory. Any
// thread.
[[nodiscard]] HRESULT CreateAppVisibility(REFIID interfaceId, void** object) noexcept;

} // namespace standin
