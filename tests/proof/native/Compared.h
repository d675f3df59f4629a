#pragma once

#include <iostream>
#include <string>

namespace native {

// Tells of it when the library and the model differ.
inline bool IsSame(const char* what, const std::string& document, const std::string& is,
                   const std::string& expected)
{
    if (is == expected) {
        return true;
    }
    std::cout << "The library and the model differ in " << what << ".\n-- the file:\n"
              << document << "\n-- the library:\n"
              << is << "-- the model:\n"
              << expected;
    return false;
}

} // namespace native
