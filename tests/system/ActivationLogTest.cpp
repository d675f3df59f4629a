// The whole log of an activation that reaches the platform: its entry alone.
#include "standin/Settings.h"
#include "system/Golden.h"
#include "system/HostProcess.h"

#include <gtest/gtest.h>

namespace {

using standin::SetSetting;
using standin::Setting;

constexpr char ok[] = "0x00000000";

class StoreActivationLog : public testing::Test
{
protected:
    // The first pass finds no packages and is over: from here on nobody else writes.
    StoreActivationLog()
    {
        host.InitializeAndPass();
        sandbox.UseSamplePackages();
    }

    void Expect(const std::string& command, const std::string& result, std::string_view golden)
    {
        const std::size_t offset = sandbox.LogLength();
        EXPECT_EQ(host.Command(command), result);
        EXPECT_TRUE(test::IsGolden(sandbox.Log(offset), golden)) << command;
    }

    test::Sandbox sandbox;
    test::HostProcess host{sandbox};
};

TEST_F(StoreActivationLog, ApplicationThatStarts)
{
    Expect("activate\tVel.Post_1vel7kq0n3rta!Post\t-open \"a b\"", ok,
           "QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, -open \"a b\") IN");
    Expect("activate\tVel.Post_1vel7kq0n3rta!Post\t(null)", ok,
           "QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, (null)) IN");
    Expect("mta\tactivate\tVel.Post_1vel7kq0n3rta!People\t-x", ok,
           "QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!People, -x) IN");
}

TEST_F(StoreActivationLog, FailuresOfThePlatform)
{
    Expect("activate\tNobody.App_0123456789abc!App\t(null)", "0x80270254",
           "QanhLaunchByManager(Nobody.App_0123456789abc!App, (null)) IN");
    constexpr char post[] = "activate\tVel.Post_1vel7kq0n3rta!Post\t-open";
    constexpr char postIn[] = "QanhLaunchByManager(Vel.Post_1vel7kq0n3rta!Post, -open) IN";
    SetSetting(Setting::FailActivation, 0x8027025B);
    Expect(post, "0x8027025B", postIn);
    SetSetting(Setting::FailActivationManager, 0x80040154);
    Expect(post, "0x80040154", postIn);
}

} // namespace
