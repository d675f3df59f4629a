#include "standin/platform/PackageManager.h"

#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/platform/PackageObjects.h"
#include "standin/platform/RuntimeObject.h"

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

class PackageManager final : public RuntimeObject<platform::IPackageManager>
{
public:
    HRESULT STDMETHODCALLTYPE AddPackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UpdatePackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RemovePackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE StagePackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterPackageAsync() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE FindPackages(platform::IPackageIterable**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityId(HSTRING userSecurityId,
                                                           platform::IPackageIterable** packages) override
    {
        return Find(
            userSecurityId, Setting::FailFindAll, [](const StorePackage&) { return true; }, packages);
    }

    HRESULT STDMETHODCALLTYPE FindPackagesByNamePublisher(HSTRING, HSTRING,
                                                          platform::IPackageIterable**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdNamePublisher(HSTRING, HSTRING, HSTRING,
                                                                        platform::IPackageIterable**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindUsers(HSTRING, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPackageState(HSTRING, INT32) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindPackageByPackageFullName(HSTRING, platform::IPackage**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CleanupPackageForUserAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindPackagesByPackageFamilyName(HSTRING, platform::IPackageIterable**) override
    {
        return E_NOTIMPL;
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

    HRESULT STDMETHODCALLTYPE FindPackageByUserSecurityIdPackageFullName(HSTRING, HSTRING,
                                                                         platform::IPackage**) override
    {
        return E_NOTIMPL;
    }
};

} // namespace

HRESULT CreatePackageManager(IInspectable** instance) noexcept
{
    const HRESULT failure = GetFailure(Setting::FailPackageManager);
    return FAILED(failure) ? failure : MakeObject<PackageManager>(instance);
}

} // namespace standin
