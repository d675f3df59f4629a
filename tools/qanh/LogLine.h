#pragma once

#include <cstddef>
#include <string_view>

// The most bytes that a message of the diagnostic log holds: a longer one ends the host.
constexpr std::size_t kLogLineBytes = 1023;

// What the log's tightest line for a query takes of that, in a code page that this system has (CP_ACP: its
// own).
[[nodiscard]] std::size_t LogLineBytes(std::wstring_view query, unsigned codePage);
