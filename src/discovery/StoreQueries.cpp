// What the package manager learns from the system about the Store packages of the current user.

#include "QanHelper.h"
#include "common/Apartment.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"
#include "common/WinRtError.h"
#include "discovery/PackageManager.h"
#include "discovery/SystemPackages.h"
#include "manifest/ManifestReader.h"
#include "manifest/StorePackage.h"

#include <roapi.h>

#include <algorithm>
#include <string>

using Microsoft::WRL::ComPtr;

namespace {

// Only the letters A to Z change.
std::wstring FoldLatinLetters(std::wstring text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](wchar_t unit) {
        return L'A' <= unit && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
    });
    return text;
}

bool DependsOn(platform::IPackage* package, const wchar_t* fragment)
{
    ComPtr<platform::IPackageVectorView> dependencies;
    ThrowIfFailed(package->get_Dependencies(dependencies.GetAddressOf()));
    UINT32 size = 0;
    ThrowIfFailed(dependencies->get_Size(&size));
    const std::wstring folded = FoldLatinLetters(fragment);
    for (UINT32 index = 0; index < size; ++index) {
        ComPtr<platform::IPackage> dependency;
        ThrowIfFailed(dependencies->GetAt(index, dependency.GetAddressOf()));
        const WideString familyName =
            StorePackage::FamilyName(StorePackage::Identity(dependency.Get()).Get());
        if (FoldLatinLetters(familyName.c_str()).find(folded) != std::wstring::npos) {
            return true;
        }
    }
    return false;
}

// The system's package manager for the length of a scope. When having it entered the Windows Runtime, the
// scope's end leaves that, with the manager gone.
class ManagerScope
{
public:
    ManagerScope() noexcept
    {
        BOOL needsUninitialize = FALSE;
        m_manager = CQanhPackageManager::GetPackageManager(&needsUninitialize);
        if (needsUninitialize) {
            m_apartment.TakeOver();
        }
    }
    // Null: there is none.
    [[nodiscard]] platform::IPackageManager* Get() const noexcept { return m_manager.Get(); }

private:
    WinRtApartment m_apartment;
    ComPtr<platform::IPackageManager> m_manager;
};

// The way in which a query enters and leaves the package manager. Finds a package with find(manager); none
// when there is no manager. A failing call of the platform is raised, after everything was left.
template <typename Find>
ComPtr<platform::IPackage> FindPackage(const wchar_t* operation, const wchar_t* familyName, Find find)
{
    LogIn(operation, familyName);
    const HRESULT hr = CheckString(familyName);
    if (FAILED(hr)) {
        LogOut(operation, hr);
        return nullptr;
    }
    ComPtr<platform::IPackage> package;
    {
        const ManagerScope manager;
        if (!manager.Get()) {
            DiagnosticLog::WriteLine("%S OUT(GetPackageManager failed.)\r\n", operation);
            return nullptr;
        }
        package = find(manager.Get());
    }
    LogOut(operation);
    return package;
}

// An apartment for a package: entered before the package is looked for, left after it is released. The search
// leaves its own before it hands the package out, and a thread that has no other would be without one then.
// Whether it could be entered is not asked: if not, the search fails for the same reason, and logs it.
[[nodiscard]] WinRtApartment EnterForPackage() noexcept
{
    return WinRtApartment(RoInitialize(RO_INIT_SINGLETHREADED));
}

// The two questions whether a package is installed differ only in how it is found.
template <typename Find>
HRESULT AskInstalled(const wchar_t* operation, const wchar_t* familyName, BOOL* pIsInstalled, Find find)
{
    LogIn(operation, familyName);
    const HRESULT hr = CheckStringAndPointer(familyName, pIsInstalled);
    if (FAILED(hr)) {
        return LogOut(operation, hr);
    }
    const WinRtApartment apartment = EnterForPackage();
    try {
        *pIsInstalled = find() ? 1 : 0;
    } catch (...) {
        return LogCaught(operation, E_OUTOFMEMORY);
    }
    DiagnosticLog::WriteLine("%S OUT(*pIsInstalled = %d)\r\n", operation, *pIsInstalled);
    return S_OK;
}

} // namespace

