#include "catalog/DesktopApp.h"

#include "unit/catalog/Records.h"

namespace {

using namespace test;

TEST(DesktopApp, IsInstalledButNeitherReservedNorOfDualModeUnlessToldSo)
{
    const CQanhDesktopApp app(L"Word", L"C:\\Word.lnk");
    ExpectNames(app, L"Word", L"C:\\Word.lnk", L"", L"");
    ExpectFlags(app, FALSE, TRUE, FALSE);
}

TEST(DesktopApp, TakesNamesAndFlagsInOrder)
{
    const CQanhDesktopApp app(L"a", L"b", L"c", L"d", true, false, true);
    ExpectNames(app, L"a", L"b", L"c", L"d");
    ExpectFlags(app, TRUE, FALSE, TRUE);
    // Null makes empty names.
    ExpectNames(CQanhDesktopApp(nullptr, nullptr), L"", L"", L"", L"");
}

struct AppNames
{
    const wchar_t* displayName;
    const wchar_t* localizeName = L"";
    const wchar_t* rubyDisplayName = L"";
    bool isDualMode = false;
};

// How a record with these names answers a search with an exclude list that holds the listed names already.
void ExpectAnswer(const char* rule, const AppNames& names, const wchar_t* wantedName,
                  const SearchAnswer& answer, const std::vector<const wchar_t*>& listed = {})
{
    const CQanhDesktopApp app(names.displayName, L"C:\\a.lnk", names.localizeName, names.rubyDisplayName,
                              false, true, names.isDualMode);
    EXPECT_EQ(Ask(app, wantedName, listed), answer) << rule;
}

TEST(DesktopAppExclude, FollowsItsRules)
{
    ExpectAnswer("its own name is found", {L"word"}, L"word", kFound);
    ExpectAnswer("in any letter case", {L"Word 2013"}, L"wORD 2013", kFound);
    ExpectAnswer("its own name is not found in dual mode", {L"Word", L"", L"", true}, L"word", kNothing);
    ExpectAnswer("behind its own name the reading does not count", {L"word", L"", L"word"}, L"word", kFound);
    ExpectAnswer("nor in dual mode", {L"word", L"", L"word", true}, L"word", kNothing);
    ExpectAnswer("dual mode concerns the exact name only", {L"b a", L"", L"", true}, L"a b", kFound);
    ExpectAnswer("other letters than A to Z are found through their tokens", {L"\u00C4", L"", L"", true},
                 L"\u00E4", kFound);

    ExpectAnswer("the localised name replaces the display name: found", {L"Notepad", L"メモ帳"}, L"メモ帳",
                 kFound);
    ExpectAnswer("the localised name replaces the display name: not found", {L"notepad", L"メモ帳"},
                 L"notepad", kNothing);
    ExpectAnswer("the localised name replaces the display name: excluded", {L"notepad of old", L"my notepad"},
                 L"notepad", Excluding({L"my notepad"}));
    ExpectAnswer("a localised name alone is enough", {L"", L"my notepad"}, L"notepad",
                 Excluding({L"my notepad"}));
    ExpectAnswer("a record without any name is passed over", {L"", L"", L"word"}, L"word", kNothing);

    ExpectAnswer("a name that contains the wanted one is excluded", {L"word viewer"}, L"word",
                 Excluding({L"word viewer"}));
    ExpectAnswer("the wanted name is lowered", {L"word viewer"}, L"WORD", Excluding({L"word viewer"}));
    ExpectAnswer("the record's name is not lowered", {L"Word Viewer"}, L"word", kNothing);
    ExpectAnswer("a part of the wanted name is left alone", {L"word"}, L"word viewer", kNothing);
    ExpectAnswer("the same words in another order are the wanted app", {L"viewer (word)"}, L"Word Viewer",
                 kFound);
    ExpectAnswer("dual mode excludes like every other", {L"word viewer", L"", L"", true}, L"word",
                 Excluding({L"word viewer"}));

    ExpectAnswer("a hit in the reading excludes the name", {L"電卓", L"", L"でんたく"}, L"でん",
                 Excluding({L"電卓"}));
    ExpectAnswer("a hit in the reading excludes the localised name", {L"calc", L"電卓", L"でんたく"},
                 L"でんたく", Excluding({L"電卓"}));
    ExpectAnswer("the reading is not lowered", {L"電卓", L"", L"Dentaku"}, L"dentaku", kNothing);
    ExpectAnswer("hits in name and reading exclude once, and the second adding is the result",
                 {L"メール", L"", L"メール"}, L"メ", Excluding({L"メール"}, S_FALSE));
    ExpectAnswer("the reading counts also for the wanted app by its tokens", {L"b a", L"", L"a b"}, L"a b",
                 SearchAnswer{S_OK, 1, {L"b a"}});
    ExpectAnswer("an empty reading is not looked at", {L"word"}, L"!", Excluding({L"word"}));

    ExpectAnswer("a name that is listed already stays as it stands", {L"word viewer"}, L"word",
                 Excluding({L"WORD VIEWER"}, S_FALSE), {L"WORD VIEWER"});
}

TEST(DesktopAppExclude, LeavesFoundAloneWhenNotInstalled)
{
    // Not even a reserved one counts.
    const CQanhDesktopApp app(L"word", L"C:\\a.lnk", nullptr, L"word", true, false);
    for (const wchar_t* wantedName : {L"word", L"w", L"other"}) {
        EXPECT_EQ(Ask(app, wantedName), (SearchAnswer{S_FALSE, 7, {}}));
    }
    // Its arguments are checked before its state.
    ExpectArgumentChecks(app);
}

TEST(DesktopAppExclude, EndsAtAFailingAdding)
{
    // The first adding is that of the name, or that for the reading when the name is not hit.
    for (const wchar_t* displayName : {L"word viewer", L"viewer"}) {
        const CQanhDesktopApp app(displayName, L"C:\\a.lnk", nullptr, L"word");
        EXPECT_EQ(AskWithFailingAdding(app, L"word"), (SearchAnswer{E_OUTOFMEMORY, 0, {}}));
    }
}

TEST(DesktopAppExclude, LogsEveryComparison)
{
    const LogCapture log;
    Ask(CQanhDesktopApp(L"word viewer", L"C:\\a.lnk", L"", L"reading"), L"Word");
    Ask(CQanhDesktopApp(L"Word", L"C:\\a.lnk", nullptr, nullptr, false, false), L"Word");
    Ask(CQanhDesktopApp(L"", L"C:\\a.lnk"), L"Word");
    EXPECT_EQ(log.Lines(), Call("CQanhDesktopApp::AddToExcludeAppNameList(Word)", "(0x00000000)",
                                Call("CQanhApp::IsSubStrNoOrder(word, word viewer)", "(1)") +
                                    Call("CQanhApp::IsSubStrNoOrder(word viewer, word)", "(0)") +
                                    Call("CQanhApp::IsSubStrNoOrder(word, reading)", "(0)")) +
                               // It is not installed.
                               Call("CQanhDesktopApp::AddToExcludeAppNameList(Word)", "(0x00000001)") +
                               // It has no name.
                               Call("CQanhDesktopApp::AddToExcludeAppNameList(Word)", "(0x00000000)"));
}

TEST(DesktopAppIsSameShortcut, ComparesWholePathsIgnoringCaseUnlessTheyAreEmpty)
{
    const CQanhDesktopApp app(L"Word", L"C:\\Menu\\Word.lnk");
    const CQanhDesktopApp pathless(L"Word", L"");
    EXPECT_EQ(app.IsSameShortcut(L"C:\\Menu\\Word.lnk"), 1);
    EXPECT_EQ(app.IsSameShortcut(L"c:\\mENU\\word.LNK"), 1);
    for (const wchar_t* other : {L"C:\\Menu\\Word.ln", L"C:\\Menu\\Word.lnkx", L"Word.lnk",
                                 L"C:/Menu/Word.lnk", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(app.IsSameShortcut(other), 0) << PrintToString(other);
        EXPECT_EQ(pathless.IsSameShortcut(other), 0) << PrintToString(other);
    }
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
    const LogCapture log;
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
