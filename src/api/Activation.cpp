// The export that starts a Store application by its ID.

#include "QanHelper.h"
#include "common/Apartment.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"

#include <objbase.h>
#include <shobjidl.h>

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace {

constexpr DWORD kPauseAfterActivation = 100; // milliseconds

} // namespace

HRESULT QANH_CALL QanhLaunchByManager(LPCWSTR appUserModelId, LPCWSTR arguments)
{
    static constexpr wchar_t kName[] = L"QanhLaunchByManager";
    LogIn(kName, appUserModelId, arguments);
    HRESULT hr = CheckString(appUserModelId);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    // Deliberate: from here on no exit line is written.
    {
        // Whether it was entered is not asked: without an apartment, creating the manager fails and says why.
        const ComApartment apartment(CoInitialize(nullptr));
        ComPtr<IApplicationActivationManager> manager;
        hr = CoCreateInstance(CLSID_ApplicationActivationManager, nullptr, CLSCTX_INPROC_SERVER,
                              IID_PPV_ARGS(manager.GetAddressOf()));
        if (FAILED(hr)) {
            return hr;
        }
        DWORD processId = 0;
        hr = manager->ActivateApplication(appUserModelId, arguments, AO_NONE, &processId);
    }
    Sleep(kPauseAfterActivation);
    return hr;
}
