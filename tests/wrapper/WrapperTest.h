#pragma once

#include "QanHelper.hpp"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "system/ClipboardAccess.h"
#include "system/DesktopProcess.h"

#include <gmock/gmock.h>

#include <memory>

namespace test {

inline const qanh::Source kBuiltLibrary = qanh::Source::File(BuildFolder() + L"\\QanHelper.dll");

// A desktop with applications, and a launcher in this process, which is the host "wrapper_tests" in the
// sandbox.
class WrapperTest : public testing::Test
{
protected:
    WrapperTest() { ClearClipboard(); }

    void TearDown() override
    {
        launcher.reset();
        EXPECT_EQ(GetAsyncKeyState(VK_SHIFT) & 0x8000, 0) << "Shift was left pressed";
        ClearClipboard();
    }

    // To be called first.
    void Start(const std::vector<std::wstring>& applications)
    {
        for (const std::wstring& application : applications) {
            sandbox.AddApplication(application);
        }
        desktop = std::make_unique<DesktopProcess>(sandbox);
        launcher = std::make_unique<qanh::Launcher>(kBuiltLibrary);
    }

    // Without exclusions: the catalogue is not asked.
    static qanh::Request Search(const std::wstring& name)
    {
        return qanh::Request::Search(name, qanh::SearchMode::Launch, false);
    }

    // A search that finds nothing: it is running, and goes on until the pane is closed.
    qanh::Pending LaunchNobody(std::chrono::milliseconds limit = std::chrono::seconds(60))
    {
        qanh::Request request = Search(L"Nobody");
        request.limit = limit;
        request.windowLimit = std::chrono::milliseconds(1000);
        qanh::Pending outcome = launcher->Launch(request);
        desktop->WaitFor("no hit\t\"Nobody\"");
        return outcome;
    }

    static bool IsKnown(const qanh::Pending& outcome) { return outcome.Wait(0); }

    static bool IsLibraryLoaded() { return GetModuleHandleW(L"QanHelper.dll") != nullptr; }

    Sandbox sandbox;
    std::unique_ptr<DesktopProcess> desktop;
    std::unique_ptr<qanh::Launcher> launcher;
};

} // namespace test
