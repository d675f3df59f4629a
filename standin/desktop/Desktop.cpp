#include "standin/desktop/Desktop.h"

#include "standin/Journal.h"
#include "standin/Settings.h"
#include "standin/desktop/DesktopKeys.h"

#include <cwchar>

namespace standin {

namespace {

constexpr wchar_t desktopClass[] = L"StandInDesktop";

constexpr UINT windowsKeyMessage = WM_APP + 1;
constexpr UINT searchKeysMessage = WM_APP + 2;

constexpr UINT_PTR startScreenTimer = 1;
constexpr UINT_PTR paneTimer = 2;

} // namespace

Desktop::Desktop()
    : m_startScreen([this](const Application& application) { Start(application); },
                    [] { PostQuitMessage(0); }),
      m_pane([this](const Application& application) { Start(application); },
             {[this](const std::wstring& text, const Application* hit) { OnSubmitted(text, hit); },
              [this] {
                  ClosePane();
                  GiveUpForeground();
              },
              [](const std::wstring& text) {
                  WriteJournal({L"pasted", text});
              },
              [] { WriteJournal({L"paste lost"}); }})
{
}

Desktop::~Desktop()
{
    m_hook.Stop();
    Destroy();
}

bool Desktop::Create()
{
    const RECT nowhere = {};
    if (!CreateHandle(desktopClass, L"", 0, 0, nowhere, HWND_MESSAGE) || !m_startScreen.Create() ||
        !m_pane.Create()) {
        return false;
    }
    DesktopKeys keys(Handle(), windowsKeyMessage, searchKeysMessage);
    if (!m_hook.Start([keys](DWORD key, bool isDown) mutable { return keys.OnEvent(key, isDown); })) {
        return false;
    }
    WriteJournal({L"ready"});
    return true;
}

int Desktop::Run()
{
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    m_hook.Stop();
    ClosePane();
    HideStartScreen();
    WriteJournal({L"ended"});
    return static_cast<int>(message.wParam);
}

LRESULT Desktop::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case windowsKeyMessage:
        OnWindowsKey();
        return 0;
    case searchKeysMessage:
        OnSearchKeys();
        return 0;
    case WM_TIMER:
        KillTimer(Handle(), wParam);
        if (wParam == startScreenTimer) {
            ShowStartScreen();
        } else if (wParam == paneTimer) {
            OpenPane();
        }
        return 0;
    default:
        return Window::OnMessage(message, wParam, lParam);
    }
}

void Desktop::OnWindowsKey()
{
    WriteJournal({L"key", L"Windows"});
    KillTimer(Handle(), paneTimer);
    ClosePane();
    if (m_startScreen.IsShown()) {
        HideStartScreen();
        GiveUpForeground();
    } else if (GetSetting(Setting::StartScreenNever) == 0) {
        AfterDelay(startScreenTimer, GetSetting(Setting::StartScreenDelay));
    } else {
        GiveUpForeground();
    }
}

void Desktop::OnSearchKeys()
{
    WriteJournal({L"key", L"Windows+Q"});
    if (GetSetting(Setting::PaneNever) == 0) {
        AfterDelay(paneTimer, GetSetting(Setting::PaneDelay));
    }
}

void Desktop::OnSubmitted(const std::wstring& text, const Application* hit)
{
    WriteJournal({L"query", text});
    if (hit) {
        Start(*hit);
    } else {
        WriteJournal({L"no hit", text});
    }
}

// The timer's message does the same as a delay of 0 does at once.
void Desktop::AfterDelay(UINT_PTR timer, DWORD milliseconds)
{
    if (milliseconds > 0 && SetTimer(Handle(), timer, milliseconds, nullptr)) {
        return;
    }
    SendMessageW(Handle(), WM_TIMER, timer, 0);
}

void Desktop::ShowStartScreen()
{
    m_startScreen.Show(ListApplications());
    if (m_pane.IsShown()) {
        SetForegroundWindow(
            m_pane.Handle()); // it came first, and the Start screen late: the pane stays on top
    }
    WriteJournal({L"start screen shown"});
}

void Desktop::HideStartScreen()
{
    KillTimer(Handle(), startScreenTimer);
    if (m_startScreen.IsShown()) {
        m_startScreen.Hide();
        WriteJournal({L"start screen hidden"});
    }
}

void Desktop::OpenPane()
{
    m_pane.Open(ListApplications());
    WriteJournal({L"pane opened"});
}

void Desktop::ClosePane()
{
    if (m_pane.IsShown()) {
        m_pane.Hide();
        WriteJournal({L"pane closed"});
    }
}

void Desktop::GiveUpForeground()
{
    SetForegroundWindow(m_startScreen.IsShown() ? m_startScreen.Handle() : GetDesktopWindow());
}

// The windows go first, so that the application's own window comes to the front of an empty desktop.
void Desktop::Start(const Application& application)
{
    ClosePane();
    HideStartScreen();
    GiveUpForeground();
    const HRESULT hr = StartApplication(application);
    if (SUCCEEDED(hr)) {
        WriteJournal({L"started", application.name, application.origin});
        return;
    }
    wchar_t code[16] = L"";
    _snwprintf_s(code, std::size(code), _TRUNCATE, L"0x%08lX", static_cast<unsigned long>(hr));
    WriteJournal({L"failed", application.name, application.origin, code});
}

} // namespace standin
