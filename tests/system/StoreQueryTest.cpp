// What the library answers about the packages of the sample store, in every apartment.
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/HostProcess.h"

#include <gtest/gtest.h>

namespace {

using standin::SetSetting;
using standin::Setting;

class StoreQuery : public testing::Test
{
protected:
    StoreQuery() { m_sandbox.UseSamplePackages(); }

    std::string IsInstalled(const std::string& name) { return m_host.Command("installed\t" + name); }
    std::string IsInstalledById(const std::string& id) { return m_host.Command("installed-by-id\t" + id); }
    std::string DisplayName(const std::string& name) { return m_host.Command("display-name\t" + name); }

    // The family's second package becomes the installed one.
    void InstallTheOneWithDependencies()
    {
        standin::SetText(standin::TextSetting::PackageStore, m_sandbox.Packages());
        m_sandbox.AddSamplePackage(L"Office.Desktop.WithMail");
        const std::wstring ini = m_sandbox.Packages() + L"\\Office.Desktop.WithMail\\package.ini";
        std::string text = test::ReadFileBytes(ini);
        text.replace(text.find("installed = 0"), 13, "installed = 1");
        test::WriteFileBytes(ini, text);
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
};

constexpr char yes[] = "0x00000000\t1";
constexpr char no[] = "0x00000000\t0";

TEST_F(StoreQuery, TellsWhetherAPackageIsInstalled)
{
    EXPECT_EQ(IsInstalled("Vel.Calendar_1vel7kq0n3rta"), yes);
    EXPECT_EQ(IsInstalled("Vel.Runtime_1vel7kq0n3rta"), yes) << "a framework";
    EXPECT_EQ(IsInstalled("Test.NoManifest_9test0p6zjcqm"), yes) << "registered is enough";
    EXPECT_EQ(IsInstalled("VEL.CALENDAR_1VEL7KQ0N3RTA"), yes) << "the platform's comparison";
    EXPECT_EQ(IsInstalled("Test.NotInstalled_9test0p6zjcqm"), no) << "not for this user";
    EXPECT_EQ(IsInstalled("Nobody.Knows_1vel7kq0n3rta"), no);
    EXPECT_EQ(IsInstalled("Vel.Calendar"), no) << "a name is no family name";
    EXPECT_EQ(IsInstalled("Vel.Calendar_1vel7kq0n3rta!Calendar"), no) << "nor is an application's ID";
    EXPECT_EQ(IsInstalled("カレンダー"), no);
    EXPECT_EQ(IsInstalled(std::string(1000, 'x')), no);
}

TEST_F(StoreQuery, TellsWhetherAnApplicationIsInstalled)
{
    EXPECT_EQ(IsInstalledById("Vel.Calendar_1vel7kq0n3rta!Calendar"), yes);
    EXPECT_EQ(IsInstalledById("Vel.Calendar_1vel7kq0n3rta!NoSuchApplication"), yes) << "the package counts";
    EXPECT_EQ(IsInstalledById("Vel.Calendar_1vel7kq0n3rta!"), yes);
    EXPECT_EQ(IsInstalledById("Vel.Calendar_1vel7kq0n3rta"), yes) << "a family name alone";
    EXPECT_EQ(IsInstalledById("Vel.Calendar_1vel7kq0n3rta!Calendar!2"), no) << "split at the last mark";
    EXPECT_EQ(IsInstalledById("Test.NotInstalled_9test0p6zjcqm!App"), no);
    EXPECT_EQ(IsInstalledById("Nobody.Knows_1vel7kq0n3rta!App"), no);
    EXPECT_EQ(IsInstalledById("!Calendar"), "0x80070057\t7") << "no family name before the mark";
}

TEST_F(StoreQuery, ApplicationsOfTheSpecialFamilyAreToldByItsDependencies)
{
    constexpr char family[] = "Microsoft.Office.Desktop_8wekyb3d8bbwe";
    EXPECT_EQ(IsInstalledById(std::string(family) + "!Outlook"), no) << "a package without dependencies";
    EXPECT_EQ(IsInstalledById(family), yes) << "without a mark the family alone is asked for";
    InstallTheOneWithDependencies();
    EXPECT_EQ(IsInstalledById(std::string(family) + "!Outlook"), yes);
    EXPECT_EQ(IsInstalledById(std::string(family) + "!WORD"), yes) << "whatever the letter case";
    EXPECT_EQ(IsInstalledById("MICROSOFT.OFFICE.DESKTOP_8WEKYB3D8BBWE!oUtLoOk"), yes);
    EXPECT_EQ(IsInstalledById(std::string(family) + "!Excel"), no);
    EXPECT_EQ(IsInstalledById(std::string(family) + "!"), yes) << "any dependency";
    EXPECT_EQ(IsInstalledById(std::string("Vel!") + family + "!Word"), no)
        << "the family's name anywhere in the ID asks for dependencies, of a family that nobody has";
}

TEST_F(StoreQuery, GivesTheDisplayNameOfAPackageWithOneApplication)
{
    EXPECT_EQ(DisplayName("Vel.Calendar_1vel7kq0n3rta"), "0x00000000\tCalendar");
    EXPECT_EQ(DisplayName("Lumen.Photos_5lum2d8xw4yhe"), "0x00000000\tphoto album")
        << "lower case, as it is kept";
    EXPECT_EQ(DisplayName("Test.Arabic_9test0p6zjcqm"), "0x00000000\tالبريد اليومي");
    EXPECT_EQ(DisplayName("Test.Japanese_9test0p6zjcqm"), "0x00000000\t予定表とメモ");
    EXPECT_EQ(DisplayName("Test.Emoji_9test0p6zjcqm"), "0x00000000\tpost 📮 and 🐦‍⬛");
    EXPECT_EQ(DisplayName("Test.Markup_9test0p6zjcqm"), "0x00000000\tsalt & pepper <\"fine\" 'coarse'>");
    EXPECT_EQ(DisplayName("Test.LetterCase_9test0p6zjcqm"), "0x00000000\tother letter case");
    EXPECT_EQ(DisplayName("Test.OnlyNoTile_9test0p6zjcqm"), "0x00000000\ttileless");
    std::string longName;
    for (int tens = 0; tens < 25; ++tens) {
        longName += "abcdefghij";
    }
    EXPECT_EQ(DisplayName("Test.LongText_9test0p6zjcqm"), "0x00000000\t" + longName + "abcde");
    EXPECT_EQ(DisplayName("Test.TwoArchitectures_9test0p6zjcqm"), "0x00000000\tsixty-four")
        << "the first package's";
    EXPECT_EQ(DisplayName("Test.NoDisplayName_9test0p6zjcqm"), "0x00000001\t");
    EXPECT_EQ(DisplayName("Test.Broken_9test0p6zjcqm"), "0x00000000\tbefore the break")
        << "what comes behind the application is not an application";
}

TEST_F(StoreQuery, GivesTheDisplayNameInTheUsersLanguage)
{
    standin::SetText(standin::TextSetting::Language, L"ja-JP");
    EXPECT_EQ(DisplayName("Vel.Calendar_1vel7kq0n3rta"), "0x00000000\tカレンダー");
}

TEST_F(StoreQuery, GivesNoDisplayNameOfAnythingElse)
{
    EXPECT_EQ(DisplayName("Nobody.Knows_1vel7kq0n3rta"), "0xA0000001\t(null)");
    EXPECT_EQ(DisplayName("Test.NotInstalled_9test0p6zjcqm"), "0xA0000001\t(null)");
    EXPECT_EQ(DisplayName("Vel.Post_1vel7kq0n3rta"), "0xA0000002\t(null)") << "two applications";
    EXPECT_EQ(DisplayName("Test.NoTile_9test0p6zjcqm"), "0xA0000002\t(null)");
    EXPECT_EQ(DisplayName("Vel.Runtime_1vel7kq0n3rta"), "0x80004005\t(null)") << "none";
    EXPECT_EQ(DisplayName("Test.EmptyApplications_9test0p6zjcqm"), "0x80004005\t(null)");
    EXPECT_EQ(DisplayName("Test.NoManifest_9test0p6zjcqm"), "0x80070002\t(null)");
    EXPECT_EQ(DisplayName("Test.LongPath_9test0p6zjcqm").substr(0, 6), "0x8007");
    EXPECT_EQ(DisplayName("Test.Faulty_9test0p6zjcqm"), "0x80004005\t(null)") << "its folder cannot be had";
    EXPECT_EQ(DisplayName("Test.Unresolvable_9test0p6zjcqm"), "0x80004005\t") << "a text that is the host's";
}

class StoreQueryApartment : public StoreQuery, public testing::WithParamInterface<const char*>
{
};

// Whatever apartment the thread has, the queries work, and it has it still.
TEST_P(StoreQueryApartment, IsNoConcernOfTheHosts)
{
    const std::string thread = GetParam();
    EXPECT_EQ(m_host.Command(thread + "\tinstalled\tVel.Calendar_1vel7kq0n3rta"), yes);
    EXPECT_EQ(m_host.Command(thread + "\tinstalled-by-id\tVel.Calendar_1vel7kq0n3rta!Calendar"), yes);
    EXPECT_EQ(m_host.Command(thread + "\tinstalled-by-id\tMicrosoft.Office.Desktop_8wekyb3d8bbwe!Word"), no);
    EXPECT_EQ(m_host.Command(thread + "\tdisplay-name\tVel.Calendar_1vel7kq0n3rta"), "0x00000000\tCalendar");
    // The same on the ways out that are seldom taken.
    SetSetting(Setting::FailFindFamily, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_EQ(m_host.Command(thread + "\tinstalled\tVel.Calendar_1vel7kq0n3rta"), "0x80004005\t7");
    SetSetting(Setting::FailPackageManager, static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_EQ(m_host.Command(thread + "\tinstalled\tVel.Calendar_1vel7kq0n3rta"), no);
}

INSTANTIATE_TEST_SUITE_P(Of, StoreQueryApartment, testing::Values("thread", "sta", "mta"),
                         [](const auto& thread) { return std::string(thread.param); });

TEST_F(StoreQuery, WorksBeforeWhileAndAfterTheLibraryIsUp)
{
    EXPECT_EQ(IsInstalled("Vel.Calendar_1vel7kq0n3rta"), yes);
    EXPECT_EQ(m_host.Command("init"), "0x00000000");
    EXPECT_EQ(IsInstalled("Vel.Calendar_1vel7kq0n3rta"), yes);
    EXPECT_EQ(DisplayName("Vel.Calendar_1vel7kq0n3rta"), "0x00000000\tCalendar");
    m_host.Do("finalize");
    EXPECT_EQ(IsInstalled("Vel.Calendar_1vel7kq0n3rta"), yes);
}

} // namespace
