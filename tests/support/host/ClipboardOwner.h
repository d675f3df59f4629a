#pragma once

#include <windows.h>

#include <functional>

namespace host {

// A window of the calling thread that owns the clipboard, with a text on it. Whoever empties the clipboard
// from this thread makes the system call the window's procedure before that returns: from there the action
// runs, once. Throws when the clipboard cannot be had.
class ClipboardOwner
{
public:
    explicit ClipboardOwner(std::function<void()> whenItIsTaken);
    ~ClipboardOwner();
    ClipboardOwner(const ClipboardOwner&) = delete;
    ClipboardOwner& operator=(const ClipboardOwner&) = delete;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    std::function<void()> m_action;
    HWND m_window;
};

} // namespace host
