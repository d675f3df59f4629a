#pragma once

#include "support/Text.h"
#include "system/HostProcess.h"

#include <gmock/gmock.h>

namespace test {

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

    // The packages of the file, without indentation and line ends; shortcuts are not looked at.
    std::string Packages() const
    {
        std::string packages;
        for (const std::string& line : Split(Bytes(), "\r\n")) {
            const std::size_t start = line.find_first_not_of(' ');
            const std::string element = start == std::string::npos ? "" : line.substr(start);
            if (element.starts_with("<Package ") || element.starts_with("<MetroApp ") ||
                element == "</Package>") {
                packages += element;
            }
        }
        return packages;
    }

    // A host that is up for one pass.
    void RunOnePass()
    {
        HostProcess host(m_sandbox);
        EXPECT_EQ(host.Command("init"), "0x00000000");
        WaitForFirstPass();
        host.Do("finalize");
    }

    Sandbox m_sandbox;
};

} // namespace test
