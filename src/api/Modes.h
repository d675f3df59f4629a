#pragma once

#include <windows.h>

// The modes of the launches: search modes and tile modes both reach from 0 to 2.
constexpr DWORD kHighestMode = 2;

// E_INVALIDARG for a mode above these, otherwise S_OK.
[[nodiscard]] inline HRESULT CheckMode(DWORD mode) noexcept
{
    return mode > kHighestMode ? E_INVALIDARG : S_OK;
}
