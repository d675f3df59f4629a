#include "support/Text.h"

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

} // namespace test
