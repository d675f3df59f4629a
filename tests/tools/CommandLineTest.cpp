// What the tool makes of its command line as a whole.

#include "QanHelper.h"
#include "tools/ToolTest.h"

namespace {

using namespace test;

TEST(ToolCommandLine, NeedsACommand)
{
    for (const wchar_t* commandLine : {L"", L"--json", L"nothing", L"LIST --host a"}) {
        const ToolResult result = RunCommandLine(commandLine);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.problems, StartsWith("qanh: "));
        EXPECT_THAT(result.problems, HasSubstr("\n\"qanh help\" tells what there is.\n"));
        EXPECT_EQ(result.status, 2u);
    }
}

TEST(ToolCommandLine, HelpTellsOfEveryCommandAndOfTheStatuses)
{
    for (const wchar_t* commandLine : {L"help", L"--help", L"-h"}) {
        const ToolResult result = RunCommandLine(commandLine);
        for (const char* part :
             {"\n  list ",
              "\n  show ",
              "\n  explain ",
              "\n  check ",
              "\n  diff ",
              "\n  log ",
              "\n  doctor ",
              "\n  preset ",
              "\n  report ",
              "\n  help ",
              "\n  launch ",
              "\n  browser ",
              "\n  activate ",
              "\n  installed ",
              "\n  name ",
              "\n  refresh ",
              "--catalogue ",
              "--host ",
              "--json ",
              "\nCommands that only look:\n",
              "\nCommands that drive the library, and say before what they do:\n",
              "\nExit status:\n  0  done\n  1  the answer is no, or problems were found\n  2  wrong use\n"
              "  3  failed\n"}) {
            EXPECT_THAT(result.output, HasSubstr(part));
        }
        EXPECT_EQ(result.problems, "");
        EXPECT_EQ(result.status, 0u);
    }
}

TEST(ToolCommandLine, HelpExplainsACommandWithAnExample)
{
    for (const std::wstring command :
         {L"list", L"show", L"explain", L"check", L"diff", L"log", L"doctor", L"preset", L"report", L"help",
          L"launch", L"browser", L"activate", L"installed", L"name", L"refresh"}) {
        const ToolResult result = RunCommandLine(L"help " + command);
        EXPECT_THAT(result.output, HasSubstr("Usage: qanh " + ToUtf8(command) + " "));
        EXPECT_THAT(result.output, HasSubstr("\nExample:\n  qanh " + ToUtf8(command) + " "));
        EXPECT_EQ(result.problems, "");
        EXPECT_EQ(result.status, 0u);
        EXPECT_EQ(RunCommandLine(command + L" --help"), result);
    }
}

TEST(ToolCommandLine, HelpFitsAConsole)
{
    for (const std::wstring command :
         {L"", L"list", L"show", L"explain", L"check", L"diff", L"log", L"doctor", L"preset", L"report",
          L"help", L"launch", L"browser", L"activate", L"installed", L"name", L"refresh"}) {
        for (const std::string& line : Split(RunCommandLine(L"help " + command).output, "\n")) {
            EXPECT_LE(line.size(), 79u) << line;
            EXPECT_FALSE(line.ends_with(" ")) << line;
        }
    }
    EXPECT_EQ(RunCommandLine(L"help list").output,
              "Usage: qanh list [options]\n"
              "\n"
              "Lists the applications of the catalogue: kind, name, package or shortcut, and\n"
              "what is special, with tabs between.\n"
              "\n"
              "Options:\n"
              "  -h,--help     Explain the command\n"
              "  --kind KIND   Only applications of this kind: store or desktop\n"
              "  --match TEXT  Only applications with this text in a name, reading, package or\n"
              "                shortcut\n"
              "\n"
              "Example:\n"
              "  qanh list --host Launcher --match mail\n"
              "\n"
              "--catalogue FILE, --log FILE or --host NAME says what to look at, --json asks\n"
              "for JSON. See docs/qanh.md.\n");
    EXPECT_THAT(RunCommandLine(L"help check").output,
                AllOf(StartsWith("Usage: qanh check [FILE] [options]\n"),
                      HasSubstr("\nArguments:\n  FILE  The file; without one, the catalogue\n")));
}

