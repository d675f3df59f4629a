#pragma once

#include "proof/CallGate.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace proof {

// One way in which a function fails, as its documentation names it.
struct Failure
{
    std::string name; // in words
    Refusal refusal;
    std::optional<HRESULT> result; // that the function gives, when it gives one
};

// What can become of a function that the library imports.
struct PlatformFunction
{
    std::string_view name;
    // None: it cannot fail for the library, for the reason.
    std::vector<Failure> failures;
    std::string_view reason;
};

// The reason of those that no operation calls as long as nothing fails.
inline constexpr std::string_view kRuntimes =
    "the C++ runtime in the library calls it, when it is loaded or raises an exception";

// Every function that the library may import. Null: it is not in the list.
[[nodiscard]] const PlatformFunction* FindPlatformFunction(std::string_view name);

[[nodiscard]] const std::vector<PlatformFunction>& PlatformFunctions();

} // namespace proof
