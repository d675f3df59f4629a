#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace test {

// Lines of a log that a test expects: one line, or all lines of a step.
struct LogPiece
{
    LogPiece(const char* line) : lines{line} {}
    LogPiece(std::string line) : lines{std::move(line)} {}
    LogPiece(std::vector<std::string> step) : lines(std::move(step)) {}

    std::vector<std::string> lines;
};

// The pieces one after the other.
inline std::vector<std::string> Log(std::initializer_list<LogPiece> pieces)
{
    std::vector<std::string> log;
    for (const LogPiece& piece : pieces) {
        log.insert(log.end(), piece.lines.begin(), piece.lines.end());
    }
    return log;
}

// What an operation logs: Step("Class::Operation(argument)", "OUT(1)", {...}) is its line of entry, "...
// IN", what it does, and its line of exit, "Class::Operation OUT(1)".
inline std::vector<std::string> Step(std::string_view entry, std::string_view exit,
                                     std::initializer_list<LogPiece> inside = {})
{
    const std::string operation(entry.substr(0, entry.find('(')));
    return Log({std::string(entry) + " IN", Log(inside), operation + " " + std::string(exit)});
}

} // namespace test
