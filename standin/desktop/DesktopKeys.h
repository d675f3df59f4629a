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
    [[nodiscard]] bool OnEvent(DWORD key, bool isDown) noexcept
    {
        if (key == VK_LWIN || key == VK_RWIN) {
            OnWindowsKey(isDown);
            return false;
        }
        if (isDown && m_windowsDown) {
            m_windowsAlone = false;
            if (key == 'Q') {
                if (!m_swallowQUp) { // a key held down repeats
                    PostMessageW(m_window, m_searchKeysMessage, 0, 0);
                }
                m_swallowQUp = true;
                return true;
            }
        }
        if (!isDown && key == 'Q' && m_swallowQUp) {
            m_swallowQUp = false;
            return true;
        }
        return false;
    }

private:
    void OnWindowsKey(bool isDown) noexcept
    {
        if (isDown) {
            m_windowsAlone = m_windowsAlone || !m_windowsDown;
            m_windowsDown = true;
            return;
        }
        if (m_windowsDown && m_windowsAlone) {
            PostMessageW(m_window, m_windowsKeyMessage, 0, 0);
        }
        m_windowsDown = false;
        m_windowsAlone = false;
    }

    HWND m_window;
    UINT m_windowsKeyMessage;
    UINT m_searchKeysMessage;
    bool m_windowsDown = false;
    bool m_windowsAlone = false; // nothing else was pressed since the Windows key went down
    bool m_swallowQUp = false;
};

} // namespace standin
