// How a desktop application is written to the catalogue file and read from it.

#include "catalog/DesktopApp.h"

#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/catalog/WriterProbe.h"
#include "unit/catalog/XmlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace {

using testing::ElementsAre;

std::string Written(const CQanhDesktopApp& app)
{
    const test::XmlSink sink;
    EXPECT_EQ(app.ToXmlNode(sink.Writer()), S_OK);
    return sink.Text();
}

TEST(DesktopAppToXmlNode, WritesItsAttributesInTheFilesOrder)
{
    EXPECT_EQ(
        Written(CQanhDesktopApp(L"a", L"b", L"c", L"d", true, false, true)),
        R"(<DesktopApp DisplayName="a" LnkFileName="b" LocalizeName="c" RubyDisplayName="d" NeedReserve="1" )"
        R"(IsInstalled="0" IsDualMode="1" />)");
}

TEST(DesktopAppToXmlNode, LeavesEmptyNamesAndDefaultsOut)
{
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, nullptr)), "<DesktopApp />");
    EXPECT_EQ(Written(CQanhDesktopApp(L"a", nullptr)), R"(<DesktopApp DisplayName="a" />)");
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, L"b")), R"(<DesktopApp LnkFileName="b" />)");
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, nullptr, L"c")), R"(<DesktopApp LocalizeName="c" />)");
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, nullptr, nullptr, L"d")),
              R"(<DesktopApp RubyDisplayName="d" />)");
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, nullptr, nullptr, nullptr, true)),
              R"(<DesktopApp NeedReserve="1" />)");
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, nullptr, nullptr, nullptr, true, false)),
              R"(<DesktopApp NeedReserve="1" IsInstalled="0" />)");
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, nullptr, nullptr, nullptr, false, true, true)),
              R"(<DesktopApp IsDualMode="1" />)");
}

TEST(DesktopAppToXmlNode, WritesEveryTrueAsOne)
{
    CQanhDesktopApp app(L"a", L"b");
    app.NeedReserve = -1;
    app.IsInstalled = 2;
    app.IsDualMode = 3;
    EXPECT_EQ(Written(app),
              R"(<DesktopApp DisplayName="a" LnkFileName="b" NeedReserve="1" IsDualMode="1" />)");
}

TEST(DesktopAppToXmlNode, WritesNothingWhenNeitherInstalledNorReserved)
{
    test::WriterProbe writer;
    const test::LogCapture log;
    EXPECT_EQ(CQanhDesktopApp(L"a", L"b", L"c", L"d", false, false, true).ToXmlNode(&writer), S_FALSE);
    EXPECT_TRUE(writer.calls.empty());
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhDesktopApp::ToXmlNode IN", "CQanhDesktopApp::ToXmlNode OUT(0x00000001)"));
}

TEST(DesktopAppToXmlNode, WritesPathsAsTheyAreHeld)
{
    EXPECT_EQ(Written(CQanhDesktopApp(nullptr, L"%ProgramData%\\a.lnk")),
              R"(<DesktopApp LnkFileName="%ProgramData%\a.lnk" />)");
}

TEST(DesktopAppToXmlNode, WritesWithoutNamespaces)
{
    test::WriterProbe writer;
    EXPECT_EQ(CQanhDesktopApp(L"メモ帳", L"b", L"c", L"d", true, true, true).ToXmlNode(&writer), S_OK);
    EXPECT_THAT(writer.calls,
                ElementsAre(L"start DesktopApp", L"DisplayName=メモ帳", L"LnkFileName=b", L"LocalizeName=c",
                            L"RubyDisplayName=d", L"NeedReserve=1", L"IsDualMode=1", L"end"));
}

std::unique_ptr<CQanhDesktopApp> Read(std::string_view text)
{
    const test::XmlSource source(text, L"DesktopApp");
    std::unique_ptr<CQanhDesktopApp> app;
    EXPECT_EQ(CQanhDesktopApp::FromXmlNode(source.Reader(), &app), S_OK);
    // The reader is left on the element.
    EXPECT_EQ(source.Name(), L"DesktopApp");
    return app ? std::move(app) : std::make_unique<CQanhDesktopApp>(L"nothing was read", nullptr);
}

TEST(DesktopAppFromXmlNode, ReadsAllItsAttributes)
{
    const auto app =
        Read(R"(<DesktopApp DisplayName="a" LnkFileName="b" LocalizeName="c" RubyDisplayName="d" )"
             R"(NeedReserve="1" IsInstalled="0" IsDualMode="1"/>)");
    EXPECT_STREQ(app->DisplayName.c_str(), L"a");
    EXPECT_STREQ(app->LnkFileName.c_str(), L"b");
    EXPECT_STREQ(app->LocalizeName.c_str(), L"c");
    EXPECT_STREQ(app->RubyDisplayName.c_str(), L"d");
    EXPECT_EQ(app->NeedReserve, TRUE);
    EXPECT_EQ(app->IsInstalled, FALSE);
    EXPECT_EQ(app->IsDualMode, TRUE);
}

