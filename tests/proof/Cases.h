// How the cases of model/cases.py are told.
#pragma once

#include "standin/Text.h"

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>

namespace proof {

inline bool ReadBlock(std::istream& input, std::string& block)
{
    std::size_t size = 0;
    if (!(input >> size) || input.get() != '\n') {
        return false;
    }
    block.resize(size);
    return static_cast<bool>(input.read(block.data(), static_cast<std::streamsize>(size)));
}

// What a program has seen is told as a case tells what the model makes: a line each.
inline void AppendLine(std::string& told, std::wstring_view line)
{
    for (const char character : standin::ToUtf8(line)) {
        switch (character) {
        case '\\':
            told += "\\\\";
            break;
        case '\n':
            told += "\\n";
            break;
        case '\r':
            told += "\\r";
            break;
        case '\t':
            told += "\\t";
            break;
        default:
            told += character;
        }
    }
    told += '\n';
}

} // namespace proof
