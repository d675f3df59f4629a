#include "catalog/DesktopApp.h"

#include "support/Allocations.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

using test::Answer;
using test::Ask;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(DesktopApp, IsInstalledButNeitherReservedNorOfDualModeUnlessToldSo)
{
    const CQanhDesktopApp app(L"Word", L"C:\\Word.lnk");
    EXPECT_STREQ(app.DisplayName.c_str(), L"Word");
    EXPECT_STREQ(app.LnkFileName.c_str(), L"C:\\Word.lnk");
    EXPECT_TRUE(app.LocalizeName.empty());
    EXPECT_TRUE(app.RubyDisplayName.empty());
    EXPECT_EQ(app.NeedReserve, FALSE);
    EXPECT_EQ(app.IsInstalled, TRUE);
    EXPECT_EQ(app.IsDualMode, FALSE);
}

TEST(DesktopApp, TakesNamesAndFlagsInOrder)
{
    const CQanhDesktopApp app(L"a", L"b", L"c", L"d", true, false, true);
    EXPECT_STREQ(app.DisplayName.c_str(), L"a");
    EXPECT_STREQ(app.LnkFileName.c_str(), L"b");
    EXPECT_STREQ(app.LocalizeName.c_str(), L"c");
    EXPECT_STREQ(app.RubyDisplayName.c_str(), L"d");
    EXPECT_EQ(app.NeedReserve, TRUE);
    EXPECT_EQ(app.IsInstalled, FALSE);
    EXPECT_EQ(app.IsDualMode, TRUE);
}

TEST(DesktopApp, MakesEmptyNamesOfNull)
{
    const CQanhDesktopApp app(nullptr, nullptr);
    EXPECT_TRUE(app.DisplayName.empty());
    EXPECT_TRUE(app.LnkFileName.empty());
}

// How an installed record with these names answers a search.
struct Case
{
    const char* rule;
    const wchar_t* displayName;
    const wchar_t* localizeName;
    const wchar_t* rubyDisplayName;
    bool isDualMode;
    const wchar_t* wantedName;
    std::vector<const wchar_t*> listed;
    HRESULT result;
    BOOL found;
    std::vector<std::wstring> excluded;
};

const Case kCases[] = {
    {"its own name is found", L"word", L"", L"", false, L"word", {}, S_OK, 1, {}},
    {"in any letter case", L"Word 2013", L"", L"", false, L"wORD 2013", {}, S_OK, 1, {}},
    {"its own name is not found in dual mode", L"Word", L"", L"", true, L"word", {}, S_OK, 0, {}},
    {"behind its own name the reading does not count",
     L"word",
     L"",
     L"word",
     false,
     L"word",
     {},
     S_OK,
     1,
     {}},
    {"nor in dual mode", L"word", L"", L"word", true, L"word", {}, S_OK, 0, {}},
    {"dual mode concerns the exact name only", L"b a", L"", L"", true, L"a b", {}, S_OK, 1, {}},
    {"other letters than A to Z are found through their tokens",
     L"\u00C4",
     L"",
     L"",
     true,
     L"\u00E4",
     {},
     S_OK,
     1,
     {}},

    {"the localised name replaces the display name: found",
     L"Notepad",
     L"メモ帳",
     L"",
     false,
     L"メモ帳",
     {},
     S_OK,
     1,
     {}},
    {"the localised name replaces the display name: not found",
     L"notepad",
     L"メモ帳",
     L"",
     false,
     L"notepad",
     {},
     S_OK,
     0,
     {}},
    {"the localised name replaces the display name: excluded",
     L"notepad of old",
     L"my notepad",
     L"",
     false,
     L"notepad",
     {},
     S_OK,
     0,
     {L"my notepad"}},
    {"a localised name alone is enough",
     L"",
     L"my notepad",
     L"",
     false,
     L"notepad",
     {},
     S_OK,
     0,
     {L"my notepad"}},
    {"a record without any name is passed over", L"", L"", L"word", false, L"word", {}, S_OK, 0, {}},

    {"a name that contains the wanted one is excluded",
     L"word viewer",
     L"",
     L"",
     false,
     L"word",
     {},
     S_OK,
     0,
     {L"word viewer"}},
    {"the wanted name is lowered", L"word viewer", L"", L"", false, L"WORD", {}, S_OK, 0, {L"word viewer"}},
    {"the record's name is not lowered", L"Word Viewer", L"", L"", false, L"word", {}, S_OK, 0, {}},
    {"a part of the wanted name is left alone", L"word", L"", L"", false, L"word viewer", {}, S_OK, 0, {}},
    {"the same words in another order are the wanted app",
     L"viewer (word)",
     L"",
     L"",
     false,
     L"Word Viewer",
     {},
     S_OK,
     1,
     {}},
    {"dual mode excludes like every other",
     L"word viewer",
     L"",
     L"",
     true,
     L"word",
     {},
     S_OK,
     0,
     {L"word viewer"}},

    {"a hit in the reading excludes the name",
     L"電卓",
     L"",
     L"でんたく",
     false,
     L"でん",
     {},
     S_OK,
     0,
     {L"電卓"}},
    {"a hit in the reading excludes the localised name",
     L"calc",
     L"電卓",
     L"でんたく",
     false,
     L"でんたく",
     {},
     S_OK,
     0,
     {L"電卓"}},
    {"the reading is not lowered", L"電卓", L"", L"Dentaku", false, L"dentaku", {}, S_OK, 0, {}},
    {"hits in name and reading exclude once, and the second adding is the result",
     L"メール",
     L"",
     L"メール",
     false,
     L"メ",
     {},
     S_FALSE,
     0,
     {L"メール"}},
    {"the reading counts also for the wanted app by its tokens",
     L"b a",
     L"",
     L"a b",
     false,
     L"a b",
     {},
     S_OK,
     1,
     {L"b a"}},
    {"an empty reading is not looked at", L"word", L"", L"", false, L"!", {}, S_OK, 0, {L"word"}},

    {"a name that is listed already stays as it stands",
     L"word viewer",
     L"",
     L"",
     false,
     L"word",
     {L"WORD VIEWER"},
     S_FALSE,
     0,
     {L"WORD VIEWER"}},
};

