#pragma once

#include "common/Apartment.h"
#include "launch/MonitorMode.h"
#include "support/FakeShell.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace monitor_mode_test {

using test::FakeVisibility;
using Lines = std::vector<std::string>;

inline HMONITOR const kMonitor = reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(4660));

inline HMONITOR WINAPI MonitorAt(POINT point, DWORD flags)
{
    const bool isPrimary = point.x == 0 && point.y == 0 && flags == 1;
    return isPrimary ? kMonitor : reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(1));
}

// A monitor mode in a shell that shows the desktop at first.
class MonitorMode : public ::testing::Test
{
protected:
    MonitorMode() : m_monitorAt("MonitorFromPoint", MonitorAt)
    {
        s_current = this;
        m_visibility.states = {{FALSE, MAV_NO_APP_VISIBLE}};
    }
    ~MonitorMode() override
    {
        Unready();
        EXPECT_THAT(m_shell.objects.Leaks(), ::testing::IsEmpty());
        s_current = nullptr;
    }

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
    // For a function that stands in for one of the platform's.
    static void Note(const std::string& event) { s_current->m_shell.objects.Note(event); }

    const ComApartment m_apartment{CoInitialize(nullptr)};
    test::ImportPatch<decltype(&MonitorFromPoint)> m_monitorAt;
    test::FakeShell m_shell;
    FakeVisibility& m_visibility = *m_shell.visibility;
    CQanhMonitorMode m_mode;

private:
    static inline MonitorMode* s_current = nullptr;
};

} // namespace monitor_mode_test
