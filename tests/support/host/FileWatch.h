#pragma once

#include <cstddef>
#include <string_view>

namespace host {

// From here on it is noted which files are opened by name in this process, or are tried to be. Done from
// outside, by the imports of the modules in this process. Call once, with the library loaded.
void WatchFiles();

// How many of the openings so far were of a path with this end.
[[nodiscard]] std::size_t CountOpenings(std::wstring_view end);

} // namespace host
