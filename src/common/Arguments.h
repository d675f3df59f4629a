#pragma once

#include <windows.h>

// The checks of arguments with which an operation begins, in their order.

// E_POINTER for null, E_INVALIDARG for an empty string, otherwise S_OK.
[[nodiscard]] inline HRESULT CheckString(const wchar_t* text) noexcept
{
    if (!text) {
        return E_POINTER;
    }
    return *text == L'\0' ? E_INVALIDARG : S_OK;
}

// The same with another pointer: E_POINTER when it is null, also for an empty string.
[[nodiscard]] inline HRESULT CheckStringAndPointer(const wchar_t* text, const void* pointer) noexcept
{
    return pointer ? CheckString(text) : E_POINTER;
}