ComPtr<platform::IPackageManager> CQanhPackageManager::GetPackageManager(BOOL* pNeedsUninitialize) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::GetPackageManager";
    LogIn(kName);
    if (!pNeedsUninitialize) {
        LogOut(kName, E_POINTER);
        return nullptr;
    }
    const HRESULT hr = RoInitialize(RO_INIT_SINGLETHREADED);
    if (FAILED(hr) && hr != RPC_E_CHANGED_MODE) {
        LogOut(kName, hr);
        return nullptr;
    }
    *pNeedsUninitialize = SUCCEEDED(hr) ? 1 : 0;
    try {
        ComPtr<platform::IPackageManager> manager = SystemPackages::ActivateManager();
        LogOut(kName, S_OK);
        return manager;
    } catch (const WinRtError& error) {
        DiagnosticLog::WriteLine("%S %S\r\n", kName, error.Message());
    } catch (...) {
        LogOut(kName, E_OUTOFMEMORY);
    }
    return nullptr;
}

ComPtr<platform::IPackage> CQanhPackageManager::FindPackageByName(const wchar_t* familyName)
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::FindPackageByName";
    return FindPackage(kName, familyName, [&](platform::IPackageManager* manager) {
        return SystemPackages::First(SystemPackages::OfFamily(manager, familyName).Get());
    });
}

ComPtr<platform::IPackage> CQanhPackageManager::FindPackageByNameEx(const wchar_t* familyName,
                                                                    const wchar_t* fragment)
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::FindPackageByNameEx";
    return FindPackage(kName, familyName, [&](platform::IPackageManager* manager) {
        ComPtr<platform::IPackage> dependent;
        SystemPackages::ForEach(
            SystemPackages::OfFamily(manager, familyName).Get(), [] { return false; },
            [&](platform::IPackage* package) {
                if (!dependent && DependsOn(package, fragment)) {
                    dependent = package;
                }
            });
        return dependent;
    });
}

HRESULT CQanhPackageManager::IsInstalled(const wchar_t* familyName, BOOL* pIsInstalled) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::IsInstalled";
    return AskInstalled(kName, familyName, pIsInstalled,
                        [&] { return FindPackageByName(familyName) != nullptr; });
}

HRESULT CQanhPackageManager::IsInstalledEx(const wchar_t* familyName, const wchar_t* fragment,
                                           BOOL* pIsInstalled) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::IsInstalledEx";
    return AskInstalled(kName, familyName, pIsInstalled,
                        [&] { return FindPackageByNameEx(familyName, fragment) != nullptr; });
}

HRESULT CQanhPackageManager::GetAppDisplayNameByPFN(const wchar_t* familyName, wchar_t** ppName) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::GetAppDisplayNameByPFN";
    DiagnosticLog::WriteLine("%S(%S, 0x%08X) IN\r\n", kName, familyName,
                             static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(ppName)));
    HRESULT hr = CheckStringAndPointer(familyName, ppName);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    hr = QANH_E_NO_PACKAGE;
    const WinRtApartment apartment = EnterForPackage();
    try {
        const ComPtr<platform::IPackage> package = FindPackageByName(familyName);
        if (package) {
            hr = CQanhManifestReader::GetAppDisplayName(package.Get(), ppName);
        }
        // Deliberate: the wide name is printed with the narrow "%s", which shows what stands before the first
        // zero byte.
        DiagnosticLog::WriteLine("%S OUT(0x%08X) DisplayName = %s\r\n", kName, static_cast<unsigned>(hr),
                                 reinterpret_cast<const char*>(*ppName));
    } catch (...) {
        return LogCaught(kName, E_OUTOFMEMORY);
    }
    return hr;
}

HRESULT CQanhPackageManager::RefreshMetroApps() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::RefreshMetroApps";
    LogIn(kName);
    HRESULT result = S_OK;
    {
        const ManagerScope manager;
        if (!manager.Get()) {
            // Deliberate: written with a capital, unlike the line of the queries.
            DiagnosticLog::WriteLine("%S OUT(GetPackageManager Failed.)\r\n", kName);
            return E_FAIL;
        }
        try {
            SystemPackages::ForEach(
                SystemPackages::All(manager.Get()).Get(), [&] { return PollExitEvent() == WAIT_OBJECT_0; },
                [&](platform::IPackage* package) { result = m_AppNameList.AddMetroPackage(package); });
        } catch (const WinRtError& error) {
            // The result reached so far stays.
            LogOut(kName, error);
        } catch (...) {
            result = E_OUTOFMEMORY;
        }
    }
    return LogOut(kName, result);
}
