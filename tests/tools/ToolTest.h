#pragma once

#include "support/Test.h"
#include "tools/ToolRun.h"

#include <string>
#include <string_view>
#include <vector>

namespace test {

using namespace testing;

// A catalogue file of the test's own, that the tool is told to look at.
class ToolTest : public Test
{
protected:
    // The file holds these elements inside of its root.
    void WriteCatalogue(std::string_view records)
    {
        WriteFileBytes(m_path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Applications>\n" +
                                   std::string(records) + "\n</Applications>\n");
    }

    // Runs the tool with these arguments and the catalogue.
    ToolResult Run(std::vector<std::wstring> arguments) const
    {
        arguments.insert(arguments.end(), {L"--catalogue", m_path});
        return RunTool(arguments);
    }

    // What it answers, when that is all there is to say.
    std::string Output(const std::vector<std::wstring>& arguments) const
    {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.problems, "");
        EXPECT_EQ(result.status, 0u);
        return result.output;
    }

    // As JSON holds the catalogue's path.
    [[nodiscard]] std::string JsonPath() const
    {
        std::string path = ToUtf8(m_path);
        ReplaceAll(path, "\\", "\\\\");
        return path;
    }

    const TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"AppNameList.xml";
};

} // namespace test
