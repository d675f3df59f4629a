#include "standin/desktop/KeyboardHook.h"

#include <utility>

namespace standin {

KeyboardHook::Listener KeyboardHook::s_listener;

LRESULT CALLBACK KeyboardHook::OnKey(int code, WPARAM message, LPARAM data)
{
    if (code == HC_ACTION) {
        const auto& event = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data);
        const bool isDown = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
        if (s_listener(event.vkCode, isDown)) {
            return 1;
        }
    }
    return CallNextHookEx(nullptr, code, message, data);
}

bool KeyboardHook::Start(Listener listener)
{
    Stop();
    s_listener = std::move(listener);
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
