#pragma once

#include "standin/Files.h"
#include "standin/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace test {

using standin::FromUtf8;
using standin::ReadFileBytes;
using standin::ToUtf8;
using standin::WriteFileBytes;

// Pieces between the separators; a text without one is one piece.
std::vector<std::string> Split(std::string_view text, std::string_view separator);

// What is put in is not looked at again.
void ReplaceAll(std::string& text, std::string_view part, std::string_view replacement);

// "0x80004005", as the log has a result, and the lower half of a pointer.
std::string Hexadecimal(long result);
std::string Hexadecimal(const void* pointer);

} // namespace test
