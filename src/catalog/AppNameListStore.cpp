// How Store packages of the system enter the catalogue.

#include "catalog/AppNameList.h"
#include "common/DiagnosticLog.h"
#include "common/WinRtError.h"
#include "manifest/ManifestReader.h"
#include "manifest/StorePackage.h"

namespace {

constexpr wchar_t kName[] = L"CQanhAppNameList::AddMetroPackage";

} // namespace

// What a Store package says of itself.
struct StoreIdentity
{
    WideString familyName;
    WideString fullName;
    WideString name;
    RecordVersion version;
    WideString manifestPath;
};

namespace {

StoreIdentity ReadIdentity(platform::IPackage* storePackage)
{
    StoreIdentity identity;
    const auto id = StorePackage::Identity(storePackage);
    identity.familyName = StorePackage::FamilyName(id.Get());
    identity.fullName = StorePackage::FullName(id.Get());
    identity.name = StorePackage::Name(id.Get());
    const platform::PackageVersion version = StorePackage::Version(id.Get());
    identity.version.Major = version.Major;
    identity.version.Minor = version.Minor;
    identity.version.Build = version.Build;
    identity.version.Revision = version.Revision;
    identity.manifestPath = StorePackage::ManifestPath(StorePackage::InstalledPath(storePackage));
    return identity;
}

std::unique_ptr<CQanhPackage> MakeRecord(const StoreIdentity& identity, std::size_t appLimit)
{
    return std::make_unique<CQanhPackage>(identity.familyName.c_str(), identity.fullName.c_str(),
                                          identity.name.c_str(), identity.version, appLimit);
}

// Adds the applications of the package's manifest to the record. A manifest that cannot be read costs the
// applications, not the package.
void AddApps(const StoreIdentity& identity, CQanhPackage& record)
{
    const HRESULT hr = CQanhManifestReader::AddAppsToPackage(identity.manifestPath.c_str(), &record);
    if (FAILED(hr)) {
        DiagnosticLog::WriteLine("%S Error (0x%08X)\r\n", kName, static_cast<unsigned>(hr));
    }
}

} // namespace

HRESULT CQanhAppNameList::AddMetroPackage(platform::IPackage* pStorePackage) noexcept
{
    LogIn(kName);
    if (!pStorePackage) {
        return LogOut(kName, E_POINTER);
    }
    try {
        return LogOut(kName, AddStorePackage(pStorePackage));
    } catch (...) {
        return LogCaught(kName, E_OUTOFMEMORY);
    }
}

HRESULT CQanhAppNameList::AddStorePackage(platform::IPackage* pStorePackage)
{
    const StoreIdentity identity = ReadIdentity(pStorePackage);
    if (const CQanhPackage* package = GetPackage(identity.familyName.c_str())) {
        return RefreshPackage(*package, identity);
    }
    // A new record is filled before the list gets it, so that a launch never sees it half read.
    std::unique_ptr<CQanhPackage> package = MakeRecord(identity, m_listLimit);
    AddApps(identity, *package);
    return AddMetroPackage(std::move(package));
}

namespace {

// The package that a look-up for this name finds, without a line in the log. Null when there is none.
template <typename Packages>
CQanhPackage* RecordOf(Packages& packages, const WideString& packageFamilyName) noexcept
{
    if (packages.IsIndexComplete()) {
        return packages.Index().Find(packageFamilyName.View());
    }
    for (auto& package : packages) {
        if (package->PackageFamilyName == packageFamilyName) {
            return package.get();
        }
    }
    return nullptr;
}

} // namespace

template <typename Change> void CQanhAppNameList::ChangePackage(const CQanhPackage& package, Change change)
{
    const auto lists = m_lists.Write();
    if (CQanhPackage* record = RecordOf(lists->packages, package.PackageFamilyName)) {
        change(*record);
    }
}

HRESULT CQanhAppNameList::RefreshPackage(const CQanhPackage& package, const StoreIdentity& identity)
{
    // Read without the lock: it is this thread that changes records, and no other does while it runs.
    if (package.NeedReserve || package.Version == identity.version) {
        return S_OK;
    }
    // The applications are read into a record that starts without any and changes places with the old one
    // when it is complete: a launch sees the names of one version or of the other.
    const std::unique_ptr<CQanhPackage> replacement = MakeRecord(identity, m_listLimit);
    ChangePackage(package, [&](CQanhPackage& record) {
        record.FullName = identity.fullName;
        record.Name = identity.name;
    });
    BOOL can = FALSE;
    const HRESULT hr = CQanhManifestReader::IsCanGetAppNameFromManifest(identity.manifestPath.c_str(),
                                                                        replacement.get(), &can);
    if (FAILED(hr) || !can) {
        return hr;
    }
    replacement->DeleteAllApp();
    AddApps(identity, *replacement);
    ChangePackage(package, [&](CQanhPackage& record) { record.SwapContents(*replacement); });
    return hr;
}
