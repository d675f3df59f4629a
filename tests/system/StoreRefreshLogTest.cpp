// The log of refresh passes over small Stores: packages that are new, known, changed and gone.
#include "system/StoreRefreshLog.h"
#include "standin/Settings.h"

#include <algorithm>

namespace {

using namespace store_refresh_log;
using standin::SetSetting;
using standin::Setting;
using test::IsGolden;
using test::Manifest;

TEST_F(StoreRefreshLog, NewPackages)
{
    m_sandbox.AddSamplePackage(L"Test.Faulty");  // its folder cannot be had
    m_sandbox.AddSamplePackage(L"Vel.Calendar"); // its names stand in its resources
    m_sandbox.AddSamplePackage(L"Vel.Runtime");  // has no applications
    EXPECT_TRUE(IsGolden(FirstPass(), std::string(packagesBegin) +
                                          R"(
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(Path not found.)
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
        CQanhAppNameList::AddMetroPackage Error (0x80070002)
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
        CQanhAppNameList::AddMetroPackage Error (0xC00CEE3B)
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
        CQanhAppNameList::AddMetroPackage Error (0x80070005)
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

} // namespace
