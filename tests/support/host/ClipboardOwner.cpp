#include "support/host/ClipboardOwner.h"

#include <stdexcept>
#include <utility>

namespace host {

ClipboardOwner::ClipboardOwner(std::function<void()> whenItIsTaken)
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

ClipboardOwner::~ClipboardOwner()
{
    SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
    DestroyWindow(m_window);
}

LRESULT CALLBACK ClipboardOwner::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* self = reinterpret_cast<ClipboardOwner*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_DESTROYCLIPBOARD && self) {
        if (const auto action = std::exchange(self->m_action, nullptr)) {
            action();
        }
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace host
