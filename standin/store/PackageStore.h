#pragma once

#include "standin/store/Ini.h"
#include "standin/store/Manifest.h"

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The packages of Store applications that the stand-in desktop has: one for each subfolder of the store
// folder (Settings.h) that holds an AppxManifest.xml or a package.ini; README.md describes both. Everything
// is read anew at each call, and what was read never changes. Any thread.
namespace standin {

struct PackageVersion
{
    UINT16 major = 0;
    UINT16 minor = 0;
    UINT16 build = 0;
    UINT16 revision = 0;
};

struct StorePackage
{
    std::wstring folder; // full path
    Manifest manifest;   // what could be read of it
    Ini ini;

    std::wstring name;
    std::wstring publisherId;
    std::wstring fullName;
    std::wstring familyName;
    std::wstring resourceId;
    std::wstring architecture; // as manifests write it
    PackageVersion version;
    bool isInstalled = true; // for the current user
    bool isFramework = false;
    std::vector<std::wstring> dependencies; // family names
    std::wstring installedPath;             // as the platform reports it; normally the folder

    // The failure that the package.ini names under the key ("fail_id"), S_OK when it names none.
    [[nodiscard]] HRESULT Fault(std::wstring_view key) const noexcept;

    [[nodiscard]] std::wstring UserModelId(const ManifestApplication& application) const;
};

using StorePackages = std::vector<std::shared_ptr<const StorePackage>>;

// All packages of the store folder, installed or not, in the order of their folders' names, letter case
// aside. Empty without a store folder.
[[nodiscard]] StorePackages ReadPackageStore();

// A package that nothing is known of but its family: stands for a dependency that is not in the store.
[[nodiscard]] std::shared_ptr<const StorePackage> UnknownPackage(const std::wstring& familyName);

// "1.2.3.4", missing parts are 0.
[[nodiscard]] PackageVersion ParseVersion(const std::wstring& text) noexcept;

} // namespace standin
