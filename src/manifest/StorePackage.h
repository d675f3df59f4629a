#pragma once

#include "common/WideString.h"
#include "platform/WinRtPackages.h"

#include <wrl/client.h>

// What the library reads of a Store package object of the Windows Runtime. Each throws a WinRtError when
// the package does not answer. The caller holds an apartment around the package and all that comes from it.
namespace StorePackage {

[[nodiscard]] Microsoft::WRL::ComPtr<platform::IPackageId> Identity(platform::IPackage* package);
[[nodiscard]] WideString FamilyName(platform::IPackageId* identity);
[[nodiscard]] WideString FullName(platform::IPackageId* identity);
[[nodiscard]] WideString Name(platform::IPackageId* identity);
[[nodiscard]] platform::PackageVersion Version(platform::IPackageId* identity);

// The path of the folder that the package is installed in, as the system has it.
[[nodiscard]] WideString InstalledPath(platform::IPackage* package);

// The path of the package's manifest in that folder, in the 260 characters that a path has; what does not fit
// is cut, so that the file will not be found.
[[nodiscard]] WideString ManifestPath(const WideString& installedPath);

} // namespace StorePackage
