// The whole log of one question about the Store, for each answer and each failure.
#include "standin/Settings.h"
#include "system/HostProcess.h"
#include "system/ManifestGoldens.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

using namespace test;
using standin::SetSetting;
using standin::Setting;

constexpr char office[] = "Microsoft.Office.Desktop_8wekyb3d8bbwe";
constexpr char calendar[] = "Vel.Calendar_1vel7kq0n3rta";
constexpr auto denied = static_cast<DWORD>(E_ACCESSDENIED);

// How a family's packages are looked for, and what becomes of the question.
struct Search
{
    const char* finding;
    const char* outcome;
};

constexpr char isFound[] = R"(
    CQanhPackageManager::GetPackageManager IN ... OUT(0x00000000)
    CQanhPackageManager::FindPackageByName<1> OUT
)";
constexpr Search installed{isFound, "*pIsInstalled = 1"};
constexpr Search notInstalled{isFound, "*pIsInstalled = 0"};
constexpr Search withoutManager{R"(
    CQanhPackageManager::GetPackageManager IN ... Access denied.
    CQanhPackageManager::FindPackageByName<1> OUT(GetPackageManager failed.)
)",
                                "*pIsInstalled = 0"};
constexpr Search refused{"CQanhPackageManager::GetPackageManager IN ... OUT(0x00000000)", "Access denied."};

class StoreQueryLog : public testing::Test
{
protected:
    // The library is up as long as the test lasts; its refresh thread writes nothing.
    StoreQueryLog()
    {
        MakeFolder(m_sandbox.CatalogFolder());
        m_host.Do("line-up");
        EXPECT_EQ(m_host.Command("init"), "0x00000000");
        m_sandbox.UseSamplePackages();
    }

    // Asks whether something is installed; the suffix is that of the operations for the special family.
    void ExpectPackage(const std::string& family, const Search& search, const std::string& answer)
    {
        Expect("installed\t" + family, answer, "QanhIsInstalled", family, "", family, search);
    }
    void ExpectApplication(const std::string& id, const std::string& suffix, const std::string& family,
                           const Search& search, const std::string& answer)
    {
        Expect("installed-by-id\t" + id, answer, "QanhIsInstalledByAppUserModeID", id, suffix, family,
               search);
    }

    void Expect(const std::string& command, const std::string& answer, const std::string& export_,
                const std::string& argument, const std::string& suffix, const std::string& family,
                const Search& search)
    {
        EXPECT_TRUE(IsGolden(Ask(command, answer),
                             Filled(R"(
            <1>(<2>) IN
            CQanhPackageManager::IsInstalled<3>(<4>) IN
            CQanhPackageManager::FindPackageByName<3>(<4>) IN
            <5>
            CQanhPackageManager::IsInstalled<3> OUT(<6>)
            <1> OUT(<7>)
        )",
                                    {export_, argument, suffix, family, Filled(search.finding, {suffix}),
                                     search.outcome, answer.substr(0, answer.find('\t'))})));
    }

    // Asks for a display name. Of the name the log holds what stands before its first zero byte: the first
    // letter of a Latin name.
    void ExpectDisplayName(const std::string& family, const std::string& answer, const std::string& finding,
                           const std::string& exit, const std::string& innerExit)
    {
        EXPECT_TRUE(
            IsGolden(Ask("display-name\t" + family, answer), Filled(R"(
            QanhGetAppDisplayNameByPFN(<1>, 0x<address>) IN
            CQanhPackageManager::GetAppDisplayNameByPFN(<1>, 0x<address>) IN
            CQanhPackageManager::FindPackageByName(<1>) IN
            <2>
            CQanhPackageManager::GetAppDisplayNameByPFN <4>
            QanhGetAppDisplayNameByPFN <3>
            QanhReleaseString IN ... OUT
        )",
                                                                    {family, finding, exit, innerExit})));
    }

    // The log of a command alone.
    std::vector<std::string> Ask(const std::string& command, const std::string& answer)
    {
        const std::size_t offset = m_sandbox.LogLength();
        EXPECT_EQ(m_host.Command(command), answer);
        return m_sandbox.Log(offset);
    }

    Sandbox m_sandbox;
    HostProcess m_host{m_sandbox};
};