TEST(DesktopAppExclude, FollowsItsRules)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.rule);
        const CQanhDesktopApp app(c.displayName, L"C:\\a.lnk", c.localizeName, c.rubyDisplayName, false, true,
                                  c.isDualMode);
        const Answer answer = Ask(app, c.wantedName, c.listed);
        EXPECT_EQ(answer.result, c.result);
        EXPECT_EQ(answer.found, c.found);
        EXPECT_EQ(answer.excluded, c.excluded);
    }
}

TEST(DesktopAppExclude, LeavesFoundAloneWhenNotInstalled)
{
    // Not even a reserved one counts.
    const CQanhDesktopApp app(L"word", L"C:\\a.lnk", nullptr, L"word", true, false);
    for (const wchar_t* wantedName : {L"word", L"w", L"other"}) {
        const Answer answer = Ask(app, wantedName);
        EXPECT_EQ(answer.result, S_FALSE);
        EXPECT_EQ(answer.found, 7);
        EXPECT_THAT(answer.excluded, IsEmpty());
    }
}

TEST(DesktopAppExclude, ChecksItsArgumentsBeforeAnythingElse)
{
    for (const bool isInstalled : {true, false}) {
        const CQanhDesktopApp app(L"word viewer", L"C:\\a.lnk", nullptr, nullptr, false, isInstalled);
        ExcludeList list;
        BOOL found = 7;
        EXPECT_EQ(app.AddToExcludeAppNameList(nullptr, &list, &found), E_POINTER);
        EXPECT_EQ(app.AddToExcludeAppNameList(L"word", nullptr, &found), E_POINTER);
        EXPECT_EQ(app.AddToExcludeAppNameList(L"word", &list, nullptr), E_POINTER);
        EXPECT_EQ(app.AddToExcludeAppNameList(L"", &list, nullptr), E_POINTER);
        EXPECT_EQ(app.AddToExcludeAppNameList(L"", &list, &found), E_INVALIDARG);
        EXPECT_EQ(found, 7);
        EXPECT_TRUE(list.IsEmpty());
    }
}

TEST(DesktopAppExclude, ClearsFoundBeforeACopyOfTheNameFails)
{
    const test::ImportPatch<wchar_t* (*)(const wchar_t*)> patch(
        "_wcsdup", [](const wchar_t*) -> wchar_t* { return nullptr; });
    const Answer answer = Ask(CQanhDesktopApp(L"word", L"C:\\a.lnk"), L"word");
    EXPECT_EQ(answer.result, E_OUTOFMEMORY);
    EXPECT_EQ(answer.found, 0);
}

TEST(DesktopAppExclude, ClearsFoundBeforeTheLoweringFails)
{
    const test::ImportPatch<errno_t (*)(wchar_t*, std::size_t)> patch(
        "_wcslwr_s", [](wchar_t*, std::size_t) -> errno_t { return EINVAL; });
    const Answer answer = Ask(CQanhDesktopApp(L"word", L"C:\\a.lnk"), L"word");
    EXPECT_EQ(answer.result, E_FAIL);
    EXPECT_EQ(answer.found, 0);
}

TEST(DesktopAppExclude, EndsAtAFailingAdding)
{
    // The first adding is that of the name, or that for the reading when the name is not hit.
    for (const wchar_t* displayName : {L"word viewer", L"viewer"}) {
        const CQanhDesktopApp app(displayName, L"C:\\a.lnk", nullptr, L"word");
        ExcludeList list;
        BOOL found = 7;
        HRESULT result = E_UNEXPECTED;
        {
            const test::AllocationWatch watch(0);
            result = app.AddToExcludeAppNameList(L"word", &list, &found);
            EXPECT_TRUE(watch.Failed());
        }
        EXPECT_EQ(result, E_OUTOFMEMORY);
        EXPECT_EQ(found, 0);
        EXPECT_TRUE(list.IsEmpty());
    }
}

