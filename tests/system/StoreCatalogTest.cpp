// Store packages in the catalogue file: what passes over the sample store write, and what becomes of packages
// and shortcuts that change between two passes.
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/SlowManifest.h"

#include <gtest/gtest.h>

namespace {

using standin::SetSetting;
using standin::Setting;
using test::Manifest;

// The file's lines up to the packages and behind them, when there are no shortcuts.
constexpr char fileBegin[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>\r\n  <MetroApps";
constexpr char fileEnd[] = "\r\n  <DesktopApps />";

class StoreCatalog : public testing::Test
{
protected:
    // The whole file: a pass may just be writing it.
    std::string Bytes() const
    {
        std::string bytes;
        const bool isWhole = test::WaitUntil(
            [&] {
                bytes = test::ReadFileBytes(m_sandbox.CatalogFile());
                return bytes.ends_with("<DesktopApps />") || bytes.ends_with("</DesktopApps>");
            },
            5000);
        EXPECT_TRUE(isWhole);
        return m_sandbox.WithPlaceholders(bytes);
    }

    // The packages of the file, without indentation and line ends; shortcuts are not looked at.
    std::string Packages() const
    {
        std::string packages;
        for (const std::string& line : test::Split(Bytes(), "\r\n")) {
            const std::size_t start = line.find_first_not_of(' ');
            const std::string element = start == std::string::npos ? "" : line.substr(start);
            if (element.starts_with("<Package ") || element.starts_with("<MetroApp ") ||
                element == "</Package>") {
                packages += element;
            }
        }
        return packages;
    }

    // A host that is up for one pass.
    void RunOnePass()
    {
        test::HostProcess host(m_sandbox);
        EXPECT_EQ(host.Command("init"), "0x00000000");
        test::WaitForFirstPass();
        host.Do("finalize");
    }

    test::Sandbox m_sandbox;
};

// All that the samples know, in the order of their folders' names, and a Start menu beside them. Written by
// hand from the manifests.
constexpr char sampleCatalog[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
    "<Applications>\r\n"
    "  <MetroApps>\r\n"
    "    <Package PackageFamilyName=\"Lumen.Photos_5lum2d8xw4yhe\" Version=\"1.0.3.0\">\r\n"
    "      <MetroApp DisplayName=\"photo album\" ShortName=\"photos\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Microsoft.Office.Desktop_8wekyb3d8bbwe\" Version=\"16.0.1.0\" />\r\n"
    "    <Package PackageFamilyName=\"Test.Arabic_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"البريد اليومي\" ShortName=\"بريد\" />\r\n"
    "    </Package>\r\n"
    // The manifest breaks off behind its first application.
    "    <Package PackageFamilyName=\"Test.Broken_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"before the break\" ShortName=\"before\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.CutOff_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"cut off\" ShortName=\"cut\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.Emoji_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"post 📮 and 🐦‍⬛\" ShortName=\"📮\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.EmptyApplications_9test0p6zjcqm\" Version=\"1.0.0.0\" />\r\n"
    // Test.Faulty is left out: its folder cannot be had.
    "    <Package PackageFamilyName=\"Test.Japanese_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"予定表とメモ\" ShortName=\"予定表\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.LetterCase_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"other letter case\" ShortName=\"other\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.LongPath_9test0p6zjcqm\" Version=\"1.0.0.0\" />\r\n"
    // 255 of 300 letters.
    "    <Package PackageFamilyName=\"Test.LongText_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\""
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij"
    "abcde\" ShortName=\"long\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.Markup_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"salt &amp; pepper &lt;&quot;fine&quot; 'coarse'&gt;\" "
    "ShortName=\"s&amp;p\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.NoApplications_9test0p6zjcqm\" Version=\"1.0.0.0\" />\r\n"
    "    <Package PackageFamilyName=\"Test.NoDisplayName_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp ShortName=\"short only\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.NoManifest_9test0p6zjcqm\" Version=\"1.2.3.4\" />\r\n"
    // The search for a tile goes on into the second application.
    "    <Package PackageFamilyName=\"Test.NoTile_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"first without tile\" ShortName=\"tile of the second\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.OnlyNoTile_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"tileless\" />\r\n"
    "    </Package>\r\n"
    // One record for the family: the second package is taken for another version of the first.
    "    <Package PackageFamilyName=\"Test.TwoArchitectures_9test0p6zjcqm\" Version=\"1.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"thirty-two\" ShortName=\"32\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Test.Unresolvable_9test0p6zjcqm\" Version=\"3.0.0.0\">\r\n"
    "      <MetroApp DisplayName=\"ms-resource:nosuchname\" ShortName=\"ms-resource:///nowhere/at/all\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Vel.Calendar_1vel7kq0n3rta\" Version=\"2.1.0.14\">\r\n"
    "      <MetroApp DisplayName=\"Calendar\" ShortName=\"Days\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Vel.Post_1vel7kq0n3rta\" Version=\"3.0.12.0\">\r\n"
    "      <MetroApp DisplayName=\"Post\" ShortName=\"Post\" />\r\n"
    "      <MetroApp DisplayName=\"People\" ShortName=\"people\" />\r\n"
    "    </Package>\r\n"
    "    <Package PackageFamilyName=\"Vel.Runtime_1vel7kq0n3rta\" Version=\"1.4.0.0\" />\r\n"
    "  </MetroApps>\r\n"
    "  <DesktopApps>\r\n"
    "    <DesktopApp DisplayName=\"A\" LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\A.lnk\" />\r\n"
    "    <DesktopApp DisplayName=\"B\" LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\B.url\" />\r\n"
    "    <DesktopApp DisplayName=\"C\" LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\Sub\\C.lnk\" />\r\n"
    "    <DesktopApp DisplayName=\"メール\" LnkFileName=\"<roaming>\\Microsoft\\Windows\\Start "
    "Menu\\Programs\\メール.lnk\" />\r\n"
    "  </DesktopApps>";

class SampleStoreCatalog : public StoreCatalog
{
protected:
    SampleStoreCatalog()
    {
        m_sandbox.UseSamplePackages();
        m_sandbox.AddCommonShortcut(L"B.url");
        m_sandbox.AddCommonShortcut(L"A.lnk");
        m_sandbox.AddCommonShortcut(L"Sub\\C.lnk");
        m_sandbox.AddUserShortcut(L"メール.lnk");
    }
};

TEST_F(SampleStoreCatalog, HoldsEveryPackageAndShortcut)
{
    RunOnePass();
    EXPECT_EQ(Bytes(), sampleCatalog);
}

TEST_F(SampleStoreCatalog, IsWrittenAnewByTheNextProcess)
{
    RunOnePass();
    RunOnePass();
    // A version that comes from the file has its last two numbers changed about. It is put right when the
    // names can be read, and stays so when they cannot.
    std::string expected = sampleCatalog;
    expected.replace(expected.find("1.2.3.4"), 7, "1.2.4.3");
    EXPECT_EQ(Bytes(), expected);
    RunOnePass();
    EXPECT_EQ(Bytes(), sampleCatalog);
}

TEST_F(SampleStoreCatalog, HasTheTextsOfTheUsersLanguage)
{
    standin::SetLanguage(L"ja-JP");
    RunOnePass();
    const std::string bytes = Bytes();
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"カレンダー\" ShortName=\"日付\" />"), std::string::npos);
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"ポスト\" ShortName=\"ポスト\" />\r\n"
                         "      <MetroApp DisplayName=\"連絡先\" ShortName=\"people\" />"),
              std::string::npos);
}

