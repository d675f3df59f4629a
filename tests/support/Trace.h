#pragma once

#include "support/LogSteps.h"

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
    return Step(entry, "OUT" + result, {onTheWay});
}

} // namespace test
