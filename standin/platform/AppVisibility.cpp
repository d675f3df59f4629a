#include "standin/platform/AppVisibility.h"

#include "standin/Names.h"
#include "standin/Settings.h"
#include "standin/platform/ComObject.h"

#include <shobjidl.h>

namespace standin {

namespace {

// Looks at the desktop's windows at each question, so it is right in every process and without a desktop too.
class DesktopVisibility final : public ComObject<IAppVisibility>
{
public:
    HRESULT STDMETHODCALLTYPE GetAppVisibilityOnMonitor(HMONITOR, MONITOR_APP_VISIBILITY* mode) override
    {
        if (!mode) {
            return E_POINTER;
        }
        const HRESULT failure = GetFailure(Setting::FailMonitorQuery);
        if (FAILED(failure)) {
            return failure;
        }
        if (GetSetting(Setting::VisibilityUnknown) != 0) {
            *mode = MAV_UNKNOWN;
        } else {
            *mode = GetSetting(Setting::AppVisible) != 0 ? MAV_APP_VISIBLE : MAV_NO_APP_VISIBLE;
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* visible) override
    {
        if (!visible) {
            return E_POINTER;
        }
        const HRESULT failure = GetFailure(Setting::FailLauncherQuery);
        if (FAILED(failure)) {
            return failure;
        }
        const HWND startScreen = FindWindowW(startScreenClass, nullptr);
        *visible = startScreen && IsWindowVisible(startScreen);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Advise(IAppVisibilityEvents*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }
};

} // namespace

HRESULT CreateAppVisibility(REFIID interfaceId, void** object) noexcept
{
    const HRESULT failure = GetFailure(Setting::FailCreate);
    if (FAILED(failure)) {
        return failure;
    }
    return CreateComObject<DesktopVisibility>(interfaceId, object);
}

} // namespace standin
