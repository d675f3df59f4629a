#pragma once

#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"
#include "system/ManifestGoldens.h"
#include "system/PassGoldens.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

namespace test {

inline constexpr char familyA[] = "Vel.A_0standin00000";
inline constexpr char familyB[] = "Vel.B_0standin00000";

// Pieces of the goldens, beside those of every pass and of every manifest.

// A manifest that is read here, or by the platform, with its result.
inline std::string ManifestIsRead(std::string_view reading, std::string_view result, bool isHere = true)
{
    return Filled(R"(
        CQanhManifestReader::AddAppsToPackage IN
        CQanhManifestReader::LoadSetting IN
        CQanhReg::GetManifestReaderSetting IN
        CQanhReg::GetDWORDRegVal IN ... OUT(<4>)
        CQanhReg::GetManifestReaderSetting OUT(<5>)
        CQanhManifestReader::LoadSetting OUT
        CQanhManifestReader::<1> IN
        <2>
        CQanhManifestReader::<1> OUT(<3>)
        CQanhManifestReader::AddAppsToPackage OUT(<3>)
    )",
                  {isHere ? "GetAppNameUsingXmlParser" : "GetAppNameUsingAPI", reading, result,
                   isHere ? "0" : "1", isHere ? "1" : "0"});
}

// A manifest that cannot be.
inline std::string ManifestIsRefused(std::string_view reading, std::string_view result, bool isHere = true)
{
    return ManifestIsRead(reading, result, isHere) +
           Filled("CQanhAppNameList::AddMetroPackage Error (<1>)", {result});
}

// A manifest with one application whose names are plain.
inline std::string PlainNamesAreAdded(std::string_view displayName, std::string_view shortName)
{
    return ManifestIsRead(Joined({applicationIsFound, displayNameIsTaken, shortNameIsTaken,
                                  ApplicationIsAdded(displayName, shortName), noFurtherApplication}),
                          "0x00000001");
}

inline std::string PackageIsLookedUp(std::string_view family, std::size_t others, bool isFound)
{
    std::string records;
    for (std::size_t record = 0; record < others; ++record) {
        records += "CQanhPackage::IsThisPackage(<1>) IN ... OUT(0)\n";
    }
    if (isFound) {
        records += "CQanhPackage::IsThisPackage(<1>) IN ... OUT(1)\n";
    }
    return Filled("CQanhAppNameList::GetPackage(<1>) IN\n" + records + "CQanhAppNameList::GetPackage OUT",
                  {family});
}

inline std::string PackageIsNew(std::string_view family, std::size_t others, std::string_view manifest)
{
    return Filled(R"(
        CQanhAppNameList::AddMetroPackage IN
        <1>
        <2>
        CQanhAppNameList::AddMetroPackage IN ... OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
    )",
                  {PackageIsLookedUp(family, others, false), manifest});
}

inline std::string PackageIsUnchanged(std::string_view family, std::size_t others)
{
    return Filled(R"(
        CQanhAppNameList::AddMetroPackage IN
        <1>
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
    )",
                  {PackageIsLookedUp(family, others, true)});
}

// A package whose version is another one: whether its names can be read is seen first.
inline std::string PackageIsChanged(std::string_view family, std::string_view look, bool canBeRead,
                                    std::string_view change)
{
    return Filled(R"(
        CQanhAppNameList::AddMetroPackage IN
        <1>
        CQanhManifestReader::IsCanGetAppNameFromManifest IN
        <2>
        CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x0000000<3>)
        <4>
        CQanhAppNameList::AddMetroPackage OUT(0x0000000<3>)
    )",
                  {PackageIsLookedUp(family, 0, true), look, canBeRead ? "1" : "0", change});
}

// Two packages that are written to the file with their application.
inline std::string BothAreSaved()
{
    return Saved({packageWithOneApplication, packageWithOneApplication});
}

class RefreshLog : public testing::Test
{
protected:
    // The lines of the first pass.
    std::vector<std::string> FirstPass()
    {
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        m_sandbox.WaitForLogLine(passEnd);
        return Passes().at(0);
    }

    std::vector<std::vector<std::string>> Passes() const { return PassesOf(m_sandbox.Log()); }

    Sandbox m_sandbox;
    HostProcess m_host{m_sandbox};
};

// With a Start menu that holds nothing.
class StoreRefreshLog : public RefreshLog
{
protected:
    StoreRefreshLog()
    {
        MakeFolder(m_sandbox.CommonPrograms());
        MakeFolder(m_sandbox.UserPrograms());
    }

    // Packages of the families A and B.
    void WriteA(const std::string& ini = "") { m_sandbox.WritePackage(L"A", manifestOfA, ini); }
    void WriteB(const std::string& ini = "")
    {
        m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), ini);
    }

    // Passes without a pause over these two, two of them done.
    void KeepPassing()
    {
        m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
        WriteA();
        WriteB();
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        WaitForWholePass(m_sandbox);
    }

    // The first pass with such a line, of those up to one that begins from now on.
    std::vector<std::string> PassWith(const std::string& line)
    {
        WaitForWholePass(m_sandbox);
        m_host.Do("finalize");
        return test::PassWith(line, m_sandbox.Log());
    }

    const std::string manifestOfA = Manifest("Vel.A", "1.0.0.0", "First", "1");
};

} // namespace test
