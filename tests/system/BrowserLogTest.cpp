// The whole log of a launch of the browser, for each state of its tile setting.
#include "support/Registry.h"
#include "system/Golden.h"
#include "system/LaunchGoldens.h"
#include "system/LaunchTest.h"

namespace {

using standin::SetSetting;
using standin::Setting;
using namespace test;

constexpr wchar_t tileValue[] = L"ApplicationTileImmersiveActivation";
constexpr char ok[] = "0x00000000";
constexpr char failed[] = "0x80004005";

// The search for the browser in mode 0, without exclusions, on the Start screen.
std::string Search()
{
    return "QanhLaunchBySearch(Internet Explorer, 0, 0) IN" + KeywordIs("\"Internet Explorer\"") +
           searchPaneOpens + TextIsCopied("\"Internet Explorer\"") + shiftInsertIsPressed + enterIsPressed +
           launchEnds;
}

// The same where the shell does not tell what the screen shows.
const std::string failedSearch = "QanhLaunchBySearch(Internet Explorer, 0, 0) IN" +
                                 KeywordIs("\"Internet Explorer\"") + launcherQueryFails;

std::string TileIsRead(int value)
{
    return R"(
        CQanhReg::GetCurrentTileImmersiveActivation IN
        CQanhReg::GetCurrentTileImmersiveActivation OUT(*pdwTileImmersiveActivation = )" +
           std::to_string(value) + ")\n";
}

std::string TileIsSet(int value)
{
    return "\nCQanhReg::SetCurrentTileImmersiveActivation(" + std::to_string(value) +
           ") IN\nCQanhReg::SetCurrentTileImmersiveActivation OUT\n";
}

constexpr char tileIsDeleted[] = R"(
    CQanhReg::DeleteTileImmersiveActivation IN
    CQanhReg::DeleteTileImmersiveActivation OUT
)";

class BrowserLog : public test::LaunchTest
{
protected:
    // Launches on the Start screen.
    std::vector<std::string> Launch(int tileMode)
    {
        desktop->ShowStartScreen();
        return LaunchHere("browser\t" + std::to_string(tileMode) + "\t0\t0", ok);
    }

    // Launches where the search fails at once.
    std::vector<std::string> LaunchInVain(const std::string& command)
    {
        SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
        return LaunchHere(command, failed);
    }

    std::vector<std::string> LaunchHere(const std::string& command, const std::string& result)
    {
        const std::size_t offset = sandbox.LogLength();
        EXPECT_EQ(host->Command(command), result);
        return sandbox.Log(offset);
    }

    test::ScopedKey browserKey{HKEY_CURRENT_USER, test::kBrowserKey};
};

TEST_F(BrowserLog, OneThatIsForcedToZeroAndPutBack)
{
    browserKey.SetDword(tileValue, 1);
    Start({L"Internet Explorer.lnk"});
    EXPECT_TRUE(IsGolden(Launch(0), {"QanhLaunchIEBySearch(0, 0, 0) IN", TileIsRead(1), TileIsSet(0),
                                     Search(), TileIsSet(1), "QanhLaunchIEBySearch OUT(0x00000000)"}));
}

TEST_F(BrowserLog, AbsentValueThatIsForcedToZeroAndDeleted)
{
    browserKey.Create();
    Start({L"Internet Explorer.lnk"});
    EXPECT_TRUE(IsGolden(Launch(0), {"QanhLaunchIEBySearch(0, 0, 0) IN", TileIsRead(1), TileIsSet(0),
                                     Search(), tileIsDeleted, "QanhLaunchIEBySearch OUT(0x00000000)"}));
}

TEST_F(BrowserLog, AbsentValueThatCountsAsOneIsDeletedAllTheSame)
{
    browserKey.Create();
    Start({L"Internet Explorer.lnk"});
    EXPECT_TRUE(IsGolden(Launch(1), {"QanhLaunchIEBySearch(1, 0, 0) IN", TileIsRead(1), Search(),
                                     tileIsDeleted, "QanhLaunchIEBySearch OUT(0x00000000)"}));
}

