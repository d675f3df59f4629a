// qanh diff: what became of a catalogue.

#include "tools/ToolTest.h"

namespace {

using namespace test;

class ToolDiff : public Test
{
protected:
    ToolResult Diff(std::string_view before, std::string_view after,
                    const std::vector<std::wstring>& options = {}) const
    {
        WriteFileBytes(m_before, before);
        WriteFileBytes(m_after, after);
        std::vector<std::wstring> arguments{L"diff", m_before, m_after};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunTool(arguments);
    }

    const TemporaryFolder m_folder;
    const std::wstring m_before = m_folder / L"before.xml";
    const std::wstring m_after = m_folder / L"after.xml";
};

constexpr char kBefore[] = R"(<Applications>
<Package PackageFamilyName="a_1" Version="1.2.3.4"><MetroApp DisplayName="a"/><MetroApp DisplayName="gone"/></Package>
<Package PackageFamilyName="b_1"/>
<DesktopApps><DesktopApp DisplayName="メール" LnkFileName="C:\1.lnk"/><DesktopApp DisplayName="x" LnkFileName="C:\2.lnk"/></DesktopApps>
</Applications>)";

TEST_F(ToolDiff, SaysNothingOfCataloguesThatAreTheSame)
{
    EXPECT_EQ(Diff(kBefore, kBefore), (ToolResult{"", "", 0}));
    EXPECT_EQ(Diff("<Applications/>", "<Applications><MetroApps/>"), (ToolResult{"", "", 0}));
}

TEST_F(ToolDiff, TellsWhatWasRemovedAddedAndChanged)
{
    EXPECT_EQ(Diff(kBefore, R"(<Applications>
<Package PackageFamilyName="a_1" Version="1.2.3.5" NeedReserve="1"><MetroApp DisplayName="a"/><MetroApp DisplayName="new"/></Package>
<DesktopApps><DesktopApp DisplayName="メール" RubyDisplayName="めーる" LnkFileName="c:\1.LNK"/><DesktopApp DisplayName="x" LnkFileName="C:\2.lnk"/><DesktopApp DisplayName="x" LnkFileName="C:\3.lnk"/></DesktopApps>
</Applications>)"),
              (ToolResult{"- store\tgone\ta_1\n"
                          "- store\t\tb_1\tno names\n"
                          "+ desktop\tx\tC:\\3.lnk\n"
                          "+ store\tnew\ta_1\treserved\n"
                          "~ desktop\tメール\tc:\\1.LNK\treading めーる\n"
                          "    LnkFileName: \"C:\\1.lnk\" became \"c:\\1.LNK\"\n"
                          "    RubyDisplayName: \"\" became \"めーる\"\n"
                          "~ store\ta\ta_1\treserved\n"
                          "    Version: \"1.2.3.4\" became \"1.2.3.5\"\n"
                          "    NeedReserve: \"0\" became \"1\"\n",
                          "", 1}));
}

TEST_F(ToolDiff, SeesThroughVersionsWhoseNumbersTradedPlaces)
{
    const auto package = [](const std::string& version) {
        return "<Package PackageFamilyName=\"a_1\" Version=\"" + version +
               "\"><MetroApp DisplayName=\"a\"/></Package>";
    };
    EXPECT_EQ(Diff(package("1.2.3.4"), package("1.2.4.3")), (ToolResult{"", "", 0}));
    EXPECT_EQ(Diff(package("1.2.3.4"), package("2.1.3.4")).status, 1u);
}

TEST_F(ToolDiff, CountsRecordsThatStandTwice)
{
    const std::string record = R"(<DesktopApp DisplayName="x" LnkFileName="C:\2.lnk"/>)";
    EXPECT_EQ(Diff("<DesktopApps>" + record + "</DesktopApps>",
                   "<DesktopApps>" + record + record + "</DesktopApps>"),
              (ToolResult{"+ desktop\tx\tC:\\2.lnk\n", "", 1}));
}

TEST_F(ToolDiff, IsJson)
{
    EXPECT_EQ(
        Diff(R"(<Package PackageFamilyName="a_1"><MetroApp DisplayName="a"/></Package>)",
             R"(<Package PackageFamilyName="a_1" IsInstalled="0"><MetroApp DisplayName="a"/></Package>)",
             {L"--json"}),
        (ToolResult{R"({
  "IsCut": false,
  "Removed": [],
  "Added": [],
  "Changed": [
    {
      "Application": {
        "Kind": "store",
        "DisplayName": "a",
        "ShortName": "",
        "RubyDisplayName": "",
        "RubyShortName": "",
        "PackageFamilyName": "a_1",
        "Version": "0.0.0.0",
        "NeedReserve": false,
        "IsInstalled": false
      },
      "Changes": [
        {
          "Field": "IsInstalled",
          "Before": "1",
          "After": "0"
        }
      ]
    }
  ]
}
)",
                    "", 1}));
}

TEST_F(ToolDiff, RefusesWrongUse)
{
    EXPECT_EQ(RunTool({L"diff"}).status, 2u);
    EXPECT_EQ(RunTool({L"diff", m_before}).status, 2u);
    EXPECT_EQ(RunTool({L"diff", m_before, m_after, m_after}).status, 2u);
    EXPECT_EQ(Diff(kBefore, kBefore, {L"--host", L"Launcher"}).status, 2u);
}

TEST_F(ToolDiff, OfAFileThatIsNotThereIsAFailure)
{
    WriteFileBytes(m_before, kBefore);
    EXPECT_EQ(RunTool({L"diff", m_before, m_after}),
              (ToolResult{"",
                          "qanh: cannot read " + ToUtf8(m_after) +
                              ": 0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)\n",
                          3}));
}

} // namespace
