#pragma once

#include "support/Text.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace proof {

// The names that a query excludes.
using NameSet = std::multiset<std::string>;

inline NameSet NamesIn(const std::string& query)
{
    const std::vector<std::string> pieces = test::Split(query, "\"");
    NameSet names;
    for (std::size_t piece = 3; piece < pieces.size(); piece += 2) {
        names.insert(pieces[piece]);
    }
    return names;
}

inline bool Includes(const NameSet& whole, const NameSet& part)
{
    return std::includes(whole.begin(), whole.end(), part.begin(), part.end());
}

inline NameSet Union(const NameSet& first, const NameSet& second)
{
    NameSet all;
    std::set_union(first.begin(), first.end(), second.begin(), second.end(), std::inserter(all, all.end()));
    return all;
}

inline NameSet Intersection(const NameSet& first, const NameSet& second)
{
    NameSet common;
    std::set_intersection(first.begin(), first.end(), second.begin(), second.end(),
                          std::inserter(common, common.end()));
    return common;
}

// What stands in the first one only.
inline NameSet Difference(const NameSet& first, const NameSet& second)
{
    NameSet rest;
    std::set_difference(first.begin(), first.end(), second.begin(), second.end(),
                        std::inserter(rest, rest.end()));
    return rest;
}

} // namespace proof
