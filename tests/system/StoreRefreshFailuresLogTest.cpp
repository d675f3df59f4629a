// The log of refresh passes in which the Store fails, and of one that is stopped.
#include "standin/Settings.h"
#include "system/QueryFor.h"
#include "system/SlowManifest.h"
#include "system/StoreRefreshLog.h"

namespace {

using namespace store_refresh_log;
using standin::SetSetting;
using standin::Setting;
using test::IsGolden;
using test::Manifest;

class StoreWithoutManagerLog : public StoreRefreshLog, public testing::WithParamInterface<Setting>
{
};

TEST_P(StoreWithoutManagerLog, SaysWhyAndGoesOn)
{
    SetSetting(GetParam(), static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(R"(
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager Access denied.
        CQanhPackageManager::RefreshMetroApps OUT(GetPackageManager Failed.)
        CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 <end>
        )") + noShortcuts + saveBegin + saveEnd));
}

INSTANTIATE_TEST_SUITE_P(Of, StoreWithoutManagerLog,
                         testing::Values(Setting::FailPackageFactory, Setting::FailPackageManager),
                         [](const auto& fault) {
                             return fault.param == Setting::FailPackageFactory ? "Factory" : "Instance";
                         });

TEST_F(StoreRefreshLog, PackagesThatCannotBeFound)
{
    SetSetting(Setting::FailFindAll, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(packagesBegin) + R"(
        CQanhPackageManager::RefreshMetroApps OUT(Access denied.)
        CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
        )" + noShortcuts + saveBegin + saveEnd));
}

TEST_F(StoreRefreshLog, PackageThatCannotBeReached)
{
    SetSetting(Setting::FailMoveNextAt, 1);
    SetSetting(Setting::FailMoveNext, static_cast<DWORD>(E_ACCESSDENIED));
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "");
    m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
    EXPECT_TRUE(IsGolden(FirstPass(), packagesBegin +
                                          PackageIsNew(familyA, 0, PlainNamesAreAdded("first", "1")) + R"(
        CQanhPackageManager::RefreshMetroApps OUT(Access denied.)
        CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
        )" + noShortcuts + saveBegin + packageIsWritten +
                                          saveEnd));
}

TEST_F(StoreRefreshLog, LastPackageDecidesTheResult)
{
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "");
    m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "fail_version = 0x80070005");
    EXPECT_TRUE(IsGolden(FirstPass(), packagesBegin +
                                          PackageIsNew(familyA, 0, PlainNamesAreAdded("first", "1")) + R"(
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(Access denied.)
        CQanhPackageManager::RefreshMetroApps OUT(0x80004005)
        CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 <end>
        )" + noShortcuts + saveBegin + packageIsWritten +
                                          saveEnd));
}

// Told to stop while the first of two packages is read: that one is taken in, nothing else is done.
TEST_F(StoreRefreshLog, PassThatIsStoppedBetweenTwoPackages)
{
    test::SlowManifest slow;
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "location = " + slow.Folder());
    m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
    EXPECT_EQ(m_host.Command("init"), "0x00000000");
    slow.WaitForReader();
    m_host.SetExitEvent();
    slow.Answer(Manifest("Vel.A", "1.0.0.0", "First", "1"));
    m_sandbox.WaitForLogLine("CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)");
    EXPECT_TRUE(IsGolden(Passes().at(0),
                         packagesBegin + PackageIsNew(familyA, 0, PlainNamesAreAdded("first", "1")) +
                             packagesEnd + "CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)\n"));
    EXPECT_FALSE(test::Exists(m_sandbox.CatalogFile()));
    EXPECT_FALSE(test::IsFirstPassRunning());
    EXPECT_EQ(test::QueryFor(m_sandbox, m_host, "fir"), "\"fir\" NOT(\"first\")");
    EXPECT_EQ(test::QueryFor(m_sandbox, m_host, "sec"), "\"sec\"");
}

} // namespace
