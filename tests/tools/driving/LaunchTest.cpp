// qanh launch and qanh browser, on the stand-in desktop.

#include "system/ClipboardAccess.h"
#include "system/DesktopProcess.h"
#include "tools/driving/DrivingTest.h"

namespace {

using namespace test;
using standin::SetSetting;
using standin::Setting;

constexpr wchar_t kTileValue[] = L"ApplicationTileImmersiveActivation";

class ToolLaunch : public DrivingTest
{
protected:
    // What is announced of keys and clipboard, before and behind the pasted text.
    static std::string
    KeysLine(const std::string& pasted,
             const std::string& pressed = "Shift+Insert and Enter until the search pane is gone",
             const std::string& before = "")
    {
        return "qanh: " + before +
               "presses Windows, unless the Start screen shows, and Windows+Q, replaces the clipboard by " +
               pasted + ", presses " + pressed + ", and empties the clipboard\n";
    }

    void Start(const std::vector<std::wstring>& applications)
    {
        for (const std::wstring& application : applications) {
            sandbox.AddApplication(application);
        }
        desktop = std::make_unique<DesktopProcess>(sandbox);
    }

    std::unique_ptr<DesktopProcess> desktop;
};
class ToolBrowser : public ToolLaunch
{
protected:
    ScopedKey key{HKEY_CURRENT_USER, kBrowserKey};
};

TEST_F(ToolLaunch, TellsWhatItDoesAndWhatCameToTheFront)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    EXPECT_EQ(Run(L"launch Mail"),
              (ToolResult{"In front: Gmail\n", StartLine() + "\n" + KeysLine("\"Mail\""), 0}));
    EXPECT_EQ(desktop->Count("query\t\"Mail\""), 1u);
    EXPECT_TRUE(IsClipboardEmpty());
}

// On the very first start, when the catalogue is empty.
TEST_F(ToolLaunch, ExcludesWhatTheFirstRefreshFinds)
{
    Start({L"Mail.lnk", L"Gmail.lnk", L"Airmail.lnk"});
    EXPECT_EQ(
        Run(L"launch Mail --exclude"),
        (ToolResult{
            "In front: Mail\n",
            StartLine() + ", and waits for that\n" + KeysLine("\"Mail\" NOT(\"Airmail\" OR \"Gmail\")"), 0}));
    EXPECT_EQ(desktop->Count("query\t\"Mail\" NOT(\"Airmail\" OR \"Gmail\")"), 1u);
}

TEST_F(ToolLaunch, IsJson)
{
    Start({L"メール.lnk"});
    EXPECT_EQ(Run(L"launch メール --json").output, "{\n"
                                                   "  \"Name\": \"メール\",\n"
                                                   "  \"Mode\": \"launch\",\n"
                                                   "  \"Pasted\": \"\\\"メール\\\"\",\n"
                                                   "  \"Started\": \"メール\"\n"
                                                   "}\n");
}

TEST_F(ToolLaunch, LeavesTheChoiceToTheUserInModeShow)
{
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 50);
    Start({L"Mail.lnk"});
    EXPECT_EQ(Run(L"launch Mail --mode show"),
              (ToolResult{
                  "The search pane is in front\n",
                  StartLine() + "\n" + KeysLine("Mail", "Shift+Insert, which leaves the choice to you"), 0}));
    EXPECT_EQ(desktop->Count("pasted\tMail"), 1u);
}

TEST_F(ToolLaunch, PastesThePlainNameInModePlain)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    // Also by the number of the mode.
    const ToolResult result = Run(L"launch Mail --mode 2 --exclude");
    EXPECT_THAT(result.problems, EndsWith(KeysLine("Mail")));
    EXPECT_EQ(desktop->Count("query\tMail"), 1u);
}

