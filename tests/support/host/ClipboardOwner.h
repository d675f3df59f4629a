#pragma once

#include <windows.h>

#include <functional>
#include <stdexcept>
#include <utility>

namespace host {

// A window of the calling thread that owns the clipboard, with a text on it. Whoever empties the clipboard
// from this thread makes the system call the window's procedure before that returns: from there the action
// runs, once. Throws when the clipboard cannot be had.
class ClipboardOwner
{
public:
    explicit ClipboardOwner(std::function<void()> whenItIsTaken)
        : m_action(std::move(whenItIsTaken)),
          m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
    {
        for (int patience = 100; !OpenClipboard(m_window); --patience) {
            if (patience == 0) {
                DestroyWindow(m_window);
                throw std::runtime_error("the clipboard cannot be opened");
            }
            Sleep(10);
        }
        EmptyClipboard();
        ::SetClipboardData(CF_UNICODETEXT, GlobalAlloc(GHND, sizeof L"before"));
        CloseClipboard();
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Procedure));
    }
    ~ClipboardOwner()
    {
        SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
        DestroyWindow(m_window);
    }
    ClipboardOwner(const ClipboardOwner&) = delete;
    ClipboardOwner& operator=(const ClipboardOwner&) = delete;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        auto* self = reinterpret_cast<ClipboardOwner*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_DESTROYCLIPBOARD && self) {
            if (const auto action = std::exchange(self->m_action, nullptr)) {
                action();
            }
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }

    std::function<void()> m_action;
    HWND m_window;
};

} // namespace host
