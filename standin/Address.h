#pragma once

#include <string>

// "file:" addresses, as Internet shortcut files hold them, with everything but ASCII as escaped UTF-8: such a
// file is written and read in the system's code page. Both throw Failure (Result.h). Any thread.
namespace standin {

[[nodiscard]] std::wstring PathToAddress(const std::wstring& path);
[[nodiscard]] std::wstring AddressToPath(const std::wstring& address);

} // namespace standin
