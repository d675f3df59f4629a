#pragma once

#include "standin/desktop/Applications.h"
#include "standin/desktop/Window.h"

#include <windows.h>

#include <windowsx.h>

#include <functional>
#include <utility>
#include <vector>

namespace standin {

// A window that shows applications, each at a place of its own, and tells of one that is clicked. Like every
// window it is used on the thread that created it only.
class ApplicationWindow : public Window
{
public:
    using Chosen = std::function<void(const Application&)>;

    [[nodiscard]] bool IsShown() const noexcept { return IsWindowVisible(Handle()) != FALSE; }
    void Hide() { ShowWindow(Handle(), SW_HIDE); }

protected:
    explicit ApplicationWindow(Chosen chosen) : m_chosen(std::move(chosen)) {}

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        switch (message) {
        case WM_PAINT:
            Paint();
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_LBUTTONUP:
            OnClick({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
            return 0;
        default:
            return Window::OnMessage(message, wParam, lParam);
        }
    }

    virtual void Paint() = 0;
    [[nodiscard]] virtual RECT PlaceOf(size_t index, const RECT& client) const = 0;

    std::vector<Application> m_shown;

private:
    void OnClick(POINT point)
    {
        RECT client = {};
        GetClientRect(Handle(), &client);
        for (size_t index = 0; index < m_shown.size(); ++index) {
            const RECT place = PlaceOf(index, client);
            if (PtInRect(&place, point)) {
                const Application clicked = m_shown[index]; // the list may change while it is being started
                m_chosen(clicked);
                return;
            }
        }
    }

    Chosen m_chosen;
};

} // namespace standin
