#include "system/KeyRecorder.h"

namespace {

std::string NameOf(DWORD key)
{
    switch (key) {
    case VK_LWIN:
        return "Windows";
    case VK_SHIFT:
    case VK_LSHIFT:
        return "Shift";
    case VK_INSERT:
        return "Insert";
    case VK_RETURN:
        return "Enter";
    case 'Q':
        return "Q";
    default:
        return "key " + std::to_string(key);
    }
}

} // namespace

namespace test {

KeyRecorder* KeyRecorder::s_recorder = nullptr;

KeyRecorder::KeyRecorder()
{
    s_recorder = this;
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    m_thread = std::thread([this, ready] {
        m_threadId = GetCurrentThreadId();
        const HHOOK hook =
            SetWindowsHookExW(WH_KEYBOARD_LL, &KeyRecorder::OnKey, GetModuleHandleW(nullptr), 0);
        MSG message = {};
        PeekMessageW(&message, nullptr, WM_USER, WM_USER,
                     PM_NOREMOVE); // makes the queue that the end is posted to
        SetEvent(ready);
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            DispatchMessageW(&message);
        }
        UnhookWindowsHookEx(hook);
    });
    WaitForSingleObject(ready, 10000);
    CloseHandle(ready);
}

KeyRecorder::~KeyRecorder()
{
    PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
    m_thread.join();
    s_recorder = nullptr;
}

std::vector<std::string> KeyRecorder::Events() const
{
    const std::scoped_lock lock(m_lock);
    return m_events;
}

LRESULT CALLBACK KeyRecorder::OnKey(int code, WPARAM message, LPARAM data)
{
    if (code == HC_ACTION) {
        const auto& event = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data);
        const bool isDown = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
        const std::scoped_lock lock(s_recorder->m_lock);
        s_recorder->m_events.push_back(NameOf(event.vkCode) + (isDown ? " down" : " up"));
    }
    return CallNextHookEx(nullptr, code, message, data);
}

} // namespace test
