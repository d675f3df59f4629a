// Store packages in the catalogue file: what the platform fails at, and what changes between two passes.
#include "system/StoreCatalog.h"

#include "standin/Settings.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/SlowManifest.h"

#include <ostream>

namespace {

using standin::SetSetting;
using standin::Setting;
using test::AppElement;
using test::Manifest;
using test::PackageElement;
using test::StoreCatalog;

// Whatever the platform fails at, the rest of the pass is done.
TEST_F(StoreCatalog, OfAPassThatFindsNoPackagesHasTheShortcuts)
{
    m_sandbox.AddSamplePackage(L"Lumen.Photos");
    m_sandbox.AddCommonShortcut(L"A.lnk");
    for (const Setting fault :
         {Setting::FailPackageFactory, Setting::FailPackageManager, Setting::FailFindAll}) {
        SetSetting(fault, static_cast<DWORD>(E_ACCESSDENIED));
        RunOnePass();
        EXPECT_EQ(Bytes(), test::CatalogWith("", test::CommonShortcut("A", "A.lnk")));
        SetSetting(fault, 0);
        DeleteFileW(m_sandbox.CatalogFile().c_str()); // what the next pass writes is its own
    }
}

TEST_F(StoreCatalog, HasThePackagesBeforeTheOneThatCouldNotBeReached)
{
    m_sandbox.AddSamplePackage(L"Lumen.Photos");
    m_sandbox.AddSamplePackage(L"Vel.Calendar");
    m_sandbox.AddSamplePackage(L"Vel.Runtime");
    SetSetting(Setting::FailMoveNextAt, 2);
    RunOnePass();
    EXPECT_EQ(Bytes(),
              test::CatalogWith(
                  PackageElement("Lumen.Photos_5lum2d8xw4yhe", "1.0.3.0", {{"photo album", "photos"}}) +
                      PackageElement("Vel.Calendar_1vel7kq0n3rta", "2.1.0.14", {{"Calendar", "Days"}}),
                  ""));
}

// One package each whose one property cannot be had, between two good ones.
class FaultyPackageCatalog : public StoreCatalog, public testing::WithParamInterface<const char*>
{
};

TEST_P(FaultyPackageCatalog, GoesOnWithTheNextPackage)
{
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "");
    m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"),
                           std::string(GetParam()) + " = 0x80070005");
    m_sandbox.WritePackage(L"C", Manifest("Vel.C", "1.0.0.0", "Third", "3"), "");
    RunOnePass();
    EXPECT_EQ(Packages(), PackageElement("Vel.A_0standin00000", "1.0.0.0", {{"first", "1"}}) +
                              PackageElement("Vel.C_0standin00000", "1.0.0.0", {{"third", "3"}}));
}

INSTANTIATE_TEST_SUITE_P(Properties, FaultyPackageCatalog,
                         testing::Values("fail_id", "fail_family_name", "fail_full_name", "fail_name",
                                         "fail_version", "fail_installed_location", "fail_path"),
                         [](const auto& property) { return std::string(property.param); });

struct ManifestFault
{
    const char* name;
    Setting setting;
    DWORD value;
    std::vector<AppElement> applications; // that are in the file all the same
};

void PrintTo(const ManifestFault& fault, std::ostream* stream)
{
    *stream << fault.name;
}

// What the platform's own manifest reader fails at, in a package of two applications.
class ManifestFaultCatalog : public StoreCatalog, public testing::WithParamInterface<ManifestFault>
{
};

TEST_P(ManifestFaultCatalog, HasThePackageWithWhatCouldBeRead)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    m_sandbox.AddSamplePackage(L"Test.NoTile");
    SetSetting(GetParam().setting, GetParam().value);
    RunOnePass();
    EXPECT_EQ(Packages(), PackageElement("Test.NoTile_9test0p6zjcqm", "1.0.0.0", GetParam().applications));
}

const AppElement firstApplication{"First without tile", ""};
const AppElement secondApplication{"Second with tile", ""};

INSTANTIATE_TEST_SUITE_P(
    Of, ManifestFaultCatalog,
    testing::Values(ManifestFault{"Factory", Setting::FailManifestFactory, 0x80040154, {}},
                    ManifestFault{"Reader", Setting::FailManifestReader, 0x80080204, {}},
                    ManifestFault{"Applications", Setting::FailManifestApplications, 0x80004005, {}},
                    ManifestFault{"FirstApplication", Setting::FailManifestCurrentAt, 1, {secondApplication}},
                    ManifestFault{"SecondName", Setting::FailManifestStringAt, 2, {firstApplication}},
                    ManifestFault{"NextApplication", Setting::FailManifestMoveNextAt, 1, {firstApplication}}),
    [](const auto& fault) { return std::string(fault.param.name); });

class ChangingStoreCatalog : public StoreCatalog
{
protected:
    ChangingStoreCatalog()
    {
        m_sandbox.Settings().SetDword(L"RefreshInterval", 0); // passes follow each other without a pause
        m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.2.3.4", "First", "1"), "");
        m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        test::WaitForWholePass(m_sandbox);
        EXPECT_EQ(Packages(), package1 + package2);
    }