TEST(DesktopAppExclude, LogsEveryComparison)
{
    const test::LogCapture log;
    Ask(CQanhDesktopApp(L"word viewer", L"C:\\a.lnk", L"", L"reading"), L"Word");
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhDesktopApp::AddToExcludeAppNameList(Word) IN",
                    "CQanhApp::IsSubStrNoOrder(word, word viewer) IN", "CQanhApp::IsSubStrNoOrder OUT(1)",
                    "CQanhApp::IsSubStrNoOrder(word viewer, word) IN", "CQanhApp::IsSubStrNoOrder OUT(0)",
                    "CQanhApp::IsSubStrNoOrder(word, reading) IN", "CQanhApp::IsSubStrNoOrder OUT(0)",
                    "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)"));
}

TEST(DesktopAppExclude, LogsEveryEarlyExit)
{
    const test::LogCapture log;
    const CQanhDesktopApp app(L"Word", L"C:\\a.lnk");
    EXPECT_EQ(app.AddToExcludeAppNameList(nullptr, nullptr, nullptr), E_POINTER);
    Ask(app, L"");
    Ask(CQanhDesktopApp(L"Word", L"C:\\a.lnk", nullptr, nullptr, false, false), L"Word");
    Ask(CQanhDesktopApp(L"", L"C:\\a.lnk"), L"Word");
    Ask(app, L"word");
    {
        const test::ImportPatch<wchar_t* (*)(const wchar_t*)> patch(
            "_wcsdup", [](const wchar_t*) -> wchar_t* { return nullptr; });
        Ask(app, L"a");
    }
    {
        const test::ImportPatch<errno_t (*)(wchar_t*, std::size_t)> patch(
            "_wcslwr_s", [](wchar_t*, std::size_t) -> errno_t { return EINVAL; });
        Ask(app, L"b");
    }
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhDesktopApp::AddToExcludeAppNameList((null)) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x80004003)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList() IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x80070057)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList(Word) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000001)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList(Word) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList(word) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList(a) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x8007000E)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList(b) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x80004005)"));
}

TEST(DesktopAppIsSameShortcut, ComparesWholePathsIgnoringCase)
{
    const CQanhDesktopApp app(L"Word", L"C:\\Menu\\Word.lnk");
    EXPECT_EQ(app.IsSameShortcut(L"C:\\Menu\\Word.lnk"), 1);
    EXPECT_EQ(app.IsSameShortcut(L"c:\\mENU\\word.LNK"), 1);
    EXPECT_EQ(app.IsSameShortcut(L"C:\\Menu\\Word.ln"), 0);
    EXPECT_EQ(app.IsSameShortcut(L"C:\\Menu\\Word.lnkx"), 0);
    EXPECT_EQ(app.IsSameShortcut(L"Word.lnk"), 0);
    EXPECT_EQ(app.IsSameShortcut(L"C:/Menu/Word.lnk"), 0);
    EXPECT_EQ(app.IsSameShortcut(L""), 0);
    EXPECT_EQ(app.IsSameShortcut(nullptr), 0);
}

TEST(DesktopAppIsSameShortcut, IsNeverTrueForAnEmptyPath)
{
    const CQanhDesktopApp app(L"Word", L"");
    EXPECT_EQ(app.IsSameShortcut(L""), 0);
    EXPECT_EQ(app.IsSameShortcut(L"C:\\Menu\\Word.lnk"), 0);
}

TEST(DesktopAppIsSameShortcut, ComparesOtherScriptsToTheLetter)
{
    const CQanhDesktopApp app(L"Word", L"C:\\\u00C4\\メモ帳.lnk");
    EXPECT_EQ(app.IsSameShortcut(L"c:\\\u00C4\\メモ帳.LNK"), 1);
    EXPECT_EQ(app.IsSameShortcut(L"C:\\\u00E4\\メモ帳.lnk"), 0);
}

TEST(DesktopAppIsSameShortcut, LogsPathAndAnswer)
{
    const CQanhDesktopApp app(L"Word", L"C:\\Word.lnk");
    const test::LogCapture log;
    EXPECT_TRUE(app.IsSameShortcut(L"c:\\word.lnk"));
    EXPECT_FALSE(app.IsSameShortcut(L""));
    EXPECT_FALSE(app.IsSameShortcut(nullptr));
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhDesktopApp::IsSameShortcut IN(c:\\word.lnk)",
                            "CQanhDesktopApp::IsSameShortcut OUT(1)", "CQanhDesktopApp::IsSameShortcut IN()",
                            "CQanhDesktopApp::IsSameShortcut OUT(0)",
                            "CQanhDesktopApp::IsSameShortcut IN((null))",
                            "CQanhDesktopApp::IsSameShortcut OUT(0)"));
}

} // namespace
