#pragma once

#include "support/ImportPatch.h"

#include <windows.h>

#include <shobjidl.h>

#include <functional>

// The interfaces of COM have no virtual destructor: their objects are never deleted through them.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

namespace api_test {

// The shell's object that tells what the screen shows: the Start screen.
class FakeVisibility : public IAppVisibility
{
public:
    LONG references = 0;
    std::function<void()> onLastRelease = [] {};
    HRESULT result = S_OK; // of every question

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        if (--references == 0) {
            onLastRelease();
        }
        return static_cast<ULONG>(references);
    }
    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* isVisible) override
    {
        *isVisible = TRUE;
        return result;
    }
    HRESULT STDMETHODCALLTYPE GetAppVisibilityOnMonitor(HMONITOR, MONITOR_APP_VISIBILITY* visibility) override
    {
        *visibility = MAV_NO_APP_VISIBLE;
        return result;
    }
    HRESULT STDMETHODCALLTYPE Advise(IAppVisibilityEvents*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }
};

// A shell that has this object, until the end of the scope. One at a time.
class FakeShell
{
public:
    FakeShell() : m_patch("CoCreateInstance", Create) { s_current = this; }
    ~FakeShell() { s_current = nullptr; }
    FakeShell(const FakeShell&) = delete;
    FakeShell& operator=(const FakeShell&) = delete;

    FakeVisibility visibility;
    int created = 0;
    std::function<void()> onCreate = [] {};

private:
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                                 void** object)
    {
        if (!IsEqualGUID(classId, CLSID_AppVisibility)) {
            return s_current->m_patch.Original()(classId, outer, context, interfaceId, object);
        }
        ++s_current->created;
        s_current->onCreate();
        s_current->visibility.AddRef();
        *object = static_cast<IAppVisibility*>(&s_current->visibility);
        return S_OK;
    }

    static inline FakeShell* s_current = nullptr;
    test::ImportPatch<decltype(&CoCreateInstance)> m_patch;
};

// A session without a shell: nobody serves the object, whatever is registered on the machine. Until the end
// of the scope; one at a time, and a FakeShell may come over it.
class NoShell
{
public:
    NoShell() : m_patch("CoCreateInstance", Create) { s_current = this; }
    ~NoShell() { s_current = nullptr; }
    NoShell(const NoShell&) = delete;
    NoShell& operator=(const NoShell&) = delete;

private:
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                                 void** object)
    {
        if (!IsEqualGUID(classId, CLSID_AppVisibility)) {
            return s_current->m_patch.Original()(classId, outer, context, interfaceId, object);
        }
        *object = nullptr;
        return REGDB_E_CLASSNOTREG;
    }

    static inline NoShell* s_current = nullptr;
    test::ImportPatch<decltype(&CoCreateInstance)> m_patch;
};

} // namespace api_test
