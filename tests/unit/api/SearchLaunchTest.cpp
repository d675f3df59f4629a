// What a launch by search pastes and presses.

#include "QanHelper.h"
#include "unit/api/SearchDesktop.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace api_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SearchLaunch : public SearchDesktop
{
};

// ---- the modes ----

TEST_F(SearchLaunch, PastesTheQueryAndPressesEnter)
{
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + kPaneGone + kEnd);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\"\""));
}

TEST_F(SearchLaunch, ShowingPastesThePlainNameAfterTwoSecondsAndPressesNoEnter)
{
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 1, FALSE), S_OK);
    EXPECT_EQ(journal, kOpenPane + kCopy + Steps{"sleep 2000"} + kPaste + Steps{"sleep 1000"} + kEnd);
    EXPECT_THAT(pasted, ElementsAre("\"Mail\""));
    EXPECT_EQ(Enters(), 0u);
}

TEST_F(SearchLaunch, ShowingWaitsAsLongAsTheSettingSaysBeforeTheClipboardIsCleared)
{
    for (const DWORD wait : {0u, 7u, 60000u}) {
        Settings().SetDword(L"ClearClipboardWaitTime", wait);
        journal.clear();
        EXPECT_EQ(QanhLaunchBySearch(L"Mail", 1, FALSE), S_OK);
        EXPECT_EQ(journal, kOpenPane + kCopy + Steps{"sleep 2000"} + kPaste +
                               Steps{"sleep " + std::to_string(wait)} + kEnd);
    }
}

TEST_F(SearchLaunch, TheSettingDoesNotConcernTheOtherModes)
{
    Settings().SetDword(L"ClearClipboardWaitTime", 7);
    for (const DWORD mode : {0u, 2u}) {
        journal.clear();
        EXPECT_EQ(QanhLaunchBySearch(L"Mail", mode, FALSE), S_OK);
        EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + kPaneGone + kEnd);
    }
}

TEST_F(SearchLaunch, PlainIfFoundPastesThePlainNameOfAnApplicationInTheCatalogue)
{
    AddDesktopApp(L"Mail");
    EXPECT_EQ(QanhLaunchBySearch(L"mail", 2, TRUE), S_OK);
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + kPaneGone + kEnd);
    EXPECT_THAT(pasted, ElementsAre("\"mail\""));
}

TEST_F(SearchLaunch, PlainIfFoundPastesTheQueryOfAnUnknownApplication)
{
    AddDesktopApp(L"gmail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 2, TRUE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\" NOT(\"gmail\")\""));
}

TEST_F(SearchLaunch, PlainIfFoundDoesNotAskTheCatalogueWithoutTheExcludeList)
{
    AddDesktopApp(L"Mail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 2, FALSE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\"\""));
}

TEST_F(SearchLaunch, FoundApplicationIsStillQueriedInTheFirstMode)
{
    AddDesktopApp(L"Mail");
    AddDesktopApp(L"gmail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, TRUE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\" NOT(\"gmail\")\""));
}

TEST_F(SearchLaunch, ShowingExcludesNothing)
{
    AddDesktopApp(L"gmail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 1, TRUE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"Mail\""));
}

// ---- the query ----

TEST_F(SearchLaunch, ExcludedNamesComeInTheOrderOfTheCatalogue)
{
    AddDesktopApp(L"gmail");
    AddStoreApp(L"mail box");
    AddDesktopApp(L"e-mail");
    AddDesktopApp(L"GMAIL mail"); // hit by its second word
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, 5), S_OK);
    EXPECT_THAT(pasted,
                ElementsAre("\"\"Mail\" NOT(\"mail box\" OR \"gmail\" OR \"e-mail\" OR \"GMAIL mail\")\""));
}

TEST_F(SearchLaunch, NothingIsExcludedWithoutTheExcludeList)
{
    AddDesktopApp(L"gmail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\"\""));
}

TEST_F(SearchLaunch, EveryValueButZeroAsksForTheExcludeList)
{
    AddDesktopApp(L"gmail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, -1), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\" NOT(\"gmail\")\""));
}

TEST_F(SearchLaunch, EachLaunchStartsWithAnEmptyExcludeList)
{
    AddDesktopApp(L"gmail");
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, TRUE), S_OK);
    journal.clear();
    EXPECT_EQ(QanhLaunchBySearch(L"Music", 0, TRUE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\" NOT(\"gmail\")\"", "\"\"Music\"\""));
}

TEST_F(SearchLaunch, NamesOfAnyLettersArePasted)
{
    AddDesktopApp(L"\u30e1\u30fc\u30eb\u7bb1");
    EXPECT_EQ(QanhLaunchBySearch(L"\u30e1\u30fc\u30eb", 0, TRUE), S_OK);
    EXPECT_THAT(pasted,
                ElementsAre(test::ToUtf8(L"\"\"\u30e1\u30fc\u30eb\" NOT(\"\u30e1\u30fc\u30eb\u7bb1\")\"")));
}

