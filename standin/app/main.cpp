// The application that the stand-in desktop's shortcuts start in tests and demonstrations: a window that
// shows its name until it is closed.
#include "standin/ModulePath.h"
#include "standin/Names.h"
#include "standin/desktop/Drawing.h"
#include "standin/desktop/Window.h"

#include <windows.h>

#include <shellapi.h>

#include <cwchar>
#include <string>
#include <string_view>

namespace {

constexpr COLORREF background = RGB(0xF4, 0xF7, 0xF8);
constexpr COLORREF band = RGB(0x00, 0x8A, 0x9B);
constexpr COLORREF ink = RGB(0x10, 0x20, 0x24);
constexpr UINT_PTR endTimer = 1;

class AppWindow : public standin::Window
{
public:
    AppWindow() : m_type(30, standin::Typeface::Weight::Light) {}

    bool Show(const std::wstring& name, UINT milliseconds)
    {
        m_name = name;
        const RECT place = {120, 120, 600, 400};
        if (!CreateHandle(standin::appClass, name.c_str(), WS_OVERLAPPEDWINDOW, 0, place)) {
            return false;
        }
        ShowWindow(Handle(), SW_SHOWNORMAL);
        SetForegroundWindow(Handle());
        UpdateWindow(Handle());
        return milliseconds == 0 || SetTimer(Handle(), endTimer, milliseconds, nullptr) != 0;
    }

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        switch (message) {
        case WM_PAINT: {
            const standin::Painting painting(Handle());
            const RECT& client = painting.Client();
            standin::FillColour(painting.Context(), client, background);
            const RECT top = {0, 0, client.right, 8};
            standin::FillColour(painting.Context(), top, band);
            const RECT text = {16, 8, client.right - 16, client.bottom};
            m_type.Draw(painting.Context(), text, m_name, ink, standin::Align::Centre);
            return 0;
        }
        case WM_ERASEBKGND:
            return 1;
        case WM_TIMER:
            DestroyWindow(Handle());
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            return Window::OnMessage(message, wParam, lParam);
        }
    }

private:
    std::wstring m_name;
    standin::Typeface m_type;
};

std::wstring OwnFileName()
{
    const std::wstring path = standin::ModulePath();
    const std::wstring name = path.substr(path.find_last_of(L'\\') + 1);
    return name.substr(0, name.find_last_of(L'.'));
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int)
{
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::wstring name;
    UINT milliseconds = 0;
    for (int index = 1; arguments && index < count; ++index) {
        if (std::wstring_view(arguments[index]) == L"--once" && index + 1 < count) {
            milliseconds = static_cast<UINT>(std::wcstoul(arguments[++index], nullptr, 10));
        } else {
            name = arguments[index];
        }
    }
    AppWindow window;
    if (!window.Show(name.empty() ? OwnFileName() : name, milliseconds)) {
        return 1;
    }
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
