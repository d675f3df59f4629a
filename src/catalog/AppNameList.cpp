#include "catalog/AppNameList.h"

#include "catalog/ExcludeList.h"
#include "common/DiagnosticLog.h"
#include "common/OutOfMemory.h"

#include <algorithm>

CQanhAppNameList::CQanhAppNameList(std::size_t listLimit)
    : m_listLimit(listLimit), m_lists(listLimit, listLimit)
{
}

void CQanhAppNameList::Clear() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::Clear";
    LogIn(kName);
    {
        const auto lists = m_lists.Write();
        lists->packages.Clear();
        lists->desktopApps.Clear();
    }
    LogOut(kName);
}

void CQanhAppNameList::CompleteIndexes() const noexcept
{
    // Records that an index does not know are still found, by a walk.
    (void)CatchOutOfMemory([&] {
        const auto lists = m_lists.Write();
        lists->packages.CompleteIndex();
        lists->desktopApps.CompleteIndex();
        return S_OK;
    });
}

template <typename Look> auto CQanhAppNameList::LookUp(Look look) const noexcept
{
    {
        const auto lists = m_lists.Read();
        if (lists->AreIndexesComplete()) {
            return look(*lists);
        }
    }
    CompleteIndexes();
    const auto lists = m_lists.Read();
    return look(*lists);
}

const CQanhPackage* CQanhAppNameList::FindPackage(const Lists& lists,
                                                  const wchar_t* packageFamilyName) noexcept
{
    if (!DiagnosticLog::IsEnabled() && lists.packages.IsIndexComplete()) {
        return lists.packages.Index().Find(packageFamilyName);
    }
    for (const auto& package : lists.packages) {
        if (package->IsThisPackage(packageFamilyName)) {
            return package.get();
        }
    }
    return nullptr;
}

const CQanhPackage* CQanhAppNameList::GetPackage(const wchar_t* packageFamilyName) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::GetPackage";
    LogIn(kName, packageFamilyName);
    const CQanhPackage* found = nullptr;
    if (packageFamilyName && *packageFamilyName != L'\0') {
        found = LookUp([=](const Lists& lists) { return FindPackage(lists, packageFamilyName); });
    }
    LogOut(kName);
    return found;
}

HRESULT CQanhAppNameList::AddMetroPackage(std::unique_ptr<CQanhPackage> package) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::AddMetroPackage";
    LogIn(kName);
    if (!package) {
        return LogOut(kName, E_POINTER);
    }
    return LogOut(kName, CatchOutOfMemory([&] {
                      m_lists.Write()->packages.Append(std::move(package));
                      return S_OK;
                  }));
}

HRESULT CQanhAppNameList::AddDesktopApp(const wchar_t* displayName, const wchar_t* lnkFileName) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::AddDesktopApp";
    LogIn(kName, displayName, lnkFileName);
    if (!displayName || !lnkFileName) {
        return LogOut(kName, E_POINTER);
    }
    if (*displayName == L'\0' || *lnkFileName == L'\0') {
        return LogOut(kName, E_INVALIDARG);
    }
    if (IsInDesktopAppList(lnkFileName)) {
        return LogOut(kName, S_FALSE);
    }
    return LogOut(kName, CatchOutOfMemory([&] {
                      auto app = std::make_unique<CQanhDesktopApp>(displayName, lnkFileName);
                      m_lists.Write()->desktopApps.Append(std::move(app));
                      return S_OK;
                  }));
}

bool CQanhAppNameList::HasShortcut(const Lists& lists, const wchar_t* path) noexcept
{
    if (!DiagnosticLog::IsEnabled() && lists.desktopApps.IsIndexComplete()) {
        return lists.desktopApps.Index().Contains(path);
    }
    return std::any_of(lists.desktopApps.begin(), lists.desktopApps.end(),
                       [path](const auto& app) { return app->IsSameShortcut(path); });
}

BOOL CQanhAppNameList::IsInDesktopAppList(const wchar_t* path) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::IsInDesktopAppList";
    LogIn(kName, path);
    BOOL found = FALSE;
    if (path && *path != L'\0') {
        found = LookUp([=](const Lists& lists) { return HasShortcut(lists, path) ? TRUE : FALSE; });
    }
    return LogOutNumber(kName, found);
}

HRESULT CQanhAppNameList::GetExcludeAppNameList(const wchar_t* wantedName, ExcludeList* pExcludeList,
                                                BOOL* pFound) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::GetExcludeAppNameList";
    LogIn(kName, wantedName);
    const WantedName wanted(wantedName);
    const HRESULT hr = CheckExcludeArguments(wanted, pExcludeList, pFound);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    *pFound = 0;
    {
        const auto lists = m_lists.Read();
        for (const auto& package : lists->packages) {
            package->AddAppNameToExcludeList(wanted, pExcludeList, pFound);
        }
        for (const auto& app : lists->desktopApps) {
            AskApp(*app, wanted, pExcludeList, pFound);
        }
    }
    return LogOut(kName, S_OK);
}

std::vector<WideString> CQanhAppNameList::PackageFamilyNames() const
{
    std::vector<WideString> names;
    const auto lists = m_lists.Read();
    for (const auto& package : lists->packages) {
        names.push_back(package->PackageFamilyName);
    }
    return names;
}

std::vector<WideString> CQanhAppNameList::DesktopShortcuts() const
{
    std::vector<WideString> shortcuts;
    const auto lists = m_lists.Read();
    for (const auto& app : lists->desktopApps) {
        shortcuts.push_back(app->LnkFileName);
    }
    return shortcuts;
}

namespace {

template <typename Records> void SetInstalled(Records& records, const std::vector<BOOL>& states)
{
    auto state = states.begin();
    for (auto record = records.begin(); record != records.end() && state != states.end(); ++record, ++state) {
        (*record)->IsInstalled = *state;
    }
}

} // namespace

void CQanhAppNameList::SetPackagesInstalled(const std::vector<BOOL>& states)
{
    SetInstalled(m_lists.Write()->packages, states);
}

void CQanhAppNameList::SetDesktopAppsInstalled(const std::vector<BOOL>& states)
{
    SetInstalled(m_lists.Write()->desktopApps, states);
}
