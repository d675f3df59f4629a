#pragma once

#include "proof/Stage.h"

#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

namespace proof {

// What an operation does that is documented to take notice of a call that fails. For all others nothing else
// changes than what the call itself would have done.
struct Expectation
{
    Operation operation;
    std::string_view function;
    int call; // of the function in the operation, from 0; below 0: any
    // The failure's own result, when there is none.
    std::optional<HRESULT> result;
    std::string_view answer; // that a query then has; empty: as ever, or none
    std::string_view line;   // that the log then holds
};

// Null: the operation takes no notice.
[[nodiscard]] const Expectation* FindExpectation(Operation operation, std::string_view function,
                                                 std::size_t call);

} // namespace proof
