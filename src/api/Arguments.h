#pragma once

#include "common/Arguments.h"

// The highest search mode and tile mode.
constexpr DWORD kHighestMode = 2;

// E_INVALIDARG for a mode out of range, otherwise S_OK.
inline HRESULT CheckMode(DWORD mode) noexcept
{
    return mode > kHighestMode ? E_INVALIDARG : S_OK;
}
