// The log of refresh passes over small Stores.
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/QueryFor.h"
#include "system/SlowManifest.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using standin::SetSetting;
using standin::Setting;
using test::IsGolden;
using test::Manifest;

// Pieces of the goldens.

// Both folders are there and empty.
constexpr char noShortcuts[] = R"(
    CQanhPackageManager::RefreshDesktopApps(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
    CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
    <allusers>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 2 <end>
    CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
    <allusers>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 2 <end>
    CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
    CQanhPackageManager::RefreshDesktopApps(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
    CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
    <roaming>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 2 <end>
    CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
    <roaming>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 2 <end>
    CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
)";

constexpr char settingIsRead[] = R"(
    CQanhManifestReader::LoadSetting IN
    CQanhReg::GetManifestReaderSetting IN
    CQanhReg::GetDWORDRegVal IN
    CQanhReg::GetDWORDRegVal OUT(0)
    CQanhReg::GetManifestReaderSetting OUT(1)
    CQanhManifestReader::LoadSetting OUT
)";

constexpr char applicationIsFound[] = R"(
    CQanhManifestReader::MoveToElementByName(Applications) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::MoveToElementByName(Application) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
)";

constexpr char displayNameIsTaken[] = R"(
    CQanhManifestReader::MoveToElementByName(VisualElements) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(DisplayName) IN
    CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
)";

constexpr char shortNameIsTaken[] = R"(
    CQanhManifestReader::MoveToElementByName(DefaultTile) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(ShortName) IN
    CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
)";

constexpr char noFurtherApplication[] = R"(
    CQanhManifestReader::MoveToElementByName(Application) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000001)
)";

std::string PackageIsInstalled(const std::string& family, bool is)
{
    return "\nQanhIsInstalled(" + family + ") IN\nCQanhPackageManager::IsInstalled(" + family +
           ") IN\nCQanhPackageManager::FindPackageByName(" + family + R"() IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = )" +
           (is ? "1" : "0") + ")\nQanhIsInstalled OUT(0x00000000)\n";
}

std::string PackageIsLookedUp(const std::string& family, std::size_t others, bool isFound)
{
    std::string golden = "\nCQanhAppNameList::GetPackage(" + family + ") IN\n";
    for (std::size_t record = 0; record < others + (isFound ? 1 : 0); ++record) {
        golden += "CQanhPackage::IsThisPackage(" + family + ") IN\nCQanhPackage::IsThisPackage OUT(" +
                  (record == others ? "1" : "0") + ")\n";
    }
    return golden + "CQanhAppNameList::GetPackage OUT\n";
}

// A manifest with one application whose names are plain.
std::string PlainNamesAreAdded(const std::string& displayName, const std::string& shortName)
{
    return std::string("\nCQanhManifestReader::AddAppsToPackage IN\n") + settingIsRead +
           "CQanhManifestReader::GetAppNameUsingXmlParser IN\n" + applicationIsFound + displayNameIsTaken +
           shortNameIsTaken + "CQanhPackage::AddApplication(" + displayName + ", " + shortName + R"() IN
        CQanhPackage::AddApplication OUT(0x00000000)
        )" +
           noFurtherApplication +
           R"(CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)
        CQanhManifestReader::AddAppsToPackage OUT(0x00000001)
        )";
}

std::string PackageIsNew(const std::string& family, std::size_t others, const std::string& applications)
{
    return "\nCQanhAppNameList::AddMetroPackage IN\n" + PackageIsLookedUp(family, others, false) +
           applications + R"(
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        )";
}

std::string PackageIsUnchanged(const std::string& family, std::size_t others)
{
    return "\nCQanhAppNameList::AddMetroPackage IN\n" + PackageIsLookedUp(family, others, true) +
           "CQanhAppNameList::AddMetroPackage OUT(0x00000000)\n";
}

constexpr char packagesBegin[] = R"(
    CQanhPackageManager::RefreshMetroApps IN
    CQanhPackageManager::GetPackageManager IN
    CQanhPackageManager::GetPackageManager OUT(0x00000000)
)";

constexpr char packagesEnd[] = "\nCQanhPackageManager::RefreshMetroApps OUT(0x00000000)\n";

constexpr char saveBegin[] =
    "\nCQanhAppNameList::Save(<local>\\Vel\\QanHelper\\TestHost\\AppNameList.xml) IN\n";

