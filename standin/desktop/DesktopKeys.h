#pragma once

#include <windows.h>

namespace standin {

// Finds the lone Windows key and Windows+Q among the key events, and posts a message to a window for each.
// The Q of Windows+Q is swallowed, or an edit field in front would receive it too. Used by the keyboard
// hook's thread only.
class DesktopKeys
{
public:
    DesktopKeys(HWND window, UINT windowsKeyMessage, UINT searchKeysMessage) noexcept
        : m_window(window), m_windowsKeyMessage(windowsKeyMessage), m_searchKeysMessage(searchKeysMessage)
    {
    }

    // True when the event must not reach anybody.
    [[nodiscard]] bool OnEvent(DWORD key, bool isDown) noexcept;

private:
    void OnWindowsKey(bool isDown) noexcept;

    HWND m_window;
    UINT m_windowsKeyMessage;
    UINT m_searchKeysMessage;
    bool m_windowsDown = false;
    bool m_windowsAlone = false; // nothing else was pressed since the Windows key went down
    bool m_swallowQUp = false;
};

} // namespace standin
