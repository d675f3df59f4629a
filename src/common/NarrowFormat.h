#pragma once

#include <cstdarg>
#include <cstddef>

// The size of the buffer in which a line of the trace is made, in bytes with the terminator.
constexpr std::size_t kLargestMessage = 1024;

// Formats a message for the trace into `buffer` (of at most kLargestMessage bytes) and returns its length in
// bytes, without the terminator.
//
// Wide arguments ("%S") are converted to the system code page. The runtime's formatter gives up at a
// character that the code page lacks; the message is then formatted again with "?" in its place. A message
// that does not fit goes through the runtime's invalid-parameter handling; should that return, or should the
// runtime not know it, the message is empty and the result 0.
[[nodiscard]] int FormatNarrow(char* buffer, std::size_t size, const char* format,
                               va_list arguments) noexcept;