TEST_F(ToolLaunch, SaysNoWhenNothingCameToTheFront)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::LosePastes, 1);
    std::thread closer([this] {
        desktop->WaitFor("no hit\t");
        desktop->ClosePane();
    });
    const ToolResult result = Run(L"launch Nobody");
    closer.join();
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.problems,
                EndsWith("qanh: no application came to the front that was not there before\n"));
    EXPECT_EQ(result.status, 1u);
}

TEST_F(ToolLaunch, TellsOfAScreenThatCannotBeRead)
{
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    const ToolResult result = Run(L"launch Mail");
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(
        result.problems,
        EndsWith("qanh: nothing was pressed, since it cannot be told what the screen shows: 0x80004005 "
                 "E_FAIL (the system does not say why)\n"));
    EXPECT_EQ(result.status, 3u);
}

TEST_F(ToolLaunch, TellsOfALibraryThatDoesNotComeUp)
{
    SetSetting(Setting::FailCreate, static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    const ToolResult result = Run(L"launch Mail");
    EXPECT_THAT(result.problems,
                HasSubstr("qanh: the library does not come up: 0x80040154 REGDB_E_CLASSNOTREG "));
    EXPECT_EQ(result.status, 3u);
}

TEST_F(ToolLaunch, OnlyTellsWhatItWouldDo)
{
    DeleteFileW(InHostFolder(L"QanHelper.dll").c_str());
    MakeFolder(sandbox.CatalogFolder(L"qanh"));
    WriteFileBytes(sandbox.CatalogFile(L"qanh"),
                   R"(<DesktopApps><DesktopApp DisplayName="Mail" LnkFileName="C:\1.lnk"/>
                      <DesktopApp DisplayName="Gmail" LnkFileName="C:\2.lnk"/></DesktopApps>)");
    const auto lines = [](const std::string& announced) {
        std::string text = announced;
        ReplaceAll(text, "qanh: ", "");
        return text;
    };
    EXPECT_EQ(Run(L"launch Mail --exclude --dry-run"),
              (ToolResult{lines(StartLine() + ", and waits for that\n" + KeysLine("\"Mail\" NOT(\"Gmail\")")),
                          "", 0}));
    EXPECT_EQ(Run(L"launch Mail --exclude --mode plain --dry-run"),
              (ToolResult{lines(StartLine() + ", and waits for that\n" + KeysLine("Mail")), "", 0}));
    EXPECT_EQ(Run(L"launch Mail --dry-run"),
              (ToolResult{lines(StartLine() + "\n" + KeysLine("\"Mail\"")), "", 0}));
    EXPECT_THAT(Run(L"launch Mail --dry-run --json").output,
                StartsWith("{\n  \"DryRun\": [\n    \"starts the "));
}

// The query would be one without the catalogue.
TEST_F(ToolLaunch, DoesNotExcludeWhileAnotherProcessRefreshes)
{
    Start({L"Mail.lnk"});
    WriteFileBytes(InHostFolder(L"PresetAppNameList.xml"), emptyCatalog);
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"QanHelper_qanh");
    const ToolResult result = Run(L"launch Mail --exclude");
    EXPECT_EQ(result,
              (ToolResult{"",
                          StartLine() + ", and waits for that\n" +
                              "qanh: another process of qanh is in its first refresh: try again in a second "
                              "or two. If it stays so, some program keeps the mutex QanHelper_qanh open\n",
                          1}));
    EXPECT_EQ(Run(L"launch Mail").output, "In front: Mail\n") << "the catalogue has no part in it";
    CloseHandle(mutex);
}

// There the keys would go to the window in front.
TEST_F(ToolLaunch, PressesNothingWhereThereIsNoSearchPane)
{
    ScopedKey system(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\qanh.exe");
    system.SetText(L"Version", L"win10");
    for (const wchar_t* commandLine : {L"launch Mail", L"browser"}) {
        const ToolResult result = Run(commandLine);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.problems, StartsWith("qanh: this Windows has no search pane: "));
        EXPECT_EQ(result.status, 1u);
    }
    EXPECT_FALSE(Exists(sandbox.CatalogFolder(L"qanh")));
}

