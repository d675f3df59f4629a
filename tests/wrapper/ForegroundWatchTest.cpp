// What counts as started, and when the keyboard was taken away. The windows are of this process; which one is
// in front and whose they are is played.
#include "QanHelper.hpp"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <map>

namespace {

constexpr DWORD shell = 1001;
constexpr DWORD mail = 1002;
constexpr DWORD popup = WS_POPUP | WS_VISIBLE;
constexpr DWORD titled = WS_OVERLAPPEDWINDOW | WS_VISIBLE;

HWND g_inFront = nullptr;
std::map<HWND, DWORD> g_processes;

class ForegroundWatch : public testing::Test
{
protected:
    ForegroundWatch()
    {
        g_processes.clear();
        g_inFront = Make(L"Desktop", popup, shell);
        m_pane = Make(L"SearchPane", popup, shell);
    }
    ~ForegroundWatch() override
    {
        for (const auto& [window, process] : g_processes) {
            DestroyWindow(window);
        }
    }

    // A window of that process.
    static HWND Make(const wchar_t* windowClass, DWORD style, DWORD process)
    {
        WNDCLASSW description = {};
        description.lpfnWndProc = DefWindowProcW;
        description.lpszClassName = windowClass;
        RegisterClassW(&description);
        const HWND window =
            CreateWindowExW(0, windowClass, L"", style, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
        EXPECT_NE(window, nullptr);
        g_processes[window] = process;
        return window;
    }

    // Looks at these windows, one after the other.
    void See(std::initializer_list<HWND> windows)
    {
        for (const HWND window : windows) {
            g_inFront = window;
            watch().Look();
        }
    }

    // Begins with the window that is in front.
    qanh::detail::ForegroundWatch& watch(bool isSearch = true)
    {
        if (!m_watch) {
            m_watch.emplace(isSearch);
        }
        return *m_watch;
    }

    HWND Pane() const { return m_pane; }
    // The pane has been in front for long enough, and is gone.
    void PassPane(HWND behind)
    {
        See({Pane()});
        Sleep(1300);
        See({Pane(), behind});
    }

private:
    test::ImportPatch<decltype(&GetForegroundWindow)> m_foreground{"GetForegroundWindow",
                                                                   []() -> HWND { return g_inFront; }};
    test::ImportPatch<decltype(&GetWindowThreadProcessId)> m_process{
        "GetWindowThreadProcessId", [](HWND window, LPDWORD process) -> DWORD {
            const auto found = g_processes.find(window);
            *process = found == g_processes.end() ? 0 : found->second;
            return found == g_processes.end() ? 0 : 1;
        }};
    HWND m_pane = nullptr;
    std::optional<qanh::detail::ForegroundWatch> m_watch;
};

TEST_F(ForegroundWatch, WindowBehindThePane)
{
    const HWND window = Make(L"Mail", titled, mail);
    EXPECT_FALSE(watch().HasPaneCome());
    PassPane(window);
    EXPECT_TRUE(watch().HasPaneCome());
    EXPECT_EQ(watch().Found(), window);
    EXPECT_FALSE(watch().IsFocusTaken());
}

TEST_F(ForegroundWatch, WindowBeforeThePaneIsNotFound)
{
    See({Make(L"Mail", titled, mail), Pane()});
    EXPECT_EQ(watch().Found(), nullptr);
}

TEST_F(ForegroundWatch, WindowOfAnActivationNeedsNoPane)
{
    const HWND window = Make(L"Mail", popup, mail);
    watch(false);
    See({window});
    EXPECT_EQ(watch().Found(), window);
}

TEST_F(ForegroundWatch, KeyboardThatIsTakenBeforeEnter)
{
    const HWND window = Make(L"Mail", titled, mail);
    See({Pane(), window});
    EXPECT_TRUE(watch().IsFocusTaken());
    EXPECT_EQ(watch().Found(), window);
    // The pane has it again: what was there is not found any more.
    See({Pane()});
    EXPECT_FALSE(watch().IsFocusTaken());
    EXPECT_EQ(watch().Found(), nullptr);
}

// The pane may have been there since the last look, and Enter have been pressed.
TEST_F(ForegroundWatch, LooksThatCameLateAccuseNobody)
{
    watch();
    Sleep(1300);
    See({Pane(), Make(L"Mail", titled, mail)});
    EXPECT_FALSE(watch().IsFocusTaken());
}

TEST_F(ForegroundWatch, WindowsOfTheShellAreNotFoundButFoldersAre)
{
    const HWND folder = Make(L"Folder", titled, shell);
    PassPane(Make(L"StartScreen", popup, shell));
    EXPECT_EQ(watch().Found(), nullptr);
    See({nullptr, GetDesktopWindow()});
    EXPECT_EQ(watch().Found(), nullptr);
    See({folder});
    EXPECT_EQ(watch().Found(), folder);
}

TEST_F(ForegroundWatch, WindowsOfTheHostAndHiddenOnesAreNotFound)
{
    PassPane(Make(L"Own", titled, GetCurrentProcessId()));
    See({Make(L"Mail", WS_OVERLAPPEDWINDOW, mail)});
    EXPECT_EQ(watch().Found(), nullptr);
}

TEST_F(ForegroundWatch, WindowThatWasInFrontAtTheBeginningIsNotFound)
{
    g_inFront = Make(L"Mail", titled, mail);
    watch();
    PassPane(g_inFront);
    EXPECT_EQ(watch().Found(), nullptr);
}

TEST_F(ForegroundWatch, FirstWindowMayGiveWayToAnother)
{
    const HWND splash = Make(L"Splash", popup, mail);
    const HWND window = Make(L"Mail", titled, mail);
    PassPane(splash);
    EXPECT_EQ(watch().Found(), splash);
    DestroyWindow(splash);
    EXPECT_EQ(watch().Found(), nullptr);
    See({window});
    EXPECT_EQ(watch().Found(), window);
}

} // namespace
