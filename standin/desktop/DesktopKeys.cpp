#include "standin/desktop/DesktopKeys.h"

namespace standin {

bool DesktopKeys::OnEvent(DWORD key, bool isDown) noexcept
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

void DesktopKeys::OnWindowsKey(bool isDown) noexcept
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

} // namespace standin
