#pragma once

#include <windows.h>

namespace standin {

// Calls start(), which calls CreateProcess and returns its result, and calls it again when Wine has given up
// on the process before it began: that alone is told by ERROR_INTERNAL_ERROR, and nothing has been done then.
// Three times at most; returns the last result. Any thread.
template <typename Start> [[nodiscard]] BOOL TryStart(Start start)
{
    BOOL isStarted = start();
    for (int left = 2; !isStarted && left > 0 && GetLastError() == ERROR_INTERNAL_ERROR; --left) {
        isStarted = start();
    }
    return isStarted;
}

} // namespace standin
