// Launches by search on the stand-in desktop: what is started, and what keyboard and clipboard went through.
#include "system/KeyRecorder.h"
#include "system/LaunchTest.h"

#include <gmock/gmock.h>

namespace {

using standin::SetSetting;
using standin::Setting;
using testing::ElementsAre;

constexpr char ok[] = "0x00000000";

class SearchLaunch : public test::LaunchTest
{
protected:
    // What is launched for "Mail" in mode 0 without exclusions, with the whole journal.
    void ExpectLaunchOfMail(const std::string& started, std::initializer_list<std::string> journal)
    {
        EXPECT_EQ(host->Search("Mail", 0, false), ok);
        EXPECT_EQ(desktop->Started(), started);
        EXPECT_THAT(desktop->Journal(), testing::ElementsAreArray(journal));
    }
};

TEST_F(SearchLaunch, WithoutExclusionsAnotherApplicationComesFirst)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    ExpectLaunchOfMail("Gmail", {"key\tWindows", "start screen shown", "key\tWindows+Q", "pane opened",
                                 "pasted\t\"Mail\"", "query\t\"Mail\"", "pane closed", "start screen hidden",
                                 "started\tGmail"});
}

TEST_F(SearchLaunch, WithExclusionsTheWantedApplicationIsStarted)
{
    Start({L"Mail.lnk", L"Gmail.lnk", L"Airmail.lnk"});
    ExpectLaunch("Mail", 0, true, "Mail", "query\t\"Mail\" NOT(\"Airmail\" OR \"Gmail\")");
}

// The library does not know how much the field holds: what is cut off excludes nobody.
TEST_F(SearchLaunch, AFieldThatTakesLessThanTheQuery)
{
    SetSetting(Setting::FieldLimit, 6);
    Start({L"Mail.lnk", L"Gmail.lnk"});
    ExpectLaunch("Mail", 0, true, "Gmail", "query\t\"Mail\"");
}

TEST_F(SearchLaunch, JapaneseNames)
{
    Start({L"メール.lnk", L"Gメール.lnk", L"電卓.lnk"});
    ExpectLaunch("メール", 0, true, "メール", "query\t\"メール\" NOT(\"Gメール\")");
}

TEST_F(SearchLaunch, NamesWithAnAmpersandInASubfolder)
{
    Start({L"Games\\Pen & Paper.lnk", L"Paper.lnk"});
    ExpectLaunch("Pen & Paper", 0, true, "Pen & Paper", "query\t\"Pen & Paper\"");
}

TEST_F(SearchLaunch, InternetShortcuts)
{
    Start({L"Web page.url"});
    ExpectLaunch("Web page", 0, true, "Web page", "started\tWeb page");
}

TEST_F(SearchLaunch, StartScreenThatIsShownAlreadyGetsNoWindowsKey)
{
    Start({L"Mail.lnk"});
    desktop->ShowStartScreen();
    ExpectLaunchOfMail("Mail", {"key\tWindows+Q", "pane opened", "pasted\t\"Mail\"", "query\t\"Mail\"",
                                "pane closed", "start screen hidden", "started\tMail"});
}

TEST_F(SearchLaunch, StartScreenOverAStoreAppIsShownToo)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::AppVisible, 1);
    ExpectLaunch("Mail", 0, false, "Mail", "key\tWindows");
}

TEST_F(SearchLaunch, StartScreenThatComesLateIsWaitedFor)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::StartScreenDelay, 900);
    ExpectLaunchOfMail("Mail", {"key\tWindows", "start screen shown", "key\tWindows+Q", "pane opened",
                                "pasted\t\"Mail\"", "query\t\"Mail\"", "pane closed", "start screen hidden",
                                "started\tMail"});
}

