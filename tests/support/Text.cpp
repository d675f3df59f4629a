#include "support/Text.h"

#include <cstdint>
#include <cstdio>

namespace test {

std::vector<std::string> Split(std::string_view text, std::string_view separator)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find(separator, start)) != std::string_view::npos;
         start = end + separator.size()) {
        pieces.emplace_back(text.substr(start, end - start));
    }
    pieces.emplace_back(text.substr(start));
    return pieces;
}

void ReplaceAll(std::string& text, std::string_view part, std::string_view replacement)
{
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + replacement.size())) {
        text.replace(at, part.size(), replacement);
    }
}

std::string Hexadecimal(long result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}

std::string Hexadecimal(const void* pointer)
{
    return Hexadecimal(static_cast<long>(reinterpret_cast<std::uintptr_t>(pointer)));
}

} // namespace test
