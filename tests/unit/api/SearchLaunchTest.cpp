// What a launch by search pastes and presses.

#include "QanHelper.h"
#include "unit/api/SearchDesktop.h"

namespace {

using namespace api_test;

class SearchLaunch : public SearchDesktop
{
protected:
    // A launch that succeeds.
    void Launch(DWORD mode, BOOL usesExcludeList = FALSE, const wchar_t* name = L"Mail")
    {
        journal.clear();
        EXPECT_EQ(QanhLaunchBySearch(name, mode, usesExcludeList), S_OK);
    }
    // The same of one that pastes once, this text.
    void ExpectPasted(const std::wstring& text, DWORD mode, BOOL usesExcludeList,
                      const wchar_t* name = L"Mail")
    {
        pasted.clear();
        Launch(mode, usesExcludeList, name);
        EXPECT_THAT(pasted, ElementsAre('"' + ToUtf8(text) + '"'));
    }

    // Showing, which waits so long before the clipboard is cleared.
    static Steps ShowSteps(const std::string& wait)
    {
        return kOpenPane + kCopy + Steps{"sleep 2000"} + kPaste + Steps{"sleep " + wait} + kEnd;
    }

    const Steps kLaunch = kOpenPane + kCopy + kPaste + kEnter + kPaneGone + kEnd;
    const Steps kShow = ShowSteps("1000");
};

// ---- the modes ----

TEST_F(SearchLaunch, ShowingWaitsAsLongAsTheSettingSaysBeforeTheClipboardIsCleared)
{
    for (const DWORD wait : {0u, 7u, 60000u}) {
        Settings().SetDword(L"ClearClipboardWaitTime", wait);
        Launch(1);
        EXPECT_EQ(journal, ShowSteps(std::to_string(wait)));
    }
}

TEST_F(SearchLaunch, TheSettingDoesNotConcernTheOtherModes)
{
    Settings().SetDword(L"ClearClipboardWaitTime", 7);
    for (const DWORD mode : {0u, 2u}) {
        Launch(mode);
        EXPECT_EQ(journal, kLaunch);
    }
}

// ---- the query ----

struct QueryCase
{
    const char* name;
    std::vector<std::wstring> catalogue; // desktop applications
    DWORD mode;
    BOOL usesExcludeList;
    const wchar_t* application;
    const wchar_t* pasted;
};

class SearchLaunchQuery : public SearchLaunch, public ::testing::WithParamInterface<QueryCase>
{
};

TEST_P(SearchLaunchQuery, IsPasted)
{
    for (const std::wstring& name : GetParam().catalogue) {
        AddDesktopApp(name);
    }
    ExpectPasted(GetParam().pasted, GetParam().mode, GetParam().usesExcludeList, GetParam().application);
    EXPECT_EQ(journal, GetParam().mode == 1 ? kShow : kLaunch);
}

const QueryCase kQueries[] = {
    {"Launching", {}, 0, FALSE, L"Mail", L"\"Mail\""},
    {"ShowingIsThePlainName", {}, 1, FALSE, L"Mail", L"Mail"},
    {"PlainIfFound", {L"Mail"}, 2, TRUE, L"mail", L"mail"},
    {"PlainIfFoundIsTheQueryOfAnUnknownOne", {L"gmail"}, 2, TRUE, L"Mail", L"\"Mail\" NOT(\"gmail\")"},
    {"PlainIfFoundDoesNotAskTheCatalogueWithoutTheExcludeList", {L"Mail"}, 2, FALSE, L"Mail", L"\"Mail\""},
    {"FoundInTheFirstMode", {L"Mail", L"gmail"}, 0, TRUE, L"Mail", L"\"Mail\" NOT(\"gmail\")"},
    {"ShowingExcludesNothing", {L"gmail"}, 1, TRUE, L"Mail", L"Mail"},
    {"NothingIsExcludedWithoutTheExcludeList", {L"gmail"}, 0, FALSE, L"Mail", L"\"Mail\""},
    {"EveryValueButZeroAsksForTheExcludeList", {L"gmail"}, 0, -1, L"Mail", L"\"Mail\" NOT(\"gmail\")"},
    {"NamesOfAnyLetters",
     {L"\u30e1\u30fc\u30eb\u7bb1"},
     0,
     TRUE,
     L"\u30e1\u30fc\u30eb",
     L"\"\u30e1\u30fc\u30eb\" NOT(\"\u30e1\u30fc\u30eb\u7bb1\")"},
};

INSTANTIATE_TEST_SUITE_P(With, SearchLaunchQuery, ::testing::ValuesIn(kQueries),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(SearchLaunch, ExcludedNamesComeInTheOrderOfTheCatalogue)
{
    AddDesktopApp(L"gmail");
    AddStoreApp(L"mail box");
    AddDesktopApp(L"e-mail");
    AddDesktopApp(L"GMAIL mail"); // hit by its second word
    ExpectPasted(L"\"Mail\" NOT(\"mail box\" OR \"gmail\" OR \"e-mail\" OR \"GMAIL mail\")", 0, 5);
}

TEST_F(SearchLaunch, EachLaunchStartsWithAnEmptyExcludeList)
{
    AddDesktopApp(L"gmail");
    ExpectPasted(L"\"Mail\" NOT(\"gmail\")", 0, TRUE);
    ExpectPasted(L"\"Music\"", 0, TRUE, L"Music");
}

TEST_F(SearchLaunch, LongQueryIsPastedWhole)
{
    std::wstring expected;
    for (int index = 0; index < 200; ++index) {
        const std::wstring name = L"mail " + std::to_wstring(index);
        AddDesktopApp(name);
        expected += (index == 0 ? L"\"" : L" OR \"") + name + L"\"";
    }
    ExpectPasted(L"\"Mail\" NOT(" + expected + L")", 0, TRUE);
}

// ---- until the pane is gone ----

TEST_F(SearchLaunch, PaneIsLookedAtTenTimesAndOnceMoreBeforeTheNextPaste)
{
    // Open, ten looks and one more in front, then gone.
    isPaneInFront = [](std::size_t look) { return look <= 12; };
    Launch(0);
    Steps tenLooks;
    for (int look = 0; look < 10; ++look) {
        tenLooks = tenLooks + Steps{"sleep 100", "look: pane"};
    }
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + tenLooks + Steps{"look: pane"} + kPaste +
                           kEnter + kPaneGone + kEnd);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\"\"", "\"\"Mail\"\"")); // it stays on the clipboard
}

