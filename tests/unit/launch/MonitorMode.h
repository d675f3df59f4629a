#pragma once

#include "common/Apartment.h"
#include "launch/MonitorMode.h"
#include "support/FakeShell.h"
#include "support/Test.h"

namespace monitor_mode_test {

using namespace test;
inline HMONITOR const kMonitor = reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(4660));

// The lines of one look at the state.
inline Lines LookLines(const std::string& result)
{
    return Call("CQanhMonitorMode::GetMonitorState", result);
}

// A monitor mode in a shell that shows the desktop at first.
class MonitorMode : public ::testing::Test
{
protected:
    MonitorMode() { m_visibility.states = {{FALSE, MAV_NO_APP_VISIBLE}}; }
    ~MonitorMode() override { Unready(); }

    // As after Initialize(); the apartment is the test's.
    void Ready()
    {
        m_visibility.AddRef();
        m_mode.m_pImmersiveMode = &m_visibility;
    }
    // As before Initialize().
    void Unready()
    {
        if (m_mode.m_pImmersiveMode) {
            m_mode.m_pImmersiveMode->Release();
            m_mode.m_pImmersiveMode = nullptr;
        }
    }

    Lines& Journal() { return m_shell.objects.journal; }
    const ComApartment m_apartment{CoInitialize(nullptr)};
    FakeShell m_shell;
    FakeVisibility& m_visibility = *m_shell.visibility;
    CQanhMonitorMode m_mode;
    const CapturingPatch<decltype(&MonitorFromPoint)> m_monitorAt{
        "MonitorFromPoint", [](POINT point, DWORD flags) {
            const bool isPrimary = point.x == 0 && point.y == 0 && flags == 1;
            return isPrimary ? kMonitor : reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(1));
        }};
};

} // namespace monitor_mode_test
