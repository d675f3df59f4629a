// What one test leaves running, the next one would see.
#include "system/Sandbox.h"

#include "standin/Files.h"

#include <gtest/gtest.h>

namespace {

TEST(SandboxOfATest, EndsTheApplicationsThatOtherProgramsHaveStarted)
{
    HANDLE application = nullptr;
    {
        const test::Sandbox sandbox;
        const DWORD id = standin::StartProgram(test::BuildFolder() + L"\\StandInApp.exe", L"", L"");
        application = OpenProcess(SYNCHRONIZE, FALSE, id);
        ASSERT_NE(application, nullptr);
        EXPECT_EQ(WaitForSingleObject(application, 0), DWORD{WAIT_TIMEOUT});
    }
    EXPECT_EQ(WaitForSingleObject(application, 0), WAIT_OBJECT_0);
    CloseHandle(application);
}

} // namespace
