// What the launcher tells of launches on the stand-in desktop.
#include "wrapper/WrapperTest.h"

#include "standin/Names.h"
#include "standin/Settings.h"

namespace {

using qanh::ClipboardState;
using qanh::Outcome;
using qanh::OutcomeKind;
using qanh::Request;
using standin::SetSetting;
using standin::Setting;
using testing::EndsWith;

constexpr wchar_t calendarId[] = L"Vel.Calendar_1vel7kq0n3rta!Calendar";

class LauncherOutcome : public test::WrapperTest
{
protected:
    // The window of another program, which has come to the front and stays as it is.
    HWND StartAnother()
    {
        const test::StartedProcess process = sandbox.Start(test::BuildFolder() + L"\\StandInApp.exe");
        // It comes to the front more than once while it starts.
        EXPECT_EQ(WaitForInputIdle(process.process, 15000), 0u);
        CloseHandle(process.process);
        const HWND window = FindWindowW(standin::appClass, L"StandInApp");
        EXPECT_TRUE(test::WaitUntil([window] { return window && GetForegroundWindow() == window; }, 15000));
        return window;
    }

    // Its own thread does it, as that of a program that wants attention.
    static void BringToFront(HWND window)
    {
        SendMessageW(window, WM_SYSCOMMAND, SC_MINIMIZE, 0);
        SendMessageW(window, WM_SYSCOMMAND, SC_RESTORE, 0);
    }

    void ExpectStarted(const Outcome& outcome, const std::wstring& title)
    {
        EXPECT_EQ(outcome.kind, OutcomeKind::Started);
        EXPECT_TRUE(outcome.isBegun);
        EXPECT_EQ(outcome.result, S_OK);
        EXPECT_FALSE(outcome.Code());
        EXPECT_EQ(outcome.window.title, title);
        EXPECT_EQ(outcome.window.handle, FindWindowW(standin::appClass, title.c_str()));
        DWORD process = 0;
        GetWindowThreadProcessId(outcome.window.handle, &process);
        EXPECT_EQ(outcome.window.processId, process);
        EXPECT_TRUE(outcome.window.isNewProcess);
        EXPECT_THAT(outcome.window.program, EndsWith(L"\\StandInApp.exe"));
    }
};

TEST_F(LauncherOutcome, ApplicationThatIsStarted)
{
    Start({L"Mail.lnk"});
    const auto begin = qanh::detail::Clock::now();
    const Outcome outcome = launcher->Launch(Search(L"Mail")).Get();
    const auto end = qanh::detail::Clock::now();
    ExpectStarted(outcome, L"Mail");
    EXPECT_TRUE(outcome.hasPaneCome);
    // The shortest launch there is.
    EXPECT_GE(outcome.duration.count(), 2050);
    EXPECT_LE(outcome.duration, end - begin);
    EXPECT_EQ(desktop->Started(), "Mail");
}

TEST_F(LauncherOutcome, ExclusionsAreAskedForUnlessTheyAreNotWanted)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    ASSERT_TRUE(qanh::WaitForFirstRefresh(20000));
    ExpectStarted(launcher->Launch(Request::Search(L"Mail")).Get(), L"Mail");
    desktop->CloseApplication(L"Mail");
    ExpectStarted(launcher->Launch(Search(L"Mail")).Get(), L"Gmail");
    EXPECT_EQ(desktop->Count("query\t\"Mail\" NOT(\"Gmail\")"), 1u);
    EXPECT_EQ(desktop->Count("query\t\"Mail\""), 1u);
}

TEST_F(LauncherOutcome, OneAfterTheOther)
{
    Start({L"Mail.lnk", L"Chess.lnk"});
    const qanh::Pending first = launcher->Launch(Search(L"Mail"));
    const qanh::Pending second = launcher->Launch(Search(L"Chess"));
    EXPECT_TRUE(launcher->IsBusy());
    ExpectStarted(first.Get(), L"Mail");
    EXPECT_FALSE(IsKnown(second));
    ExpectStarted(second.Get(), L"Chess");
    EXPECT_TRUE(test::WaitUntil([&] { return !launcher->IsBusy(); }, 5000));
}

TEST_F(LauncherOutcome, SearchWithoutAHitThatTheUserEnds)
{
    Start({L"Mail.lnk"});
    const qanh::Pending outcome = LaunchNobody();
    EXPECT_FALSE(IsKnown(outcome));
    desktop->ClosePane();
    const Outcome known = outcome.Get();
    EXPECT_EQ(known.kind, OutcomeKind::NothingStarted);
    EXPECT_TRUE(known.hasPaneCome);
    EXPECT_EQ(known.window.handle, nullptr);
    EXPECT_TRUE(desktop->HasStartedNothing());
}

TEST_F(LauncherOutcome, WindowThatWasInFrontBeforeIsNotStarted)
{
    Start({L"Mail.lnk"});
    const HWND before = StartAnother();
    const qanh::Pending outcome = LaunchNobody();
    desktop->ClosePane();
    // The desktop has done its part.
    const HWND startScreen = FindWindowW(standin::startScreenClass, nullptr);
    EXPECT_TRUE(test::WaitUntil([&] { return GetForegroundWindow() == startScreen; }, 5000));
    BringToFront(before);
    EXPECT_EQ(outcome.Get().kind, OutcomeKind::NothingStarted);
    EXPECT_EQ(GetForegroundWindow(), before);
}

// Takes more than 20 seconds: the library waits for the pane.
TEST_F(LauncherOutcome, SlowPaneThatNeverComes)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::PaneNever, 1);
    const Outcome outcome = launcher->Launch(Search(L"Mail")).Get();
    EXPECT_EQ(outcome.kind, OutcomeKind::PaneNeverCame);
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_FALSE(outcome.hasPaneCome);
    EXPECT_GE(outcome.duration.count(), 20000);
}

