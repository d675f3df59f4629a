// qanh explain: what a launch by search pastes, and why.

#include "tools/ToolTest.h"

namespace {

using namespace test;

constexpr char kRecords[] = R"(
<Package PackageFamilyName="Gmail_1"><MetroApp DisplayName="gmail" ShortName="web mail"/></Package>
<Package PackageFamilyName="Post_1"><MetroApp DisplayName="post" ShortName="P" RubyDisplayName="mail by post" RubyShortName="post, mail"/></Package>
<Package PackageFamilyName="NoName_1"><MetroApp ShortName="short mail"/></Package>
<Package PackageFamilyName="Gone_1" IsInstalled="0"><MetroApp DisplayName="gone mail"/></Package>
<Package PackageFamilyName="Empty_1"/>
<DesktopApps>
<DesktopApp DisplayName="Mail" LnkFileName="C:\Mail.lnk"/>
<DesktopApp DisplayName="Add Mail" LnkFileName="C:\Add Mail.lnk"/>
<DesktopApp DisplayName="Mail Box" LnkFileName="C:\Mail Box.lnk"/>
<DesktopApp DisplayName="mail!" LnkFileName="C:\mail!.lnk"/>
<DesktopApp DisplayName="mail reader" LocalizeName="Reader" LnkFileName="C:\Reader.lnk"/>
<DesktopApp DisplayName="Reader" LocalizeName="mail list" LnkFileName="C:\List.lnk"/>
<DesktopApp DisplayName="GMAIL" RubyDisplayName="gmail" LnkFileName="C:\gmail.lnk"/>
<DesktopApp DisplayName="Old mail" LnkFileName="C:\Old.lnk" IsInstalled="0"/>
</DesktopApps>)";

class ToolExplain : public ToolTest
{
protected:
    // The lines below a heading, without the blanks in front of them.
    std::vector<std::string> Section(const std::wstring& name, const std::string& heading) const
    {
        std::vector<std::string> lines;
        bool isInside = false;
        for (const std::string& line : Split(Run({L"explain", name}).output, "\n")) {
            if (line.rfind("  ", 0) != 0) {
                isInside = line.rfind(heading + ":", 0) == 0;
            } else if (isInside) {
                lines.push_back(line.substr(2));
            }
        }
        return lines;
    }
};

TEST_F(ToolExplain, TellsTheQueryAndWhyEachNameIsInIt)
{
    WriteCatalogue(kRecords);
    // The line of the log has 39 bytes of its own; the query has 27 in names, 6 more for each of the 5
    // excluded ones, the 4 of the wanted name, and 4.
    EXPECT_THAT(
        Run({L"explain", L"Mail"}).output,
        StartsWith("Query: \"Mail\" NOT(\"gmail\" OR \"web mail\" OR \"post\" OR \"P\" OR \"mail list\")\n"
                   "Log line: 104 of 1023 bytes\n"
                   "Search mode 2 pastes: Mail\n"
                   "Called so:\n  desktop\tMail\tC:\\Mail.lnk\n"));
    EXPECT_THAT(Section(L"Mail", "Excluded"),
                ElementsAre("gmail\tdisplay name\tstore\tGmail_1", "GMAIL\treading\tdesktop\tC:\\gmail.lnk",
                            "web mail\tshort name\tstore\tGmail_1", "post\treading\tstore\tPost_1",
                            "P\treading of the short name\tstore\tPost_1",
                            "mail list\tlocalised name\tdesktop\tC:\\List.lnk"));
}

TEST_F(ToolExplain, TellsWhatIsLeftInAndWhy)
{
    WriteCatalogue(kRecords);
    EXPECT_THAT(
        Section(L"Mail", "Left in"),
        ElementsAre(
            "short mail\tnot asked: its application has no display name\tstore\tNoName_1",
            "Add Mail\tcapital letters; comes first and is started instead\tdesktop\tC:\\Add Mail.lnk",
            "Mail Box\tcapital letters\tdesktop\tC:\\Mail Box.lnk",
            "mail!\tsame words: taken for the wanted one\tdesktop\tC:\\mail!.lnk"));
    EXPECT_EQ(Run({L"explain", L"Mail"}).status, 1u);
}

