// What docs/qanh.md says that the tool prints is what it prints.

#include "standin/ModulePath.h"
#include "tools/ToolTest.h"

namespace {

using namespace test;

// The folder that stands for the user's in the examples.
constexpr char kUserFolder[] = "C:\\Users\\ann\\AppData\\Local";

struct Example
{
    std::string commandLine; // without "qanh "
    std::string expected;
};

// The texts of the blocks of this kind.
std::vector<std::string> BlocksOf(const std::string& page, const std::string& kind)
{
    std::vector<std::string> blocks = Split(page, "```" + kind + "\n");
    blocks.erase(blocks.begin());
    for (std::string& block : blocks) {
        block.resize(block.find("```"));
    }
    return blocks;
}

// Every block of the kind "console": a command behind "> ", and what it prints up to the next.
std::vector<Example> ExamplesOf(const std::string& page)
{
    std::vector<Example> examples;
    bool isInside = false;
    for (const std::string& line : Split(page, "\n")) {
        if (line.rfind("```", 0) == 0) {
            isInside = line == "```console";
        } else if (isInside && line.rfind("> qanh ", 0) == 0) {
            examples.push_back({line.substr(7), ""});
        } else if (isInside && !examples.empty()) {
            examples.back().expected += line + "\n";
        }
    }
    return examples;
}

// The tool is run in this folder, until the end of the scope.
class WorkingFolder
{
public:
    explicit WorkingFolder(const std::wstring& path)
    {
        GetCurrentDirectoryW(MAX_PATH, m_before);
        SetCurrentDirectoryW(path.c_str());
    }
    ~WorkingFolder() { SetCurrentDirectoryW(m_before); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    wchar_t m_before[MAX_PATH] = {};
};

TEST(ToolDocumentation, ShowsWhatTheToolPrints)
{
    std::string page = ReadFileBytes(standin::ModuleFolder() + L"\\qanh.md");
    ReplaceAll(page, "\r\n", "\n");
    const TemporaryFolder folder;
    const ScopedEnvironment localAppData(L"LOCALAPPDATA", folder.Path().c_str());
    MakeFolder(folder / L"Vel\\QanHelper\\Launcher");
    const std::vector<std::string> files = BlocksOf(page, "xml");
    ASSERT_EQ(files.size(), 2u);
    WriteFileBytes(folder / L"Vel\\QanHelper\\Launcher\\AppNameList.xml", files[0]);
    const std::vector<std::string> logs = BlocksOf(page, "log");
    ASSERT_EQ(logs.size(), 1u);
    WriteFileBytes(folder / L"Vel\\QanHelper\\Launcher\\QanHelperLog.txt", logs[0]);
    WriteFileBytes(folder / L"AppNameList.xml", files[0]);
    WriteFileBytes(folder / L"PresetAppNameList.xml", files[1]);
    const WorkingFolder here(folder.Path());
    std::string jsonFolder = ToUtf8(folder.Path());
    ReplaceAll(jsonFolder, "\\", "\\\\");
    std::string jsonUserFolder = kUserFolder;
    ReplaceAll(jsonUserFolder, "\\", "\\\\");

    const std::vector<Example> examples = ExamplesOf(page);
    EXPECT_GE(examples.size(), 8u);
    for (const Example& example : examples) {
        const ToolResult result = RunCommandLine(FromUtf8(example.commandLine));
        std::string printed = result.output + result.problems;
        ReplaceAll(printed, jsonFolder, jsonUserFolder);
        ReplaceAll(printed, ToUtf8(folder.Path()), kUserFolder);
        EXPECT_EQ(printed, example.expected) << example.commandLine;
    }
}

} // namespace
