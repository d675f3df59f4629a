#pragma once

#include "common/WinRtError.h"
#include "platform/WinRtPackages.h"

#include <wrl/client.h>

// The system's package manager and the collections of packages that it hands out. Each function throws a
// WinRtError when the platform does not answer. The calling thread is in an apartment, and what it is handed
// out is released before that is left.
namespace SystemPackages {

[[nodiscard]] Microsoft::WRL::ComPtr<platform::IPackageManager> ActivateManager();

// The packages that are installed for the current user: all of them, or those of one family.
[[nodiscard]] Microsoft::WRL::ComPtr<platform::IPackageIterable> All(platform::IPackageManager* manager);
[[nodiscard]] Microsoft::WRL::ComPtr<platform::IPackageIterable> OfFamily(platform::IPackageManager* manager,
                                                                          const wchar_t* familyName);

// The first package of a collection, or none. The others are not looked at.
[[nodiscard]] Microsoft::WRL::ComPtr<platform::IPackage> First(platform::IPackageIterable* packages);

// Calls visit(package) for each package of the collection, in its order, until there are no more or
// isStopped(), which is asked before each package, returns true.
template <typename IsStopped, typename Visit>
void ForEach(platform::IPackageIterable* packages, IsStopped isStopped, Visit visit)
{
    Microsoft::WRL::ComPtr<platform::IPackageIterator> iterator;
    ThrowIfFailed(packages->First(iterator.GetAddressOf()));
    boolean hasCurrent = 0;
    ThrowIfFailed(iterator->get_HasCurrent(&hasCurrent));
    while (hasCurrent && !isStopped()) {
        Microsoft::WRL::ComPtr<platform::IPackage> package;
        ThrowIfFailed(iterator->get_Current(package.GetAddressOf()));
        visit(package.Get());
        ThrowIfFailed(iterator->MoveNext(&hasCurrent));
    }
}

} // namespace SystemPackages
