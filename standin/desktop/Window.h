#pragma once

#include <windows.h>

namespace standin {

// Base of the desktop's windows: binds a window to the object that owns it. The object must outlive the
// window and is used on the thread that created the window only.
class Window
{
public:
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window() { Destroy(); }

    [[nodiscard]] HWND Handle() const noexcept { return m_window; }

    void Destroy() noexcept
    {
        if (m_window) {
            DestroyWindow(m_window);
        }
    }

protected:
    Window() = default;

    [[nodiscard]] bool CreateHandle(const wchar_t* className, const wchar_t* title, DWORD style,
                                    DWORD extendedStyle, const RECT& place, HWND parent = nullptr)
    {
        WNDCLASSEXW windowClass = {};
        windowClass.cbSize = sizeof(windowClass);
        windowClass.lpfnWndProc = &Window::OnAnyMessage;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
        windowClass.lpszClassName = className;
        if (!RegisterClassExW(&windowClass) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
            return false;
        }
        return CreateWindowExW(extendedStyle, className, title, style, place.left, place.top,
                               place.right - place.left, place.bottom - place.top, parent, nullptr,
                               windowClass.hInstance, this) != nullptr;
    }

    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
    {
        return DefWindowProcW(m_window, message, wParam, lParam);
    }

private:
    static LRESULT CALLBACK OnAnyMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message == WM_NCCREATE) {
            auto* object =
                static_cast<Window*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
            object->m_window = window;
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(object));
        }
        auto* object = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (!object) {
            return DefWindowProcW(window, message, wParam, lParam);
        }
        if (message == WM_NCDESTROY) {
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            object->m_window = nullptr;
            return DefWindowProcW(window, message, wParam, lParam);
        }
        return object->OnMessage(message, wParam, lParam);
    }

    HWND m_window = nullptr;
};

} // namespace standin
