#include "standin/platform/AppVisibility.h"

#include "standin/Names.h"
#include "standin/Settings.h"
#include "standin/platform/ServedObject.h"

#include <shobjidl.h>

namespace standin {

namespace {

// Looks at the desktop's windows at each question, so it is right in every process and without a desktop too.
class DesktopVisibility final : public ServedObject<IAppVisibility>
{
public:
    HRESULT STDMETHODCALLTYPE GetAppVisibilityOnMonitor(HMONITOR monitor,
                                                        MONITOR_APP_VISIBILITY* mode) override
    {
        return Give(mode, [&] {
            MONITORINFO information = {};
            information.cbSize = sizeof(information);
            if (!GetMonitorInfoW(monitor, &information)) {
                return E_INVALIDARG;
            }
            const HRESULT failure = GetFailure(Setting::FailMonitorQuery);
            if (SUCCEEDED(failure)) {
                *mode = Mode();
            }
            return failure;
        });
    }

    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* visible) override
    {
        return Give(visible, [&] {
            const HRESULT failure = GetFailure(Setting::FailLauncherQuery);
            if (SUCCEEDED(failure)) {
                const HWND startScreen = FindWindowW(startScreenClass, nullptr);
                *visible = startScreen && IsWindowVisible(startScreen);
            }
            return failure;
        });
    }

    HRESULT STDMETHODCALLTYPE Advise(IAppVisibilityEvents*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }

private:
    static MONITOR_APP_VISIBILITY Mode() noexcept
    {
        if (GetSetting(Setting::VisibilityUnknown) != 0) {
            return MAV_UNKNOWN;
        }
        return GetSetting(Setting::AppVisible) != 0 ? MAV_APP_VISIBLE : MAV_NO_APP_VISIBLE;
    }
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
