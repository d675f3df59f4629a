#pragma once

#include "support/Test.h"

namespace discovery_test {

// The waits of this program for somebody else's turn (discovery/CatalogTurn.h), until the end of the scope:
// each does first what the test wants. Impatient ones end at once, with what they would have ended with, or
// with a time-out. One at a time.
class TurnWaits
{
public:
    std::function<void()> onWait = [] {};
    bool isPatient = true;
    DWORD asked = 0; // milliseconds, by the last one

private:
    test::CapturingPatch<decltype(&WaitForMultipleObjects)> m_patch{
        "WaitForMultipleObjects", [this](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
            asked = milliseconds;
            onWait();
            return m_patch.Original(count, handles, all, isPatient ? milliseconds : 0);
        }};
};

} // namespace discovery_test
