// The launcher in a host whose own threads are busy. The library is played, and no desktop is needed.
#include "QanHelper.hpp"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace {

using qanh::Outcome;
using qanh::OutcomeKind;
using qanh::Request;
using qanh::detail::Event;
using std::chrono::milliseconds;

std::unique_ptr<Event> g_isCalled; // the library has an activation at hand
std::unique_ptr<Event> g_mayReturn;
std::unique_ptr<Event> g_isDescribing;
std::unique_ptr<Event> g_isAsked;
bool g_isAskedTooLate = false; // nobody could ask while a window was described

// An activation of "fail" fails at once, any other lasts until it may return.
HRESULT WINAPI PlayActivation(LPCWSTR id, LPCWSTR)
{
    if (std::wstring(id) == L"fail") {
        return E_FAIL;
    }
    g_isCalled->Set();
    g_mayReturn->Wait(INFINITE);
    return S_OK;
}

HANDLE WINAPI PlayOpenProcess(DWORD, BOOL, DWORD)
{
    g_isDescribing->Set();
    if (!g_isAsked->Wait(5000)) {
        g_isAskedTooLate = true;
    }
    return nullptr;
}

class LauncherHost : public testing::Test
{
protected:
    LauncherHost()
    {
        g_isCalled = std::make_unique<Event>(true);
        g_mayReturn = std::make_unique<Event>(true);
        qanh::Functions functions;
        functions.initialize = []() -> HRESULT { return S_OK; };
        functions.finalize = [] {};
        functions.activate = &PlayActivation;
        launcher = std::make_unique<qanh::Launcher>(qanh::Source::Given(functions));
        m_window = CreateWindowExW(0, L"STATIC", L"own", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100,
                                   nullptr, nullptr, nullptr, nullptr);
    }

    ~LauncherHost() override
    {
        LetGo();
        g_mayReturn->Set();
        launcher.reset();
        DestroyWindow(m_window);
    }

    // A launch that goes on when its limit is over, while the test's own window is in front.
    qanh::Pending LaunchBehindOwnWindow()
    {
        SetForegroundWindow(m_window);
        EXPECT_EQ(GetForegroundWindow(), m_window);
        Request request = Request::Activation(L"slow");
        request.limit = milliseconds(500);
        return launcher->Launch(request);
    }

    // Answers whoever waits for the window after all.
    static void LetGo()
    {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    }

    void ExpectOwnWindow(const Outcome& outcome)
    {
        EXPECT_EQ(outcome.kind, OutcomeKind::TimedOut);
        EXPECT_EQ(outcome.window.handle, m_window);
        EXPECT_EQ(outcome.window.processId, GetCurrentProcessId());
        EXPECT_EQ(outcome.window.title, L"") << "only its thread could tell";
    }

    std::unique_ptr<qanh::Launcher> launcher;

private:
    HWND m_window = nullptr;
};

TEST_F(LauncherHost, ThreadOfTheWindowInFrontMayWait)
{
    const qanh::Pending outcome = LaunchBehindOwnWindow();
    ASSERT_TRUE(outcome.Wait(8000)) << "it was waited for the thread that waits";
    ExpectOwnWindow(outcome.Get());
    EXPECT_NE(outcome.Get().window.program, L"");
}

// Another thread makes the calls for it, so that the test can end if they hang.
TEST_F(LauncherHost, ThreadOfTheWindowInFrontMayAskAgainAndAgain)
{
    const qanh::Pending outcome = LaunchBehindOwnWindow();
    const Event areDone(true);
    std::thread calls([&] {
        while (!outcome.Wait(0)) {
            EXPECT_TRUE(launcher->IsBusy());
        }
        EXPECT_TRUE(launcher->Cancel(launcher->Launch(Request::Activation(L"fail")).GetTicket()));
        EXPECT_FALSE(launcher->Stop(0)) << "the library is at it";
        areDone.Set();
    });
    EXPECT_TRUE(areDone.Wait(8000)) << "they wait for the thread that waits";
    LetGo();
    calls.join();
    ExpectOwnWindow(outcome.Get());
}

TEST_F(LauncherHost, CallsAreAnsweredWhileAWindowIsDescribed)
{
    g_isDescribing = std::make_unique<Event>(true);
    g_isAsked = std::make_unique<Event>(true);
    const test::ImportPatch<decltype(&OpenProcess)> patch("OpenProcess", &PlayOpenProcess);
    const qanh::Pending outcome = LaunchBehindOwnWindow();
    ASSERT_TRUE(g_isDescribing->Wait(8000));
    EXPECT_TRUE(launcher->IsBusy());
    g_isAsked->Set();
    ExpectOwnWindow(outcome.Get());
    EXPECT_FALSE(g_isAskedTooLate);
}

TEST_F(LauncherHost, NothingIsAtHandAfterAStopThatWasAnsweredLate)
{
    const Event isAnswering(true);
    const Event mayAnswer(true);
    launcher->Launch(Request::Activation(L"fail"), [&](const Outcome&) {
        isAnswering.Set();
        mayAnswer.Wait(INFINITE);
    });
    EXPECT_TRUE(isAnswering.Wait(8000));
    const qanh::Pending last = launcher->Launch(Request::Activation(L"slow"));
    EXPECT_TRUE(g_isCalled->Wait(8000));
    EXPECT_FALSE(launcher->Stop(0));
    EXPECT_TRUE(launcher->IsBusy());
    g_mayReturn->Set();
    EXPECT_TRUE(launcher->Stop(8000));
    EXPECT_FALSE(last.Wait(0));
    mayAnswer.Set();
    EXPECT_EQ(last.Get().kind, OutcomeKind::Cancelled);
    EXPECT_TRUE(last.Get().isBegun);
    EXPECT_FALSE(launcher->IsBusy());
}

TEST_F(LauncherHost, CallbackThatIsEmptyIsRefused)
{
    try {
        launcher->Launch(Request::Activation(L"fail"), nullptr);
        FAIL() << "it was queued";
    } catch (const qanh::Error& error) {
        EXPECT_EQ(error.Result(), E_POINTER);
    }
    EXPECT_FALSE(launcher->IsBusy());
    EXPECT_EQ(launcher->Launch(Request::Activation(L"fail")).Get().kind, OutcomeKind::Failed);
}

} // namespace
