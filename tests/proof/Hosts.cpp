#include "proof/Hosts.h"

#include <gtest/gtest.h>

namespace proof {

std::vector<std::string> NamesIn(std::string_view query)
{
    constexpr std::string_view begin = " NOT(\"";
    constexpr std::string_view end = "\")";
    const std::size_t at = query.find(begin);
    if (at == std::string_view::npos || !query.ends_with(end)) {
        return {};
    }
    query.remove_prefix(at + begin.size());
    query.remove_suffix(end.size());
    return test::Split(query, "\" OR \"");
}

std::string DesktopRecord(const std::string& name, const std::string& shortcut, bool isReserved)
{
    return "<DesktopApp DisplayName=\"" + name + "\" LnkFileName=\"" + shortcut + "\"" +
           (isReserved ? " NeedReserve=\"1\"" : "") + "/>\r\n";
}

std::string CatalogOf(const std::string& packages, const std::string& desktopRecords)
{
    return "<Applications><MetroApps>" + packages + "</MetroApps><DesktopApps>" + desktopRecords +
           "</DesktopApps></Applications>";
}

Holdings HoldingsOf(test::HostProcess& host)
{
    Holdings holdings{};
    // First: at its first question about windows the platform makes ready what it needs for them.
    holdings.windows = host.Measure("windows");
    holdings.gdiObjects = host.Measure("gdi");
    holdings.handles = host.Measure("handles");
    holdings.threads = host.Measure("threads");
    holdings.heap = host.Measure("heap");
    return holdings;
}

void ExpectNoNamedObjects(const test::Sandbox& sandbox)
{
    EXPECT_FALSE(test::IsFirstPassRunning());
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, sandbox.TurnName().c_str());
    EXPECT_EQ(mutex, nullptr) << "the turn at the catalogue file";
    if (mutex) {
        CloseHandle(mutex);
    }
}

} // namespace proof
