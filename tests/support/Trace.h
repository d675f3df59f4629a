#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

namespace test {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

// The lines that an operation leaves in the log: its entry line, what it writes on the way, and its exit
// line.
//     Call("CQanhReg::IsDebugLogOn", "(1)", Call("CQanhReg::GetDWORDRegVal", "(0)"))
// stands for
//     CQanhReg::IsDebugLogOn IN
//     CQanhReg::GetDWORDRegVal IN
//     CQanhReg::GetDWORDRegVal OUT(0)
//     CQanhReg::IsDebugLogOn OUT(1)
// The entry may have arguments: Call("QanhIsInstalled(mail_1)", "(0x00000000)").
inline Lines Call(const std::string& entry, const std::string& result = "", const Lines& onTheWay = {})
{
    return Lines{entry + " IN"} + onTheWay + Lines{entry.substr(0, entry.find('(')) + " OUT" + result};
}

inline bool BeginsWithOneOf(const std::string& line, std::initializer_list<const char*> starts)
{
    return std::any_of(starts.begin(), starts.end(),
                       [&](const char* start) { return line.starts_with(start); });
}

// Of these lines, those that begin with one of the starts, or with none of them.
inline Lines LinesWith(std::initializer_list<const char*> starts, Lines lines)
{
    std::erase_if(lines, [&](const std::string& line) { return !BeginsWithOneOf(line, starts); });
    return lines;
}
inline Lines LinesWithout(std::initializer_list<const char*> starts, Lines lines)
{
    std::erase_if(lines, [&](const std::string& line) { return BeginsWithOneOf(line, starts); });
    return lines;
}

} // namespace test