// The library knows its host by the name of the executable.
TEST_F(ToolLaunch, WorksAsTheHostWhoseNameItHas)
{
    Copy(L"qanh.exe", L"Launcher.exe");
    EXPECT_THAT(RunProgram(InHostFolder(L"Launcher.exe"), L"launch Mail --dry-run").output,
                StartsWith("starts the library as the host Launcher, which refreshes " +
                           ToUtf8(sandbox.CatalogFile(L"Launcher")) + "\n"));
}

TEST_F(ToolLaunch, RefusesWrongUse)
{
    for (const wchar_t* commandLine :
         {L"launch", L"launch \"\"", L"launch a b", L"launch a --mode 3", L"launch a --mode fast",
          L"launch a --host Launcher", L"launch a --tile desktop", L"browser a", L"browser --tile 3",
          L"browser --mode 3", L"browser --catalogue a.xml"}) {
        const ToolResult result = Run(commandLine);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.status, 2u) << ToUtf8(commandLine);
    }
    EXPECT_FALSE(Exists(sandbox.CatalogFolder(L"qanh")));
}

TEST_F(ToolBrowser, ForcesTheTileForTheLaunch)
{
    Start({L"Internet Explorer.lnk"});
    key.SetDword(kTileValue, 1);
    EXPECT_EQ(
        Run(L"browser --tile desktop"),
        (ToolResult{
            "In front: Internet Explorer\n",
            StartLine() + "\n" +
                KeysLine("\"Internet Explorer\"", "Shift+Insert and Enter until the search pane is gone",
                         "sets ApplicationTileImmersiveActivation, which is 1, to 0 until the launch is "
                         "over, "),
            0}));
    EXPECT_EQ(key.Dword(kTileValue), 1u);
}

TEST_F(ToolBrowser, TellsWhatBecomesOfTheTile)
{
    const auto told = [this](const wchar_t* options) {
        const std::string output = Run(std::wstring(L"browser --dry-run ") + options).output;
        const std::string line = Split(output, "\n").at(1);
        return line.substr(0, line.find(", presses"));
    };
    EXPECT_EQ(told(L""), "leaves ApplicationTileImmersiveActivation, which is not set");
    EXPECT_EQ(told(L"--tile immersive"),
              "leaves ApplicationTileImmersiveActivation, which is not set and counts as 1");
    EXPECT_EQ(told(L"--tile 0"),
              "sets ApplicationTileImmersiveActivation, which is not set, to 0 until the launch is over");
    key.SetDword(kTileValue, 0);
    EXPECT_EQ(told(L"--tile desktop"),
              "leaves ApplicationTileImmersiveActivation, which is 0 and counts as 0");
    EXPECT_EQ(told(L"--tile 1"),
              "sets ApplicationTileImmersiveActivation, which is 0, to 1 until the launch is over");
    EXPECT_EQ(told(L"--tile unchanged"), "leaves ApplicationTileImmersiveActivation, which is 0");
    key.SetText(kTileValue, L"a text that is longer than a number");
    EXPECT_EQ(told(L"--tile 1"), "leaves ApplicationTileImmersiveActivation as it is, which is no number");
    EXPECT_FALSE(key.Dword(kTileValue)) << "nothing was done";
}

TEST_F(ToolBrowser, IsJson)
{
    Start({L"Internet Explorer.lnk"});
    EXPECT_EQ(Run(L"browser --json").output, "{\n"
                                             "  \"Name\": \"Internet Explorer\",\n"
                                             "  \"TileMode\": 2,\n"
                                             "  \"Mode\": \"launch\",\n"
                                             "  \"Pasted\": \"\\\"Internet Explorer\\\"\",\n"
                                             "  \"Started\": \"Internet Explorer\"\n"
                                             "}\n");
}

} // namespace
