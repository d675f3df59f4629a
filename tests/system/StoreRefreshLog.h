#pragma once

#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

namespace store_refresh_log {

// Pieces of the goldens.

// Both folders are there and empty.
inline constexpr char noShortcuts[] = R"(
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

inline constexpr char settingIsRead[] = R"(
    CQanhManifestReader::LoadSetting IN
    CQanhReg::GetManifestReaderSetting IN
    CQanhReg::GetDWORDRegVal IN
    CQanhReg::GetDWORDRegVal OUT(0)
    CQanhReg::GetManifestReaderSetting OUT(1)
    CQanhManifestReader::LoadSetting OUT
)";

inline constexpr char applicationIsFound[] = R"(
    CQanhManifestReader::MoveToElementByName(Applications) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::MoveToElementByName(Application) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
)";

inline constexpr char displayNameIsTaken[] = R"(
    CQanhManifestReader::MoveToElementByName(VisualElements) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(DisplayName) IN
    CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
)";

inline constexpr char shortNameIsTaken[] = R"(
    CQanhManifestReader::MoveToElementByName(DefaultTile) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(ShortName) IN
    CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)
)";

inline constexpr char noFurtherApplication[] = R"(
    CQanhManifestReader::MoveToElementByName(Application) IN
    CQanhManifestReader::MoveToElementByName OUT(0x00000001)
)";

inline std::string PackageIsInstalled(const std::string& family, bool is)
{
    return "\nQanhIsInstalled(" + family + ") IN\nCQanhPackageManager::IsInstalled(" + family +
           ") IN\nCQanhPackageManager::FindPackageByName(" + family + R"() IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = )" +
           (is ? "1" : "0") + ")\nQanhIsInstalled OUT(0x00000000)\n";
}

inline std::string PackageIsLookedUp(const std::string& family, std::size_t others, bool isFound)
{
    std::string golden = "\nCQanhAppNameList::GetPackage(" + family + ") IN\n";
    for (std::size_t record = 0; record < others + (isFound ? 1 : 0); ++record) {
        golden += "CQanhPackage::IsThisPackage(" + family + ") IN\nCQanhPackage::IsThisPackage OUT(" +
                  (record == others ? "1" : "0") + ")\n";
    }
    return golden + "CQanhAppNameList::GetPackage OUT\n";
}

// A manifest with one application whose names are plain.
inline std::string PlainNamesAreAdded(const std::string& displayName, const std::string& shortName)
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

inline std::string PackageIsNew(const std::string& family, std::size_t others,
                                const std::string& applications)
{
    return "\nCQanhAppNameList::AddMetroPackage IN\n" + PackageIsLookedUp(family, others, false) +
           applications + R"(
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        )";
}

inline std::string PackageIsUnchanged(const std::string& family, std::size_t others)
{
    return "\nCQanhAppNameList::AddMetroPackage IN\n" + PackageIsLookedUp(family, others, true) +
           "CQanhAppNameList::AddMetroPackage OUT(0x00000000)\n";
}

inline constexpr char packagesBegin[] = R"(
    CQanhPackageManager::RefreshMetroApps IN
    CQanhPackageManager::GetPackageManager IN
    CQanhPackageManager::GetPackageManager OUT(0x00000000)
)";

inline constexpr char packagesEnd[] = "\nCQanhPackageManager::RefreshMetroApps OUT(0x00000000)\n";

inline constexpr char saveBegin[] =
    "\nCQanhAppNameList::Save(<local>\\Vel\\QanHelper\\TestHost\\AppNameList.xml) IN\n";

inline constexpr char emptyPackageIsWritten[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

inline constexpr char packageIsWritten[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhMetroApp::ToXmlNode IN
    CQanhMetroApp::ToXmlNode OUT(0x00000000)
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

inline constexpr char saveEnd[] = "\nCQanhAppNameList::Save OUT(0x00000000)\n";

inline constexpr char familyA[] = "Vel.A_0standin00000";
inline constexpr char familyB[] = "Vel.B_0standin00000";

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
        m_sandbox.WritePackage(L"A", test::Manifest("Vel.A", "1.0.0.0", "First", "1"), "");
        m_sandbox.WritePackage(L"B", test::Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        test::WaitForWholePass(m_sandbox);
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
};

} // namespace store_refresh_log
