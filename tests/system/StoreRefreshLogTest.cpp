// The log of refresh passes over small Stores: packages that are new, known, changed and gone.
#include "standin/Settings.h"
#include "system/RefreshLog.h"

#include <algorithm>

namespace {

using namespace test;
using standin::SetSetting;
using standin::Setting;

TEST_F(StoreRefreshLog, NewPackages)
{
    m_sandbox.AddSamplePackage(L"Test.Faulty");  // its folder cannot be had
    m_sandbox.AddSamplePackage(L"Vel.Calendar"); // its names stand in its resources
    m_sandbox.AddSamplePackage(L"Vel.Runtime");  // has no applications
    constexpr char calendar[] = "Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta";
    const std::string names =
        Joined({applicationIsFound, displayNameIsTaken,
                TextIsSought("ms-resource:calendarname", calendar, "Vel.Calendar",
                             "ms-resource://Vel.Calendar/resources/calendarname", "", "Calendar"),
                shortNameIsTaken,
                TextIsSought("ms-resource:calendarshort", calendar, "Vel.Calendar",
                             "ms-resource://Vel.Calendar/resources/calendarshort", "", "Days"),
                ApplicationIsAdded("Calendar", "Days"), noFurtherApplication});
    EXPECT_TRUE(IsGolden(
        FirstPass(),
        {Packages({"CQanhAppNameList::AddMetroPackage IN ... OUT(Path not found.)",
                   PackageIsNew("Vel.Calendar_1vel7kq0n3rta", 0, ManifestIsRead(names, "0x00000001")),
                   PackageIsNew("Vel.Runtime_1vel7kq0n3rta", 1,
                                ManifestIsRead(noApplicationIsFound, "0x00000001"))}),
         EmptyStartMenu(), Saved({packageWithOneApplication, emptyPackage})}));
}

TEST_F(StoreRefreshLog, TextsThatAreFoundElsewhereOrNotAtAll)
{
    m_sandbox.WritePackage(
        L"A", Manifest("Vel.A", "1.0.0.0", "ms-resource:/Deep/Name/", "ms-resource:///Not/There"),
        "[en-US]\nDeep/Name = Found late\n");
    constexpr char package[] = "Vel.A_1.0.0.0_neutral__0standin00000";
    const std::string names = Joined(
        {applicationIsFound, displayNameIsTaken,
         TextIsSought("ms-resource:/deep/name/", package, "Vel.A", "ms-resource://Vel.A/resources/deep/name",
                      " ms-resource://Vel.A/deep/name", "Found late"),
         shortNameIsTaken,
         TextIsSought("ms-resource:///not/there", package, "Vel.A", "ms-resource://Vel.A/not/there", "", ""),
         ApplicationIsAdded("Found late", "ms-resource:///not/there"), noFurtherApplication});
    EXPECT_TRUE(
        IsGolden(FirstPass(), {Packages({PackageIsNew(familyA, 0, ManifestIsRead(names, "0x00000001"))}),
                               EmptyStartMenu(), Saved({packageWithOneApplication})}));
}

TEST_F(StoreRefreshLog, ManifestsThatCannotBeRead)
{
    m_sandbox.AddSamplePackage(L"Test.NoManifest");
    m_sandbox.WritePackage(
        L"Z", "<Package><Identity Name=\"Vel.Z\" Version=\"1.0.0.0\"/><Applications></Packages>", "");
    std::vector<std::string> pass = FirstPass();
    pass.erase(std::find(pass.begin(), pass.end(), "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)") +
                   1,
               pass.end());
    constexpr char noApplication[] = R"(
        CQanhManifestReader::MoveToElementByName(Applications) IN ... OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN ... OUT(0xC00CEE3B)
    )";
    EXPECT_TRUE(IsGolden(
        pass,
        Packages({PackageIsNew("Test.NoManifest_9test0p6zjcqm", 0, ManifestIsRefused("", "0x80070002")),
                  PackageIsNew("Vel.Z_0standin00000", 1, ManifestIsRefused(noApplication, "0xC00CEE3B"))})));
}