TEST(DesktopAppFromXmlNode, MakesADefaultRecordOfAnElementWithoutAttributes)
{
    for (const char* text : {"<DesktopApp/>", "<DesktopApp></DesktopApp>", R"(<DesktopApp Unknown="1"/>)"}) {
        const auto app = Read(text);
        EXPECT_TRUE(app->DisplayName.empty());
        EXPECT_TRUE(app->LnkFileName.empty());
        EXPECT_TRUE(app->LocalizeName.empty());
        EXPECT_TRUE(app->RubyDisplayName.empty());
        EXPECT_EQ(app->NeedReserve, FALSE);
        EXPECT_EQ(app->IsInstalled, TRUE);
        EXPECT_EQ(app->IsDualMode, FALSE);
    }
}

struct FlagValue
{
    const char* value;
    BOOL needReserve;
    BOOL isInstalled;
    BOOL isDualMode;
};

TEST(DesktopAppFromXmlNode, ReadsFlagsAsNumbersWithAPresetForWhatIsNone)
{
    const FlagValue values[] = {
        {"1", TRUE, TRUE, TRUE},     {"0", FALSE, FALSE, FALSE},   {"2", TRUE, TRUE, TRUE},
        {"-1", TRUE, TRUE, TRUE},    {"+1", TRUE, TRUE, TRUE},     {" 7", TRUE, TRUE, TRUE},
        {" 0", FALSE, FALSE, FALSE}, {"7abc", TRUE, TRUE, TRUE},   {"0abc", FALSE, FALSE, FALSE},
        {"00", FALSE, FALSE, FALSE}, {"0x1", FALSE, FALSE, FALSE}, {"", TRUE, TRUE, FALSE},
        {" ", TRUE, TRUE, FALSE},    {"yes", TRUE, TRUE, FALSE},   {"no", TRUE, TRUE, FALSE},
        {"true", TRUE, TRUE, FALSE}, {"false", TRUE, TRUE, FALSE}, {"-", TRUE, TRUE, FALSE},
    };
    for (const FlagValue& flag : values) {
        SCOPED_TRACE(flag.value);
        const std::string value = flag.value;
        const auto app = Read("<DesktopApp NeedReserve=\"" + value + "\" IsInstalled=\"" + value +
                              "\" IsDualMode=\"" + value + "\"/>");
        EXPECT_EQ(app->NeedReserve, flag.needReserve);
        EXPECT_EQ(app->IsInstalled, flag.isInstalled);
        EXPECT_EQ(app->IsDualMode, flag.isDualMode);
    }
}

TEST(DesktopAppFromXmlNode, TakesAnyOrderAnyLetterCaseAndPassesOverTheUnknown)
{
    const auto app = Read(
        R"(<DesktopApp ISDUALMODE="1" Dual="0" DisplayNames="x" LnkFile="x" isinstalled="0" LNKFILENAME="b" )"
        R"(rUBYdISPLAYnAME="d" IsInstalle="1" Localize="x" localizename="c" NeedReserved="0" )"
        R"(needreserve="1" Name="x" displayname="a" ShortName="x"/>)");
    EXPECT_EQ(
        Written(*app),
        R"(<DesktopApp DisplayName="a" LnkFileName="b" LocalizeName="c" RubyDisplayName="d" NeedReserve="1" )"
        R"(IsInstalled="0" IsDualMode="1" />)");
}

TEST(DesktopAppFromXmlNode, TakesTheLastOfARepeatedAttribute)
{
    const auto app =
        Read(R"(<DesktopApp DisplayName="a" displayname="b" NeedReserve="1" needreserve="0" )"
             R"(IsInstalled="0" ISINSTALLED="yes" LnkFileName="x" lnkfilename="y" DISPLAYNAME="c"/>)");
    EXPECT_EQ(Written(*app), R"(<DesktopApp DisplayName="c" LnkFileName="y" />)");
}

TEST(DesktopAppFromXmlNode, ExpandsVariablesInThePathOnly)
{
    const test::ScopedEnvironment variable(L"QanhMenu", L"C:\\Menu");
    const auto app = Read(R"(<DesktopApp DisplayName="%QanhMenu%" LnkFileName="%QanhMenu%\%QanhMenu%\a.lnk" )"
                          R"(LocalizeName="%QanhMenu%" RubyDisplayName="%QanhMenu%"/>)");
    EXPECT_STREQ(app->LnkFileName.c_str(), L"C:\\Menu\\C:\\Menu\\a.lnk");
    EXPECT_STREQ(app->DisplayName.c_str(), L"%QanhMenu%");
    EXPECT_STREQ(app->LocalizeName.c_str(), L"%QanhMenu%");
    EXPECT_STREQ(app->RubyDisplayName.c_str(), L"%QanhMenu%");
    // What was read stays expanded when it is written.
    EXPECT_EQ(Written(*app), R"(<DesktopApp DisplayName="%QanhMenu%" LnkFileName="C:\Menu\C:\Menu\a.lnk" )"
                             R"(LocalizeName="%QanhMenu%" RubyDisplayName="%QanhMenu%" />)");
}

