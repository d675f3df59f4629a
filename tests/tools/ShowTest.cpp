// qanh show: all that the catalogue holds of an application.

#include "tools/ToolTest.h"

namespace {

using namespace test;

constexpr char kMail[] = R"(Desktop application
  DisplayName        Notepad
  LnkFileName        C:\Notepad.lnk
  LocalizeName       Editor
  RubyDisplayName    えでぃたー
  NeedReserve        1
  IsInstalled        0
  IsDualMode         0
)";
constexpr char kCalendar[] = R"(Store application
  DisplayName        calendar
  ShortName          cal
  RubyShortName      s
  PackageFamilyName  Vel.Calendar_1
  Version            1.2.0.7
  NeedReserve        0
  IsInstalled        1
)";

class ToolShow : public ToolTest
{
protected:
    ToolShow()
    {
        WriteCatalogue(R"(<Package PackageFamilyName="Vel.Calendar_1" Version="1.2.0.7">
            <MetroApp DisplayName="calendar" ShortName="cal" RubyShortName="s"/></Package>
            <DesktopApps><DesktopApp DisplayName="Notepad" LnkFileName="C:\Notepad.lnk" LocalizeName="Editor"
            RubyDisplayName="えでぃたー" NeedReserve="1" IsInstalled="0"/></DesktopApps>)");
    }
};

TEST_F(ToolShow, FindsAnApplicationByWhateverItIsCalled)
{
    for (const wchar_t* name : {L"Editor", L"notepad", L"c:\\NOTEPAD.lnk"}) {
        EXPECT_EQ(Output({L"show", name}), kMail);
    }
    for (const wchar_t* name : {L"Calendar", L"CAL", L"vel.calendar_1"}) {
        EXPECT_EQ(Output({L"show", name}), kCalendar);
    }
}

TEST_F(ToolShow, ShowsAllOfOneName)
{
    WriteCatalogue(R"(<DesktopApps><DesktopApp DisplayName="a" LnkFileName="C:\1.lnk"/>
        <DesktopApp DisplayName="A" LnkFileName="C:\2.lnk"/></DesktopApps>)");
    EXPECT_EQ(Output({L"show", L"a"}),
              "Desktop application\n  DisplayName        a\n  LnkFileName        C:\\1.lnk\n"
              "  NeedReserve        0\n  IsInstalled        1\n  IsDualMode         0\n"
              "Desktop application\n  DisplayName        A\n  LnkFileName        C:\\2.lnk\n"
              "  NeedReserve        0\n  IsInstalled        1\n  IsDualMode         0\n");
}

TEST_F(ToolShow, IsJson)
{
    EXPECT_EQ(Output({L"show", L"Editor", L"--json"}), R"({
  "Catalogue": ")" + JsonPath() + R"(",
  "IsCut": false,
  "Applications": [
    {
      "Kind": "desktop",
      "DisplayName": "Notepad",
      "LnkFileName": "C:\\Notepad.lnk",
      "LocalizeName": "Editor",
      "RubyDisplayName": "えでぃたー",
      "NeedReserve": true,
      "IsInstalled": false,
      "IsDualMode": false
    }
  ]
}
)");
}

TEST_F(ToolShow, SaysThatThereIsNone)
{
    // Part of a name is none, and neither is a reading.
    for (const std::string name : {"Edit", "えでぃたー", "メール"}) {
        EXPECT_EQ(Run({L"show", FromUtf8(name)}),
                  (ToolResult{
                      "", "qanh: no application in " + ToUtf8(m_path) + " is called \"" + name + "\"\n", 1}));
    }
    WriteCatalogue("");
    EXPECT_EQ(Run({L"show", L"Editor"}).status, 1u);
}

TEST_F(ToolShow, RefusesWrongUse)
{
    for (const std::vector<std::wstring>& arguments :
         {std::vector<std::wstring>{L"show"}, {L"show", L"a", L"b"}, {L"show", L"a", L"--kind", L"store"}}) {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.problems, StartsWith("qanh: "));
        EXPECT_EQ(result.status, 2u);
    }
}

} // namespace
