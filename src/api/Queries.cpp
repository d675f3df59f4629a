// The exports that answer questions about Store packages.

#include "QanHelper.h"
#include "api/Arguments.h"
#include "common/DiagnosticLog.h"

HRESULT QANH_CALL QanhIsInstalled(LPCWSTR packageName, BOOL* pIsInstalled)
{
    static constexpr wchar_t kName[] = L"QanhIsInstalled";
    DiagnosticLog::WriteLine("%S(%S) IN\r\n", kName, packageName);
    const HRESULT hr = CheckStringAndOut(packageName, pIsInstalled);
    return LogOut(kName, FAILED(hr) ? hr : E_NOTIMPL);
}

HRESULT QANH_CALL QanhIsInstalledByAppUserModeID(LPCWSTR appUserModelId, BOOL* pIsInstalled)
{
    static constexpr wchar_t kName[] = L"QanhIsInstalledByAppUserModeID";
    DiagnosticLog::WriteLine("%S(%S) IN\r\n", kName, appUserModelId);
    const HRESULT hr = CheckStringAndOut(appUserModelId, pIsInstalled);
    return LogOut(kName, FAILED(hr) ? hr : E_NOTIMPL);
}

HRESULT QANH_CALL QanhGetAppDisplayNameByPFN(LPCWSTR packageFamilyName, LPWSTR* ppDisplayName)
{
    static constexpr wchar_t kName[] = L"QanhGetAppDisplayNameByPFN";
    DiagnosticLog::WriteLine("%S(%S, 0x%08X) IN\r\n", kName, packageFamilyName,
                             static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(ppDisplayName)));
    const HRESULT hr = CheckStringAndOut(packageFamilyName, ppDisplayName);
    return LogOut(kName, FAILED(hr) ? hr : E_NOTIMPL);
}
