#pragma once

#include "standin/Settings.h"
#include "system/HostProcess.h"

namespace test {

// The query that the host would paste for a name, with exclusions; nothing is pressed. Leaves the switch set
// by which the launch fails.
inline std::string QueryFor(const Sandbox& sandbox, HostProcess& host, const std::string& name)
{
    standin::SetSetting(standin::Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    const std::size_t offset = sandbox.LogLength();
    host.Search(name, 0, true);
    constexpr std::string_view begin = "QanhLaunchBySearch szKeyword = ";
    for (const std::string& line : sandbox.Log(offset)) {
        if (line.starts_with(begin)) {
            return line.substr(begin.size(), line.size() - begin.size() - 1); // a blank stands at the end
        }
    }
    return "(none)";
}

} // namespace test
