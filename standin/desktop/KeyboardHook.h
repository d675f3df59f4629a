#pragma once

#include <windows.h>

#include <functional>
#include <thread>

namespace standin {

// Hears every key event of the whole desktop, whoever sends it. One at a time in a process. The hook runs on
// a thread of its own, so that keys are never held up by what its owner does.
class KeyboardHook
{
public:
    // Called on the hook's thread for each event, with the virtual key; true: the event must not reach
    // anybody.
    using Listener = std::function<bool(DWORD key, bool isDown)>;

    KeyboardHook() = default;
    ~KeyboardHook() { Stop(); }
    KeyboardHook(const KeyboardHook&) = delete;
    KeyboardHook& operator=(const KeyboardHook&) = delete;

    // Returns when the hook is in place; false: it cannot be had.
    [[nodiscard]] bool Start(Listener listener);

    // Returns when the keys are free again.
    void Stop() noexcept;

private:
    void Run(HANDLE ready, bool& hooked) noexcept;
    static LRESULT CALLBACK OnKey(int code, WPARAM message, LPARAM data);

    static Listener s_listener; // the platform hands the hook function no context

    std::thread m_thread;
    DWORD m_threadId = 0;
};

} // namespace standin
