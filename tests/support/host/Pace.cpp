#include "support/host/Pace.h"

#include "support/host/Patch.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr DWORD firstWait = 1000; // milliseconds before the first pass

DWORD volatile g_divisor = 1;
bool volatile g_isHeld = false;
HANDLE g_go = nullptr; // manual-reset event
thread_local bool t_hasPauses = true;
thread_local DWORD t_factor = 1;
thread_local ULONGLONG t_left = 0; // milliseconds of pauses that were left out

DWORD Shortened(DWORD milliseconds)
{
    return milliseconds == 0 || milliseconds == INFINITE ? milliseconds
                                                         : std::max<DWORD>(1, milliseconds / g_divisor);
}

void WINAPI Pause(DWORD milliseconds)
{
    if (t_hasPauses) {
        Sleep(Shortened(milliseconds) * t_factor);
    } else {
        t_left += milliseconds;
    }
}

DWORD WINAPI Wait(HANDLE object, DWORD milliseconds)
{
    if (!g_isHeld || milliseconds != firstWait) {
        return WaitForSingleObject(object, Shortened(milliseconds));
    }
    const HANDLE objects[] = {object, g_go};
    const DWORD result =
        WaitForMultipleObjects(static_cast<DWORD>(std::size(objects)), objects, FALSE, INFINITE);
    return result == WAIT_OBJECT_0 + 1 ? WAIT_TIMEOUT : result;
}

} // namespace

namespace host {

void Pace::Install(HMODULE library)
{
    if (!g_go) {
        g_go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    Patch(library, "Sleep", &Pause);
    Patch(library, "WaitForSingleObject", &Wait);
}

void Pace::Set(DWORD divisor)
{
    g_divisor = divisor;
}

void Pace::Stretch(DWORD factor)
{
    t_factor = factor;
}

void Pace::Hold()
{
    ResetEvent(g_go);
    g_isHeld = true;
}

void Pace::Go()
{
    g_isHeld = false;
    SetEvent(g_go);
}

NoPauses::NoPauses()
{
    t_hasPauses = false;
    t_left = 0;
}

ULONGLONG NoPauses::Total()
{
    return t_left;
}

NoPauses::~NoPauses()
{
    t_hasPauses = true;
}

} // namespace host