TEST_F(BrowserLog, AbsentKeyIsNeitherMadeNorMissed)
{
    Start({L"Internet Explorer.lnk"});
    EXPECT_TRUE(IsGolden(Launch(0), {
                                        "QanhLaunchIEBySearch(0, 0, 0) IN",
                                        TileIsRead(1),
                                        R"(
        CQanhReg::SetCurrentTileImmersiveActivation(0) IN
        CQanhReg::SetCurrentTileImmersiveActivation OUT(0)
                                        )",
                                        Search(),
                                        R"(
        CQanhReg::DeleteTileImmersiveActivation IN
        CQanhReg::DeleteTileImmersiveActivation OUT(0)
        QanhLaunchIEBySearch OUT(0x00000000)
                                        )",
                                    }));
}

TEST_F(BrowserLog, TextIsLeftAlone)
{
    browserKey.SetText(tileValue, L"1");
    Start({L"Internet Explorer.lnk"});
    // The number is what the four bytes of the text come to.
    EXPECT_TRUE(IsGolden(Launch(0), {"QanhLaunchIEBySearch(0, 0, 0) IN", TileIsRead(49), Search(),
                                     "QanhLaunchIEBySearch OUT(0x00000000)"}));
}

TEST_F(BrowserLog, ModesOutOfRange)
{
    browserKey.SetDword(tileValue, 1);
    Start({});
    EXPECT_TRUE(IsGolden(LaunchHere("browser\t3\t0\t0", "0x80070057"), R"(
        QanhLaunchIEBySearch(3, 0, 0) IN
        QanhLaunchIEBySearch OUT(0x80070057)
    )"));
    EXPECT_TRUE(IsGolden(LaunchHere("browser\t0\t4294967295\t1", "0x80070057"), R"(
        QanhLaunchIEBySearch(0, -1, 1) IN
        QanhLaunchIEBySearch OUT(0x80070057)
    )"));
}

TEST_F(BrowserLog, SearchThatFailsIsFollowedByTheSameSteps)
{
    Start({});
    browserKey.SetDword(tileValue, 7);
    EXPECT_TRUE(IsGolden(LaunchInVain("browser\t1\t0\t0"),
                         {"QanhLaunchIEBySearch(1, 0, 0) IN", TileIsRead(7), TileIsSet(1), failedSearch,
                          TileIsSet(7), "QanhLaunchIEBySearch OUT(0x80004005)"}));
    EXPECT_TRUE(
        IsGolden(LaunchInVain("browser\t2\t0\t0"), {"QanhLaunchIEBySearch(2, 0, 0) IN", TileIsRead(7),
                                                    failedSearch, "QanhLaunchIEBySearch OUT(0x80004005)"}));
    browserKey.DeleteValue(tileValue);
    EXPECT_TRUE(IsGolden(LaunchInVain("browser\t0\t0\t0"),
                         {"QanhLaunchIEBySearch(0, 0, 0) IN", TileIsRead(1), TileIsSet(0), failedSearch,
                          tileIsDeleted, "QanhLaunchIEBySearch OUT(0x80004005)"}));
}

TEST_F(BrowserLog, SearchModeAndExclusionsAreHandedOn)
{
    Start({});
    browserKey.SetDword(tileValue, 0);
    EXPECT_TRUE(IsGolden(LaunchInVain("browser\t0\t2\t1"),
                         {"QanhLaunchIEBySearch(0, 2, 1) IN", TileIsRead(0),
                          "QanhLaunchBySearch(Internet Explorer, 2, 1) IN",
                          NothingIsExcluded("Internet Explorer"), KeywordIs("\"Internet Explorer\""),
                          launcherQueryFails, "QanhLaunchIEBySearch OUT(0x80004005)"}));
}

} // namespace
