// qanh check: what is odd about a catalogue file.

#include "tools/ToolTest.h"

namespace {

using namespace test;

class ToolCheck : public Test
{
protected:
    ToolResult Check(std::string_view text, const std::vector<std::wstring>& options = {}) const
    {
        WriteFileBytes(m_path, text);
        std::vector<std::wstring> arguments{L"check", m_path};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunTool(arguments);
    }

    const TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"プリセット.xml";
};

TEST_F(ToolCheck, HasNothingToSayOfASoundFile)
{
    EXPECT_EQ(Check(R"(<?xml version="1.0" encoding="UTF-8"?>
<Applications>
  <MetroApps>
    <Package PackageFamilyName="a_1" Version="1.2.3.4" NeedReserve="1" IsInstalled="0">
      <MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />
    </Package>
  </MetroApps>
  <DesktopApps>
    <DesktopApp DisplayName="メール" LnkFileName="C:\1.lnk" LocalizeName="a" RubyDisplayName="b" NeedReserve="0"
      IsInstalled="1" IsDualMode="1" />
  </DesktopApps>
</Applications>)"),
              (ToolResult{"Fit as a preset: yes\n", "", 0}));
    EXPECT_EQ(Check("<Applications/>"), (ToolResult{"Fit as a preset: yes\n", "", 0}));
}

TEST_F(ToolCheck, TellsWhatIsSkipped)
{
    EXPECT_EQ(Check(R"(<Applications>
<Packag/>
<Package PackageFamilyName="a_1" Colour="red">
<Package PackageFamilyName="b_1"/>
<DesktopApp DisplayName="a"/>
</Package>
<MetroApp DisplayName="b"/>
<DesktopApps>
<Package PackageFamilyName="c_1"/>
<DesktopApp DisplayName="c" ShortName="d" LnkFileName="C:\c.lnk"/>
</DesktopApps>
<DesktopApp DisplayName="e"/>
</Applications>)"),
              (ToolResult{"2:2\tproblem\tPackag is skipped: the library does not look for it here\n"
                          "3:2\tproblem\tColour is skipped: the library does not know it\n"
                          "4:2\tproblem\tPackage is skipped: the library does not look for it here\n"
                          "5:2\tproblem\tDesktopApp is skipped: the library does not look for it here\n"
                          "7:2\tproblem\tMetroApp is skipped: the library does not look for it here\n"
                          "9:2\tproblem\tPackage is skipped: the library does not look for it here\n"
                          "10:2\tproblem\tShortName is skipped: the library does not know it\n"
                          "12:2\tproblem\tDesktopApp is skipped: the library does not look for it here\n"
                          "Fit as a preset: yes\n",
                          "", 1}));
}

TEST_F(ToolCheck, TellsWhatReadsOtherwiseThanItLooks)
{
    EXPECT_EQ(Check(R"(<Applications>
<Package PackageFamilyName="a_1" Version="1.2.0.65537" NeedReserve="false"/>
<Package PackageFamilyName="b_1" Version="one" IsInstalled="No"/>
<DesktopApps>
<DesktopApp DisplayName="a" LnkFileName="C:\a.lnk" IsDualMode="TRUE"/>
</DesktopApps></Applications>)"),
              (ToolResult{"2:2\tproblem\tVersion=\"1.2.0.65537\" reads as 1.2.0.1\n"
                          "2:2\tproblem\tNeedReserve=\"false\" reads as 1\n"
                          "3:2\tproblem\tVersion=\"one\" reads as 0.0.0.0\n"
                          "3:2\tproblem\tIsInstalled=\"No\" reads as 1\n"
                          "5:2\tproblem\tIsDualMode=\"TRUE\" reads as 0\n"
                          "Fit as a preset: yes\n",
                          "", 1}));
}

TEST_F(ToolCheck, NotesWhatReadsAsItIsMeant)
{
    const ScopedEnvironment variable(L"QANH_TEST_START", L"C:\\Start");
    EXPECT_EQ(Check(R"(<Applications>
<Package PackageFamilyName="a_1" Version="1.2" NeedReserve="yes" IsInstalled=""/>
<DesktopApps>
<DesktopApp DisplayName="a" LnkFileName="%QANH_TEST_START%\a.lnk" IsDualMode="2"/>
</DesktopApps></Applications>)"),
              (ToolResult{"2:2\tnote\tVersion=\"1.2\" reads as 1.2.0.0\n"
                          "2:2\tnote\tNeedReserve=\"yes\" reads as 1\n"
                          "2:2\tnote\tIsInstalled=\"\" reads as 1\n"
                          "4:2\tnote\tLnkFileName=\"%QANH_TEST_START%\\a.lnk\" reads as C:\\Start\\a.lnk\n"
                          "4:2\tnote\tIsDualMode=\"2\" reads as 1\n"
                          "Fit as a preset: yes\n",
                          "", 0}));
}

TEST_F(ToolCheck, TellsOfPathsThatAreNotExpanded)
{
    const std::wstring longText(255, L'x');
    const ScopedEnvironment variable(L"QANH_TEST_LONG", longText.c_str());
    EXPECT_EQ(
        Check(R"(<DesktopApps>
<DesktopApp DisplayName="a" LnkFileName="%QANH_TEST_NONE%\a.lnk"/>
<DesktopApp DisplayName="b" LnkFileName="%QANH_TEST_LONG%\b.lnk"/>
</DesktopApps>)"),
        (ToolResult{
            "2:2\tproblem\tLnkFileName=\"%QANH_TEST_NONE%\\a.lnk\" is not expanded: an unknown variable, "
            "or too long for a path\n"
            "3:2\tproblem\tLnkFileName=\"%QANH_TEST_LONG%\\b.lnk\" is not expanded: an unknown variable, "
            "or too long for a path\n"
            "Fit as a preset: yes\n",
            "", 1}));
}

TEST_F(ToolCheck, TellsWhatStandsTwiceOrIsMissing)
{
    EXPECT_EQ(Check(R"(<Applications>
<Package PackageFamilyName="a_1"/>
<Package PackageFamilyName="a_1"/>
<Package PackageFamilyName="A_1"/>
<Package><MetroApp ShortName="a"/></Package>
<DesktopApps>
<DesktopApp DisplayName="a" LnkFileName="C:\a.lnk"/>
<DesktopApp DisplayName="b" LnkFileName="c:\A.LNK"/>
<DesktopApp/>
</DesktopApps></Applications>)"),
              (ToolResult{"3:2\tproblem\tPackageFamilyName is that of line 2 again\n"
                          "5:2\tproblem\tno PackageFamilyName: it is never found\n"
                          "5:11\tproblem\tno DisplayName\n"
                          "8:2\tproblem\tLnkFileName is that of line 7 again\n"
                          "9:2\tproblem\tno LnkFileName: it is never found\n"
                          "9:2\tproblem\tno DisplayName\n"
                          "Fit as a preset: yes\n",
                          "", 1}));
}

TEST_F(ToolCheck, TellsOfNamesThatAreNotResolved)
{
    EXPECT_EQ(Check(R"(<Package PackageFamilyName="a_1">
<MetroApp DisplayName="ms-resource:AppName" ShortName="MS-Resource:///x"/>
</Package>)"),
              (ToolResult{"2:2\tproblem\tDisplayName=\"ms-resource:AppName\" is not resolved\n"
                          "2:2\tproblem\tShortName=\"MS-Resource:///x\" is not resolved\n"
                          "Fit as a preset: yes\n",
                          "", 1}));
}

TEST_F(ToolCheck, LooksForShortcutsWhereTheyShouldBe)
{
    MakeFile(m_folder / L"here.lnk");
    const std::string folder = ToUtf8(m_folder.Path());
    const std::string text = "<DesktopApps>\n<DesktopApp DisplayName=\"a\" LnkFileName=\"" + folder +
                             "\\here.lnk\"/>\n<DesktopApp DisplayName=\"b\" LnkFileName=\"" + folder +
                             "\\gone.lnk\"/>\n<DesktopApp DisplayName=\"c\" LnkFileName=\"" + folder +
                             "\\old.lnk\" IsInstalled=\"0\"/>\n</DesktopApps>";
    EXPECT_EQ(Check(text), (ToolResult{"Fit as a preset: yes\n", "", 0}));
    EXPECT_EQ(
        Check(text, {L"--here"}),
        (ToolResult{"3:2\tproblem\t" + folder + "\\gone.lnk is not there\nFit as a preset: yes\n", "", 1}));
    // The catalogue of a host is that of this machine.
    const ScopedEnvironment localAppData(L"LOCALAPPDATA", m_folder.Path().c_str());
    MakeFolder(m_folder / L"Vel\\QanHelper\\Launcher");
    WriteFileBytes(m_folder / L"Vel\\QanHelper\\Launcher\\AppNameList.xml", text);
    EXPECT_THAT(RunTool({L"check", L"--host", L"Launcher"}).output, HasSubstr("gone.lnk is not there\n"));
}

TEST_F(ToolCheck, KnowsAFileThatTheLibraryWroteFromAPreset)
{
    for (const char* text :
         {"<Applications>\n  <MetroApps />\n  <DesktopApps />",
          "<Applications>\n  <MetroApps />\n  <DesktopApps>\n    <DesktopApp DisplayName=\"a\" "
          "LnkFileName=\"C:\\a.lnk\" />\n  </DesktopApps>"}) {
        const ToolResult result = Check(text);
        EXPECT_THAT(result.output,
                    HasSubstr("\tnote\tthe root is not closed: as the library writes it, and no preset\n"
                              "Fit as a preset: no\n"))
            << text;
        EXPECT_EQ(result.status, 0u) << text;
    }
}

// Some readers close by themselves what the end of a file leaves open.
TEST_F(ToolCheck, IsNotTakenInByAnEndTagThatIsNotThere)
{
    for (const char* text : {"<Applications><MetroApps><Package></Package>",
                             "<Applications><DesktopApps><DesktopApp></DesktopApp>"}) {
        const ToolResult result = Check(text);
        EXPECT_THAT(result.output, HasSubstr("\tproblem\tthe reading ends here: 0xC00CEE01")) << text;
        EXPECT_THAT(result.output, EndsWith("Fit as a preset: no\n")) << text;
        EXPECT_EQ(result.status, 1u) << text;
    }
    EXPECT_THAT(Check("<Applications><Applications></Applications>").output,
                EndsWith("Fit as a preset: no\n"));
}

TEST_F(ToolCheck, TellsWhereTheReadingEnds)
{
    const ToolResult result = Check("<Applications>\n<DesktopApps>\n</Desktop>\n</Applications>");
    EXPECT_THAT(result.output, StartsWith("3:"));
    EXPECT_THAT(result.output,
                HasSubstr("\tproblem\tthe reading ends here: 0xC00CEE3B WC_E_ELEMENTMATCH (an end tag "
                          "of another element)\nFit as a preset: no\n"));
    EXPECT_EQ(result.status, 1u);
}

TEST_F(ToolCheck, TellsOfAFileThatIsCutOff)
{
    for (const char* text :
         {"<Applications>\n<DesktopApps>\n<DesktopApp DisplayName=\"a\" LnkFileName=\"C:\\a.lnk\"/>",
          "<Applications>\n<DesktopApps>\n<DesktopApp DisplayName=\"a", "not xml", ""}) {
        const ToolResult result = Check(text);
        EXPECT_THAT(result.output, HasSubstr("\tproblem\tthe reading ends here: 0xC00CEE")) << text;
        EXPECT_THAT(result.output, EndsWith("Fit as a preset: no\n")) << text;
        EXPECT_EQ(result.status, 1u) << text;
    }
}

TEST_F(ToolCheck, IsJson)
{
    std::string path = ToUtf8(m_path);
    ReplaceAll(path, "\\", "\\\\");
    EXPECT_EQ(Check("<Applications>\n<Packäge/>\n</Applications>", {L"--json"}), (ToolResult{R"({
  "Catalogue": ")" + path + R"(",
  "FitAsPreset": true,
  "Findings": [
    {
      "Line": 2,
      "Column": 2,
      "IsProblem": true,
      "Text": "Packäge is skipped: the library does not look for it here"
    }
  ]
}
)",
                                                                                             "", 1}));
}

TEST_F(ToolCheck, OfAnEmptyFileHasNoPreset)
{
    EXPECT_EQ(Check("").output, "1:1\tproblem\tthe reading ends here: 0xC00CEE01 MX_E_INPUTEND (the document "
                                "ends too early)\nFit as a preset: no\n");
}

TEST_F(ToolCheck, RefusesWrongUse)
{
    EXPECT_EQ(RunTool({L"check"}).status, 2u);
    EXPECT_EQ(Check("<a/>", {L"--host", L"Launcher"}),
              (ToolResult{"",
                          "qanh: a FILE was given, and --catalogue or --host as well\n"
                          "\"qanh help check\" tells how it is used.\n",
                          2}));
    EXPECT_EQ(RunTool({L"check", m_path, m_path}).status, 2u);
}

TEST_F(ToolCheck, OfAFileThatIsNotThereIsAFailure)
{
    EXPECT_EQ(RunTool({L"check", m_path}),
              (ToolResult{"",
                          "qanh: cannot read " + ToUtf8(m_path) +
                              ": 0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)\n",
                          3}));
}

} // namespace
