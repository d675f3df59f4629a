// The launcher's queue, limits and end, on the stand-in desktop.
#include "wrapper/WrapperTest.h"

#include "standin/Settings.h"

#include <thread>

namespace {

using qanh::Outcome;
using qanh::OutcomeKind;
using qanh::Request;
using standin::SetSetting;
using standin::Setting;
using std::chrono::milliseconds;

class LauncherThreads : public test::WrapperTest
{
};

TEST_F(LauncherThreads, LimitThatEndsWhileTheLaunchGoesOn)
{
    Start({L"Mail.lnk"});
    test::PutOnClipboard(L"mine");
    const Outcome known = LaunchNobody(milliseconds(6000)).Get();
    EXPECT_EQ(known.kind, OutcomeKind::TimedOut);
    EXPECT_TRUE(known.isBegun);
    EXPECT_TRUE(known.hasPaneCome);
    EXPECT_EQ(known.window.handle, FindWindowW(L"SearchPane", nullptr));
    EXPECT_EQ(known.clipboard, qanh::ClipboardState::Pending);
    EXPECT_GE(known.duration.count(), 6000);
    EXPECT_TRUE(launcher->IsBusy()) << "the launch itself has no end";

    // The next one begins when the launch is over.
    const qanh::Pending next = launcher->Launch(Search(L"Mail"));
    Sleep(300);
    EXPECT_EQ(desktop->Count("pane opened"), 1u);
    desktop->ClosePane();
    EXPECT_EQ(next.Get().kind, OutcomeKind::Started);
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_EQ(test::ClipboardText(), L"mine");
}

TEST_F(LauncherThreads, LimitThatEndsInTheQueue)
{
    Start({L"Mail.lnk"});
    const qanh::Pending first = LaunchNobody();
    Request request = Search(L"Mail");
    request.limit = milliseconds(200);
    const Outcome known = launcher->Launch(request).Get();
    EXPECT_EQ(known.kind, OutcomeKind::TimedOut);
    EXPECT_FALSE(known.isBegun);
    EXPECT_GE(known.duration.count(), 200);
    EXPECT_FALSE(IsKnown(first));
    desktop->ClosePane();
    EXPECT_EQ(first.Get().kind, OutcomeKind::NothingStarted);
    EXPECT_TRUE(test::WaitUntil([&] { return !launcher->IsBusy(); }, 5000));
    EXPECT_EQ(desktop->Count("pane opened"), 1u) << "it was launched all the same";
}

TEST_F(LauncherThreads, LaunchesWithoutALimit)
{
    Start({L"Mail.lnk"});
    for (const milliseconds limit : {milliseconds(0), milliseconds::max()}) {
        Request request = Search(L"Mail");
        request.limit = limit;
        EXPECT_EQ(launcher->Launch(request).Get().kind, OutcomeKind::Started);
        desktop->CloseApplication(L"Mail");
    }
}

TEST_F(LauncherThreads, LaunchThatIsTakenBackInTheQueue)
{
    Start({L"Mail.lnk"});
    const qanh::Pending first = LaunchNobody();
    const qanh::Pending second = launcher->Launch(Search(L"Mail"));
    const qanh::Ticket ticket = second.GetTicket();
    EXPECT_NE(ticket, 0u);
    EXPECT_TRUE(launcher->Cancel(ticket));
    const Outcome known = second.Get();
    EXPECT_EQ(known.kind, OutcomeKind::Cancelled);
    EXPECT_FALSE(known.isBegun);
    EXPECT_FALSE(launcher->Cancel(ticket)) << "it was taken back already";
    EXPECT_FALSE(launcher->Cancel(ticket - 1)) << "it is running";
    EXPECT_FALSE(launcher->Cancel(ticket + 1)) << "there is no such launch";
    desktop->ClosePane();
    EXPECT_EQ(first.Get().kind, OutcomeKind::NothingStarted);
    EXPECT_EQ(desktop->Count("pane opened"), 1u);
}

TEST_F(LauncherThreads, CallbacksComeInOrderOnAThreadOfTheLaunchers)
{
    Start({});
    const qanh::detail::Event done(true);
    std::vector<int> order;
    std::vector<DWORD> threads;
    for (int number = 0; number < 3; ++number) {
        launcher->Launch(Request::Activation(L"Nobody!App"), [&, number](const Outcome& outcome) {
            EXPECT_EQ(outcome.kind, OutcomeKind::Failed);
            order.push_back(number);
            threads.push_back(GetCurrentThreadId());
            if (number == 2) {
                done.Set();
            }
        });
    }
    ASSERT_TRUE(done.Wait(15000));
    EXPECT_THAT(order, testing::ElementsAre(0, 1, 2));
    EXPECT_THAT(threads, testing::Each(testing::AllOf(threads[0], testing::Ne(GetCurrentThreadId()))));
}

TEST_F(LauncherThreads, CallbackMayLaunch)
{
    Start({});
    const qanh::detail::Event done(true);
    Outcome last;
    launcher->Launch(Request::Activation(L"Nobody!App"), [&](const Outcome&) {
        launcher->Launch(Request::Activation(L""), [&](const Outcome& outcome) {
            last = outcome;
            done.Set();
        });
    });
    ASSERT_TRUE(done.Wait(15000));
    EXPECT_EQ(last.result, E_INVALIDARG);
}

TEST_F(LauncherThreads, CallbackMayEndTheLauncher)
{
    Start({});
    const qanh::detail::Event done(true);
    launcher->Launch(Request::Activation(L"Nobody!App"), [&](const Outcome&) {
        launcher.reset();
        done.Set();
    });
    ASSERT_TRUE(done.Wait(15000));
    EXPECT_FALSE(IsLibraryLoaded());
}

TEST_F(LauncherThreads, EndTakesTheLibraryDownAndUnloadsIt)
{
    Start({});
    EXPECT_TRUE(IsLibraryLoaded());
    EXPECT_TRUE(test::IsFirstPassRunning(L"wrapper_tests"));
    launcher.reset();
    EXPECT_FALSE(IsLibraryLoaded());
    EXPECT_FALSE(test::IsFirstPassRunning(L"wrapper_tests"));
}

TEST_F(LauncherThreads, EndDuringALaunchWaitsForTheLibrary)
{
    Start({L"Mail.lnk"});
    test::PutOnClipboard(L"mine");
    const qanh::Pending running = LaunchNobody();
    const qanh::Pending waiting = launcher->Launch(Search(L"Mail"));
    EXPECT_FALSE(launcher->Stop(300)) << "the search goes on";
    const Outcome known = running.Get();
    EXPECT_EQ(known.kind, OutcomeKind::Cancelled);
    EXPECT_TRUE(known.isBegun);
    EXPECT_EQ(known.clipboard, qanh::ClipboardState::Pending);
    const Outcome unbegun = waiting.Get();
    EXPECT_EQ(unbegun.kind, OutcomeKind::Cancelled);
    EXPECT_FALSE(unbegun.isBegun);
    const qanh::detail::Event ended(true);
    std::thread end([&] {
        launcher.reset();
        ended.Set();
    });
    EXPECT_FALSE(ended.Wait(500));
    desktop->ClosePane();
    end.join();
    EXPECT_TRUE(desktop->HasStartedNothing());
    EXPECT_EQ(test::ClipboardText(), L"mine");
    EXPECT_FALSE(IsLibraryLoaded());
}

TEST_F(LauncherThreads, DetachedLaunchEndsByItself)
{
    Start({L"Mail.lnk"});
    test::PutOnClipboard(L"mine");
    const qanh::Pending running = LaunchNobody();
    launcher->Detach();
    launcher.reset();
    EXPECT_EQ(running.Get().kind, OutcomeKind::Cancelled);
    EXPECT_TRUE(test::DesktopProcess::IsPaneOpen());
    EXPECT_TRUE(IsLibraryLoaded());
    desktop->ClosePane();
    EXPECT_TRUE(test::WaitUntil([] { return !IsLibraryLoaded(); }, 20000));
    EXPECT_EQ(test::ClipboardText(), L"mine");
}

TEST_F(LauncherThreads, NothingIsQueuedAfterTheEnd)
{
    Start({});
    EXPECT_TRUE(launcher->Stop(INFINITE));
    EXPECT_TRUE(launcher->Stop(0));
    try {
        launcher->Launch(Search(L"Mail"));
        FAIL() << "it was queued";
    } catch (const qanh::Error& error) {
        EXPECT_EQ(error.Result(), HRESULT_FROM_WIN32(ERROR_CANCELLED));
    }
}

TEST_F(LauncherThreads, FailureOfTheStartIsThrown)
{
    SetSetting(Setting::FailCreate, static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    try {
        const qanh::Launcher failed(test::kBuiltLibrary);
        FAIL() << "it started";
    } catch (const qanh::Error& error) {
        EXPECT_EQ(error.Result(), REGDB_E_CLASSNOTREG);
        EXPECT_THAT(error.what(), testing::StartsWith("QanhInitialize: "));
    }
    EXPECT_FALSE(IsLibraryLoaded());
    SetSetting(Setting::FailCreate, 0);
    Start({});
    EXPECT_TRUE(launcher->GetLibrary().IsRefreshing());
}

TEST_F(LauncherThreads, MultithreadedHostIsNoHindrance)
{
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    Start({L"Mail.lnk"});
    EXPECT_EQ(launcher->Launch(Search(L"Mail")).Get().kind, OutcomeKind::Started);
    launcher.reset();
    CoUninitialize();
}

} // namespace