TEST_F(StoreQueryLog, PackagesAndApplicationsThatAreThereOrNot)
{
    ExpectPackage(calendar, installed, "0x00000000\t1");
    ExpectPackage("Nobody.Knows_1vel7kq0n3rta", notInstalled, "0x00000000\t0");
    ExpectApplication("Vel.Post_1vel7kq0n3rta!People", "", "Vel.Post_1vel7kq0n3rta", installed,
                      "0x00000000\t1");
    // A family in the place of an ID.
    constexpr char family[] = "Test.NotInstalled_9test0p6zjcqm";
    ExpectApplication(family, "", family, notInstalled, "0x00000000\t0");
}

TEST_F(StoreQueryLog, PackageManagerThatCannotBeHad)
{
    for (const Setting fault : {Setting::FailPackageFactory, Setting::FailPackageManager}) {
        SetSetting(fault, denied);
        ExpectPackage(calendar, withoutManager, "0x00000000\t0");
        ExpectApplication("Vel.Calendar_1vel7kq0n3rta!Calendar", "", calendar, withoutManager,
                          "0x00000000\t0");
        ExpectApplication("Microsoft.Office.Desktop_8wekyb3d8bbwe!Word", "Ex", office, withoutManager,
                          "0x00000000\t0");
        constexpr char exit[] = "OUT(0xA0000001) DisplayName = (null)";
        ExpectDisplayName(calendar, "0xA0000001\t(null)", Filled(withoutManager.finding, {""}), exit, exit);
        SetSetting(fault, 0);
    }
}

TEST_F(StoreQueryLog, PackagesThatCannotBeFound)
{
    SetSetting(Setting::FailFindFamily, denied);
    ExpectDisplayName(calendar, "0x80004005\t(null)", refused.finding, "OUT(0x80004005) DisplayName = (null)",
                      "OUT(Access denied.)");
    ExpectPackage(calendar, refused, "0x80004005\t7");
    ExpectApplication("Vel.Calendar_1vel7kq0n3rta!Calendar", "", calendar, refused, "0x80004005\t7");
}

