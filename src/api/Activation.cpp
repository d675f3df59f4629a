// The export that starts a Store application by its ID.

#include "QanHelper.h"
#include "api/Arguments.h"
#include "common/DiagnosticLog.h"

HRESULT QANH_CALL QanhLaunchByManager(LPCWSTR appUserModelId, LPCWSTR arguments)
{
    static constexpr wchar_t kName[] = L"QanhLaunchByManager";
    DiagnosticLog::WriteLine("%S(%S, %S) IN\r\n", kName, appUserModelId, arguments);
    const HRESULT hr = CheckString(appUserModelId);
    return LogOut(kName, FAILED(hr) ? hr : E_NOTIMPL);
}
