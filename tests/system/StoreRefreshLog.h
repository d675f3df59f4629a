#pragma once

#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"
#include "system/PassGoldens.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

namespace store_refresh_log {

// Pieces of the goldens, beside those of every pass.

using test::emptyPackageIsWritten;
using test::noShortcuts;
using test::PackageIsInstalled;
using test::packageIsWritten;
using test::packagesBegin;
using test::packagesEnd;
using test::saveBegin;
using test::saveEnd;

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
