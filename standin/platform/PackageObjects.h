#pragma once

#include "platform/WinRtPackages.h"
#include "standin/store/PackageStore.h"

#include <windows.h>

// The objects that the package manager hands out. They hold what was read when they were made, are agile, and
// give each property's fault when the package's package.ini asks for one.
namespace standin {

[[nodiscard]] HRESULT MakePackage(std::shared_ptr<const StorePackage> package,
                                  platform::IPackage** object) noexcept;

// A collection whose walks fail where the switches say so.
[[nodiscard]] HRESULT MakePackageCollection(StorePackages packages,
                                            platform::IPackageIterable** collection) noexcept;

[[nodiscard]] HRESULT MakePackageList(StorePackages packages, platform::IPackageVectorView** list) noexcept;

} // namespace standin