constexpr char emptyPackageIsWritten[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

constexpr char packageIsWritten[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhMetroApp::ToXmlNode IN
    CQanhMetroApp::ToXmlNode OUT(0x00000000)
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

constexpr char saveEnd[] = "\nCQanhAppNameList::Save OUT(0x00000000)\n";

constexpr char familyA[] = "Vel.A_0standin00000";
constexpr char familyB[] = "Vel.B_0standin00000";

class StoreRefreshLog : public testing::Test
{
protected:
    StoreRefreshLog()
    {
        test::MakeFolder(m_sandbox.CommonPrograms());
        test::MakeFolder(m_sandbox.UserPrograms());
    }

    // The lines of the first pass, up to where the file is saved.
    std::vector<std::string> FirstPass()
    {
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        m_sandbox.WaitForLogLine(test::passEnd);
        return Passes().at(0);
    }

    std::vector<std::vector<std::string>> Passes() const { return test::PassesOf(m_sandbox.Log()); }

    std::vector<std::string> PassWith(const std::string& line) const
    {
        return test::PassWith(line, m_sandbox.Log());
    }

    // Passes without a pause over two packages, the first two of them done.
    void KeepPassing()
    {
        m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
        m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "");
        m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        test::WaitForWholePass(m_sandbox);
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
};

TEST_F(StoreRefreshLog, NewPackages)
{
    m_sandbox.AddSamplePackage(L"Test.Faulty");  // its folder cannot be had
    m_sandbox.AddSamplePackage(L"Vel.Calendar"); // its names stand in its resources
    m_sandbox.AddSamplePackage(L"Vel.Runtime");  // has no applications
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(packagesBegin) +
                                          R"(
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(<error 0x80070003>)
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::GetPackage(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhAppNameList::GetPackage OUT
        CQanhManifestReader::AddAppsToPackage IN
        CQanhManifestReader::LoadSetting IN
        CQanhReg::GetManifestReaderSetting IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(0)
        CQanhReg::GetManifestReaderSetting OUT(1)
        CQanhManifestReader::LoadSetting OUT
        CQanhManifestReader::GetAppNameUsingXmlParser IN
        CQanhManifestReader::MoveToElementByName(Applications) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(VisualElements) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::GetAttributeValueByName(DisplayName) IN
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:calendarname, Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta, Vel.Calendar, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta?ms-resource://Vel.Calendar/resources/calendarname})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = Calendar)
        CQanhManifestReader::MoveToElementByName(DefaultTile) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::GetAttributeValueByName(ShortName) IN
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:calendarshort, Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta, Vel.Calendar, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta?ms-resource://Vel.Calendar/resources/calendarshort})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = Days)
        CQanhPackage::AddApplication(Calendar, Days) IN
        CQanhPackage::AddApplication OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)
        CQanhManifestReader::AddAppsToPackage OUT(0x00000001)
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::GetPackage(Vel.Runtime_1vel7kq0n3rta) IN
        CQanhPackage::IsThisPackage(Vel.Runtime_1vel7kq0n3rta) IN
        CQanhPackage::IsThisPackage OUT(0)
        CQanhAppNameList::GetPackage OUT
        CQanhManifestReader::AddAppsToPackage IN
        CQanhManifestReader::LoadSetting IN
        CQanhReg::GetManifestReaderSetting IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(0)
        CQanhReg::GetManifestReaderSetting OUT(1)
        CQanhManifestReader::LoadSetting OUT
        CQanhManifestReader::GetAppNameUsingXmlParser IN
        CQanhManifestReader::MoveToElementByName(Applications) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)
        CQanhManifestReader::AddAppsToPackage OUT(0x00000001)
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
        )" + noShortcuts + saveBegin + packageIsWritten +
                                          emptyPackageIsWritten + saveEnd));
}

