#pragma once

#include <cstdarg>
#include <cstddef>

// The size of the buffer in which a line of the trace is made, in bytes with the terminator.
constexpr std::size_t kLargestMessage = 1024;

// Formats a message for the trace into `buffer` (of at most kLargestMessage bytes) and returns its length in
// bytes, without the terminator. It allocates nothing. The formats know "%s", "%S", "%%" and conversions of
// 32-bit numbers.
//
// Wide arguments ("%S") are converted to the system code page, with "?" for what it cannot hold (UTF-8:
// U+FFFD for half a surrogate pair); a letter is never replaced by one that resembles it. A null string
// prints as "(null)". A message that does not fit goes through the C runtime's invalid-parameter handling;
// should that return, or should the C runtime not know it, the message is empty and the result 0.
[[nodiscard]] int FormatNarrow(char* buffer, std::size_t size, const char* format,
                               va_list arguments) noexcept;
