// The whole log of one question about the Store, for each answer and each failure.
#include "standin/Settings.h"
#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"

#include <gtest/gtest.h>

namespace {

using standin::SetSetting;
using standin::Setting;
using test::IsGolden;
using test::Manifest;

class StoreQueryLog : public testing::Test
{
protected:
    // The library is up as long as the test lasts; its refresh thread writes nothing.
    StoreQueryLog()
    {
        test::MakeFolder(m_sandbox.CatalogFolder());
        m_host.Do("line-up");
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        m_sandbox.UseSamplePackages();
    }

    // The log of a command alone.
    std::vector<std::string> Ask(const std::string& command, const std::string& answer)
    {
        const std::size_t offset = m_sandbox.LogLength();
        EXPECT_EQ(m_host.Command(command), answer);
        return m_sandbox.Log(offset);
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
};

TEST_F(StoreQueryLog, InstalledPackage)
{
    EXPECT_TRUE(IsGolden(Ask("installed\tVel.Calendar_1vel7kq0n3rta", "0x00000000\t1"), R"(
        QanhIsInstalled(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::IsInstalled(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::FindPackageByName(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 1)
        QanhIsInstalled OUT(0x00000000)
    )"));
}

TEST_F(StoreQueryLog, UnknownPackage)
{
    EXPECT_TRUE(IsGolden(Ask("installed\tNobody.Knows_1vel7kq0n3rta", "0x00000000\t0"), R"(
        QanhIsInstalled(Nobody.Knows_1vel7kq0n3rta) IN
        CQanhPackageManager::IsInstalled(Nobody.Knows_1vel7kq0n3rta) IN
        CQanhPackageManager::FindPackageByName(Nobody.Knows_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)
        QanhIsInstalled OUT(0x00000000)
    )"));
}

TEST_F(StoreQueryLog, PackageManagerThatCannotBeHad)
{
    SetSetting(Setting::FailPackageFactory, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(Ask("installed\tVel.Calendar_1vel7kq0n3rta", "0x00000000\t0"), R"(
        QanhIsInstalled(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::IsInstalled(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::FindPackageByName(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager Access denied.
        CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)
        QanhIsInstalled OUT(0x00000000)
    )"));
    EXPECT_TRUE(
        IsGolden(Ask("installed-by-id\tMicrosoft.Office.Desktop_8wekyb3d8bbwe!Word", "0x00000000\t0"), R"(
        QanhIsInstalledByAppUserModeID(Microsoft.Office.Desktop_8wekyb3d8bbwe!Word) IN
        CQanhPackageManager::IsInstalledEx(Microsoft.Office.Desktop_8wekyb3d8bbwe) IN
        CQanhPackageManager::FindPackageByNameEx(Microsoft.Office.Desktop_8wekyb3d8bbwe) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager Access denied.
        CQanhPackageManager::FindPackageByNameEx OUT(GetPackageManager failed.)
        CQanhPackageManager::IsInstalledEx OUT(*pIsInstalled = 0)
        QanhIsInstalledByAppUserModeID OUT(0x00000000)
    )"));
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.Calendar_1vel7kq0n3rta", "0xA0000001\t(null)"), R"(
        QanhGetAppDisplayNameByPFN(Vel.Calendar_1vel7kq0n3rta, 0x<address>) IN
        CQanhPackageManager::GetAppDisplayNameByPFN(Vel.Calendar_1vel7kq0n3rta, 0x<address>) IN
        CQanhPackageManager::FindPackageByName(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager Access denied.
        CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)
        CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)
        QanhGetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)
        QanhReleaseString IN
        QanhReleaseString OUT
    )"));
}

TEST_F(StoreQueryLog, PackagesThatCannotBeFound)
{
    SetSetting(Setting::FailFindFamily, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.Calendar_1vel7kq0n3rta", "0x80004005\t(null)"), R"(
        QanhGetAppDisplayNameByPFN(Vel.Calendar_1vel7kq0n3rta, 0x<address>) IN
        CQanhPackageManager::GetAppDisplayNameByPFN(Vel.Calendar_1vel7kq0n3rta, 0x<address>) IN
        CQanhPackageManager::FindPackageByName(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::GetAppDisplayNameByPFN OUT(Access denied.)
        QanhGetAppDisplayNameByPFN OUT(0x80004005) DisplayName = (null)
        QanhReleaseString IN
        QanhReleaseString OUT
    )"));
    EXPECT_TRUE(IsGolden(Ask("installed\tVel.Calendar_1vel7kq0n3rta", "0x80004005\t7"), R"(
        QanhIsInstalled(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::IsInstalled(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::FindPackageByName(Vel.Calendar_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::IsInstalled OUT(Access denied.)
        QanhIsInstalled OUT(0x80004005)
    )"));
}

TEST_F(StoreQueryLog, ApplicationById)
{
    EXPECT_TRUE(IsGolden(Ask("installed-by-id\tVel.Post_1vel7kq0n3rta!People", "0x00000000\t1"), R"(
        QanhIsInstalledByAppUserModeID(Vel.Post_1vel7kq0n3rta!People) IN
        CQanhPackageManager::IsInstalled(Vel.Post_1vel7kq0n3rta) IN
        CQanhPackageManager::FindPackageByName(Vel.Post_1vel7kq0n3rta) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 1)
        QanhIsInstalledByAppUserModeID OUT(0x00000000)
    )"));
}

TEST_F(StoreQueryLog, FamilyInThePlaceOfAnId)
{
    EXPECT_TRUE(IsGolden(Ask("installed-by-id\tTest.NotInstalled_9test0p6zjcqm", "0x00000000\t0"), R"(
        QanhIsInstalledByAppUserModeID(Test.NotInstalled_9test0p6zjcqm) IN
        CQanhPackageManager::IsInstalled(Test.NotInstalled_9test0p6zjcqm) IN
        CQanhPackageManager::FindPackageByName(Test.NotInstalled_9test0p6zjcqm) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)
        QanhIsInstalledByAppUserModeID OUT(0x00000000)
    )"));
}

TEST_F(StoreQueryLog, IdWithoutAFamily)
{
    EXPECT_TRUE(IsGolden(Ask("installed-by-id\t!App", "0x80070057\t7"), R"(
        QanhIsInstalledByAppUserModeID(!App) IN
        CQanhPackageManager::IsInstalled() IN
        CQanhPackageManager::IsInstalled OUT(0x80070057)
        QanhIsInstalledByAppUserModeID OUT(0x80070057)
    )"));
}

TEST_F(StoreQueryLog, ApplicationOfTheSpecialFamily)
{
    EXPECT_TRUE(
        IsGolden(Ask("installed-by-id\tMICROSOFT.Office.Desktop_8wekyb3d8bbwe!Word", "0x00000000\t0"), R"(
        QanhIsInstalledByAppUserModeID(MICROSOFT.Office.Desktop_8wekyb3d8bbwe!Word) IN
        CQanhPackageManager::IsInstalledEx(MICROSOFT.Office.Desktop_8wekyb3d8bbwe) IN
        CQanhPackageManager::FindPackageByNameEx(MICROSOFT.Office.Desktop_8wekyb3d8bbwe) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByNameEx OUT
        CQanhPackageManager::IsInstalledEx OUT(*pIsInstalled = 0)
        QanhIsInstalledByAppUserModeID OUT(0x00000000)
    )"));
    SetSetting(Setting::FailFindFamily, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_TRUE(
        IsGolden(Ask("installed-by-id\tMicrosoft.Office.Desktop_8wekyb3d8bbwe!Word", "0x80004005\t7"), R"(
        QanhIsInstalledByAppUserModeID(Microsoft.Office.Desktop_8wekyb3d8bbwe!Word) IN
        CQanhPackageManager::IsInstalledEx(Microsoft.Office.Desktop_8wekyb3d8bbwe) IN
        CQanhPackageManager::FindPackageByNameEx(Microsoft.Office.Desktop_8wekyb3d8bbwe) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::IsInstalledEx OUT(Access denied.)
        QanhIsInstalledByAppUserModeID OUT(0x80004005)
    )"));
}

// The lines around the reading of a package's manifest. Of the display name the log holds what stands before
// its first zero byte: the first letter of a Latin name.
std::string DisplayName(const std::string& family, const std::string& reading, const std::string& exit)
{
    return "\nQanhGetAppDisplayNameByPFN(" + family +
           ", 0x<address>) IN\nCQanhPackageManager::GetAppDisplayNameByPFN(" + family +
           ", 0x<address>) IN\nCQanhPackageManager::FindPackageByName(" + family + R"() IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhManifestReader::GetAppDisplayName IN
        )" +
           reading + "\nCQanhPackageManager::GetAppDisplayNameByPFN " + exit +
           "\nQanhGetAppDisplayNameByPFN " + exit + R"(
        QanhReleaseString IN
        QanhReleaseString OUT
    )";
}

constexpr char attributeIsFound[] = R"(
    CQanhManifestReader::MoveToElementByName(Applications) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::MoveToElementByName(Application) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::MoveToElementByName(VisualElements) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(DisplayName) IN
)";

TEST_F(StoreQueryLog, PlainDisplayName)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tLumen.Photos_5lum2d8xw4yhe", "0x00000000\tphoto album"),
                         DisplayName("Lumen.Photos_5lum2d8xw4yhe", std::string(attributeIsFound) + R"(
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::GetAppDisplayName OUT(0x00000000)
        )",
                                     "OUT(0x00000000) DisplayName = p")));
}

TEST_F(StoreQueryLog, DisplayNameFromTheResources)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.Calendar_1vel7kq0n3rta", "0x00000000\tCalendar"),
                         DisplayName("Vel.Calendar_1vel7kq0n3rta", std::string(attributeIsFound) + R"(
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:calendarname, Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta, Vel.Calendar, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta?ms-resource://Vel.Calendar/resources/calendarname})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = Calendar)
        CQanhManifestReader::GetAppDisplayName OUT(0x00000000)
        )",
                                     "OUT(0x00000000) DisplayName = C")));
}

TEST_F(StoreQueryLog, DisplayNameThatLeadsNowhere)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tTest.Unresolvable_9test0p6zjcqm", "0x80004005\t"),
                         DisplayName("Test.Unresolvable_9test0p6zjcqm", std::string(attributeIsFound) + R"(
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::ConvertMsResourceToString(ms-resource:nosuchname, Test.Unresolvable_3.0.0.0_neutral__9test0p6zjcqm, Test.Unresolvable, , 256) IN
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Test.Unresolvable_3.0.0.0_neutral__9test0p6zjcqm?ms-resource://Test.Unresolvable/resources/nosuchname})
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{Test.Unresolvable_3.0.0.0_neutral__9test0p6zjcqm? ms-resource://Test.Unresolvable/nosuchname})
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = )
        CQanhManifestReader::GetAppDisplayName OUT(0x80004005)
        )",
                                     "OUT(0x80004005) DisplayName = <end>")));
}

TEST_F(StoreQueryLog, MissingDisplayName)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tTest.NoDisplayName_9test0p6zjcqm", "0x00000001\t"),
                         DisplayName("Test.NoDisplayName_9test0p6zjcqm", std::string(attributeIsFound) + R"(
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000001)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::GetAppDisplayName OUT(0x00000001)
        )",
                                     "OUT(0x00000001) DisplayName = <end>")));
}