TEST_F(ToolExplain, TellsOfNamesThatLackAWord)
{
    WriteCatalogue(R"(<DesktopApps><DesktopApp DisplayName="Web Mail Box" LnkFileName="C:\1.lnk"/>
        <DesktopApp DisplayName="mail" LnkFileName="C:\2.lnk"/><DesktopApp DisplayName="Big BOX Web" LnkFileName="C:\3.lnk"/>
        <DesktopApp DisplayName="paint" LnkFileName="C:\4.lnk"/></DesktopApps>)");
    EXPECT_EQ(Output({L"explain", L"web mail box"}),
              "Query: \"web mail box\"\n"
              "Log line: 53 of 1023 bytes\n"
              "Search mode 2 pastes: web mail box\n"
              "Called so:\n  desktop\tWeb Mail Box\tC:\\1.lnk\n"
              "Excluded: none\n"
              "Left in:\n"
              "  Big BOX Web\tother word: lacks \"mail\"\tdesktop\tC:\\3.lnk\n");
}

TEST_F(ToolExplain, LeavesOutWhatIsNotInstalled)
{
    WriteCatalogue(
        R"(<Package PackageFamilyName="p" IsInstalled="0"><MetroApp DisplayName="a mail"/></Package>
        <DesktopApps><DesktopApp DisplayName="Mail" LnkFileName="C:\1.lnk"/>
        <DesktopApp DisplayName="A Mail" LnkFileName="C:\2.lnk" IsInstalled="0"/></DesktopApps>)");
    EXPECT_EQ(Output({L"explain", L"Mail"}),
              "Query: \"Mail\"\nLog line: 45 of 1023 bytes\nSearch mode 2 pastes: Mail\n"
              "Called so:\n  desktop\tMail\tC:\\1.lnk\nExcluded: none\nLeft in: none\n");
}

TEST_F(ToolExplain, SaysThatNothingIsCalledSo)
{
    WriteCatalogue("");
    EXPECT_EQ(Run({L"explain", L"Mail"}),
              (ToolResult{"Query: \"Mail\"\nLog line: 45 of 1023 bytes\nSearch mode 2 pastes: the query\n"
                          "Called so: none\nExcluded: none\nLeft in: none\n",
                          "qanh: no application that is installed is called \"Mail\"\n", 1}));
}

TEST_F(ToolExplain, KnowsWhatSearchMode2Pastes)
{
    // A Store application is not found by its exact name, and neither is a desktop application in dual mode.
    WriteCatalogue(R"(<Package PackageFamilyName="p"><MetroApp DisplayName="mail"/></Package>
        <DesktopApps><DesktopApp DisplayName="Dual" LnkFileName="C:\2.lnk" IsDualMode="1"/>
        <DesktopApp DisplayName="メール" LnkFileName="C:\3.lnk"/></DesktopApps>)");
    EXPECT_THAT(Output({L"explain", L"Mail"}), HasSubstr("\nSearch mode 2 pastes: the query\n"));
    EXPECT_THAT(Output({L"explain", L"dual"}), HasSubstr("\nSearch mode 2 pastes: the query\n"));
    EXPECT_THAT(Output({L"explain", L"メール"}), HasSubstr("\nSearch mode 2 pastes: メール\n"));
}

TEST_F(ToolExplain, TellsWhenTheQueryIsTooLongForTheLog)
{
    // A query of 984 bytes still has room: 6 for the wanted name, 6 for " NOT()", 2 for the quotes of one
    // name.
    const auto writeRival = [this](std::size_t length) {
        WriteCatalogue("<DesktopApps><DesktopApp DisplayName=\"Mail\" LnkFileName=\"C:\\1.lnk\"/><DesktopApp "
                       "DisplayName=\"" +
                       std::string(length - 4, 'x') + "mail\" LnkFileName=\"C:\\2.lnk\"/></DesktopApps>");
    };
    writeRival(970);
    EXPECT_THAT(Output({L"explain", L"Mail"}), HasSubstr("\nLog line: 1023 of 1023 bytes\n"));
    writeRival(971);
    const ToolResult result = Run({L"explain", L"Mail"});
    EXPECT_THAT(result.output,
                HasSubstr("\nLog line: 1024 of 1023 bytes: with the log on, it ends the host\n"));
    EXPECT_EQ(result.status, 1u);
    writeRival(5000);
    EXPECT_THAT(Run({L"explain", L"Mail"}).output, HasSubstr("\nLog line: 5053 of 1023 bytes: "));
}

TEST_F(ToolExplain, ExcludesEverythingForANameWithoutAWord)
{
    WriteCatalogue(R"(<DesktopApps><DesktopApp DisplayName="Почта" LnkFileName="C:\1.lnk"/>
        <DesktopApp DisplayName="Paint" LnkFileName="C:\2.lnk"/></DesktopApps>)");
    EXPECT_THAT(Section(L"Почта", "Excluded"), ElementsAre("Paint\tdisplay name\tdesktop\tC:\\2.lnk"));
}