TEST(ToolCommandLine, TellsWhatAnOptionCanHave)
{
    const std::tuple<const wchar_t*, const char*, const char*> problems[] = {
        {L"list --kind shop", "--kind: there is no \"shop\", but store, desktop", "list"},
        {L"preset unmake", "ACTION: there is no \"unmake\", but make", "preset"},
        {L"log --slow 0", "--slow: \"0\" is no number from 1 to 100000", "log"},
        {L"log --slow 100001", "--slow: \"100001\" is no number from 1 to 100000", "log"},
        {L"log --slow 3x", "--slow: \"3x\" is no number from 1 to 100000", "log"},
        {L"log --code-page ja", "--code-page: \"ja\" is no number from 1 to 65535", "log"},
        {L"list 余り more", "\"余り\" is more than the command takes", "list"},
        {L"--json list --odd", "\"--odd\" is more than the command takes", "list"},
        {L"show", "NAME is required", "show"},
    };
    for (const auto& [commandLine, problem, command] : problems) {
        EXPECT_EQ(RunCommandLine(commandLine),
                  (ToolResult{"",
                              "qanh: " + std::string(problem) + "\n\"qanh help " + command +
                                  "\" tells how it is used.\n",
                              2}));
    }
}

TEST(ToolCommandLine, TellsWhichCommandThereIsNot)
{
    for (const wchar_t* commandLine :
         {L"nosuch", L"nosuch --json", L"--host a nosuch Mail", L"nosuch --tree"}) {
        EXPECT_EQ(RunCommandLine(commandLine), (ToolResult{"",
                                                           "qanh: there is no command \"nosuch\"\n"
                                                           "\"qanh help\" tells what there is.\n",
                                                           2}));
    }
    EXPECT_EQ(RunCommandLine(L"").problems,
              "qanh: no command was given\n\"qanh help\" tells what there is.\n");
}

TEST(ToolCommandLine, TellsItsVersion)
{
    const std::string version = std::to_string(QANH_VERSION_MAJOR) + "." +
                                std::to_string(QANH_VERSION_MINOR) + "." + std::to_string(QANH_VERSION_PATCH);
    EXPECT_EQ(RunCommandLine(L"--version"), (ToolResult{"qanh " + version + "\n", "", 0}));
    EXPECT_THAT(RunCommandLine(L"doctor").output, HasSubstr("ok\tqanh\tversion " + version + "\n"));
}

TEST(ToolCommandLine, HelpNamesNoOptionsThatACommandRefuses)
{
    for (const wchar_t* command :
         {L"diff", L"help", L"launch", L"browser", L"activate", L"installed", L"name", L"refresh"}) {
        EXPECT_THAT(RunCommandLine(std::wstring(L"help ") + command).output,
                    Not(AnyOf(HasSubstr("--catalogue"), HasSubstr("--host"), HasSubstr("--log"))));
    }
    EXPECT_THAT(RunCommandLine(L"help list").output, HasSubstr("--host NAME"));
}

TEST(ToolCommandLine, TellsWhichModesAndTilesThereAre)
{
    EXPECT_EQ(RunCommandLine(L"launch Mail --mode 7 --dry-run"),
              (ToolResult{"",
                          "qanh: --mode: there is no \"7\", but launch (0), show (1), plain (2)\n"
                          "\"qanh help launch\" tells how it is used.\n",
                          2}));
    EXPECT_EQ(RunCommandLine(L"browser --tile 3 --dry-run"),
              (ToolResult{"",
                          "qanh: --tile: there is no \"3\", but desktop (0), immersive (1), unchanged (2)\n"
                          "\"qanh help browser\" tells how it is used.\n",
                          2}));
    for (const wchar_t* mode : {L"plain", L"2"}) {
        EXPECT_EQ(RunCommandLine(std::wstring(L"launch Mail --dry-run --mode ") + mode).status, 0u);
    }
}

TEST(ToolCommandLine, HelpDoesNotKnowWhatIsNoCommand)
{
    EXPECT_EQ(RunCommandLine(L"help メール"), (ToolResult{"",
                                                          "qanh: there is no command \"メール\"\n"
                                                          "\"qanh help\" tells what there is.\n",
                                                          2}));
    EXPECT_EQ(RunCommandLine(L"help list show").status, 2u);
}

TEST(ToolCommandLine, TakesANameThatLooksLikeAnOption)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.xml";
    WriteFileBytes(path, R"(<DesktopApps><DesktopApp DisplayName="/kind" LnkFileName="C:\1.lnk"/>
        <DesktopApp DisplayName="--kind" LnkFileName="C:\2.lnk"/></DesktopApps>)");
    EXPECT_THAT(RunTool({L"show", L"/kind", L"--catalogue", path}).output, HasSubstr("C:\\1.lnk"));
    EXPECT_THAT(RunTool({L"--catalogue", path, L"show", L"--", L"--kind"}).output, HasSubstr("C:\\2.lnk"));
}

} // namespace