TEST_F(SearchLaunch, StartScreenThatNeverComesIsNoFailure)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::StartScreenNever, 1);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(host->Search("Mail", 0, false), ok);
    // 20 polls of 100 ms, and the pauses of the keys and the pane.
    EXPECT_GE(GetTickCount64() - start, 2000u + 100 + 700 + 1100 + 100);
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_THAT(desktop->Journal(),
                ElementsAre("key\tWindows", "key\tWindows+Q", "pane opened", "pasted\t\"Mail\"",
                            "query\t\"Mail\"", "pane closed", "started\tMail"));
}

TEST_F(SearchLaunch, PaneThatComesLateIsWaitedFor)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::PaneDelay, 1500);
    ExpectLaunch("Mail", 0, false, "Mail", "pasted\t\"Mail\""); // not before the pane is there
}

TEST_F(SearchLaunch, LostPastesAreRepeatedUntilOneWorks)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    SetSetting(Setting::LosePastes, 2);
    EXPECT_EQ(host->Search("Mail", 0, true), ok);
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_THAT(desktop->Journal(),
                ElementsAre("key\tWindows", "start screen shown", "key\tWindows+Q", "pane opened",
                            "paste lost", "query\t", "no hit\t", "paste lost", "query\t", "no hit\t",
                            "pasted\t\"Mail\" NOT(\"Gmail\")", "query\t\"Mail\" NOT(\"Gmail\")",
                            "pane closed", "start screen hidden", "started\tMail"));
}

TEST_F(SearchLaunch, QueryWithoutAHitIsRepeatedUntilThePaneIsClosed)
{
    Start({L"Mail.lnk"});
    host->Send("search\t0\t0\tNobody");
    desktop->WaitFor("no hit\t\"Nobody\"");
    desktop->WaitFor("no hit\t\"Nobody\"\"Nobody\""); // pasted behind what is in the field
    desktop->ClosePane();
    EXPECT_EQ(host->Answer(), ok);
    EXPECT_TRUE(desktop->HasStartedNothing());
}

TEST_F(SearchLaunch, UnknownVisibilityIsTreatedAsAnotherScreen)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::VisibilityUnknown, 1);
    ExpectLaunch("Mail", 0, false, "Mail", "key\tWindows"); // once, however often the state is asked for
}

TEST_F(SearchLaunch, FailingQueriesEndItBeforeAnythingIsTouched)
{
    Start({L"Mail.lnk"});
    for (const Setting failure : {Setting::FailLauncherQuery, Setting::FailMonitorQuery}) {
        SetSetting(failure, static_cast<DWORD>(E_FAIL));
        test::PutOnClipboard(L"mine");
        for (int mode = 0; mode < 3; ++mode) {
            EXPECT_EQ(host->Search("Mail", mode, true), "0x80004005");
        }
        EXPECT_EQ(test::ClipboardText(), L"mine");
        SetSetting(failure, 0);
    }
    EXPECT_TRUE(desktop->Journal().empty());
    test::ClearClipboard();
}

TEST_F(SearchLaunch, ModeOneOnlyPastesThePlainName)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 50);
    const test::KeyRecorder keys;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(host->Search("Mail", 1, true), ok);
    // The keys and the pane, its settling, the paste, the wait before the clipboard is cleared, the release
    // of Shift.
    EXPECT_GE(GetTickCount64() - start, 100u + 700 + 2000 + 1100 + 50 + 50);
    EXPECT_THAT(desktop->Journal(), ElementsAre("key\tWindows", "start screen shown", "key\tWindows+Q",
                                                "pane opened", "pasted\tMail"));
    EXPECT_TRUE(test::DesktopProcess::IsPaneOpen());
    EXPECT_THAT(keys.Events(),
                ElementsAre("Windows down", "Windows up", "Windows down", "Q down", "Q up", "Windows up",
                            "Shift down", "Insert down", "Insert up", "Shift up"));
}

TEST_F(SearchLaunch, ModeOneWaitsBeforeTheClipboardIsCleared)
{
    Start({L"Mail.lnk"});
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 3000);
    const ULONGLONG start = GetTickCount64();
    host->Send("search\t1\t0\tMail");
    desktop->WaitFor("pasted\tMail");
    const DWORD pasted = GetClipboardSequenceNumber();
    EXPECT_TRUE(test::WaitUntil([&] { return GetClipboardSequenceNumber() != pasted; }, 30000));
    EXPECT_GE(GetTickCount64() - start, 100u + 700 + 2000 + 1100 + 3000);
    EXPECT_EQ(host->Answer(), ok);
}

