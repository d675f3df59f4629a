#include "standin/platform/Makers.h"

#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/platform/PackageObjects.h"
#include "standin/platform/RuntimeObject.h"
#include "standin/platform/Unserved.h"

#include <utility>

namespace standin {

namespace {

// The installed packages of the store that are wanted, in its order, for the current user only; the switch
// may ask for a failure.
template <typename IsWanted>
HRESULT Find(HSTRING userSecurityId, Setting failureSetting, IsWanted isWanted,
             platform::IPackageIterable** packages) noexcept
{
    return Give(packages, [&] {
        Check(GetFailure(failureSetting));
        Check(WindowsGetStringLen(userSecurityId) == 0 ? S_OK
                                                       : E_ACCESSDENIED); // others: an administrator's affair
        StorePackages found;
        for (auto& package : ReadPackageStore()) {
            if (package->isInstalled && isWanted(*package)) {
                found.push_back(package);
            }
        }
        return MakePackageCollection(std::move(found), packages);
    });
}

class PackageManager final : public UnservedPackageManager<RuntimeObject<platform::IPackageManager>>
{
public:
    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityId(HSTRING userSecurityId,
                                                           platform::IPackageIterable** packages) override
    {
        return Find(
            userSecurityId, Setting::FailFindAll, [](const StorePackage&) { return true; }, packages);
    }

    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdPackageFamilyName(
        HSTRING userSecurityId, HSTRING packageFamilyName, platform::IPackageIterable** packages) override
    {
        const std::wstring_view familyName = TextOf(packageFamilyName);
        const auto isOfFamily = [familyName](const StorePackage& package) {
            return EqualIgnoringCase(package.familyName, familyName);
        };
        return Find(userSecurityId, Setting::FailFindFamily, isOfFamily, packages);
    }
};

} // namespace

HRESULT CreatePackageManager(IInspectable** instance) noexcept
{
    const HRESULT failure = GetFailure(Setting::FailPackageManager);
    return FAILED(failure) ? failure : MakeObject<PackageManager>(instance);
}

} // namespace standin