    // After a pass that begins from now on; the last one.
    std::string PackagesAtLast()
    {
        test::WaitForWholePass(m_sandbox);
        m_host.Do("finalize");
        return Packages();
    }

    const std::string package1 = PackageElement("Vel.A_0standin00000", "1.2.3.4", {{"first", "1"}});
    const std::string package2 = PackageElement("Vel.B_0standin00000", "1.0.0.0", {{"second", "2"}});
    test::HostProcess m_host{m_sandbox};
};

class ChangedVersionCatalog : public ChangingStoreCatalog, public testing::WithParamInterface<const char*>
{
};

TEST_P(ChangedVersionCatalog, HasTheNewVersionsNames)
{
    const std::string version = GetParam();
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", version, "Primary", "I"), "");
    EXPECT_EQ(PackagesAtLast(),
              PackageElement("Vel.A_0standin00000", version, {{"primary", "i"}}) + package2);
}

INSTANTIATE_TEST_SUITE_P(Parts, ChangedVersionCatalog,
                         testing::Values("9.2.3.4", "1.9.3.4", "1.2.9.4", "1.2.3.9"));

TEST_F(ChangingStoreCatalog, KeepsThePackageWhoseVersionIsTheSame)
{
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.2.3.4", "Primary", "I"), "");
    EXPECT_EQ(PackagesAtLast(), package1 + package2);
}

TEST_F(ChangingStoreCatalog, KeepsTheOldVersionUntilTheNewNamesCanBeRead)
{
    const std::string unresolved = Manifest("Vel.A", "2.0.0.0", "ms-resource:Name", "I");
    m_sandbox.WritePackage(L"A", unresolved, "");
    test::WaitForWholePass(m_sandbox);
    EXPECT_EQ(Packages(), package1 + package2);
    m_sandbox.WritePackage(L"A", unresolved, "[en-US]\nresources/Name = At Last\n");
    EXPECT_EQ(PackagesAtLast(),
              PackageElement("Vel.A_0standin00000", "2.0.0.0", {{"At Last", "i"}}) + package2);
}

TEST_F(ChangingStoreCatalog, LosesThePackageThatIsGoneUntilItComesBack)
{
    m_sandbox.RemovePackage(L"A");
    test::WaitForWholePass(m_sandbox);
    EXPECT_EQ(Packages(), package2);
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.2.3.4", "Other names", "X"), "");
    EXPECT_EQ(PackagesAtLast(), package1 + package2) << "the record was kept, with its place";
}

TEST_F(ChangingStoreCatalog, KeepsThePackageWhoseStateCannotBeAsked)
{
    SetSetting(Setting::FailFindFamily, static_cast<DWORD>(E_ACCESSDENIED));
    m_sandbox.RemovePackage(L"A");
    EXPECT_EQ(PackagesAtLast(), package1 + package2);
}

TEST_F(ChangingStoreCatalog, TakesNewPackagesInBehindTheOthers)
{
    m_sandbox.WritePackage(L"0", Manifest("Vel.0", "1.0.0.0", "Zeroth", "0"), "");
    EXPECT_EQ(PackagesAtLast(),
              package1 + package2 + PackageElement("Vel.0_0standin00000", "1.0.0.0", {{"zeroth", "0"}}));
}

TEST_F(StoreCatalog, ReservedPackageIsNeverRefreshed)
{
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "2.0.0.0", "First", "1"), "");
    test::WriteFileBytes(
        m_sandbox.PresetFile(),
        "<Applications><MetroApps>"
        "<Package PackageFamilyName=\"Vel.A_0standin00000\" Version=\"1.2.3.4\" NeedReserve=\"1\">"
        "<MetroApp DisplayName=\"Kept\"/></Package>"
        "</MetroApps><DesktopApps></DesktopApps></Applications>");
    RunOnePass();
    EXPECT_EQ(Packages(),
              PackageElement("Vel.A_0standin00000", "1.2.4.3", {{"Kept", ""}}, " NeedReserve=\"1\""));
}

// Finalize in the middle of a pass: the thread stops before the next package and the file is not written.
TEST_F(StoreCatalog, OfAPassThatIsStoppedBetweenTwoPackagesIsNotWritten)
{
    test::SlowManifest slow;
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "location = " + slow.Folder());
    m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
    standin::SetText(standin::TextSetting::PackageStore, L"");
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    const std::string before = Bytes();

    standin::SetText(standin::TextSetting::PackageStore, m_sandbox.Packages()); // both packages at once
    slow.WaitForReader();
    host.Send("finalize");
    host.WaitForExitEvent();
    slow.Answer(Manifest("Vel.A", "1.0.0.0", "First", "1"));
    EXPECT_EQ(host.Answer(), "ok");
    EXPECT_EQ(Bytes(), before);
    const std::vector<std::string> log = m_sandbox.Log();
    EXPECT_THAT(log, testing::Contains("CQanhPackage::AddApplication(first, 1) IN"));
    EXPECT_THAT(log, testing::Not(testing::Contains("CQanhAppNameList::GetPackage(Vel.B_0standin00000) IN")));
}

} // namespace