TEST_F(SearchLaunch, LongQueryIsPastedWhole)
{
    std::string expected;
    for (int index = 0; index < 200; ++index) {
        const std::wstring name = L"mail " + std::to_wstring(index);
        AddDesktopApp(name);
        expected += (index == 0 ? "\"" : " OR \"") + test::ToUtf8(name) + "\"";
    }
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, TRUE), S_OK);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\" NOT(" + expected + ")\""));
}

// ---- until the pane is gone ----

TEST_F(SearchLaunch, PaneIsLookedAtTenTimesAndOnceMoreBeforeTheNextPaste)
{
    // Open, ten looks and one more in front, then gone.
    isPaneInFront = [](std::size_t look) { return look <= 12; };
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    Steps tenLooks;
    for (int look = 0; look < 10; ++look) {
        tenLooks = tenLooks + Steps{"sleep 100", "look: pane"};
    }
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + tenLooks + Steps{"look: pane"} + kPaste +
                           kEnter + kPaneGone + kEnd);
    EXPECT_THAT(pasted, ElementsAre("\"\"Mail\"\"", "\"\"Mail\"\"")); // it stays on the clipboard
}

TEST_F(SearchLaunch, PaneThatGoesAtTheLastLookIsGone)
{
    isPaneInFront = [](std::size_t look) { return look <= 11; };
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_EQ(Pastes(), 1u);
    EXPECT_EQ(Looks(), 12u);
}

TEST_F(SearchLaunch, LooksEndAsSoonAsThePaneHasGone)
{
    isPaneInFront = [](std::size_t look) { return look <= 4; };
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_EQ(Pastes(), 1u);
    EXPECT_EQ(Looks(), 6u); // the one that sees it gone, and the last one
}

TEST_F(SearchLaunch, PaneThatComesBackAtTheLastLookIsPastedIntoAgain)
{
    isPaneInFront = [](std::size_t look) { return look == 1 || look == 3; };
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    const Steps comesBack = {"sleep 100", "look: no pane", "look: pane"};
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + comesBack + kPaste + kEnter + kPaneGone + kEnd);
}

TEST_F(SearchLaunch, NoWindowInFrontIsNoPane)
{
    hasForeground = false;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_EQ(journal, kOpenPane + kCopy + kPaste + kEnter + kPaneGone + kEnd);
}

TEST_F(SearchLaunch, PastesForAsLongAsThePaneStaysInFront)
{
    readsClipboard = false;
    constexpr std::size_t kRounds = 100; // each of ten looks and one more
    isPaneInFront = [](std::size_t look) { return look <= 1 + kRounds * 11; };
    for (const DWORD mode : {0u, 2u}) {
        journal.clear();
        EXPECT_EQ(QanhLaunchBySearch(L"Mail", mode, FALSE), S_OK);
        EXPECT_EQ(Pastes(), 1 + kRounds);
        EXPECT_EQ(Enters(), 1 + kRounds);
        EXPECT_EQ(Looks(), 1 + kRounds * 11 + 2);
    }
}

// ---- the end ----

TEST_F(SearchLaunch, ClipboardIsEmptyAfterwards)
{
    for (const DWORD mode : {0u, 1u, 2u}) {
        EXPECT_EQ(QanhLaunchBySearch(L"Mail", mode, FALSE), S_OK);
        EXPECT_EQ(ReadClipboard(), "nothing");
        journal.clear();
    }
}

TEST_F(SearchLaunch, ShiftIsReleasedWithTheScanCodeOfTheMoment)
{
    scanCodeOfShift = 0x36;
    readsClipboard = false;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 1, FALSE), S_OK);
    ASSERT_GE(journal.size(), 2u);
    EXPECT_EQ(journal[journal.size() - 2], "key 10 scan 36 flags 2 extra 77");
    EXPECT_EQ(journal.back(), "sleep 50");
}

TEST_F(SearchLaunch, ClipboardThatCannotBeOpenedDoesNotStopTheLaunch)
{
    opensClipboard = false;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    const Steps end = {"OpenClipboard", "key 10 scan 2A flags 2 extra 77", "sleep 50"};
    EXPECT_EQ(journal, kOpenPane + Steps{"OpenClipboard"} + kPaste + kEnter + kPaneGone + end);
}

TEST_F(SearchLaunch, PaneThatNeverComesIsPastedIntoAllTheSame)
{
    readsClipboard = false;
    isPaneInFront = [](std::size_t) { return false; };
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
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

TEST_F(SearchLaunch, WithoutInitializationFailsBeforeAnythingIsTouched)
{
    s_MonitorMode.m_pImmersiveMode = nullptr;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), E_FAIL);
    EXPECT_THAT(journal, IsEmpty());
}

} // namespace
