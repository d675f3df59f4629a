#pragma once

#include <windows.h>

// The checks that an export makes before anything else: E_POINTER for a null pointer, E_INVALIDARG for an empty
// string or a mode above 2, otherwise S_OK.

constexpr DWORD kHighestMode = 2;

inline HRESULT CheckString(const wchar_t* text) noexcept
{
    if (!text) {
        return E_POINTER;
    }
    return *text == L'\0' ? E_INVALIDARG : S_OK;
}

inline HRESULT CheckStringAndOut(const wchar_t* text, const void* out) noexcept
{
    return out ? CheckString(text) : E_POINTER;
}

inline HRESULT CheckMode(DWORD mode) noexcept
{
    return mode > kHighestMode ? E_INVALIDARG : S_OK;
}