TEST_F(SampleStoreCatalog, HasTheReferencesWhenNoTextCanBeHad)
{
    SetSetting(Setting::FailResources, static_cast<DWORD>(E_FAIL));
    RunOnePass();
    const std::string bytes = Bytes();
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"ms-resource:calendarname\" "
                         "ShortName=\"ms-resource:calendarshort\" />"),
              std::string::npos);
    EXPECT_NE(bytes.find("<MetroApp DisplayName=\"ms-resource:/post/name/\" "
                         "ShortName=\"ms-resource:/post/shortname/\" />\r\n"
                         "      <MetroApp DisplayName=\"ms-resource:///resources/peoplename\" "
                         "ShortName=\"people\" />"),
              std::string::npos);
}

TEST_F(SampleStoreCatalog, HasTheNamesAsThePlatformGivesThemOnRequest)
{
    m_sandbox.Settings().SetDword(L"ManifestReaderSetting", 0);
    RunOnePass();
    const std::string packages = Packages();
    for (const char* package : {
             "<Package PackageFamilyName=\"Lumen.Photos_5lum2d8xw4yhe\" Version=\"1.0.3.0\">"
             "<MetroApp DisplayName=\"Photo Album\" /></Package>",
             "<Package PackageFamilyName=\"Test.Emoji_9test0p6zjcqm\" Version=\"1.0.0.0\">"
             "<MetroApp DisplayName=\"Post 📮 and 🐦‍⬛\" /></Package>",
             "<Package PackageFamilyName=\"Test.NoDisplayName_9test0p6zjcqm\" Version=\"1.0.0.0\">"
             "<MetroApp /></Package>",
             // Not read to its end: the platform's reader gives nothing of a document that is not well
             // formed.
             "<Package PackageFamilyName=\"Test.Broken_9test0p6zjcqm\" Version=\"1.0.0.0\" />",
             "<Package PackageFamilyName=\"Test.NoTile_9test0p6zjcqm\" Version=\"1.0.0.0\">"
             "<MetroApp DisplayName=\"First without tile\" /><MetroApp DisplayName=\"Second with tile\" />"
             "</Package>",
             "<Package PackageFamilyName=\"Vel.Calendar_1vel7kq0n3rta\" Version=\"2.1.0.14\">"
             "<MetroApp DisplayName=\"ms-resource:CalendarName\" /></Package>",
             "<Package PackageFamilyName=\"Vel.Post_1vel7kq0n3rta\" Version=\"3.0.12.0\">"
             "<MetroApp DisplayName=\"ms-resource:/Post/Name/\" />"
             "<MetroApp DisplayName=\"ms-resource:///Resources/PeopleName\" /></Package>",
         }) {
        EXPECT_NE(packages.find(package), std::string::npos) << package << "\nin\n" << packages;
    }
}

