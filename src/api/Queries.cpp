// The exports that answer questions about Store packages.

#include "QanHelper.h"
#include "api/Statics.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"
#include "common/FormatText.h"

#include <string>

namespace {

// Deliberate: one desktop suite counts as installed only with the application that is asked for, which shows
// as a dependency of its package.
constexpr wchar_t kOfficeFamily[] = L"Microsoft.Office.Desktop_8wekyb3d8bbwe";
constexpr wchar_t kIdSeparator = L'!';

HRESULT AskByAppUserModelId(const std::wstring& appUserModelId, BOOL* pIsInstalled)
{
    const std::size_t separator = appUserModelId.rfind(kIdSeparator);
    if (separator == std::wstring::npos) {
        return s_PackageManager.IsInstalled(appUserModelId.c_str(), pIsInstalled);
    }
    const std::wstring familyName = appUserModelId.substr(0, separator);
    const std::wstring applicationId = appUserModelId.substr(separator + 1);
    if (ToLowerCase(appUserModelId).find(ToLowerCase(kOfficeFamily)) != std::wstring::npos) {
        return s_PackageManager.IsInstalledEx(familyName.c_str(), applicationId.c_str(), pIsInstalled);
    }
    return s_PackageManager.IsInstalled(familyName.c_str(), pIsInstalled);
}

} // namespace

HRESULT QANH_CALL QanhIsInstalled(LPCWSTR packageName, BOOL* pIsInstalled)
{
    static constexpr wchar_t kName[] = L"QanhIsInstalled";
    LogIn(kName, packageName);
    HRESULT hr = CheckStringAndPointer(packageName, pIsInstalled);
    if (SUCCEEDED(hr)) {
        hr = s_PackageManager.IsInstalled(packageName, pIsInstalled);
    }
    return LogOut(kName, hr);
}

HRESULT QANH_CALL QanhIsInstalledByAppUserModeID(LPCWSTR appUserModelId, BOOL* pIsInstalled)
{
    static constexpr wchar_t kName[] = L"QanhIsInstalledByAppUserModeID";
    LogIn(kName, appUserModelId);
    HRESULT hr = CheckStringAndPointer(appUserModelId, pIsInstalled);
    if (SUCCEEDED(hr)) {
        hr = AskByAppUserModelId(appUserModelId, pIsInstalled);
    }
    return LogOut(kName, hr);
}

HRESULT QANH_CALL QanhGetAppDisplayNameByPFN(LPCWSTR packageFamilyName, LPWSTR* ppDisplayName)
{
    static constexpr wchar_t kName[] = L"QanhGetAppDisplayNameByPFN";
    DiagnosticLog::WriteLine("%S(%S, 0x%08X) IN\r\n", kName, packageFamilyName,
                             static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(ppDisplayName)));
    HRESULT hr = CheckStringAndPointer(packageFamilyName, ppDisplayName);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    hr = s_PackageManager.GetAppDisplayNameByPFN(packageFamilyName, ppDisplayName);
    // Deliberate: the wide name is printed with the narrow "%s", which shows what stands before the first
    // zero byte, and it is read also when the package was not found.
    DiagnosticLog::WriteLine("%S OUT(0x%08X) DisplayName = %s\r\n", kName, static_cast<unsigned>(hr),
                             reinterpret_cast<const char*>(*ppDisplayName));
    return hr;
}
