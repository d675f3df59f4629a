#include "Foreground.h"

#include <shobjidl.h>

#include <wrl/client.h>

#include <cwchar>

namespace {

constexpr DWORD kPoll = 100; // milliseconds
constexpr int kPolls = 50;

// Its window is one in front like any other.
bool IsStartScreenShown(IAppVisibility* visibility)
{
    BOOL isShown = FALSE;
    return visibility && SUCCEEDED(visibility->IsLauncherVisible(&isShown)) && isShown;
}

} // namespace

// The library's own function for this would bring along what presses keys.
bool IsSearchPaneInFront()
{
    const HWND window = GetForegroundWindow();
    wchar_t className[MAX_PATH] = {};
    return window && GetClassNameW(window, className, MAX_PATH) > 0 &&
           std::wcscmp(className, L"SearchPane") == 0;
}

std::wstring WaitForApplication(HWND before)
{
    Microsoft::WRL::ComPtr<IAppVisibility> visibility;
    // Without it, the windows alone tell.
    (void)CoCreateInstance(CLSID_AppVisibility, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&visibility));
    for (int poll = 0; poll < kPolls; ++poll) {
        const HWND window = GetForegroundWindow();
        wchar_t title[256] = {};
        if (window && window != before && GetWindowTextW(window, title, 256) > 0 &&
            !IsStartScreenShown(visibility.Get())) {
            return title;
        }
        Sleep(kPoll);
    }
    return L"";
}
