#pragma once

#include "system/ClipboardAccess.h"
#include "system/DesktopProcess.h"
#include "system/HostProcess.h"

#include <gmock/gmock.h>

#include <memory>

namespace test {

// A desktop with applications and a host that knows them: the first refresh pass is over. After each test the
// keyboard and the clipboard must be as a launch leaves them: Shift is up, nothing is on the clipboard. A
// test that puts a text there and sees it stay takes it back.
class LaunchTest : public testing::Test
{
protected:
    // To be called first; switches of the desktop may be set before or after.
    void Start(const std::vector<std::wstring>& applications)
    {
        for (const std::wstring& application : applications) {
            sandbox.AddApplication(application);
        }
        desktop = std::make_unique<DesktopProcess>(sandbox);
        host = std::make_unique<HostProcess>(sandbox);
        host->InitializeAndPass();
    }

    LaunchTest() { ClearClipboard(); }

    void TearDown() override
    {
        EXPECT_FALSE(IsShiftDown()) << "Shift was left pressed";
        EXPECT_TRUE(IsClipboardEmpty()) << "the clipboard was not emptied";
    }

    // The log of a command alone.
    std::vector<std::string> LogOf(const std::string& command, const std::string& result)
    {
        const std::size_t offset = sandbox.LogLength();
        EXPECT_EQ(host->Command(command, 30000), result);
        return sandbox.Log(offset);
    }

    // What is launched for a name; the line stands once in the journal then, and one query.
    void ExpectLaunch(const std::string& name, int mode, bool useExcludeList, const std::string& started,
                      const std::string& line)
    {
        using namespace testing;
        EXPECT_EQ(host->Search(name, mode, useExcludeList), "0x00000000");
        EXPECT_EQ(desktop->Started(), started);
        EXPECT_THAT(desktop->Journal(),
                    AllOf(Contains(line).Times(1), Contains(StartsWith("query\t")).Times(1)));
    }

    static bool IsShiftDown() { return (GetAsyncKeyState(VK_SHIFT) & 0x8000) != 0; }

    Sandbox sandbox;
    std::unique_ptr<DesktopProcess> desktop;
    std::unique_ptr<HostProcess> host;
};

} // namespace test