TEST_F(StoreQueryLog, SeveralApplications)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.Post_1vel7kq0n3rta", "0xA0000002\t(null)"),
                         DisplayName("Vel.Post_1vel7kq0n3rta", std::string(attributeIsFound) + R"(
        CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::GetAppDisplayName OUT(0xA0000002)
        )",
                                     "OUT(0xA0000002) DisplayName = (null)")));
}

TEST_F(StoreQueryLog, NoApplication)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.Runtime_1vel7kq0n3rta", "0x80004005\t(null)"),
                         DisplayName("Vel.Runtime_1vel7kq0n3rta", R"(
        CQanhManifestReader::MoveToElementByName(Applications) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::GetAppDisplayName OUT(0x80004005)
        )",
                                     "OUT(0x80004005) DisplayName = (null)")));
}

TEST_F(StoreQueryLog, ApplicationWithoutVisualElements)
{
    standin::SetPackageStorePath(m_sandbox.Packages());
    m_sandbox.WritePackage(L"A",
                           "<Package><Identity Name=\"Vel.A\" Version=\"1.0.0.0\"/><Applications>"
                           "<Application/></Applications></Package>",
                           "");
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.A_0standin00000", "0x80004005\t(null)"),
                         DisplayName("Vel.A_0standin00000", R"(
        CQanhManifestReader::MoveToElementByName(Applications) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(Application) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000000)
        CQanhManifestReader::MoveToElementByName(VisualElements) IN
        CQanhManifestReader::MoveToElementByName OUT(0x00000001)
        CQanhManifestReader::GetAppDisplayName OUT(0x80004005)
        )",
                                     "OUT(0x80004005) DisplayName = (null)")));
}

