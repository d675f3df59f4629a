#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// Puts the arguments in the places of the format's "%s", in order and however long they are; the rest of the
// format is text. Throws std::bad_alloc.
[[nodiscard]] std::wstring FormatText(std::wstring_view format,
                                      std::initializer_list<std::wstring_view> arguments);

// Lower case as the C runtime's locale has it: of the ASCII letters, unless the host has set another locale.
[[nodiscard]] std::wstring ToLowerCase(std::wstring text);
