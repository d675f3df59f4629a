// The whole log of an activation: its entry, and its exit only where the arguments were refused.
#include "standin/Settings.h"
#include "system/Golden.h"
#include "system/HostProcess.h"

#include <gtest/gtest.h>

namespace {

using standin::SetSetting;
using standin::Setting;
using test::IsGolden;

constexpr char ok[] = "0x00000000";

class StoreActivationLog : public testing::Test
{
protected:
    // The first pass finds no packages and is over: from here on nobody else writes.
    void Start()
    {
        ASSERT_EQ(host.Command("init"), ok);
        test::WaitForFirstPass();
        sandbox.UseSamplePackages();
    }

    std::vector<std::string> Activate(const std::string& command, const std::string& result)
    {
        const std::size_t offset = sandbox.LogLength();
        EXPECT_EQ(host.Command(command), result);
        return sandbox.Log(offset);
    }

    test::Sandbox sandbox;
    test::HostProcess host{sandbox};
};

TEST_F(StoreActivationLog, ApplicationThatStarts)
{
    Start();
    EXPECT_TRUE(IsGolden(Activate("activate\tVel.Post_1vel7kq0n3rta!Post\t-open \"a b\"", ok), R"(
        QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, -open "a b") IN
    )"));
    EXPECT_TRUE(IsGolden(Activate("activate\tVel.Post_1vel7kq0n3rta!Post\t(null)", ok), R"(
        QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, (null)) IN
    )"));
    EXPECT_TRUE(IsGolden(Activate("mta\tactivate\tVel.Post_1vel7kq0n3rta!People\t-x", ok), R"(
        QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!People, -x) IN
    )"));
}

TEST_F(StoreActivationLog, FailuresOfThePlatform)
{
    Start();
    EXPECT_TRUE(IsGolden(Activate("activate\tNobody.App_0123456789abc!App\t(null)", "0x80270254"), R"(
        QanhLaunchByManager(Nobody.App_0123456789abc!App, (null)) IN
    )"));
    SetSetting(Setting::FailActivation, 0x8027025B);
    EXPECT_TRUE(IsGolden(Activate("activate\tVel.Post_1vel7kq0n3rta!Post\t-open", "0x8027025B"), R"(
        QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, -open) IN
    )"));
    SetSetting(Setting::FailActivationManager, 0x80040154);
    EXPECT_TRUE(IsGolden(Activate("activate\tVel.Post_1vel7kq0n3rta!Post\t-open", "0x80040154"), R"(
        QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, -open) IN
    )"));
}

TEST_F(StoreActivationLog, ArgumentsThatAreRefused)
{
    Start();
    EXPECT_TRUE(IsGolden(Activate("activate\t(null)\t-open", "0x80004003"), R"(
        QanhLaunchByManager((null), -open) IN
        QanhLaunchByManager OUT(0x80004003)
    )"));
    EXPECT_TRUE(IsGolden(Activate("activate\t\t(null)", "0x80070057"), R"(
        QanhLaunchByManager(, (null)) IN
        QanhLaunchByManager OUT(0x80070057)
    )"));
}

TEST_F(StoreActivationLog, NothingIsLoggedBeforeTheStart)
{
    EXPECT_TRUE(Activate("activate\tNobody.App_0123456789abc!App\t(null)", "0x80270254").empty());
    EXPECT_TRUE(Activate("activate\t(null)\t(null)", "0x80004003").empty());
}

} // namespace
