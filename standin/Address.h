#pragma once

#include <windows.h>

#include <string>

// "file:" addresses, as Internet shortcut files hold them, with everything but ASCII as escaped UTF-8: such a
// file is written and read in the system's code page. Pure functions, any thread; on failure the result is
// left untouched.
namespace standin {

[[nodiscard]] HRESULT PathToAddress(const std::wstring& path, std::wstring& address);
[[nodiscard]] HRESULT AddressToPath(const std::wstring& address, std::wstring& path);

} // namespace standin
