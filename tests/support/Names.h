#pragma once

#include <string>
#include <vector>

namespace test {

// Strings of the library, such as the entries of an exclude list, in order.
template <typename Strings> std::vector<std::wstring> Names(const Strings& strings)
{
    std::vector<std::wstring> names;
    for (const auto& name : strings) {
        names.emplace_back(name.c_str());
    }
    return names;
}

} // namespace test
