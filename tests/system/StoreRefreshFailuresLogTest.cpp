// The log of refresh passes in which the Store fails, and of one that is stopped.
#include "standin/Settings.h"
#include "system/QueryFor.h"
#include "system/RefreshLog.h"
#include "system/SlowManifest.h"

namespace {

using namespace test;
using standin::SetSetting;
using standin::Setting;

constexpr auto denied = static_cast<DWORD>(E_ACCESSDENIED);

std::string FirstIsNew()
{
    return PackageIsNew(familyA, 0, PlainNamesAreAdded("first", "1"));
}

class StoreWithoutManagerLog : public StoreRefreshLog, public testing::WithParamInterface<Setting>
{
};

TEST_P(StoreWithoutManagerLog, SaysWhyAndGoesOn)
{
    SetSetting(GetParam(), denied);
    EXPECT_TRUE(IsGolden(FirstPass(), {R"(
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN ... Access denied.
        CQanhPackageManager::RefreshMetroApps OUT(GetPackageManager Failed.)
        CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 <end>
    )",
                                       EmptyStartMenu(), Saved({})}));
}

INSTANTIATE_TEST_SUITE_P(Of, StoreWithoutManagerLog,
                         testing::Values(Setting::FailPackageFactory, Setting::FailPackageManager),
                         [](const auto& fault) {
                             return fault.param == Setting::FailPackageFactory ? "Factory" : "Instance";
                         });

TEST_F(StoreRefreshLog, PackagesThatCannotBeFound)
{
    SetSetting(Setting::FailFindAll, denied);
    EXPECT_TRUE(
        IsGolden(FirstPass(), {Packages({"CQanhPackageManager::RefreshMetroApps OUT(Access denied.)"}),
                               EmptyStartMenu(), Saved({})}));
}

TEST_F(StoreRefreshLog, PackageThatCannotBeReached)
{
    SetSetting(Setting::FailMoveNextAt, 1);
    SetSetting(Setting::FailMoveNext, denied);
    WriteA();
    WriteB();
    EXPECT_TRUE(IsGolden(
        FirstPass(), {Packages({FirstIsNew(), "CQanhPackageManager::RefreshMetroApps OUT(Access denied.)"}),
                      EmptyStartMenu(), Saved({packageWithOneApplication})}));
}

TEST_F(StoreRefreshLog, LastPackageDecidesTheResult)
{
    WriteA();
    WriteB("fail_version = 0x80070005");
    EXPECT_TRUE(
        IsGolden(FirstPass(),
                 {Packages({FirstIsNew(), "CQanhAppNameList::AddMetroPackage IN ... OUT(Access denied.)"},
                           "0x80004005"),
                  "CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 <end>",
                  EmptyStartMenu(), Saved({packageWithOneApplication})}));
}

// Told to stop while the first of two packages is read: that one is taken in, nothing else is done.
TEST_F(StoreRefreshLog, PassThatIsStoppedBetweenTwoPackages)
{
    SlowManifest slow;
    WriteA("location = " + slow.Folder());
    WriteB();
    EXPECT_EQ(m_host.Command("init"), "0x00000000");
    slow.WaitForReader();
    m_host.SetExitEvent();
    slow.Answer(manifestOfA);
    m_sandbox.WaitForLogLine("CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)");
    EXPECT_TRUE(IsGolden(Passes().at(0), {Packages({FirstIsNew()}),
                                          "CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)"}));
    EXPECT_FALSE(Exists(m_sandbox.CatalogFile()));
    EXPECT_FALSE(IsFirstPassRunning());
    EXPECT_EQ(QueryFor(m_sandbox, m_host, "fir"), "\"fir\" NOT(\"first\")");
    EXPECT_EQ(QueryFor(m_sandbox, m_host, "sec"), "\"sec\"");
}

} // namespace
