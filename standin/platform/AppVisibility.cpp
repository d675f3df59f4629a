#include "standin/platform/Makers.h"

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
            Check(GetFailure(Setting::FailMonitorQuery));
            *mode = Mode();
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE IsLauncherVisible(BOOL* visible) override
    {
        return Give(visible, [&] {
            Check(GetFailure(Setting::FailLauncherQuery));
            const HWND startScreen = FindWindowW(startScreenClass, nullptr);
            *visible = startScreen && IsWindowVisible(startScreen);
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
    return FAILED(failure) ? failure : CreateComObject<DesktopVisibility>(interfaceId, object);
}

} // namespace standin
