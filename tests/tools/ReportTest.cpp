// The page that the tool makes for a support case, as a file. scripts/check-report opens it in a browser.

#include "tools/ToolTest.h"

namespace {

using namespace test;

class ToolReport : public ToolTest
{
protected:
    // Makes the report with these options and returns it.
    std::string Page(std::vector<std::wstring> options)
    {
        DeleteFileW(m_report.c_str());
        options.insert(options.begin(), {L"report", L"-o", m_report});
        EXPECT_EQ(RunTool(options), (ToolResult{"", "", 0}));
        return ReadFileBytes(m_report);
    }

    const std::wstring m_report = m_folder / L"report.html";
    const std::wstring m_log = m_folder / L"log.txt";
};

TEST_F(ToolReport, HoldsCatalogueSettingsProblemsAndLog)
{
    WriteCatalogue(
        R"(<DesktopApps><DesktopApp DisplayName="Mail" LnkFileName="C:\1.lnk" NeedReserve="no"/></DesktopApps>)");
    WriteFileBytes(m_log, "[2014/03/01 09:05:07.042]QanhLaunchBySearch(Mail, 0, 1) IN\r\n"
                          "[2014/03/01 09:05:08.653]QanhLaunchBySearch OUT(0x80070057)\r\n");
    const std::string page = Page({L"--catalogue", m_path, L"--log", m_log});
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>\n"));
    for (const char* part : {"\"DisplayName\":\"Mail\"", "NeedReserve=\\\"no\\\" reads as 1",
                             "\"Subject\":\"setting RefreshInterval\"", "\"Milliseconds\":1611",
                             "0x80070057 E_INVALIDARG", "\"Problems\":[]"}) {
        EXPECT_THAT(page, HasSubstr(part));
    }
}

TEST_F(ToolReport, NeedsNothingFromElsewhere)
{
    WriteCatalogue("");
    const std::string page = Page({L"--catalogue", m_path});
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
    for (const char* part :
         {" src=", "href=", "@import", "url(", "fetch(", "XMLHttpRequest", "innerHTML", "QANH_PAGE"}) {
        EXPECT_THAT(page, Not(HasSubstr(part)));
    }
}

// The data stands in an element that the first "<" of an end tag would end.
TEST_F(ToolReport, HasNamesAsTextOnly)
{
    WriteCatalogue(
        R"(<DesktopApps><DesktopApp DisplayName="&lt;/script>&lt;script>メール&amp;" LnkFileName="C:\1.lnk"/></DesktopApps>)");
    const std::string page = Page({L"--catalogue", m_path});
    EXPECT_THAT(
        page,
        HasSubstr(
            "\"DisplayName\":\"\\u003c/script\\u003e\\u003cscript\\u003e\\u30e1\\u30fc\\u30eb\\u0026\""));
    EXPECT_EQ(Split(page, "<script").size(), 3u);
    EXPECT_EQ(Split(page, "</script>").size(), 3u);
}

TEST_F(ToolReport, TellsWhatCannotBeRead)
{
    const ToolResult result = Run({L"report", L"-o", m_report, L"--log", m_log});
    EXPECT_THAT(result.problems, StartsWith("qanh: cannot read " + ToUtf8(m_path) +
                                            ": 0x80070002 ERROR_FILE_NOT_FOUND (there is no such file); "
                                            "cannot read " +
                                            ToUtf8(m_log) + ": 0x80070002 "));
    EXPECT_EQ(result.status, 1u);
    const std::string page = ReadFileBytes(m_report);
    EXPECT_THAT(page, HasSubstr("AppNameList.xml: 0x80070002 ERROR_FILE_NOT_FOUND"));
    EXPECT_THAT(page, HasSubstr("log.txt: 0x80070002 ERROR_FILE_NOT_FOUND"));
}

TEST_F(ToolReport, IsTheFileInJson)
{
    const auto json = [this] {
        const ToolResult result = Run({L"report", L"--json", L"-o", m_report});
        DeleteFileW(m_report.c_str());
        std::string text = result.output;
        ReplaceAll(text, JsonPath(), "CATALOGUE");
        return text;
    };
    WriteCatalogue("");
    EXPECT_THAT(json(),
                AllOf(StartsWith("{\n  \"File\": \""), EndsWith("report.html\",\n  \"Problems\": []\n}\n")));
    DeleteFileW(m_path.c_str());
    EXPECT_THAT(
        json(),
        EndsWith("\"Problems\": [\n    \"cannot read CATALOGUE: 0x80070002 ERROR_FILE_NOT_FOUND (there "
                 "is no such file)\"\n  ]\n}\n"));
}

TEST_F(ToolReport, OverwritesNoFile)
{
    WriteCatalogue("");
    const std::string before = ReadFileBytes(m_path);
    EXPECT_EQ(Run({L"report", L"-o", m_path}).status, 3u);
    EXPECT_EQ(ReadFileBytes(m_path), before);
    EXPECT_THAT(Run({L"report", L"--json", L"-o", m_path}).output, StartsWith("{\n  \"Error\": {\n"));
}

TEST_F(ToolReport, NeedsAFileAndSomethingToLookAt)
{
    EXPECT_EQ(Run({L"report"}).status, 2u);
    EXPECT_EQ(
        RunCommandLine(L"report --host Launcher -o \"\""),
        (ToolResult{
            "", "qanh: the name of the file to make is empty\n\"qanh help report\" tells how it is used.\n",
            2}));
    EXPECT_EQ(RunTool({L"report", L"-o", m_report}),
              (ToolResult{"",
                          "qanh: a report of what? Give --host NAME, --catalogue FILE or --log FILE\n"
                          "\"qanh help report\" tells how it is used.\n",
                          2}));
    EXPECT_FALSE(Exists(m_report));
}

} // namespace
