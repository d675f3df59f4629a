#pragma once

#include "system/Sandbox.h"

#include <algorithm>
#include <string>
#include <vector>

namespace test {

inline constexpr char passBegin[] = "CQanhPackageManager::RefreshThread Refresh app name list!";
// The last line of a pass that was not stopped.
inline constexpr char passEnd[] = "CQanhAppNameList::Save OUT(0x00000000)";

// The lines of all refresh passes in a log, each behind its own begin and up to the next one's, which may
// hold what was written between the two.
inline std::vector<std::vector<std::string>> PassesOf(const std::vector<std::string>& log)
{
    std::vector<std::vector<std::string>> passes;
    auto begin = std::find(log.begin(), log.end(), passBegin);
    while (begin != log.end()) {
        const auto end = std::find(begin + 1, log.end(), passBegin);
        passes.emplace_back(begin + 1, end);
        begin = end;
    }
    return passes;
}

// The first pass with such a line; none: empty.
inline std::vector<std::string> PassWith(const std::string& line, const std::vector<std::string>& log)
{
    for (const std::vector<std::string>& pass : PassesOf(log)) {
        if (std::find(pass.begin(), pass.end(), line) != pass.end()) {
            return pass;
        }
    }
    return {};
}

// Waits until a pass that begins from now on is over, and the next one has begun: what is done then stands
// behind it in the log. The pass that is running may have looked already. For passes that follow each other
// without a pause.
inline void WaitForWholePass(const Sandbox& sandbox)
{
    sandbox.WaitForLogLine(passEnd, sandbox.LogLength());
    sandbox.WaitForLogLine(passEnd, sandbox.LogLength());
    sandbox.WaitForLogLine(passBegin, sandbox.LogLength());
}

} // namespace test
