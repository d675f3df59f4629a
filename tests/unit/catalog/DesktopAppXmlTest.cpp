// How a desktop application is written to the catalogue file and read from it.

#include "catalog/DesktopApp.h"

#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

#include <algorithm>

namespace {

using namespace test;

TEST(DesktopAppToXmlNode, LeavesEmptyNamesAndDefaultsOut)
{
    const auto written = [](auto... arguments) { return Written(CQanhDesktopApp(arguments...)); };
    EXPECT_EQ(written(nullptr, nullptr), "<DesktopApp />");
    EXPECT_EQ(written(L"a", nullptr), R"(<DesktopApp DisplayName="a" />)");
    EXPECT_EQ(written(nullptr, L"b"), R"(<DesktopApp LnkFileName="b" />)");
    EXPECT_EQ(written(nullptr, nullptr, L"c"), R"(<DesktopApp LocalizeName="c" />)");
    EXPECT_EQ(written(nullptr, nullptr, nullptr, L"d"), R"(<DesktopApp RubyDisplayName="d" />)");
    EXPECT_EQ(written(nullptr, nullptr, nullptr, nullptr, true), R"(<DesktopApp NeedReserve="1" />)");
    EXPECT_EQ(written(nullptr, nullptr, nullptr, nullptr, true, false),
              R"(<DesktopApp NeedReserve="1" IsInstalled="0" />)");
    EXPECT_EQ(written(nullptr, nullptr, nullptr, nullptr, false, true, true),
              R"(<DesktopApp IsDualMode="1" />)");
}

TEST(DesktopAppToXmlNode, WritesEveryTrueAsOne)
{
    CQanhDesktopApp app(L"a", L"%ProgramData%\\a.lnk");
    app.NeedReserve = -1;
    app.IsInstalled = 2;
    app.IsDualMode = 3;
    // The path is written as it is held.
    EXPECT_EQ(Written(app),
              R"(<DesktopApp DisplayName="a" LnkFileName="%ProgramData%\a.lnk" NeedReserve="1" )"
              R"(IsDualMode="1" />)");
}

TEST(DesktopAppToXmlNode, WritesNothingWhenNeitherInstalledNorReserved)
{
    WriterProbe writer;
    const LogCapture log;
    EXPECT_EQ(CQanhDesktopApp(L"a", L"b", L"c", L"d", false, false, true).ToXmlNode(&writer), S_FALSE);
    EXPECT_TRUE(writer.calls.empty());
    EXPECT_EQ(log.Lines(), Call("CQanhDesktopApp::ToXmlNode", "(0x00000001)"));
}

TEST(DesktopAppToXmlNode, WritesWithoutNamespaces)
{
    WriterProbe writer;
    EXPECT_EQ(CQanhDesktopApp(L"メモ帳", L"b", L"c", L"d", true, true, true).ToXmlNode(&writer), S_OK);
    EXPECT_THAT(writer.calls,
                ElementsAre(L"start DesktopApp", L"DisplayName=メモ帳", L"LnkFileName=b", L"LocalizeName=c",
                            L"RubyDisplayName=d", L"NeedReserve=1", L"IsDualMode=1", L"end"));
}

std::unique_ptr<CQanhDesktopApp> Read(std::string_view text)
{
    return ReadRecord<CQanhDesktopApp>(text, L"DesktopApp");
}

// The record that is read of an element with this path has the other one.
void ExpectPath(const std::string& path, const std::wstring& read)
{
    SCOPED_TRACE(path);
    const auto app = Read("<DesktopApp DisplayName=\"a\" LnkFileName=\"" + path + "\"/>");
    EXPECT_EQ(app->LnkFileName.c_str(), read);
    EXPECT_STREQ(app->DisplayName.c_str(), L"a");
}

TEST(DesktopAppFromXmlNode, ReadsAllItsAttributes)
{
    for (
        const char* text :
        {R"(<DesktopApp DisplayName="a" LnkFileName="b" LocalizeName="c" RubyDisplayName="d" NeedReserve="1" )"
         R"(IsInstalled="0" IsDualMode="1"/>)",
         // In any order and letter case, passing over the unknown.
         R"(<DesktopApp ISDUALMODE="1" Dual="0" DisplayNames="x" LnkFile="x" isinstalled="0" LNKFILENAME="b" )"
         R"(rUBYdISPLAYnAME="d" IsInstalle="1" Localize="x" localizename="c" NeedReserved="0" )"
         R"(needreserve="1" Name="x" displayname="a" ShortName="x"/>)"}) {
        const auto app = Read(text);
        ExpectNames(*app, L"a", L"b", L"c", L"d");
        ExpectFlags(*app, TRUE, FALSE, TRUE);
    }
}

TEST(DesktopAppFromXmlNode, MakesADefaultRecordOfAnElementWithoutAttributes)
{
    for (const char* text : {"<DesktopApp/>", "<DesktopApp></DesktopApp>", R"(<DesktopApp Unknown="1"/>)",
                             R"(<DesktopApp LnkFileName=""/>)"}) {
        const auto app = Read(text);
        ExpectNames(*app, L"", L"", L"", L"");
        ExpectFlags(*app, FALSE, TRUE, FALSE);
    }
}

TEST(DesktopAppFromXmlNode, ReadsFlagsAsNumbersWithAPresetForWhatIsNone)
{
    const auto readFlags = [](const std::string& value) {
        return Read("<DesktopApp NeedReserve=\"" + value + "\" IsInstalled=\"" + value + "\" IsDualMode=\"" +
                    value + "\"/>");
    };
    ExpectFlags(*readFlags("2"), TRUE, TRUE, TRUE);
    ExpectFlags(*readFlags("0"), FALSE, FALSE, FALSE);
    ExpectFlags(*readFlags("no"), TRUE, TRUE, FALSE);
}

TEST(DesktopAppFromXmlNode, TakesTheLastOfARepeatedAttribute)
{
    const auto app =
        Read(R"(<DesktopApp DisplayName="a" displayname="b" NeedReserve="1" needreserve="0" )"
             R"(IsInstalled="0" ISINSTALLED="yes" LnkFileName="x" lnkfilename="y" DISPLAYNAME="c"/>)");
    ExpectNames(*app, L"c", L"y", L"", L"");
    ExpectFlags(*app, FALSE, TRUE, FALSE);
}

TEST(DesktopAppFromXmlNode, ExpandsVariablesInThePathOnly)
{
    const ScopedEnvironment variable(L"QanhMenu", L"C:\\Menu");
    const auto app = Read(R"(<DesktopApp DisplayName="%QanhMenu%" LnkFileName="%QanhMenu%\%QanhMenu%\a.lnk" )"
                          R"(LocalizeName="%QanhMenu%" RubyDisplayName="%QanhMenu%"/>)");
    ExpectNames(*app, L"%QanhMenu%", L"C:\\Menu\\C:\\Menu\\a.lnk", L"%QanhMenu%", L"%QanhMenu%");
    // What was read stays expanded when it is written.
    EXPECT_EQ(Written(*app), R"(<DesktopApp DisplayName="%QanhMenu%" LnkFileName="C:\Menu\C:\Menu\a.lnk" )"
                             R"(LocalizeName="%QanhMenu%" RubyDisplayName="%QanhMenu%" />)");
    // What is no variable stays.
    ExpectPath("%QanhNothing%\\a.lnk", L"%QanhNothing%\\a.lnk");
    ExpectPath("C:\\100%.lnk", L"C:\\100%.lnk");
}

using Expand = DWORD(WINAPI*)(LPCWSTR, LPWSTR, DWORD);

TEST(DesktopAppFromXmlNode, KeepsTheRawPathWhenItCannotBeExpanded)
{
    static std::wstring s_text;
    static DWORD s_size = 0;
    const ImportPatch<Expand> patch("ExpandEnvironmentStringsW",
                                    [](LPCWSTR text, LPWSTR, DWORD size) -> DWORD {
                                        s_text = text;
                                        s_size = size;
                                        return 0;
                                    });
    ExpectPath(std::string(400, 'p'), std::wstring(400, L'p'));
    ExpectPath("%ProgramData%\\a.lnk", L"%ProgramData%\\a.lnk");
    EXPECT_EQ(s_text, L"%ProgramData%\\a.lnk");
    EXPECT_EQ(s_size, 260u);
}

// A path has 259 characters at most. Cut to that it would be the path of another file.
TEST(DesktopAppFromXmlNode, KeepsTheRawPathWhenItsExpansionIsTooLong)
{
    const ScopedEnvironment variable(L"QanhMenu", std::wstring(200, L'm').c_str());
    for (const std::size_t length : {1u, 258u, 259u, 260u, 261u, 1000u}) {
        ExpectPath(std::string(length, 'p'), std::wstring(length, L'p'));
    }
    for (const std::size_t rest : {1u, 58u, 59u}) {
        ExpectPath("%QanhMenu%" + std::string(rest, 'p'), std::wstring(200, L'm') + std::wstring(rest, L'p'));
    }
    for (const std::size_t rest : {60u, 61u, 800u}) {
        ExpectPath("%QanhMenu%" + std::string(rest, 'p'), L"%QanhMenu%" + std::wstring(rest, L'p'));
    }
}

TEST(DesktopAppFromXmlNode, KeepsTheRawPathWhateverAFailedExpansionLeaves)
{
    const ImportPatch<Expand> patch("ExpandEnvironmentStringsW",
                                    [](LPCWSTR, LPWSTR buffer, DWORD size) -> DWORD {
                                        std::fill_n(buffer, size, L'q');
                                        return size + 1;
                                    });
    ExpectPath("a", L"a");
}

TEST(DesktopAppFromXmlNode, KeepsEveryScript)
{
    ExpectNames(*Read("<DesktopApp DisplayName=\"\xE3\x83\xA1\xE3\x83\xA2\xE5\xB8\xB3\" "
                      "LnkFileName=\"C:\\\xE5\xA4\xA9.lnk\" LocalizeName=\"\xF0\x9F\x98\x80\"/>"),
                L"メモ帳", L"C:\\天.lnk", L"\xD83D\xDE00", L"");
}

} // namespace
