// The whole log of a launch of the browser, for each state of its tile setting.
#include "support/Registry.h"
#include "system/LaunchGoldens.h"
#include "system/LaunchTest.h"

namespace {

using standin::SetSetting;
using standin::Setting;
using namespace test;

constexpr wchar_t tileValue[] = L"ApplicationTileImmersiveActivation";

// The search for the browser in mode 0, without exclusions, on the Start screen.
std::string SearchDone()
{
    return Joined({"QanhLaunchBySearch(Internet Explorer, 0, 0) IN", KeywordIs("\"Internet Explorer\""),
                   TextIsSearched("\"Internet Explorer\"")});
}

// The same where the shell does not tell what the screen shows.
std::string SearchFailed()
{
    return Joined({"QanhLaunchBySearch(Internet Explorer, 0, 0) IN", KeywordIs("\"Internet Explorer\""),
                   ScreenIsUnknown(launcherQueryFails)});
}

std::string TileIsRead(std::string_view value)
{
    return Filled("CQanhReg::GetCurrentTileImmersiveActivation IN ... OUT(*pdwTileImmersiveActivation = <1>)",
                  {value});
}

std::string TileIsSet(std::string_view value)
{
    return Filled("CQanhReg::SetCurrentTileImmersiveActivation(<1>) IN ... OUT", {value});
}

constexpr char tileIsDeleted[] = "CQanhReg::DeleteTileImmersiveActivation IN ... OUT";

class BrowserLog : public LaunchTest
{
protected:
    // Launches the browser on the Start screen, with the browser there.
    void ExpectLaunch(const std::string& tileMode, std::initializer_list<std::string_view> golden)
    {
        Start({L"Internet Explorer.lnk"});
        desktop->ShowStartScreen();
        EXPECT_TRUE(IsGolden(LogOf("browser\t" + tileMode + "\t0\t0", "0x00000000"),
                             {"QanhLaunchIEBySearch(" + tileMode + ", 0, 0) IN", Joined(golden),
                              "QanhLaunchIEBySearch OUT(0x00000000)"}));
    }

    // Launches it where the search fails at once.
    void ExpectFailure(const std::string& command, std::initializer_list<std::string_view> golden)
    {
        SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
        EXPECT_TRUE(
            IsGolden(LogOf(command, "0x80004005"), {Joined(golden), "QanhLaunchIEBySearch OUT(0x80004005)"}));
    }

    ScopedKey browserKey{HKEY_CURRENT_USER, kBrowserKey};
};

TEST_F(BrowserLog, OneThatIsForcedToZeroAndPutBack)
{
    browserKey.SetDword(tileValue, 1);
    ExpectLaunch("0", {TileIsRead("1"), TileIsSet("0"), SearchDone(), TileIsSet("1")});
}

TEST_F(BrowserLog, AbsentValueThatIsForcedToZeroAndDeleted)
{
    browserKey.Create();
    ExpectLaunch("0", {TileIsRead("1"), TileIsSet("0"), SearchDone(), tileIsDeleted});
}

TEST_F(BrowserLog, AbsentValueThatCountsAsOneIsDeletedAllTheSame)
{
    browserKey.Create();
    ExpectLaunch("1", {TileIsRead("1"), SearchDone(), tileIsDeleted});
}

TEST_F(BrowserLog, AbsentKeyIsNeitherMadeNorMissed)
{
    ExpectLaunch("0", {TileIsRead("1"), "CQanhReg::SetCurrentTileImmersiveActivation(0) IN ... OUT(0)",
                       SearchDone(), "CQanhReg::DeleteTileImmersiveActivation IN ... OUT(0)"});
}

TEST_F(BrowserLog, TextIsLeftAlone)
{
    browserKey.SetText(tileValue, L"1");
    // The number is what the four bytes of the text come to.
    ExpectLaunch("0", {TileIsRead("49"), SearchDone()});
}

TEST_F(BrowserLog, SearchThatFailsIsFollowedByTheSameSteps)
{
    Start({});
    browserKey.SetDword(tileValue, 7);
    ExpectFailure("browser\t1\t0\t0", {"QanhLaunchIEBySearch(1, 0, 0) IN", TileIsRead("7"), TileIsSet("1"),
                                       SearchFailed(), TileIsSet("7")});
    ExpectFailure("browser\t2\t0\t0", {"QanhLaunchIEBySearch(2, 0, 0) IN", TileIsRead("7"), SearchFailed()});
    browserKey.DeleteValue(tileValue);
    ExpectFailure("browser\t0\t0\t0", {"QanhLaunchIEBySearch(0, 0, 0) IN", TileIsRead("1"), TileIsSet("0"),
                                       SearchFailed(), tileIsDeleted});
}

TEST_F(BrowserLog, SearchModeAndExclusionsAreHandedOn)
{
    Start({});
    browserKey.SetDword(tileValue, 0);
    ExpectFailure("browser\t0\t2\t1",
                  {"QanhLaunchIEBySearch(0, 2, 1) IN", TileIsRead("0"),
                   "QanhLaunchBySearch(Internet Explorer, 2, 1) IN", Excluded("Internet Explorer", ""),
                   KeywordIs("\"Internet Explorer\""), ScreenIsUnknown(launcherQueryFails)});
}

} // namespace