TEST_F(SearchLaunch, ModeTwoPastesThePlainNameOfACataloguedApplication)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    ExpectLaunch("Mail", 2, true, "Gmail", "query\tMail"); // the plain name excludes nothing
}

TEST_F(SearchLaunch, ModeTwoPastesTheQueryForAnotherName)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    // "Mai" is no application. "Mail" is not excluded: it does not contain the name in lower case.
    ExpectLaunch("Mai", 2, true, "Mail", "query\t\"Mai\" NOT(\"Gmail\")");
}

TEST_F(SearchLaunch, ModeTwoWithoutExclusionsPastesTheQuotedName)
{
    Start({L"Mail.lnk"});
    ExpectLaunch("Mail", 2, false, "Mail", "query\t\"Mail\"");
}

TEST_F(SearchLaunch, KeysAreTheSameEveryTimeAndShiftIsReleasedLast)
{
    Start({L"Mail.lnk"});
    const test::KeyRecorder keys;
    EXPECT_EQ(host->Search("Mail", 0, false), ok);
    EXPECT_THAT(keys.Events(),
                ElementsAre("Windows down", "Windows up", "Windows down", "Q down", "Q up", "Windows up",
                            "Shift down", "Insert down", "Insert up", "Enter down", "Enter up", "Shift up"));
}

TEST_F(SearchLaunch, ClipboardHeldByAnotherProcessInModeOne)
{
    Start({L"Mail.lnk"});
    sandbox.Settings().SetDword(L"ClearClipboardWaitTime", 0);
    {
        test::ClipboardAccess held;
        held.SetText(L"mine");
        EXPECT_THAT(LogOf("search\t1\t0\tMail", ok),
                    testing::Contains("CQanhClipboard::SetClipboardData OUT(0x80004005)"))
            << "failures behind the pane are only logged";
        EXPECT_EQ(held.Text(), L"mine");
    }
    EXPECT_EQ(test::ClipboardText(), L"mine") << "it could not be cleared either";
    EXPECT_TRUE(test::DesktopProcess::IsPaneOpen());
    test::ClearClipboard();
}

TEST_F(SearchLaunch, ClipboardHeldByAnotherProcessInModeZero)
{
    Start({L"Mail.lnk", L"Chess.lnk"});
    {
        test::ClipboardAccess held;
        held.SetText(L"Chess");
        host->Send("search\t0\t0\tMail");
        desktop->WaitFor("no hit\t"); // nothing could be put there, and nothing be pasted
    }
    // Free now: the paste is repeated, but the text was put there once only. What stands there is pasted.
    EXPECT_EQ(host->Answer(), ok);
    EXPECT_EQ(desktop->Started(), "Chess");
}

TEST_F(SearchLaunch, SeveralInARow)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    EXPECT_EQ(host->Search("Mail", 0, true), ok);
    desktop->WaitFor("started\tMail");
    desktop->CloseApplication(L"Mail");
    EXPECT_EQ(host->Search("Gmail", 0, true), ok);
    desktop->WaitFor("started\tGmail");
    desktop->CloseApplication(L"Gmail");
    EXPECT_EQ(host->Search("Mail", 0, false), ok);
    desktop->WaitFor("started\tGmail", 2);
}

// Takes more than 20 seconds: the pane is polled for that long.
TEST_F(SearchLaunch, SlowPaneThatNeverComesIsNoFailure)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::PaneNever, 1);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(host->Search("Mail", 0, false, 60000), ok);
    EXPECT_GE(GetTickCount64() - start, 20000u);
    EXPECT_THAT(desktop->Journal(), ElementsAre("key\tWindows", "start screen shown", "key\tWindows+Q"));
}

} // namespace