// A search by the short name hits the display name of the same application.
TEST_F(ToolExplain, TellsWhenTheQueryExcludesTheApplicationItself)
{
    WriteCatalogue(
        R"(<Package PackageFamilyName="Cal_1"><MetroApp DisplayName="calendar" ShortName="cal"/></Package>)");
    const ToolResult result = Run({L"explain", L"cal"});
    EXPECT_THAT(result.output, StartsWith("Query: \"cal\" NOT(\"calendar\")\n"));
    EXPECT_EQ(result.problems, "qanh: the query excludes the application itself, by \"calendar\"\n");
    EXPECT_EQ(result.status, 1u);
    EXPECT_THAT(Run({L"explain", L"cal", L"--json"}).output, HasSubstr("\n  \"ExcludesItself\": true,\n"));
    EXPECT_EQ(Run({L"explain", L"calendar"}).problems, "");
}

// The log writes in the code page of the machine where the host runs.
TEST_F(ToolExplain, CountsTheLogLineInTheCodePageThatIsNamed)
{
    WriteCatalogue("");
    const auto line = [this](const wchar_t* codePage) {
        return Split(Run({L"explain", L"メール", L"--code-page", codePage}).output, "\n").at(1);
    };
    // 39 bytes of its own, two quotes, and three letters.
    EXPECT_EQ(line(L"932"), "Log line: 47 of 1023 bytes in code page 932");
    EXPECT_EQ(line(L"65001"), "Log line: 50 of 1023 bytes in code page 65001");
    EXPECT_EQ(line(L"1252"), "Log line: 44 of 1023 bytes in code page 1252");
    EXPECT_THAT(Run({L"explain", L"メール", L"--code-page", L"932", L"--json"}).output,
                HasSubstr("\n  \"LogLineBytes\": 47,\n  \"LogLineCodePage\": 932,\n"));
    EXPECT_EQ(Run({L"explain", L"メール", L"--code-page", L"12345"}).problems,
              "qanh: this system has no code page 12345\n\"qanh help explain\" tells how it is used.\n");
}

TEST_F(ToolExplain, IsJson)
{
    WriteCatalogue(R"(<Package PackageFamilyName="Gmail_1"><MetroApp DisplayName="gmail"/></Package>
        <DesktopApps><DesktopApp DisplayName="Add Mail" LnkFileName="C:\a.lnk"/></DesktopApps>)");
    const ToolResult result = Run({L"explain", L"Mail", L"--json"});
    EXPECT_EQ(result.output, R"json({
  "Catalogue": ")json" + JsonPath() +
                                 R"json(",
  "IsCut": false,
  "Name": "Mail",
  "Query": "\"Mail\" NOT(\"gmail\")",
  "LogLineBytes": 58,
  "LogLineCodePage": )json" + std::to_string(GetACP()) +
                                 R"json(,
  "LogLineRoom": 1023,
  "Found": false,
  "ExcludesItself": false,
  "Called": [],
  "Excluded": [
    {
      "Name": "gmail",
      "Rule": "display name",
      "Application": {
        "Kind": "store",
        "DisplayName": "gmail",
        "ShortName": "",
        "RubyDisplayName": "",
        "RubyShortName": "",
        "PackageFamilyName": "Gmail_1",
        "Version": "0.0.0.0",
        "NeedReserve": false,
        "IsInstalled": true
      }
    }
  ],
  "LeftIn": [
    {
      "Name": "Add Mail",
      "Reason": "capital letters",
      "Detail": "",
      "ComesFirst": true,
      "Application": {
        "Kind": "desktop",
        "DisplayName": "Add Mail",
        "LnkFileName": "C:\\a.lnk",
        "LocalizeName": "",
        "RubyDisplayName": "",
        "NeedReserve": false,
        "IsInstalled": true,
        "IsDualMode": false
      }
    }
  ]
}
)json");
    EXPECT_EQ(result.status, 1u);
}

TEST_F(ToolExplain, RefusesWrongUse)
{
    WriteCatalogue(kRecords);
    EXPECT_EQ(Run({L"explain", L""}),
              (ToolResult{"", "qanh: the name is empty\n\"qanh help explain\" tells how it is used.\n", 2}));
    for (const std::vector<std::wstring>& arguments :
         {std::vector<std::wstring>{L"explain"}, {L"explain", L"a", L"b"}}) {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.problems, StartsWith("qanh: "));
        EXPECT_EQ(result.status, 2u);
    }
}

} // namespace
