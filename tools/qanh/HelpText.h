#pragma once

#include <string>

namespace CLI {
class App;
}

// The two groups of commands, as the help has them.
inline constexpr char kLookingGroup[] = "Commands that only look";
inline constexpr char kDrivingGroup[] = "Commands that drive the library, and say before what they do";

// The help of the tool as a whole, or of a command of its: the parser's own runs over the edge of a console
// and has types and rules in it that only programmers read. `called` is how it is called: "qanh", "qanh
// list".
[[nodiscard]] std::string HelpOf(const CLI::App& app, const std::string& called);
