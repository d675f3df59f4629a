#pragma once

#include "launch/MonitorMode.h"
#include "support/ImportPatch.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <vector>

namespace monitor_mode_test {

using Lines = std::vector<std::string>;

inline HMONITOR const kMonitor = reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(4660));

// The shell's object: answers as the test says, from a script that moves on with every look at the state.
class FakeVisibility : public IAppVisibility
{
public:
    struct State
    {
        BOOL isLauncherVisible;
        int visibility;
        HRESULT launcherResult = S_OK;
        HRESULT visibilityResult = S_OK;
    };

    // The states that the looks see, one after the other; the last one stays.
    std::vector<State> states{{FALSE, MAV_NO_APP_VISIBLE}};
    std::size_t looks = 0;
    LONG references = 1;
    Lines calls;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        calls.push_back("Release");
        return static_cast<ULONG>(--references);
    }
    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* isVisible) override
    {
        ++looks;
        calls.push_back("IsLauncherVisible");
        if (SUCCEEDED(Now().launcherResult)) {
            *isVisible = Now().isLauncherVisible;
        }
        return Now().launcherResult;
    }
    HRESULT STDMETHODCALLTYPE GetAppVisibilityOnMonitor(HMONITOR monitor,
                                                        MONITOR_APP_VISIBILITY* mode) override
    {
        calls.push_back(monitor == kMonitor ? "GetAppVisibilityOnMonitor" : "another monitor");
        if (SUCCEEDED(Now().visibilityResult)) {
            // Any number, also one that the enumeration does not hold.
            std::memcpy(mode, &Now().visibility, sizeof *mode);
        }
        return Now().visibilityResult;
    }
    HRESULT STDMETHODCALLTYPE Advise(IAppVisibilityEvents*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }

private:
    const State& Now() const { return states[looks > states.size() ? states.size() - 1 : looks - 1]; }
};

inline FakeVisibility* g_object = nullptr;
inline HRESULT g_createResult = S_OK;
inline Lines g_calls;

inline constexpr GUID kClass = {0x7E5FE3D9, 0x985F, 0x4908, {0x91, 0xF9, 0xEE, 0x19, 0xF9, 0xFD, 0x15, 0x14}};
inline constexpr GUID kInterface = {
    0x2246EA2D, 0xCAEA, 0x4444, {0xA3, 0xC4, 0x6D, 0xE8, 0x27, 0xE4, 0x43, 0x13}};

inline HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                             void** object)
{
    const bool isAsked =
        IsEqualGUID(classId, kClass) && !outer && context == 1 && IsEqualGUID(interfaceId, kInterface);
    g_calls.push_back(isAsked ? "CoCreateInstance" : "CoCreateInstance of something else");
    *object = g_object;
    return g_createResult;
}

inline HMONITOR WINAPI MonitorAt(POINT point, DWORD flags)
{
    const bool isPrimary = point.x == 0 && point.y == 0 && flags == 1;
    return isPrimary ? kMonitor : reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(1));
}

// A monitor mode whose object is the fake one.
class MonitorMode : public ::testing::Test
{
protected:
    MonitorMode() : m_create("CoCreateInstance", Create), m_monitorAt("MonitorFromPoint", MonitorAt)
    {
        g_object = &m_object;
        g_createResult = S_OK;
        g_calls.clear();
    }

    // As after Initialize(), without an apartment: the object here needs none.
    void Ready() { m_mode.m_pImmersiveMode = &m_object; }

    test::ImportPatch<decltype(&CoCreateInstance)> m_create;
    test::ImportPatch<decltype(&MonitorFromPoint)> m_monitorAt;
    FakeVisibility m_object;
    CQanhMonitorMode m_mode;
};

} // namespace monitor_mode_test