TEST_F(StoreRefreshLog, TextsThatAreFoundElsewhereOrNotAtAll)
{
    m_sandbox.WritePackage(
        L"A", Manifest("Vel.A", "1.0.0.0", "ms-resource:/Deep/Name/", "ms-resource:///Not/There"),
        "[en-US]\nDeep/Name = Found late\n");
    EXPECT_TRUE(
        IsGolden(FirstPass(),
                 packagesBegin +
                     PackageIsNew(familyA, 0,
                                  std::string("CQanhManifestReader::AddAppsToPackage IN\n") + settingIsRead +
                                      "CQanhManifestReader::GetAppNameUsingXmlParser IN\n" +
                                      applicationIsFound + displayNameIsTaken + R"(
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:/deep/name/, Vel.A_1.0.0.0_neutral__0standin00000, Vel.A, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.A_1.0.0.0_neutral__0standin00000?ms-resource://Vel.A/resources/deep/name})
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.A_1.0.0.0_neutral__0standin00000? ms-resource://Vel.A/deep/name})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = Found late)
        )" + shortNameIsTaken + R"(
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:///not/there, Vel.A_1.0.0.0_neutral__0standin00000, Vel.A, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.A_1.0.0.0_neutral__0standin00000?ms-resource://Vel.A/not/there})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = )
        CQanhPackage::AddApplication(Found late, ms-resource:///not/there) IN
        CQanhPackage::AddApplication OUT(0x00000000)
        )" + noFurtherApplication + R"(
        CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)
        CQanhManifestReader::AddAppsToPackage OUT(0x00000001)
        )") + packagesEnd +
                     noShortcuts + saveBegin + packageIsWritten + saveEnd));
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
    EXPECT_TRUE(IsGolden(
        pass, packagesBegin +
                  PackageIsNew("Test.NoManifest_9test0p6zjcqm", 0,
                               std::string("CQanhManifestReader::AddAppsToPackage IN\n") + settingIsRead + R"(
        CQanhManifestReader::GetAppNameUsingXmlParser IN
        CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80070002)
        CQanhManifestReader::AddAppsToPackage OUT(0x80070002)
        )") +
                  PackageIsNew("Vel.Z_0standin00000", 1,
                               std::string("CQanhManifestReader::AddAppsToPackage IN\n") + settingIsRead + R"(
        CQanhManifestReader::GetAppNameUsingXmlParser IN
        CQanhManifestReader::MoveToElementByName(Applications) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0xC00CEE3B)
        CQanhManifestReader::GetAppNameUsingXmlParser OUT(0xC00CEE3B)
        CQanhManifestReader::AddAppsToPackage OUT(0xC00CEE3B)
        )") + packagesEnd));
}

TEST_F(StoreRefreshLog, PackagesReadByThePlatform)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    m_sandbox.AddSamplePackage(L"Vel.Post");
    EXPECT_TRUE(IsGolden(FirstPass(), packagesBegin + PackageIsNew("Vel.Post_1vel7kq0n3rta", 0, R"(
        CQanhManifestReader::AddAppsToPackage IN
        CQanhManifestReader::LoadSetting IN
        CQanhReg::GetManifestReaderSetting IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(1)
        CQanhReg::GetManifestReaderSetting OUT(0)
        CQanhManifestReader::LoadSetting OUT
        CQanhManifestReader::GetAppNameUsingAPI IN
        CQanhPackage::AddApplication(ms-resource:/Post/Name/, (null)) IN
        CQanhPackage::AddApplication OUT(0x00000000)
        CQanhPackage::AddApplication(ms-resource:///Resources/PeopleName, (null)) IN
        CQanhPackage::AddApplication OUT(0x00000000)
        CQanhManifestReader::GetAppNameUsingAPI OUT(0x00000000)
        CQanhManifestReader::AddAppsToPackage OUT(0x00000000)
        )") + packagesEnd + noShortcuts + saveBegin +
                                          R"(
        CQanhPackage::ToXmlNode IN
        CQanhMetroApp::ToXmlNode IN
        CQanhMetroApp::ToXmlNode OUT(0x00000000)
        CQanhMetroApp::ToXmlNode IN
        CQanhMetroApp::ToXmlNode OUT(0x00000000)
        CQanhPackage::ToXmlNode OUT(0x00000000)
        )" + saveEnd));
}

TEST_F(StoreRefreshLog, PlatformsManifestReaderThatFails)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    SetSetting(Setting::FailManifestFactory, static_cast<DWORD>(E_ACCESSDENIED));
    m_sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_TRUE(IsGolden(FirstPass(), packagesBegin + PackageIsNew("Vel.Calendar_1vel7kq0n3rta", 0, R"(
        CQanhManifestReader::AddAppsToPackage IN
        CQanhManifestReader::LoadSetting IN
        CQanhReg::GetManifestReaderSetting IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(1)
        CQanhReg::GetManifestReaderSetting OUT(0)
        CQanhManifestReader::LoadSetting OUT
        CQanhManifestReader::GetAppNameUsingAPI IN
        CQanhManifestReader::GetAppNameUsingAPI OUT(0x80070005)
        CQanhManifestReader::AddAppsToPackage OUT(0x80070005)
        )") + packagesEnd + noShortcuts + saveBegin +
                                          emptyPackageIsWritten + saveEnd));
}

TEST_F(StoreRefreshLog, PackagesThatAreKnown)
{
    KeepPassing();
    m_host.Do("finalize");
    EXPECT_TRUE(IsGolden(Passes().at(0),
                         packagesBegin + PackageIsNew(familyA, 0, PlainNamesAreAdded("first", "1")) +
                             PackageIsNew(familyB, 1, PlainNamesAreAdded("second", "2")) + packagesEnd +
                             noShortcuts + saveBegin + packageIsWritten + packageIsWritten + saveEnd));
    EXPECT_TRUE(IsGolden(Passes().at(1), PackageIsInstalled(familyA, true) +
                                             PackageIsInstalled(familyB, true) + packagesBegin +
                                             PackageIsUnchanged(familyA, 0) + PackageIsUnchanged(familyB, 1) +
                                             packagesEnd + noShortcuts + saveBegin + packageIsWritten +
                                             packageIsWritten + saveEnd));
}

