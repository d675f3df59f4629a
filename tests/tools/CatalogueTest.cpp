// Which catalogue the tool looks at, and what it says of one that it cannot read.

#include "tools/ToolTest.h"

namespace {

using namespace test;

constexpr char kCatalogue[] =
    R"(<Applications><DesktopApps><DesktopApp DisplayName="Mail" LnkFileName="C:\1.lnk"/></DesktopApps></Applications>)";
constexpr char kMail[] = "desktop\tMail\tC:\\1.lnk\n";

class ToolCatalogue : public Test
{
protected:
    ToolResult RunAt(const std::wstring& path) const { return RunTool({L"list", L"--catalogue", path}); }
    ToolResult ReadText(std::string_view text) const
    {
        WriteFileBytes(m_path, text);
        return RunAt(m_path);
    }

    const TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"カタログ.xml";
};

TEST_F(ToolCatalogue, IsFoundForAHost)
{
    const ScopedEnvironment localAppData(L"LOCALAPPDATA", m_folder.Path().c_str());
    MakeFolder(m_folder / L"Vel\\QanHelper\\ランチャー");
    WriteFileBytes(m_folder / L"Vel\\QanHelper\\ランチャー\\AppNameList.xml", kCatalogue);
    for (const wchar_t* host : {L"ランチャー", L"ランチャー.exe", L"C:\\Tools\\ランチャー.exe",
                                L"C:/Tools/ランチャー.exe", L"Tools/ランチャー.exe"}) {
        EXPECT_EQ(RunTool({L"list", L"--host", host}), (ToolResult{kMail, "", 0}));
    }
    // Before the command too, and with a backslash at the end of the folder.
    const ScopedEnvironment withBackslash(L"LOCALAPPDATA", (m_folder.Path() + L"\\").c_str());
    EXPECT_EQ(RunTool({L"--host", L"ランチャー", L"list"}), (ToolResult{kMail, "", 0}));
}

TEST_F(ToolCatalogue, OfAHostThatIsNotThereIsAFailureAndMakesNoFolder)
{
    const ScopedEnvironment localAppData(L"LOCALAPPDATA", m_folder.Path().c_str());
    EXPECT_EQ(
        RunTool({L"list", L"--host", L"Launcher"}),
        (ToolResult{
            "",
            "qanh: cannot read " + ToUtf8(m_folder.Path()) +
                "\\Vel\\QanHelper\\Launcher\\AppNameList.xml: 0x80070003 ERROR_PATH_NOT_FOUND (there is "
                "no such folder)\n",
            3}));
    EXPECT_FALSE(Exists(m_folder / L"Vel"));
}

TEST_F(ToolCatalogue, CannotBeToldWithoutTheFolderOfTheUser)
{
    const ScopedEnvironment localAppData(L"LOCALAPPDATA", nullptr);
    EXPECT_EQ(
        RunTool({L"list", L"--host", L"Launcher"}),
        (ToolResult{"",
                    "qanh: cannot tell where the catalogues are: LOCALAPPDATA is not set: 0x80004005 E_FAIL "
                    "(the system does not say why)\n",
                    3}));
}

TEST_F(ToolCatalogue, ThatCannotBeReadIsAnErrorInJsonToo)
{
    const std::wstring path = m_folder / L"無い.xml";
    std::string jsonPath = ToUtf8(path);
    ReplaceAll(jsonPath, "\\", "\\\\");
    const std::string meaning = "0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)";
    const ToolResult expected{"{\n"
                              "  \"Error\": {\n"
                              "    \"Text\": \"cannot read " +
                                  jsonPath +
                                  "\",\n"
                                  "    \"Result\": \"0x80070002\",\n"
                                  "    \"Meaning\": \"" +
                                  meaning +
                                  "\"\n"
                                  "  }\n"
                                  "}\n",
                              "qanh: cannot read " + ToUtf8(path) + ": " + meaning + "\n", 3};
    for (const wchar_t* command : {L"list", L"show a", L"explain a", L"check", L"preset make"}) {
        EXPECT_EQ(RunCommandLine(std::wstring(command) + L" --json --catalogue \"" + path + L"\""), expected);
    }
    EXPECT_EQ(RunTool({L"--json", L"diff", path, path}), expected);
    EXPECT_EQ(RunTool({L"log", L"--json", L"--log", path}), expected);
    // A command line that was not understood has no answer of any kind.
    EXPECT_EQ(RunTool({L"list", L"--json"}).output, "");
    EXPECT_EQ(RunTool({L"list", L"--json"}).status, 2u);
}

TEST_F(ToolCatalogue, MustBeNamedOnce)
{
    EXPECT_EQ(RunTool({L"list"}), (ToolResult{"",
                                              "qanh: which catalogue? Give --catalogue FILE or --host NAME\n"
                                              "\"qanh help list\" tells how it is used.\n",
                                              2}));
    EXPECT_EQ(RunTool({L"list", L"--host", L"a", L"--catalogue", m_path}).status, 2u);
}

TEST_F(ToolCatalogue, ThatCannotBeOpenedIsAFailure)
{
    EXPECT_EQ(RunAt(m_path), (ToolResult{"",
                                         "qanh: cannot read " + ToUtf8(m_path) +
                                             ": 0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)\n",
                                         3}));
    const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const ToolResult held = RunAt(m_path);
    CloseHandle(file);
    EXPECT_EQ(held, (ToolResult{"",
                                "qanh: cannot read " + ToUtf8(m_path) +
                                    ": 0x80070020 ERROR_SHARING_VIOLATION (another program holds the file)\n",
                                3}));
}

TEST_F(ToolCatalogue, IsWholeForTheLibraryWithoutTheEndOfItsRoot)
{
    const std::string text = kCatalogue;
    EXPECT_EQ(ReadText(text.substr(0, text.find("</Applications>"))), (ToolResult{kMail, "", 0}));
}

TEST_F(ToolCatalogue, IsReadUpToThePlaceWhereItBreaksOff)
{
    std::string text = kCatalogue;
    ReplaceAll(text, "</DesktopApps>", "</Desktop>");
    EXPECT_EQ(ReadText(text),
              (ToolResult{kMail,
                          "qanh: " + ToUtf8(m_path) +
                              " is read in part only: 0xC00CEE3B WC_E_ELEMENTMATCH (an end tag of "
                              "another element)\n",
                          0}));
}

// A file of the library itself lacks the end of its root, and nothing else.
TEST_F(ToolCatalogue, ThatIsCutOffIsReadInPartOnly)
{
    const std::string text = kCatalogue;
    for (const std::string& cut :
         {text.substr(0, text.find("</DesktopApps>")), text.substr(0, text.find("</DesktopApps>") + 9),
          text.substr(0, text.find("<DesktopApps>") + 13) + "<DesktopApp DisplayName=\"Mai",
          std::string("not xml"), std::string()}) {
        const std::string problem = "qanh: " + ToUtf8(m_path) + " is read in part only: 0xC00CEE";
        EXPECT_THAT(ReadText(cut).problems, StartsWith(problem)) << cut;
        for (const std::vector<std::wstring>& arguments :
             {std::vector<std::wstring>{L"show", L"Mail"}, {L"explain", L"Mail"}}) {
            std::vector<std::wstring> all = arguments;
            all.insert(all.end(), {L"--catalogue", m_path});
            EXPECT_THAT(RunTool(all).problems, StartsWith(problem)) << cut;
            all.push_back(L"--json");
            EXPECT_THAT(RunTool(all).output, HasSubstr("\n  \"IsCut\": true,\n")) << cut;
        }
        EXPECT_THAT(RunTool({L"list", L"--json", L"--catalogue", m_path}).output,
                    HasSubstr("\n  \"IsCut\": true,\n"))
            << cut;
        EXPECT_THAT(RunTool({L"diff", L"--json", m_path, m_path}).output, HasSubstr("\n  \"IsCut\": true,\n"))
            << cut;
    }
}

TEST_F(ToolCatalogue, ThatIsEmptyHasNoApplication)
{
    const ToolResult result = ReadText("");
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.problems, EndsWith("qanh: no application in " + ToUtf8(m_path) + "\n"));
    EXPECT_EQ(result.status, 1u);
}

} // namespace
