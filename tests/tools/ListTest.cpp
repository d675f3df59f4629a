// qanh list: which applications the catalogue holds.

#include "tools/ToolTest.h"

namespace {

using namespace test;

constexpr char kRecords[] = R"(<MetroApps>
<Package PackageFamilyName="Vel.Calendar_1" Version="1.2.0.7"><MetroApp DisplayName="calendar" ShortName="cal"/><MetroApp DisplayName="people" RubyDisplayName="r" RubyShortName="s"/></Package>
<Package PackageFamilyName="Vel.Empty_1" NeedReserve="1" IsInstalled="0"/>
</MetroApps><DesktopApps>
<DesktopApp DisplayName="メール" LnkFileName="C:\メール.lnk" RubyDisplayName="めーる" NeedReserve="1"/>
<DesktopApp DisplayName="Notepad" LocalizeName="Editor" LnkFileName="C:\Notepad.lnk" IsInstalled="0" IsDualMode="1"/>
</DesktopApps>)";

using ToolList = ToolTest;

TEST_F(ToolList, HasALineForEachApplication)
{
    WriteCatalogue(kRecords);
    EXPECT_EQ(Output({L"list"}),
              "store\tcalendar\tVel.Calendar_1\tshort name cal\n"
              "store\tpeople\tVel.Calendar_1\treading r, reading of the short name s\n"
              "store\t\tVel.Empty_1\tno names, reserved, not installed\n"
              "desktop\tメール\tC:\\メール.lnk\treading めーる, reserved\n"
              "desktop\tEditor\tC:\\Notepad.lnk\tdisplay name Notepad, dual mode, not installed\n");
}

TEST_F(ToolList, TakesOneKind)
{
    WriteCatalogue(R"(<Package PackageFamilyName="p"><MetroApp DisplayName="a"/></Package>
        <DesktopApps><DesktopApp DisplayName="b" LnkFileName="C:\b.lnk"/></DesktopApps>)");
    EXPECT_EQ(Output({L"list", L"--kind", L"store"}), "store\ta\tp\n");
    EXPECT_EQ(Output({L"list", L"--kind", L"desktop"}), "desktop\tb\tC:\\b.lnk\n");
}

TEST_F(ToolList, TakesWhatHasTheTextInAnyLetterCase)
{
    WriteCatalogue(kRecords);
    EXPECT_EQ(Output({L"list", L"--match", L"CAL"}),
              "store\tcalendar\tVel.Calendar_1\tshort name cal\n"
              "store\tpeople\tVel.Calendar_1\treading r, reading of the short "
              "name s\n");
    EXPECT_EQ(Output({L"list", L"--match", L"めー"}),
              "desktop\tメール\tC:\\メール.lnk\treading めーる, reserved\n");
    EXPECT_EQ(Output({L"list", L"--kind", L"store", L"--match", L"PEO"}),
              "store\tpeople\tVel.Calendar_1\treading r, reading of the short name s\n");
}

TEST_F(ToolList, IsJsonWithTheNamesOfTheFile)
{
    WriteCatalogue(
        R"(<Package PackageFamilyName="p" Version="1.2.3.4"><MetroApp DisplayName="a &quot;b&quot;"/></Package>
        <DesktopApps><DesktopApp DisplayName="メール" LnkFileName="C:\b.lnk" IsInstalled="0"/></DesktopApps>)");
    EXPECT_EQ(Output({L"list", L"--json"}), R"({
  "Catalogue": ")" + JsonPath() + R"(",
  "IsCut": false,
  "Applications": [
    {
      "Kind": "store",
      "DisplayName": "a \"b\"",
      "ShortName": "",
      "RubyDisplayName": "",
      "RubyShortName": "",
      "PackageFamilyName": "p",
      "Version": "1.2.3.4",
      "NeedReserve": false,
      "IsInstalled": true
    },
    {
      "Kind": "desktop",
      "DisplayName": "メール",
      "LnkFileName": "C:\\b.lnk",
      "LocalizeName": "",
      "RubyDisplayName": "",
      "NeedReserve": false,
      "IsInstalled": false,
      "IsDualMode": false
    }
  ]
}
)");
}

TEST_F(ToolList, SaysThatThereIsNone)
{
    WriteCatalogue("");
    EXPECT_EQ(Run({L"list"}), (ToolResult{"", "qanh: no application in " + ToUtf8(m_path) + "\n", 1}));
    WriteCatalogue(kRecords);
    const std::string problem =
        "qanh: no application in " + ToUtf8(m_path) + " is of that kind and has that text\n";
    EXPECT_EQ(Run({L"list", L"--match", L"nothing"}), (ToolResult{"", problem, 1}));
    EXPECT_EQ(Run({L"list", L"--match", L"nothing", L"--json"}),
              (ToolResult{"{\n  \"Catalogue\": \"" + JsonPath() +
                              "\",\n  \"IsCut\": false,\n  \"Applications\": []\n}\n",
                          problem, 1}));
}

TEST_F(ToolList, RefusesWrongUse)
{
    WriteCatalogue(kRecords);
    for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{L"list", L"--kind", L"game"},
                                                       {L"list", L"--kind"},
                                                       {L"list", L"mail"},
                                                       {L"list", L"--nothing"}}) {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.problems, StartsWith("qanh: "));
        EXPECT_EQ(result.status, 2u);
    }
}

TEST_F(ToolList, ReplacesControlCharactersInNames)
{
    WriteCatalogue(
        "<DesktopApps><DesktopApp DisplayName=\"a&#x7F;b&#x9B;c\" LnkFileName=\"C:\\a.lnk\"/></DesktopApps>");
    EXPECT_EQ(Output({L"list"}), "desktop\ta\uFFFDb\uFFFDc\tC:\\a.lnk\n");
}

} // namespace
