#include "standin/desktop/KeyboardHook.h"

namespace standin {

// What the hook function knows; the platform hands it no context. Touched by the hook's thread only, once it
// runs.
struct KeyboardHook::Watch
{
    HWND window;
    UINT windowsKeyMessage;
    UINT searchKeysMessage;
    bool windowsDown;
    bool windowsAlone; // nothing else was pressed since the Windows key went down
    bool swallowQUp;

    // Returns true when the event must not reach anybody.
    bool OnEvent(DWORD key, bool isDown) noexcept
    {
        if (key == VK_LWIN || key == VK_RWIN) {
            OnWindowsKey(isDown);
            return false;
        }
        if (isDown && windowsDown) {
            windowsAlone = false;
            if (key == 'Q') {
                if (!swallowQUp) { // a key held down repeats
                    PostMessageW(window, searchKeysMessage, 0, 0);
                }
                swallowQUp = true;
                return true;
            }
        }
        if (!isDown && key == 'Q' && swallowQUp) {
            swallowQUp = false;
            return true;
        }
        return false;
    }

    void OnWindowsKey(bool isDown) noexcept
    {
        if (isDown) {
            windowsAlone = windowsAlone || !windowsDown;
            windowsDown = true;
            return;
        }
        if (windowsDown && windowsAlone) {
            PostMessageW(window, windowsKeyMessage, 0, 0);
        }
        windowsDown = false;
        windowsAlone = false;
    }
};

KeyboardHook::Watch KeyboardHook::s_watch = {};

LRESULT CALLBACK KeyboardHook::OnKey(int code, WPARAM message, LPARAM data)
{
    if (code == HC_ACTION) {
        const auto& event = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data);
        const bool isDown = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
        if (s_watch.OnEvent(event.vkCode, isDown)) {
            return 1;
        }
    }
    return CallNextHookEx(nullptr, code, message, data);
}

bool KeyboardHook::Start(HWND window, UINT windowsKeyMessage, UINT searchKeysMessage)
{
    Stop();
    s_watch = {};
    s_watch.window = window;
    s_watch.windowsKeyMessage = windowsKeyMessage;
    s_watch.searchKeysMessage = searchKeysMessage;
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!ready) {
        return false;
    }
    bool hooked = false;
    m_thread = std::thread([this, ready, &hooked] { Run(ready, hooked); });
    WaitForSingleObject(ready, INFINITE);
    CloseHandle(ready);
    if (!hooked) {
        m_thread.join();
    }
    return hooked;
}

void KeyboardHook::Stop() noexcept
{
    if (m_thread.joinable()) {
        PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
        m_thread.join();
    }
}

void KeyboardHook::Run(HANDLE ready, bool& hooked) noexcept
{
    m_threadId = GetCurrentThreadId();
    MSG message = {};
    PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE); // makes the queue that Stop posts to
    const HHOOK hook = SetWindowsHookExW(WH_KEYBOARD_LL, &KeyboardHook::OnKey, GetModuleHandleW(nullptr), 0);
    const bool isHooked = hook != nullptr;
    hooked = isHooked;
    SetEvent(ready); // hooked must not be touched from here on
    if (!isHooked) {
        return;
    }
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    UnhookWindowsHookEx(hook);
}

} // namespace standin