// Whatever the platform fails at, the rest of the pass is done.
TEST_F(StoreCatalog, OfAPassThatFindsNoPackagesHasTheShortcuts)
{
    m_sandbox.AddSamplePackage(L"Lumen.Photos");
    m_sandbox.AddCommonShortcut(L"A.lnk");
    for (const Setting fault :
         {Setting::FailPackageFactory, Setting::FailPackageManager, Setting::FailFindAll}) {
        SetSetting(fault, static_cast<DWORD>(E_ACCESSDENIED));
        RunOnePass();
        EXPECT_EQ(Bytes(),
                  std::string(fileBegin) +
                      " />\r\n  <DesktopApps>\r\n    <DesktopApp DisplayName=\"A\" "
                      "LnkFileName=\"<allusers>\\Microsoft\\Windows\\Start Menu\\Programs\\A.lnk\" />"
                      "\r\n  </DesktopApps>");
        SetSetting(fault, 0);
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
              std::string(fileBegin) +
                  ">\r\n"
                  "    <Package PackageFamilyName=\"Lumen.Photos_5lum2d8xw4yhe\" Version=\"1.0.3.0\">\r\n"
                  "      <MetroApp DisplayName=\"photo album\" ShortName=\"photos\" />\r\n"
                  "    </Package>\r\n"
                  "    <Package PackageFamilyName=\"Vel.Calendar_1vel7kq0n3rta\" Version=\"2.1.0.14\">\r\n"
                  "      <MetroApp DisplayName=\"Calendar\" ShortName=\"Days\" />\r\n"
                  "    </Package>\r\n"
                  "  </MetroApps>" +
                  fileEnd);
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
    EXPECT_EQ(Packages(), "<Package PackageFamilyName=\"Vel.A_0standin00000\" Version=\"1.0.0.0\">"
                          "<MetroApp DisplayName=\"first\" ShortName=\"1\" /></Package>"
                          "<Package PackageFamilyName=\"Vel.C_0standin00000\" Version=\"1.0.0.0\">"
                          "<MetroApp DisplayName=\"third\" ShortName=\"3\" /></Package>");
}

INSTANTIATE_TEST_SUITE_P(Properties, FaultyPackageCatalog,
                         testing::Values("fail_id", "fail_family_name", "fail_full_name", "fail_name",
                                         "fail_version", "fail_installed_location", "fail_path"),
                         [](const auto& property) { return std::string(property.param); });

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

    const std::string package1 = "<Package PackageFamilyName=\"Vel.A_0standin00000\" Version=\"1.2.3.4\">"
                                 "<MetroApp DisplayName=\"first\" ShortName=\"1\" /></Package>";
    const std::string package2 = "<Package PackageFamilyName=\"Vel.B_0standin00000\" Version=\"1.0.0.0\">"
                                 "<MetroApp DisplayName=\"second\" ShortName=\"2\" /></Package>";
    test::HostProcess m_host{m_sandbox};
};

