#pragma once

#include <cstdarg>
#include <cstddef>

// Formats a message for the trace into `buffer` and returns its length in bytes, without the terminator.
//
// Wide arguments ("%S") are converted to the system code page. The runtime's formatter gives up at a character
// that the code page lacks; the message is then formatted again with "?" in its place.
// A message that does not fit goes through the runtime's invalid-parameter handling; should that return, or should
// the runtime not know it, the message is empty and the result 0.
int FormatNarrow(char* buffer, std::size_t size, const char* format, va_list arguments) noexcept;
