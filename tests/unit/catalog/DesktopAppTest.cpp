#include "catalog/DesktopApp.h"

#include "support/LogCapture.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using test::Answer;
using test::Ask;
using test::Excluding;
using test::kFound;
using test::kNothing;
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

struct Names
{
    const wchar_t* displayName;
    const wchar_t* localizeName = L"";
    const wchar_t* rubyDisplayName = L"";
    bool isDualMode = false;
};

const test::ExcludeCase<Names> kCases[] = {
    {"its own name is found", {L"word"}, L"word", kFound},
    {"in any letter case", {L"Word 2013"}, L"wORD 2013", kFound},
    {"its own name is not found in dual mode", {L"Word", L"", L"", true}, L"word", kNothing},
    {"behind its own name the reading does not count", {L"word", L"", L"word"}, L"word", kFound},
    {"nor in dual mode", {L"word", L"", L"word", true}, L"word", kNothing},
    {"dual mode concerns the exact name only", {L"b a", L"", L"", true}, L"a b", kFound},
    {"other letters than A to Z are found through their tokens",
     {L"\u00C4", L"", L"", true},
     L"\u00E4",
     kFound},

    {"the localised name replaces the display name: found", {L"Notepad", L"メモ帳"}, L"メモ帳", kFound},
    {"the localised name replaces the display name: not found",
     {L"notepad", L"メモ帳"},
     L"notepad",
     kNothing},
    {"the localised name replaces the display name: excluded",
     {L"notepad of old", L"my notepad"},
     L"notepad",
     Excluding({L"my notepad"})},
    {"a localised name alone is enough", {L"", L"my notepad"}, L"notepad", Excluding({L"my notepad"})},
    {"a record without any name is passed over", {L"", L"", L"word"}, L"word", kNothing},

    {"a name that contains the wanted one is excluded",
     {L"word viewer"},
     L"word",
     Excluding({L"word viewer"})},
    {"the wanted name is lowered", {L"word viewer"}, L"WORD", Excluding({L"word viewer"})},
    {"the record's name is not lowered", {L"Word Viewer"}, L"word", kNothing},
    {"a part of the wanted name is left alone", {L"word"}, L"word viewer", kNothing},
    {"the same words in another order are the wanted app", {L"viewer (word)"}, L"Word Viewer", kFound},
    {"dual mode excludes like every other",
     {L"word viewer", L"", L"", true},
     L"word",
     Excluding({L"word viewer"})},

    {"a hit in the reading excludes the name", {L"電卓", L"", L"でんたく"}, L"でん", Excluding({L"電卓"})},
    {"a hit in the reading excludes the localised name",
     {L"calc", L"電卓", L"でんたく"},
     L"でんたく",
     Excluding({L"電卓"})},
    {"the reading is not lowered", {L"電卓", L"", L"Dentaku"}, L"dentaku", kNothing},
    {"hits in name and reading exclude once, and the second adding is the result",
     {L"メール", L"", L"メール"},
     L"メ",
     Excluding({L"メール"}, S_FALSE)},
    {"the reading counts also for the wanted app by its tokens",
     {L"b a", L"", L"a b"},
     L"a b",
     Answer{S_OK, 1, {L"b a"}}},
    {"an empty reading is not looked at", {L"word"}, L"!", Excluding({L"word"})},

    {"a name that is listed already stays as it stands",
     {L"word viewer"},
     L"word",
     Excluding({L"WORD VIEWER"}, S_FALSE),
     {L"WORD VIEWER"}},
};

TEST(DesktopAppExclude, FollowsItsRules)
{
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.rule);
        const CQanhDesktopApp app(c.names.displayName, L"C:\\a.lnk", c.names.localizeName,
                                  c.names.rubyDisplayName, false, true, c.names.isDualMode);
        EXPECT_EQ(Ask(app, c.wantedName, c.listed), c.answer);
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

TEST(DesktopAppExclude, ChecksItsArgumentsBeforeItsState)
{
    const CQanhDesktopApp app(L"word viewer", L"C:\\a.lnk", nullptr, nullptr, false, false);
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

TEST(DesktopAppExclude, EndsAtAFailingAdding)
{
    // The first adding is that of the name, or that for the reading when the name is not hit.
    for (const wchar_t* displayName : {L"word viewer", L"viewer"}) {
        const CQanhDesktopApp app(displayName, L"C:\\a.lnk", nullptr, L"word");
        EXPECT_EQ(test::AskWithFailingAdding(app, L"word"), (Answer{E_OUTOFMEMORY, 0, {}}));
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

TEST(DesktopAppExclude, LogsThatItIsNotInstalledOrHasNoName)
{
    const test::LogCapture log;
    Ask(CQanhDesktopApp(L"Word", L"C:\\a.lnk", nullptr, nullptr, false, false), L"Word");
    Ask(CQanhDesktopApp(L"", L"C:\\a.lnk"), L"Word");
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhDesktopApp::AddToExcludeAppNameList(Word) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000001)",
                                         "CQanhDesktopApp::AddToExcludeAppNameList(Word) IN",
                                         "CQanhDesktopApp::AddToExcludeAppNameList OUT(0x00000000)"));
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
