#pragma once

#include <windows.h>

#include <string>

namespace host {

// A search pane of the host's own for the library's launches, so that they reach nobody and say what was put
// on the clipboard: the Q of Windows+Q opens it, Enter closes it, and no key is really pressed. Done from
// outside, by the library's imports. Main thread.
class OwnPane
{
public:
    // The clipboard is the real one and no Start screen is shown; or both are the host's own too, for hosts
    // that ask at the same time, or often.
    static void Install(HMODULE library, bool hasAllOfItsOwn = false);

    // So many presses of Enter leave the pane open from here on.
    static void Stay(DWORD presses);

    // What the clipboard was given last.
    [[nodiscard]] static const std::wstring& Query();
};

} // namespace host
