#pragma once

#include <windows.h>

#include <thread>

namespace standin {

// Watches the keyboard of the whole desktop for the lone Windows key and for Windows+Q, and posts a message
// for each. Owned by the desktop; one at a time. The hook runs on a thread of its own, so that keys are never
// held up by what the desktop does. The Q of Windows+Q is swallowed, or an edit field in front would receive
// it too.
class KeyboardHook
{
public:
    KeyboardHook() = default;
    ~KeyboardHook() { Stop(); }
    KeyboardHook(const KeyboardHook&) = delete;
    KeyboardHook& operator=(const KeyboardHook&) = delete;

    // Posts windowsKeyMessage or searchKeysMessage to window. Returns when the hook is in place; false: it
    // cannot be had.
    [[nodiscard]] bool Start(HWND window, UINT windowsKeyMessage, UINT searchKeysMessage);

    // Returns when the keys are free again.
    void Stop() noexcept;

private:
    struct Watch;

    void Run(HANDLE ready, bool& hooked) noexcept;
    static LRESULT CALLBACK OnKey(int code, WPARAM message, LPARAM data);

    static Watch s_watch;

    std::thread m_thread;
    DWORD m_threadId = 0;
};

} // namespace standin