TEST_F(StoreRefreshLog, PackageWithAnotherVersion)
{
    KeepPassing();
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.1", "Primary", "I"), "");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_TRUE(
        IsGolden(PassWith("CQanhPackage::DeleteAllApp IN"),
                 PackageIsInstalled(familyA, true) + PackageIsInstalled(familyB, true) + packagesBegin +
                     "CQanhAppNameList::AddMetroPackage IN\n" + PackageIsLookedUp(familyA, 0, true) +
                     "CQanhManifestReader::IsCanGetAppNameFromManifest IN\n" + applicationIsFound +
                     displayNameIsTaken + shortNameIsTaken + noFurtherApplication + R"(
        CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x00000001)
        CQanhPackage::DeleteAllApp IN
        CQanhPackage::DeleteAllApp OUT
        )" + PlainNamesAreAdded("primary", "i") +
                     "CQanhAppNameList::AddMetroPackage OUT(0x00000001)\n" + PackageIsUnchanged(familyB, 1) +
                     packagesEnd + noShortcuts + saveBegin + packageIsWritten + packageIsWritten + saveEnd));
}

TEST_F(StoreRefreshLog, PackageWithAnotherVersionWhoseNameCannotBeRead)
{
    KeepPassing();
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.1", "ms-resource:Name", "I"), "");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_TRUE(
        IsGolden(PassWith("CQanhManifestReader::IsCanGetAppNameFromManifest IN"),
                 PackageIsInstalled(familyA, true) + PackageIsInstalled(familyB, true) + packagesBegin +
                     "CQanhAppNameList::AddMetroPackage IN\n" + PackageIsLookedUp(familyA, 0, true) +
                     "CQanhManifestReader::IsCanGetAppNameFromManifest IN\n" + applicationIsFound +
                     displayNameIsTaken + R"(
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:name, Vel.A_1.0.0.1_neutral__0standin00000, Vel.A, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.A_1.0.0.1_neutral__0standin00000?ms-resource://Vel.A/resources/name})
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.A_1.0.0.1_neutral__0standin00000? ms-resource://Vel.A/name})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = )
        CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        )" + PackageIsUnchanged(familyB, 1) +
                     packagesEnd + noShortcuts + saveBegin + packageIsWritten + packageIsWritten + saveEnd));
}

TEST_F(StoreRefreshLog, PackageAndShortcutThatAreGone)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    KeepPassing();
    // The shortcut first: a pass that misses the package, at which it looks first, misses the shortcut too.
    DeleteFileW((m_sandbox.CommonPrograms() + L"\\A.lnk").c_str());
    m_sandbox.RemovePackage(L"A");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    // The package's record and the shortcut's are kept and not written.
    EXPECT_TRUE(IsGolden(PassWith("CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)"),
                         PackageIsInstalled(familyA, false) + PackageIsInstalled(familyB, true) +
                             packagesBegin + PackageIsUnchanged(familyB, 1) + packagesEnd + noShortcuts +
                             saveBegin + emptyPackageIsWritten + packageIsWritten + R"(
        CQanhDesktopApp::ToXmlNode IN
        CQanhDesktopApp::ToXmlNode OUT(0x00000001)
        )" + saveEnd));
}

TEST_F(StoreRefreshLog, PackageManagerThatCannotBeHad)
{
    SetSetting(Setting::FailPackageFactory, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(R"(
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager <error 0x80070005>
        CQanhPackageManager::RefreshMetroApps OUT(GetPackageManager Failed.)
        CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 <end>
        )") + noShortcuts + saveBegin + saveEnd));
}

TEST_F(StoreRefreshLog, PackageManagerThatCannotBeMade)
{
    SetSetting(Setting::FailPackageManager, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(R"(
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager <error 0x80070005>
        CQanhPackageManager::RefreshMetroApps OUT(GetPackageManager Failed.)
        CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 <end>
        )") + noShortcuts + saveBegin + saveEnd));
}

TEST_F(StoreRefreshLog, PackagesThatCannotBeFound)
{
    SetSetting(Setting::FailFindAll, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(packagesBegin) + R"(
        CQanhPackageManager::RefreshMetroApps OUT(<error 0x80070005>)
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
        CQanhPackageManager::RefreshMetroApps OUT(<error 0x80070005>)
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
        CQanhAppNameList::AddMetroPackage OUT(<error 0x80070005>)
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