TEST_F(StoreQueryLog, ManifestThatIsNotThere)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tTest.NoManifest_9test0p6zjcqm", "0x80070002\t(null)"),
                         DisplayName("Test.NoManifest_9test0p6zjcqm",
                                     "CQanhManifestReader::GetAppDisplayName OUT(0x80070002)",
                                     "OUT(0x80070002) DisplayName = (null)")));
}

TEST_F(StoreQueryLog, ManifestThatIsNotWellFormed)
{
    standin::SetPackageStorePath(m_sandbox.Packages());
    m_sandbox.WritePackage(L"A", "<Package><Identity Name=\"Vel.A\" Version=\"1.0.0.0\"/></Packages>", "");
    EXPECT_TRUE(IsGolden(Ask("display-name\tVel.A_0standin00000", "0xC00CEE3B\t(null)"),
                         DisplayName("Vel.A_0standin00000", R"(
        CQanhManifestReader::MoveToElementByName(Applications) IN
        CQanhManifestReader::MoveToElementByName OUT(0xC00CEE3B)
        CQanhManifestReader::GetAppDisplayName OUT(0xC00CEE3B)
        )",
                                     "OUT(0xC00CEE3B) DisplayName = (null)")));
}

TEST_F(StoreQueryLog, InstallFolderThatCannotBeHad)
{
    EXPECT_TRUE(IsGolden(Ask("display-name\tTest.Faulty_9test0p6zjcqm", "0x80004005\t(null)"),
                         DisplayName("Test.Faulty_9test0p6zjcqm",
                                     "CQanhManifestReader::GetAppDisplayName OUT(Path not found.)",
                                     "OUT(0x80004005) DisplayName = (null)")));
}

} // namespace
