#pragma once

#include <string>
#include <string_view>

// Makes a file with this text, as UTF-8. Throws Failure, also when there is a file of this name: the tool
// overwrites none.
void WriteNewFile(const std::wstring& path, std::wstring_view text);
