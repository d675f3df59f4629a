#include "support/host/OwnPane.h"

#include "standin/Names.h"
#include "support/host/Patch.h"

#include <cwchar>
#include <stdexcept>

namespace {

bool g_isOpen = false;
DWORD g_stays = 0; // presses of Enter
std::wstring g_query;
bool g_hasAllOfItsOwn = false;

// No window has this handle.
HWND Pane()
{
    return reinterpret_cast<HWND>(ULONG_PTR{0x5EA2C});
}

UINT WINAPI TakeKeys(UINT count, INPUT* inputs, int)
{
    for (UINT index = 0; index < count; ++index) {
        const KEYBDINPUT& key = inputs[index].ki;
        if ((key.dwFlags & KEYEVENTF_KEYUP) != 0) {
            continue;
        }
        if (key.wVk == 'Q') {
            g_isOpen = true;
        } else if (key.wVk == VK_RETURN && g_stays > 0) {
            --g_stays;
        } else if (key.wVk == VK_RETURN) {
            g_isOpen = false;
        }
    }
    return count;
}

HWND WINAPI Foreground()
{
    return g_isOpen ? Pane() : GetDesktopWindow();
}

int WINAPI ClassName(HWND window, wchar_t* name, int size)
{
    if (window != Pane()) {
        return GetClassNameW(window, name, size);
    }
    wcsncpy_s(name, static_cast<std::size_t>(size), standin::searchPaneClass, _TRUNCATE);
    return static_cast<int>(std::wcslen(name));
}

HANDLE WINAPI TakeText(UINT format, HANDLE block)
{
    if (const auto* text = static_cast<const wchar_t*>(GlobalLock(block))) {
        g_query = text;
        GlobalUnlock(block);
    }
    return g_hasAllOfItsOwn ? block : SetClipboardData(format, block);
}

BOOL WINAPI OpenOwn(HWND)
{
    return TRUE;
}

BOOL WINAPI EmptyOrCloseOwn()
{
    return TRUE;
}

// What the stand-in's visibility object looks for.
void ShowStartScreen()
{
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = standin::startScreenClass;
    RegisterClassW(&windowClass);
    static const HWND s_window = CreateWindowExW(0, standin::startScreenClass, L"", WS_POPUP | WS_VISIBLE, 0,
                                                 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (!s_window) {
        throw std::runtime_error("no Start screen");
    }
}

} // namespace

namespace host {

void OwnPane::Install(HMODULE library, bool hasAllOfItsOwn)
{
    g_hasAllOfItsOwn = hasAllOfItsOwn;
    if (hasAllOfItsOwn) {
        Patch(library, "OpenClipboard", &OpenOwn);
        Patch(library, "EmptyClipboard", &EmptyOrCloseOwn);
        Patch(library, "CloseClipboard", &EmptyOrCloseOwn);
        ShowStartScreen();
    }
    Patch(library, "SendInput", &TakeKeys);
    Patch(library, "GetForegroundWindow", &Foreground);
    Patch(library, "GetClassNameW", &ClassName);
    Patch(library, "SetClipboardData", &TakeText);
}

void OwnPane::Stay(DWORD presses)
{
    g_stays = presses;
}

const std::wstring& OwnPane::Query()
{
    return g_query;
}

} // namespace host
