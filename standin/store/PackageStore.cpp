#include "standin/store/PackageStore.h"

#include "standin/Files.h"
#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/store/PackageFiles.h"

#include <algorithm>
#include <cwchar>

namespace standin {

namespace {

constexpr wchar_t defaultPublisherId[] = L"0standin00000"; // as long as real ones

std::vector<std::wstring> SubfolderNames(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    ForEachEntry(folder, [&](const std::wstring& name, DWORD attributes) {
        if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
            names.push_back(name);
        }
    });
    std::sort(names.begin(), names.end(), [](const std::wstring& left, const std::wstring& right) {
        return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    });
    return names;
}

std::wstring Either(const std::wstring& first, const std::wstring& second)
{
    return first.empty() ? second : first;
}

std::wstring ToText(const PackageVersion& version)
{
    return std::to_wstring(version.major) + L"." + std::to_wstring(version.minor) + L"." +
           std::to_wstring(version.build) + L"." + std::to_wstring(version.revision);
}

// What the package.ini says goes before what the manifest says.
void FillIdentity(StorePackage& package, const std::wstring& folderName)
{
    const Ini& ini = package.ini;
    const Manifest& manifest = package.manifest;
    package.name = Either(ini.Text(L"name"), Either(manifest.name, folderName));
    package.publisherId = Either(ini.Text(L"publisher_id"), defaultPublisherId);
    package.architecture = Either(ini.Text(L"architecture"), Either(manifest.architecture, L"neutral"));
    package.resourceId = Either(ini.Text(L"resource_id"), manifest.resourceId);
    package.version = ParseVersion(Either(ini.Text(L"version"), manifest.version));
    package.familyName = Either(ini.Text(L"family_name"), package.name + L"_" + package.publisherId);
    package.fullName = Either(ini.Text(L"full_name"), package.name + L"_" + ToText(package.version) + L"_" +
                                                          package.architecture + L"_" + package.resourceId +
                                                          L"_" + package.publisherId);
}

std::wstring InstalledPath(const StorePackage& package)
{
    const std::wstring location = package.ini.Text(L"location");
    if (location.empty()) {
        return package.folder;
    }
    const bool isFull = location.find(L':') != std::wstring::npos || location.front() == L'\\';
    return isFull ? location : package.folder + L"\\" + location;
}

// Null: the folder holds no package.
std::shared_ptr<const StorePackage> ReadPackage(const std::wstring& folder, const std::wstring& folderName)
{
    const auto package = std::make_shared<StorePackage>();
    package->folder = folder;
    const bool hasIni = ReadPackageIni(folder, package->ini);
    const HRESULT hr = ReadManifestFile(folder + L"\\" + manifestFileName, package->manifest);
    // The folder may have gone meanwhile.
    const bool isGone = hr == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
    if (isGone || (!hasIni && hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))) {
        return nullptr;
    }
    FillIdentity(*package, folderName);
    const Ini& ini = package->ini;
    package->isInstalled = ini.Number(L"installed", 1) != 0;
    package->isFramework = ini.Number(L"framework", package->manifest.isFramework ? 1 : 0) != 0;
    package->dependencies = Split(ini.Text(L"dependencies"), L',');
    package->installedPath = InstalledPath(*package);
    return package;
}

} // namespace

HRESULT StorePackage::Fault(std::wstring_view key) const noexcept
{
    const auto failure = static_cast<HRESULT>(ini.Number(key));
    return FAILED(failure) ? failure : S_OK;
}

std::wstring StorePackage::UserModelId(const ManifestApplication& application) const
{
    const std::wstring* id = application.Find(L"Id");
    return familyName + L"!" + (id ? *id : std::wstring());
}

StorePackages ReadPackageStore()
{
    StorePackages packages;
    const std::wstring store = GetText(TextSetting::PackageStore);
    if (store.empty()) {
        return packages;
    }
    const std::wstring path = FullPath(store);
    for (const std::wstring& name : SubfolderNames(path)) {
        std::wstring folder = path;
        folder.append(L"\\").append(name);
        if (auto package = ReadPackage(folder, name)) {
            packages.push_back(std::move(package));
        }
    }
    return packages;
}

std::shared_ptr<const StorePackage> UnknownPackage(const std::wstring& familyName)
{
    const auto package = std::make_shared<StorePackage>();
    const size_t end = familyName.find_last_of(L'_');
    package->name = familyName.substr(0, end);
    package->publisherId = end == std::wstring::npos ? std::wstring() : familyName.substr(end + 1);
    package->architecture = L"neutral";
    package->familyName = familyName;
    package->fullName = package->name + L"_0.0.0.0_neutral__" + package->publisherId;
    package->isFramework = true;
    return package;
}

PackageVersion ParseVersion(const std::wstring& text) noexcept
{
    PackageVersion version;
    const wchar_t* rest = text.c_str();
    for (UINT16* part : {&version.major, &version.minor, &version.build, &version.revision}) {
        wchar_t* end = nullptr;
        *part = static_cast<UINT16>(std::wcstoul(rest, &end, 10));
        rest = *end == L'.' ? end + 1 : end;
    }
    return version;
}

} // namespace standin