TEST_F(LauncherOutcome, AnotherProgramThatTakesTheKeyboardFromThePane)
{
    Start({L"Mail.lnk"});
    const HWND another = StartAnother();
    desktop->ShowStartScreen();
    ASSERT_NE(GetForegroundWindow(), another);
    const qanh::Pending outcome = launcher->Launch(Search(L"Mail"));
    desktop->WaitFor("pasted\t\"Mail\""); // a second before Enter
    BringToFront(another);
    const Outcome known = outcome.Get();
    EXPECT_EQ(known.kind, OutcomeKind::FocusTaken);
    EXPECT_EQ(known.window.handle, another);
    EXPECT_EQ(known.window.title, L"StandInApp");
    EXPECT_FALSE(known.window.isNewProcess);
    EXPECT_TRUE(desktop->HasStartedNothing());
    desktop->ClosePane();
}

TEST_F(LauncherOutcome, WindowsOfTheHostAreNotStarted)
{
    Start({L"Mail.lnk"});
    const HWND own = CreateWindowExW(0, L"STATIC", L"own", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100,
                                     nullptr, nullptr, nullptr, nullptr);
    const qanh::Pending outcome = LaunchNobody();
    SetForegroundWindow(own);
    ASSERT_EQ(GetForegroundWindow(), own);
    EXPECT_EQ(outcome.Get().kind, OutcomeKind::NothingStarted);
    EXPECT_EQ(GetForegroundWindow(), own);
    DestroyWindow(own);
    desktop->ClosePane();
}

TEST_F(LauncherOutcome, ChoiceThatIsLeftToTheUser)
{
    Start({L"Mail.lnk"});
    const Outcome outcome = launcher->Launch(Request::Search(L"Mail", qanh::SearchMode::Show, false)).Get();
    EXPECT_EQ(outcome.kind, OutcomeKind::Shown);
    EXPECT_TRUE(test::DesktopProcess::IsPaneOpen());
    EXPECT_EQ(desktop->Count("pasted\tMail"), 1u);
    EXPECT_TRUE(desktop->HasStartedNothing());
}

TEST_F(LauncherOutcome, Browser)
{
    Start({L"Internet Explorer.lnk"});
    ExpectStarted(
        launcher->Launch(Request::Browser(qanh::TileMode::Unchanged, qanh::SearchMode::Launch, false)).Get(),
        L"Internet Explorer");
    EXPECT_EQ(desktop->Count("query\t\"Internet Explorer\""), 1u);
}

TEST_F(LauncherOutcome, ActivationById)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    Start({});
    const Outcome outcome = launcher->Launch(Request::Activation(calendarId)).Get();
    ExpectStarted(outcome, L"Calendar");
    EXPECT_FALSE(outcome.hasPaneCome);
    EXPECT_EQ(outcome.clipboard, ClipboardState::Untouched);
    EXPECT_EQ(desktop->Count("activated\t" + test::ToUtf8(calendarId) + "\t(null)"), 1u);
}

TEST_F(LauncherOutcome, ArgumentsOfAnActivation)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    Start({});
    ExpectStarted(launcher->Launch(Request::Activation(calendarId, L"today")).Get(), L"Calendar");
    EXPECT_EQ(desktop->Count("activated\t" + test::ToUtf8(calendarId) + "\ttoday"), 1u);
}

TEST_F(LauncherOutcome, ActivationOfAnApplicationThatIsNotThere)
{
    Start({});
    const Outcome outcome = launcher->Launch(Request::Activation(L"Nobody!App")).Get();
    EXPECT_EQ(outcome.kind, OutcomeKind::Failed);
    EXPECT_EQ(outcome.result, static_cast<HRESULT>(0x80270254));
    EXPECT_EQ(outcome.Code().message(),
              "E_APPLICATION_NOT_REGISTERED (0x80270254): there is no such application for this user");
}

TEST_F(LauncherOutcome, SearchThatFailsBeforeAnythingIsTouched)
{
    Start({L"Mail.lnk"});
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    test::PutOnClipboard(L"mine");
    const Outcome outcome = launcher->Launch(Search(L"Mail")).Get();
    EXPECT_EQ(outcome.kind, OutcomeKind::Failed);
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_TRUE(outcome.isBegun);
    EXPECT_EQ(outcome.clipboard, ClipboardState::Untouched);
    EXPECT_EQ(test::ClipboardText(), L"mine");
}

TEST_F(LauncherOutcome, WrongArguments)
{
    Start({});
    EXPECT_EQ(launcher->Launch(Search(L"")).Get().result, E_INVALIDARG);
    EXPECT_EQ(launcher->Launch(Request::Activation(L"")).Get().result, E_INVALIDARG);
    EXPECT_EQ(launcher->Launch(Request::Browser(static_cast<qanh::TileMode>(3))).Get().result, E_INVALIDARG);
    EXPECT_EQ(launcher->Launch(Request::Search(L"Mail", static_cast<qanh::SearchMode>(3))).Get().result,
              E_INVALIDARG);
    EXPECT_TRUE(desktop->Journal().empty());
}

TEST_F(LauncherOutcome, TextOnTheClipboardIsPutBack)
{
    Start({L"Mail.lnk"});
    test::PutOnClipboard(L"mine");
    const Outcome outcome = launcher->Launch(Search(L"Mail")).Get();
    ExpectStarted(outcome, L"Mail");
    EXPECT_EQ(desktop->Count("pasted\t\"Mail\""), 1u);
    EXPECT_EQ(outcome.clipboard, ClipboardState::PutBack);
    EXPECT_EQ(test::ClipboardText(), L"mine");
}

} // namespace