TEST(DesktopAppFromXmlNode, KeepsUnknownVariables)
{
    EXPECT_STREQ(Read(R"(<DesktopApp LnkFileName="%QanhNothing%\a.lnk"/>)")->LnkFileName.c_str(),
                 L"%QanhNothing%\\a.lnk");
    EXPECT_STREQ(Read(R"(<DesktopApp LnkFileName="C:\100%.lnk"/>)")->LnkFileName.c_str(), L"C:\\100%.lnk");
}

TEST(DesktopAppFromXmlNode, KeepsAnEmptyPathEmpty)
{
    EXPECT_TRUE(Read(R"(<DesktopApp LnkFileName=""/>)")->LnkFileName.empty());
}

TEST(DesktopAppFromXmlNode, KeepsTheRawPathWhenItCannotBeExpanded)
{
    static std::wstring s_text;
    static DWORD s_size = 0;
    const test::ImportPatch<DWORD(WINAPI*)(LPCWSTR, LPWSTR, DWORD)> patch(
        "ExpandEnvironmentStringsW", [](LPCWSTR text, LPWSTR, DWORD size) -> DWORD {
            s_text = text;
            s_size = size;
            return 0;
        });
    EXPECT_STREQ(Read(R"(<DesktopApp LnkFileName="%ProgramData%\a.lnk"/>)")->LnkFileName.c_str(),
                 L"%ProgramData%\\a.lnk");
    EXPECT_EQ(s_text, L"%ProgramData%\\a.lnk");
    EXPECT_EQ(s_size, 260u);
}

TEST(DesktopAppFromXmlNode, KeepsOverlongRawPathsThatCannotBeExpanded)
{
    const test::ImportPatch<DWORD(WINAPI*)(LPCWSTR, LPWSTR, DWORD)> patch(
        "ExpandEnvironmentStringsW", [](LPCWSTR, LPWSTR, DWORD) -> DWORD { return 0; });
    const std::string path(400, 'p');
    EXPECT_EQ(Read("<DesktopApp LnkFileName=\"" + path + "\"/>")->LnkFileName.c_str(),
              std::wstring(400, L'p'));
}

// A path has 259 characters at most. Cut to that it would be the path of another file.
TEST(DesktopAppFromXmlNode, KeepsTheRawPathWhenItsExpansionIsTooLong)
{
    const test::ScopedEnvironment variable(L"QanhMenu", std::wstring(200, L'm').c_str());
    for (const std::size_t length : {1u, 258u, 259u, 260u, 261u, 1000u}) {
        SCOPED_TRACE(length);
        const auto plain = Read("<DesktopApp LnkFileName=\"" + std::string(length, 'p') + "\"/>");
        EXPECT_EQ(plain->LnkFileName.c_str(), std::wstring(length, L'p'));
    }
    for (const std::size_t length : {201u, 258u, 259u, 260u, 261u, 1000u}) {
        SCOPED_TRACE(length);
        const std::wstring rest(length - 200, L'p');
        const auto app =
            Read("<DesktopApp DisplayName=\"a\" LnkFileName=\"%QanhMenu%" + test::ToUtf8(rest) + "\"/>");
        EXPECT_EQ(app->LnkFileName.c_str(),
                  (length < 260 ? std::wstring(200, L'm') : std::wstring(L"%QanhMenu%")) + rest);
        EXPECT_STREQ(app->DisplayName.c_str(), L"a");
    }
}

TEST(DesktopAppFromXmlNode, KeepsTheRawPathWhateverAFailedExpansionLeaves)
{
    const test::ImportPatch<DWORD(WINAPI*)(LPCWSTR, LPWSTR, DWORD)> patch(
        "ExpandEnvironmentStringsW", [](LPCWSTR, LPWSTR buffer, DWORD size) -> DWORD {
            std::fill_n(buffer, size, L'q');
            return size + 1;
        });
    EXPECT_STREQ(Read(R"(<DesktopApp LnkFileName="a"/>)")->LnkFileName.c_str(), L"a");
}

TEST(DesktopAppFromXmlNode, KeepsEveryScript)
{
    const auto app = Read("<DesktopApp DisplayName=\"\xE3\x83\xA1\xE3\x83\xA2\xE5\xB8\xB3\" "
                          "LnkFileName=\"C:\\\xE5\xA4\xA9.lnk\" LocalizeName=\"\xF0\x9F\x98\x80\"/>");
    EXPECT_STREQ(app->DisplayName.c_str(), L"メモ帳");
    EXPECT_STREQ(app->LnkFileName.c_str(), L"C:\\天.lnk");
    EXPECT_STREQ(app->LocalizeName.c_str(), L"\xD83D\xDE00");
}

} // namespace
