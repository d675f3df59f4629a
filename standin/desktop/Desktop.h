#pragma once

#include "standin/desktop/KeyboardHook.h"
#include "standin/desktop/SearchPane.h"
#include "standin/desktop/StartScreen.h"
#include "standin/desktop/Window.h"

#include <string>

namespace standin {

// The conductor: receives the keys, shows and hides the Start screen and the search pane, starts applications
// and keeps the journal. One in a process, on the thread that runs its message loop; its own window is never
// shown and receives the keyboard hook's messages and the timers of what was asked to come late.
class Desktop : public Window
{
public:
    Desktop();
    ~Desktop() override;

    // False when a window or the hook cannot be had.
    [[nodiscard]] bool Create();

    // Returns the exit code when the Start screen was asked to close, with the keys free again.
    int Run();

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnWindowsKey();
    void OnSearchKeys();
    void OnSubmitted(const std::wstring& text, const Application* hit);
    void AfterDelay(UINT_PTR timer, DWORD milliseconds);
    void ShowStartScreen();
    void HideStartScreen();
    void OpenPane();
    void ClosePane();
    void GiveUpForeground();
    void Start(const Application& application);

    StartScreen m_startScreen;
    SearchPane m_pane;
    KeyboardHook m_hook;
};

} // namespace standin