class ChangedVersionCatalog : public ChangingStoreCatalog, public testing::WithParamInterface<const char*>
{
};

TEST_P(ChangedVersionCatalog, HasTheNewVersionsNames)
{
    const std::string version = GetParam();
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", version, "Primary", "I"), "");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_EQ(Packages(), "<Package PackageFamilyName=\"Vel.A_0standin00000\" Version=\"" + version +
                              "\"><MetroApp DisplayName=\"primary\" ShortName=\"i\" /></Package>" + package2);
}

INSTANTIATE_TEST_SUITE_P(Parts, ChangedVersionCatalog,
                         testing::Values("9.2.3.4", "1.9.3.4", "1.2.9.4", "1.2.3.9"));

TEST_F(ChangingStoreCatalog, KeepsThePackageWhoseVersionIsTheSame)
{
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.2.3.4", "Primary", "I"), "");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_EQ(Packages(), package1 + package2);
}

TEST_F(ChangingStoreCatalog, KeepsTheOldVersionUntilTheNewNamesCanBeRead)
{
    const std::string unresolved = Manifest("Vel.A", "2.0.0.0", "ms-resource:Name", "I");
    m_sandbox.WritePackage(L"A", unresolved, "");
    test::WaitForWholePass(m_sandbox);
    EXPECT_EQ(Packages(), package1 + package2);
    m_sandbox.WritePackage(L"A", unresolved, "[en-US]\nresources/Name = At Last\n");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_EQ(Packages(), "<Package PackageFamilyName=\"Vel.A_0standin00000\" Version=\"2.0.0.0\">"
                          "<MetroApp DisplayName=\"At Last\" ShortName=\"i\" /></Package>" +
                              package2);
}

TEST_F(ChangingStoreCatalog, LosesThePackageThatIsGoneUntilItComesBack)
{
    m_sandbox.RemovePackage(L"A");
    test::WaitForWholePass(m_sandbox);
    EXPECT_EQ(Packages(), package2);
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.2.3.4", "Other names", "X"), "");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_EQ(Packages(), package1 + package2) << "the record was kept, with its place";
}

TEST_F(ChangingStoreCatalog, KeepsThePackageWhoseStateCannotBeAsked)
{
    SetSetting(Setting::FailFindFamily, static_cast<DWORD>(E_ACCESSDENIED));
    m_sandbox.RemovePackage(L"A");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_EQ(Packages(), package1 + package2);
}

TEST_F(ChangingStoreCatalog, TakesNewPackagesInBehindTheOthers)
{
    m_sandbox.WritePackage(L"0", Manifest("Vel.0", "1.0.0.0", "Zeroth", "0"), "");
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    EXPECT_EQ(Packages(), package1 + package2 +
                              "<Package PackageFamilyName=\"Vel.0_0standin00000\" Version=\"1.0.0.0\">"
                              "<MetroApp DisplayName=\"zeroth\" ShortName=\"0\" /></Package>");
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
              "<Package PackageFamilyName=\"Vel.A_0standin00000\" Version=\"1.2.4.3\" NeedReserve=\"1\">"
              "<MetroApp DisplayName=\"Kept\" /></Package>");
}

// Finalize in the middle of a pass: the thread stops before the next package and the file is not written.
TEST_F(StoreCatalog, OfAPassThatIsStoppedBetweenTwoPackagesIsNotWritten)
{
    test::SlowManifest slow;
    m_sandbox.WritePackage(L"A", Manifest("Vel.A", "1.0.0.0", "First", "1"), "location = " + slow.Folder());
    m_sandbox.WritePackage(L"B", Manifest("Vel.B", "1.0.0.0", "Second", "2"), "");
    standin::SetPackageStorePath(L"");
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("init"), "0x00000000");
    test::WaitForFirstPass();
    const std::string before = Bytes();

    standin::SetPackageStorePath(m_sandbox.Packages()); // both packages at once
    slow.WaitForReader();
    host.Send("finalize");
    host.WaitForExitEvent();
    slow.Answer(Manifest("Vel.A", "1.0.0.0", "First", "1"));
    EXPECT_EQ(host.Answer(), "ok");
    EXPECT_EQ(Bytes(), before);
}

} // namespace