TEST_F(StoreQueryLog, IdWithoutAFamily)
{
    EXPECT_TRUE(IsGolden(Ask("installed-by-id\t!App", "0x80070057\t7"), R"(
        QanhIsInstalledByAppUserModeID(!App) IN
        CQanhPackageManager::IsInstalled() IN ... OUT(0x80070057)
        QanhIsInstalledByAppUserModeID OUT(0x80070057)
    )"));
}

TEST_F(StoreQueryLog, ApplicationOfTheSpecialFamily)
{
    ExpectApplication("MICROSOFT.Office.Desktop_8wekyb3d8bbwe!Word", "Ex",
                      "MICROSOFT.Office.Desktop_8wekyb3d8bbwe", notInstalled, "0x00000000\t0");
    SetSetting(Setting::FailFindFamily, denied);
    ExpectApplication("Microsoft.Office.Desktop_8wekyb3d8bbwe!Word", "Ex", office, refused, "0x80004005\t7");
}

// What the reading of a manifest leaves, up to its result, and how the name stands in the log.
struct ReadName
{
    const char* name;
    const char* family;
    const char* answer;
    std::string reading;
    const char* exit;
};

void PrintTo(const ReadName& each, std::ostream* stream)
{
    *stream << each.name;
}

class StoreDisplayNameLog : public StoreQueryLog, public testing::WithParamInterface<ReadName>
{
};

TEST_P(StoreDisplayNameLog, IsWhole)
{
    m_sandbox.WritePackage(L"A",
                           "<Package><Identity Name=\"Vel.A\" Version=\"1.0.0.0\"/><Applications>"
                           "<Application/></Applications></Package>",
                           "");
    m_sandbox.WritePackage(L"B", "<Package><Identity Name=\"Vel.B\" Version=\"1.0.0.0\"/></Packages>", "");
    if (std::string(GetParam().family).ends_with("_0standin00000")) {
        standin::SetText(standin::TextSetting::PackageStore, m_sandbox.Packages());
    }
    ExpectDisplayName(
        GetParam().family, GetParam().answer,
        Joined({Filled(isFound, {""}), "CQanhManifestReader::GetAppDisplayName IN", GetParam().reading}),
        GetParam().exit, GetParam().exit);
}

// The result and what stands behind it.
std::string Result(const char* result)
{
    return Filled("CQanhManifestReader::GetAppDisplayName OUT(<1>)", {result});
}

INSTANTIATE_TEST_SUITE_P(
    Of, StoreDisplayNameLog,
    testing::Values(
        ReadName{"Plain", "Lumen.Photos_5lum2d8xw4yhe", "0x00000000\tphoto album",
                 Joined({applicationIsFound, displayNameIsTaken, noFurtherApplication, Result("0x00000000")}),
                 "OUT(0x00000000) DisplayName = p"},
        ReadName{"FromTheResources", calendar, "0x00000000\tCalendar",
                 Joined({applicationIsFound, displayNameIsTaken, noFurtherApplication,
                         TextIsSought("ms-resource:calendarname",
                                      "Vel.Calendar_2.1.0.14_neutral__1vel7kq0n3rta", "Vel.Calendar",
                                      "ms-resource://Vel.Calendar/resources/calendarname", "", "Calendar"),
                         Result("0x00000000")}),
                 "OUT(0x00000000) DisplayName = C"},
        ReadName{
            "LeadsNowhere", "Test.Unresolvable_9test0p6zjcqm", "0x80004005\t",
            Joined({applicationIsFound, displayNameIsTaken, noFurtherApplication,
                    TextIsSought("ms-resource:nosuchname", "Test.Unresolvable_3.0.0.0_neutral__9test0p6zjcqm",
                                 "Test.Unresolvable", "ms-resource://Test.Unresolvable/resources/nosuchname",
                                 " ms-resource://Test.Unresolvable/nosuchname", ""),
                    Result("0x80004005")}),
            "OUT(0x80004005) DisplayName = <end>"},
        ReadName{"Missing", "Test.NoDisplayName_9test0p6zjcqm", "0x00000001\t",
                 Joined({applicationIsFound, R"(
                     CQanhManifestReader::MoveToElementByName(VisualElements) IN ... OUT(0x00000000)
                     CQanhManifestReader::GetAttributeValueByName(DisplayName) IN ... OUT(0x00000001)
                 )",
                         noFurtherApplication, Result("0x00000001")}),
                 "OUT(0x00000001) DisplayName = <end>"},
        ReadName{"SeveralApplications", "Vel.Post_1vel7kq0n3rta", "0xA0000002\t(null)",
                 Joined({applicationIsFound, displayNameIsTaken, anotherApplication, Result("0xA0000002")}),
                 "OUT(0xA0000002) DisplayName = (null)"},
        ReadName{"NoApplication", "Vel.Runtime_1vel7kq0n3rta", "0x80004005\t(null)",
                 Joined({noApplicationIsFound, Result("0x80004005")}),
                 "OUT(0x80004005) DisplayName = (null)"},
        ReadName{"WithoutVisualElements", "Vel.A_0standin00000", "0x80004005\t(null)",
                 Joined({applicationIsFound,
                         "CQanhManifestReader::MoveToElementByName(VisualElements) IN ... OUT(0x00000001)",
                         Result("0x80004005")}),
                 "OUT(0x80004005) DisplayName = (null)"},
        ReadName{"ManifestThatIsNotThere", "Test.NoManifest_9test0p6zjcqm", "0x80070002\t(null)",
                 Result("0x80070002"), "OUT(0x80070002) DisplayName = (null)"},
        ReadName{"ManifestThatIsNotWellFormed", "Vel.B_0standin00000", "0xC00CEE3B\t(null)",
                 Joined({"CQanhManifestReader::MoveToElementByName(Applications) IN ... OUT(0xC00CEE3B)",
                         Result("0xC00CEE3B")}),
                 "OUT(0xC00CEE3B) DisplayName = (null)"},
        ReadName{"InstallFolderThatCannotBeHad", "Test.Faulty_9test0p6zjcqm", "0x80004005\t(null)",
                 Result("Path not found."), "OUT(0x80004005) DisplayName = (null)"}),
    [](const auto& each) { return std::string(each.param.name); });

} // namespace
