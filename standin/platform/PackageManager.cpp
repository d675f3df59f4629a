#include "standin/platform/PackageManager.h"

#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/platform/PackageObjects.h"
#include "standin/platform/RuntimeObject.h"

#include <exception>
#include <utility>

namespace standin {

namespace {

// The packages of the store that are wanted, in its order.
template <typename IsWanted> HRESULT Find(IsWanted isWanted, platform::IPackageIterable** packages) noexcept
{
    if (!packages) {
        return E_POINTER;
    }
    *packages = nullptr;
    try {
        StorePackages found;
        for (auto& package : ReadPackageStore()) {
            if (isWanted(*package)) {
                found.push_back(package);
            }
        }
        return MakePackageCollection(std::move(found), packages);
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

class PackageManager final : public RuntimeObject<platform::IPackageManager>
{
public:
    HRESULT STDMETHODCALLTYPE AddPackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UpdatePackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RemovePackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE StagePackageAsync() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterPackageAsync() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE FindPackages(platform::IPackageIterable** packages) override
    {
        const HRESULT failure = GetFailure(Setting::FailFindAll);
        return FAILED(failure) ? failure : Find([](const StorePackage&) { return true; }, packages);
    }

    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityId(HSTRING userSecurityId,
                                                           platform::IPackageIterable** packages) override
    {
        const HRESULT failure = GetFailure(Setting::FailFindAll);
        if (FAILED(failure)) {
            return failure;
        }
        return IsCurrentUser(userSecurityId)
                   ? Find([](const StorePackage& package) { return package.isInstalled; }, packages)
                   : E_ACCESSDENIED;
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
        const HRESULT failure = GetFailure(Setting::FailFindFamily);
        if (FAILED(failure)) {
            return failure;
        }
        if (!IsCurrentUser(userSecurityId)) {
            return E_ACCESSDENIED;
        }
        try {
            const std::wstring familyName = TextOf(packageFamilyName);
            return Find(
                [&](const StorePackage& package) {
                    return package.isInstalled && EqualIgnoringCase(package.familyName, familyName);
                },
                packages);
        } catch (const std::exception&) {
            return E_OUTOFMEMORY;
        }
    }

    HRESULT STDMETHODCALLTYPE FindPackageByUserSecurityIdPackageFullName(HSTRING, HSTRING,
                                                                         platform::IPackage**) override
    {
        return E_NOTIMPL;
    }

private:
    // The packages of others are an administrator's affair.
    static bool IsCurrentUser(HSTRING userSecurityId) noexcept
    {
        return WindowsGetStringLen(userSecurityId) == 0;
    }
};

} // namespace

HRESULT CreatePackageManager(IInspectable** instance) noexcept
{
    const HRESULT failure = GetFailure(Setting::FailPackageManager);
    return FAILED(failure) ? failure : MakeObject<PackageManager>(instance);
}

} // namespace standin