TEST_F(StoreRefreshLog, PackagesReadByThePlatform)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    m_sandbox.AddSamplePackage(L"Vel.Post");
    const std::string names = Joined({ApplicationIsAdded("ms-resource:/Post/Name/", "(null)"),
                                      ApplicationIsAdded("ms-resource:///Resources/PeopleName", "(null)")});
    EXPECT_TRUE(IsGolden(FirstPass(), {Packages({PackageIsNew("Vel.Post_1vel7kq0n3rta", 0,
                                                              ManifestIsRead(names, "0x00000000", false))}),
                                       EmptyStartMenu(), Saved({R"(
        CQanhPackage::ToXmlNode IN
        CQanhMetroApp::ToXmlNode IN ... OUT(0x00000000)
        CQanhMetroApp::ToXmlNode IN ... OUT(0x00000000)
        CQanhPackage::ToXmlNode OUT(0x00000000)
    )"})}));
}

TEST_F(StoreRefreshLog, PlatformsManifestReaderThatFails)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    SetSetting(Setting::FailManifestFactory, static_cast<DWORD>(E_ACCESSDENIED));
    m_sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_TRUE(IsGolden(FirstPass(), {Packages({PackageIsNew("Vel.Calendar_1vel7kq0n3rta", 0,
                                                              ManifestIsRefused("", "0x80070005", false))}),
                                       EmptyStartMenu(), Saved({emptyPackage})}));
}

TEST_F(StoreRefreshLog, PackagesThatAreKnown)
{
    KeepPassing();
    m_host.Do("finalize");
    EXPECT_TRUE(
        IsGolden(Passes().at(1), {PackageIsInstalled(familyA, true), PackageIsInstalled(familyB, true),
                                  Packages({PackageIsUnchanged(familyA, 0), PackageIsUnchanged(familyB, 1)}),
                                  EmptyStartMenu(), BothAreSaved()}));
}

TEST_F(StoreRefreshLog, PackageWithAnotherVersion)
{
    KeepPassing();
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.1", "Primary", "I"), "");
    const std::string names =
        Joined({applicationIsFound, displayNameIsTaken, shortNameIsTaken, noFurtherApplication});
    const std::string change =
        Joined({"CQanhPackage::DeleteAllApp IN ... OUT", PlainNamesAreAdded("primary", "i")});
    EXPECT_TRUE(
        IsGolden(PassWith("CQanhPackage::DeleteAllApp IN"),
                 {PackageIsInstalled(familyA, true), PackageIsInstalled(familyB, true),
                  Packages({PackageIsChanged(familyA, names, true, change), PackageIsUnchanged(familyB, 1)}),
                  EmptyStartMenu(), BothAreSaved()}));
}

TEST_F(StoreRefreshLog, PackageWithAnotherVersionWhoseNameCannotBeRead)
{
    KeepPassing();
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.1", "ms-resource:Name", "I"), "");
    const std::string name =
        Joined({applicationIsFound, displayNameIsTaken,
                TextIsSought("ms-resource:name", "Vel.A_1.0.0.1_neutral__0standin00000", "Vel.A",
                             "ms-resource://Vel.A/resources/name", " ms-resource://Vel.A/name", "")});
    // A pass that meets the manifest at the moment when it is replaced finds it in use.
    EXPECT_TRUE(
        IsGolden(PassWith("CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x00000000)"),
                 {PackageIsInstalled(familyA, true), PackageIsInstalled(familyB, true),
                  Packages({PackageIsChanged(familyA, name, false, ""), PackageIsUnchanged(familyB, 1)}),
                  EmptyStartMenu(), BothAreSaved()}));
}

TEST_F(StoreRefreshLog, PackageThatIsGone)
{
    KeepPassing();
    m_sandbox.RemovePackage(L"A");
    // The package's record is kept and not written.
    EXPECT_TRUE(IsGolden(PassWith("CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)"),
                         {PackageIsInstalled(familyA, false), PackageIsInstalled(familyB, true),
                          Packages({PackageIsUnchanged(familyB, 1)}), EmptyStartMenu(),
                          Saved({emptyPackage, packageWithOneApplication})}));
}

} // namespace
