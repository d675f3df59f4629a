#pragma once

#include "support/Current.h"
#include "support/FakeObjects.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <objbase.h>
#include <shobjidl.h>

#include <cstring>
#include <vector>

namespace test {

// The shell's object that tells what the screen shows: answers from a script that moves on with every look at
// the launcher. It knows one monitor, the primary one.
class FakeVisibility : public FakeUnknown<IAppVisibility>
{
public:
    struct State
    {
        BOOL isLauncherVisible;
        int visibility; // of applications; any number, also one that the enumeration does not hold
        HRESULT launcherResult = S_OK;
        HRESULT visibilityResult = S_OK;
    };

    explicit FakeVisibility(FakeObjects& owner) : FakeUnknown(owner, "visibility object") {}

    ULONG STDMETHODCALLTYPE Release() override
    {
        m_owner.Enter(this, "Release");
        return FakeUnknown::Release();
    }
    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* isVisible) override
    {
        const HRESULT hr = m_owner.Enter(this, "IsLauncherVisible");
        ++looks;
        if (FAILED(hr) || FAILED(Now().launcherResult)) {
            return FAILED(hr) ? hr : Now().launcherResult;
        }
        *isVisible = Now().isLauncherVisible;
        return Now().launcherResult;
    }
    HRESULT STDMETHODCALLTYPE GetAppVisibilityOnMonitor(HMONITOR monitor,
                                                        MONITOR_APP_VISIBILITY* visibility) override
    {
        const HRESULT hr = m_owner.Enter(this, "GetAppVisibilityOnMonitor");
        if (monitor != MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY)) {
            m_owner.NoteMisuse("another monitor than the primary one");
            return E_INVALIDARG;
        }
        if (FAILED(hr) || FAILED(Now().visibilityResult)) {
            return FAILED(hr) ? hr : Now().visibilityResult;
        }
        std::memcpy(visibility, &Now().visibility, sizeof *visibility);
        return Now().visibilityResult;
    }
    HRESULT STDMETHODCALLTYPE Advise(IAppVisibilityEvents*, DWORD*) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return NotImplemented(); }

    // The states that the looks see, one after the other; the last one stays.
    std::vector<State> states{{TRUE, MAV_NO_APP_VISIBLE}};
    std::size_t looks = 0;

private:
    [[nodiscard]] const State& Now() const
    {
        return states[looks > states.size() ? states.size() - 1 : looks - 1];
    }
};

// A shell that has this object, until the end of the scope. One at a time.
class FakeShell : private Current<FakeShell>
{
public:
    FakeShell() : visibility(objects.Make<FakeVisibility>()), m_create("CoCreateInstance", Create) {}

    [[nodiscard]] std::size_t Created() const { return objects.Calls("CoCreateInstance"); }

    FakeObjects objects;
    FakeVisibility* visibility;
    HRESULT createResult = S_OK; // a failure leaves a pointer behind all the same, without a reference

private:
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                                 void** object)
    {
        if (!IsEqualGUID(classId, kClass)) {
            return s_current->m_create.Original()(classId, outer, context, interfaceId, object);
        }
        FakeObjects& objects = s_current->objects;
        const HRESULT hr = objects.EnterMaker("CoCreateInstance");
        if (FAILED(hr)) {
            return hr;
        }
        if (outer || context != CLSCTX_INPROC_SERVER || !IsEqualIID(interfaceId, kInterface)) {
            objects.NoteMisuse("CoCreateInstance of something else");
            return E_NOINTERFACE;
        }
        *object = static_cast<IAppVisibility*>(s_current->visibility);
        if (SUCCEEDED(s_current->createResult)) {
            s_current->visibility->AddRef();
        }
        return s_current->createResult;
    }

    static constexpr GUID kClass = {
        0x7E5FE3D9, 0x985F, 0x4908, {0x91, 0xF9, 0xEE, 0x19, 0xF9, 0xFD, 0x15, 0x14}};
    static constexpr GUID kInterface = {
        0x2246EA2D, 0xCAEA, 0x4444, {0xA3, 0xC4, 0x6D, 0xE8, 0x27, 0xE4, 0x43, 0x13}};

    friend Current<FakeShell>;

    ImportPatch<decltype(&CoCreateInstance)> m_create;
};

// A session without a shell: nobody serves the object, whatever is registered on the machine. Until the end
// of the scope; one at a time, and a FakeShell may come over it.
class NoShell : private Current<NoShell>
{
private:
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                                 void** object)
    {
        if (!IsEqualGUID(classId, __uuidof(AppVisibility))) {
            return s_current->m_create.Original()(classId, outer, context, interfaceId, object);
        }
        *object = nullptr;
        return REGDB_E_CLASSNOTREG;
    }

    friend Current<NoShell>;

    ImportPatch<decltype(&CoCreateInstance)> m_create{"CoCreateInstance", Create};
};

} // namespace test
