// What the package manager learns from the system about Store packages.

#include "common/DiagnosticLog.h"
#include "discovery/PackageManager.h"

HRESULT CQanhPackageManager::RefreshMetroApps() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::RefreshMetroApps";
    DiagnosticLog::WriteLine("%S IN\r\n", kName);
    return LogOut(kName, S_OK);
}
