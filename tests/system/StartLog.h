#pragma once

#include "system/HostProcess.h"

#include <gtest/gtest.h>

namespace test {

// A host that is brought up with its log in a fixed order.
class StartLog : public testing::Test
{
protected:
    // Lines are lost as long as the log's folder is not there.
    void MakeLogFolder() const { MakeFolder(sandbox.CatalogFolder()); }

    // Brings the library up; the refresh thread's first lines come after those of the call.
    std::string Initialize(HostProcess& host)
    {
        host.Do("line-up");
        const std::string result = host.Command("init");
        host.Do("open");
        return result;
    }

    Sandbox sandbox;
};

} // namespace test