TEST_F(SearchLaunch, LooksEndAsSoonAsThePaneHasGone)
{
    // The last look that sees the pane, and all looks: those that see it, the one that sees it gone, and one
    // more. After the tenth in the pane those two are one.
    for (const auto& [last, looks] : {std::pair(4u, 6u), std::pair(11u, 12u)}) {
        isPaneInFront = [seen = last](std::size_t look) { return look <= seen; };
        Launch(0);
        EXPECT_EQ(Pastes(), 1u);
        EXPECT_EQ(Looks(), looks);
    }
}

TEST_F(SearchLaunch, PaneThatComesBackAtTheLastLookIsPastedIntoAgain)
{
    isPaneInFront = [](std::size_t look) { return look == 1 || look == 3; };
    Launch(0);
    const Steps comesBack = {"sleep 100", "look: no pane", "look: pane"};
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + comesBack + kPaste + kEnter + kPaneGone + kEnd);
}

TEST_F(SearchLaunch, NoWindowInFrontIsNoPane)
{
    hasForeground = false;
    Launch(0);
    EXPECT_EQ(journal, kLaunch);
}

TEST_F(SearchLaunch, PastesForAsLongAsThePaneStaysInFront)
{
    readsClipboard = false;
    constexpr std::size_t kRounds = 100; // each of ten looks and one more
    isPaneInFront = [](std::size_t look) { return look <= 1 + kRounds * 11; };
    for (const DWORD mode : {0u, 2u}) {
        Launch(mode);
        EXPECT_EQ(Pastes(), 1 + kRounds);
        EXPECT_EQ(Enters(), 1 + kRounds);
        EXPECT_EQ(Looks(), 1 + kRounds * 11 + 2);
    }
}

// ---- the end ----

TEST_F(SearchLaunch, ClipboardIsEmptyAfterwards)
{
    for (const DWORD mode : {0u, 1u, 2u}) {
        Launch(mode);
        EXPECT_EQ(ReadClipboard(), "nothing");
        journal.clear();
    }
}

TEST_F(SearchLaunch, ClipboardThatCannotBeOpenedDoesNotStopTheLaunch)
{
    opensClipboard = false;
    Launch(0);
    const Steps end = {"OpenClipboard", "key 10 scan 36 flags 2 extra 77", "sleep 50"};
    EXPECT_EQ(journal, kOpenPane + Steps{"OpenClipboard"} + kPaste + kEnter + kPaneGone + end);
}

TEST_F(SearchLaunch, PaneThatNeverComesIsPastedIntoAllTheSame)
{
    readsClipboard = false;
    isPaneInFront = [](std::size_t) { return false; };
    Launch(0);
    EXPECT_EQ(Looks(), 202u);
    EXPECT_EQ(Pastes(), 1u);
}

// ---- without a pane ----

TEST_F(SearchLaunch, UnreadableScreenFailsBeforeAnythingIsTouched)
{
    m_shell.objects.Fail("IsLauncherVisible", E_ACCESSDENIED);
    for (const DWORD mode : {0u, 1u, 2u}) {
        EXPECT_EQ(QanhLaunchBySearch(L"Mail", mode, TRUE), E_FAIL);
    }
    EXPECT_THAT(journal, IsEmpty());
}

} // namespace
