#pragma once

#include "support/Text.h"
#include "system/HostProcess.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace test {

// The packages of a catalogue file as they stand in it, with the lines of their applications; further
// attributes stand behind the version.
struct AppElement
{
    std::string displayName;
    std::string shortName;
};

inline std::string PackageElement(const std::string& family, const std::string& version,
                                  const std::vector<AppElement>& applications,
                                  const std::string& attributes = "")
{
    std::string element =
        "    <Package PackageFamilyName=\"" + family + "\" Version=\"" + version + "\"" + attributes;
    if (applications.empty()) {
        return element + " />\r\n";
    }
    element += ">\r\n";
    for (const AppElement& application : applications) {
        element += "      <MetroApp";
        if (!application.displayName.empty()) {
            element += " DisplayName=\"" + application.displayName + "\"";
        }
        if (!application.shortName.empty()) {
            element += " ShortName=\"" + application.shortName + "\"";
        }
        element += " />\r\n";
    }
    return element + "    </Package>\r\n";
}

// The catalogue file with these lines between the ends of its lists.
inline std::string CatalogWith(const std::string& packages, const std::string& shortcuts)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>\r\n" +
           (packages.empty() ? std::string("  <MetroApps />\r\n")
                             : "  <MetroApps>\r\n" + packages + "  </MetroApps>\r\n") +
           (shortcuts.empty() ? std::string("  <DesktopApps />")
                              : "  <DesktopApps>\r\n" + shortcuts + "  </DesktopApps>");
}

inline std::string ShortcutElement(const std::string& name, const std::string& path)
{
    return "    <DesktopApp DisplayName=\"" + name + "\" LnkFileName=\"" + path + "\" />\r\n";
}

inline std::string CommonShortcut(const std::string& name, const std::string& file)
{
    return ShortcutElement(name, "<allusers>\\Microsoft\\Windows\\Start Menu\\Programs\\" + file);
}

// The catalogue file that a host in a sandbox writes.
class StoreCatalog : public testing::Test
{
protected:
    // The whole file: a pass may just be writing it.
    std::string Bytes() const
    {
        std::string bytes;
        const bool isWhole = WaitUntil(
            [&] {
                bytes = ReadFileBytes(m_sandbox.CatalogFile());
                return bytes.ends_with("<DesktopApps />") || bytes.ends_with("</DesktopApps>");
            },
            5000);
        EXPECT_TRUE(isWhole);
        return m_sandbox.WithPlaceholders(bytes);
    }

    // The lines of the packages; shortcuts are not looked at.
    std::string Packages() const
    {
        const std::string bytes = Bytes();
        const std::size_t begin = std::min(bytes.find("    <Package "), bytes.size());
        const std::size_t end = std::max(bytes.find("  </MetroApps>"), begin);
        return bytes.substr(begin, end - begin);
    }

    // A host that is up for one pass.
    void RunOnePass()
    {
        HostProcess host(m_sandbox);
        host.InitializeAndPass();
        host.Do("finalize");
    }

    Sandbox m_sandbox;
};

} // namespace test
