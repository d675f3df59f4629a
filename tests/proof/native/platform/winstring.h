#pragma once

#include <hstring.h>

HRESULT WindowsCreateString(const wchar_t* text, UINT32 length, HSTRING* string) noexcept;
HRESULT WindowsDeleteString(HSTRING string) noexcept;
const wchar_t* WindowsGetStringRawBuffer(HSTRING string, UINT32* length) noexcept;
