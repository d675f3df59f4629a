// The presets that the tool makes.

#include "tools/ToolTest.h"

namespace {

using namespace test;

class ToolPreset : public ToolTest
{
protected:
    const std::wstring m_preset = m_folder / L"preset.xml";
};

constexpr char kRecords[] = R"(<MetroApps>
  <Package PackageFamilyName="Vel.A_1" Version="1.2.3.4" NeedReserve="1">
    <MetroApp DisplayName="a &amp; b" ShortName="&lt;script>" RubyDisplayName="えー" RubyShortName="び"/>
    <MetroApp DisplayName="second"/>
  </Package>
  <Package PackageFamilyName="Vel.Empty_1" Version="1.0.0.0"/>
</MetroApps><DesktopApps>
  <DesktopApp DisplayName="Mail" LnkFileName="C:\Mail.lnk" LocalizeName="Post" IsDualMode="1"/>
  <DesktopApp DisplayName="メール &quot;🙂&quot;" LnkFileName="C:\2.lnk" IsInstalled="0"/>
</DesktopApps>)";

TEST_F(ToolPreset, HoldsTheCatalogue)
{
    WriteCatalogue(kRecords);
    const ToolResult made = RunTool({L"preset", L"make", L"--from", m_path, L"-o", m_preset});
    EXPECT_EQ(made, (ToolResult{"", "", 0}));
    EXPECT_EQ(RunTool({L"diff", m_path, m_preset}).status, 0u);
    EXPECT_EQ(RunTool({L"list", L"--catalogue", m_preset}), Run({L"list"}));
    EXPECT_EQ(RunTool({L"check", m_preset}).output, "Fit as a preset: yes\n");
    EXPECT_EQ(Run({L"preset", L"make"}).output, ReadFileBytes(m_preset)); // on standard output
}

TEST_F(ToolPreset, ReservesWhatThePatternFits)
{
    WriteCatalogue(kRecords);
    const auto reserved = [this](const wchar_t* pattern) {
        const ToolResult result = Run({L"preset", L"make", L"--json", L"--reserve", pattern});
        EXPECT_EQ(result.status, result.problems.empty() ? 0u : 1u);
        const std::string rest = result.output.substr(result.output.find("\"Reserved\": ") + 12);
        return rest.substr(0, rest.find(','));
    };
    EXPECT_EQ(reserved(L"post"), "1");
    EXPECT_EQ(reserved(L"mail"), "0"); // it is not found under this name
    EXPECT_EQ(reserved(L"*.LNK"), "2");
    EXPECT_EQ(reserved(L"SEC*"), "1");
    EXPECT_EQ(reserved(L"Vel.*"), "2");
    EXPECT_EQ(reserved(L"post;second"), "2");
    EXPECT_THAT(
        Run({L"preset", L"make", L"--reserve", L"post"}).output,
        HasSubstr(R"(LnkFileName="C:\Mail.lnk" LocalizeName="Post" NeedReserve="1" IsDualMode="1" />)"));
    EXPECT_EQ(Run({L"preset", L"make", L"--reserve", L"nothing"}).problems,
              "qanh: no application is called nothing: none was reserved by that\n");
}

TEST_F(ToolPreset, IsMadeOfTheStartMenuWithPathsForOtherMachines)
{
    const std::wstring common = m_folder / L"common";
    const std::wstring roaming = m_folder / L"roaming";
    const ScopedEnvironment commonFolder(L"ALLUSERSPROFILE", common.c_str());
    const ScopedEnvironment roamingFolder(L"APPDATA", roaming.c_str());
    MakeFolder(common + L"\\Microsoft\\Windows\\Start Menu\\Programs\\Office");
    MakeFile(common + L"\\Microsoft\\Windows\\Start Menu\\Programs\\Office\\メール.lnk");
    MakeFile(common + L"\\Microsoft\\Windows\\Start Menu\\Programs\\read me.txt");
    MakeFolder(roaming + L"\\Microsoft\\Windows\\Start Menu\\Programs");
    MakeFile(roaming + L"\\Microsoft\\Windows\\Start Menu\\Programs\\News.url");
    EXPECT_EQ(RunTool({L"preset", L"make"}), (ToolResult{R"(<?xml version="1.0" encoding="UTF-8"?>
<Applications>
  <MetroApps>
  </MetroApps>
  <DesktopApps>
    <DesktopApp DisplayName="メール" LnkFileName="%ALLUSERSPROFILE%\Microsoft\Windows\Start Menu\Programs\Office\メール.lnk" />
    <DesktopApp DisplayName="News" LnkFileName="%APPDATA%\Microsoft\Windows\Start Menu\Programs\News.url" />
  </DesktopApps>
</Applications>
)",
                                                         "", 0}));
}

TEST_F(ToolPreset, OfAnEmptyCatalogueIsEmptyAndFit)
{
    WriteCatalogue("");
    const ToolResult made = Run({L"preset", L"make", L"-o", m_preset});
    EXPECT_EQ(made, (ToolResult{"", "qanh: the preset has no application\n", 0}));
    EXPECT_EQ(RunTool({L"check", m_preset}), (ToolResult{"Fit as a preset: yes\n", "", 0}));
}

TEST_F(ToolPreset, OfACatalogueThatIsCutOffLacksTheRestAndSaysSo)
{
    WriteFileBytes(m_path, "<Applications><DesktopApps>"
                           "<DesktopApp DisplayName=\"Mail\" LnkFileName=\"C:\\Mail.lnk\"/>\n");
    for (const std::vector<std::wstring>& source :
         {std::vector<std::wstring>{L"--from", m_path}, {L"--catalogue", m_path}}) {
        std::vector<std::wstring> arguments{L"preset", L"make"};
        arguments.insert(arguments.end(), source.begin(), source.end());
        const ToolResult made = RunTool(arguments);
        EXPECT_THAT(made.output, HasSubstr("C:\\Mail.lnk"));
        EXPECT_THAT(made.problems, StartsWith("qanh: " + ToUtf8(m_path) +
                                              " is read in part only: 0xC00CEE01 MX_E_INPUTEND"));
        EXPECT_EQ(made.status, 1u);
        arguments.push_back(L"--json");
        EXPECT_THAT(RunTool(arguments).output, StartsWith("{\n  \"IsCut\": true,\n  \"Applications\": 1,\n"));
    }
}

TEST_F(ToolPreset, OverwritesNoFile)
{
    WriteCatalogue(kRecords);
    const std::string before = ReadFileBytes(m_path);
    EXPECT_EQ(Run({L"preset", L"make", L"-o", m_path}),
              (ToolResult{"",
                          "qanh: cannot write " + ToUtf8(m_path) +
                              ": 0x80070050 ERROR_FILE_EXISTS (there is a file of this name)\n",
                          3}));
    EXPECT_EQ(ReadFileBytes(m_path), before);
}

TEST_F(ToolPreset, MustBeAskedForRightly)
{
    EXPECT_EQ(RunTool({L"preset"}).status, 2u);
    EXPECT_EQ(RunTool({L"preset", L"burn"}).status, 2u);
    EXPECT_EQ(Run({L"preset", L"make", L"--from", m_path}), // two sources
              (ToolResult{"",
                          "qanh: --from was given, and --catalogue or --host as well\n"
                          "\"qanh help preset\" tells how it is used.\n",
                          2}));
    EXPECT_EQ(RunTool({L"preset", L"make", L"--from", m_path}).status, 3u); // not there
}

} // namespace
