#include "discovery/SystemPackages.h"

#include <activation.h>
#include <roapi.h>
#include <winstring.h>

#include <cwchar>

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t kManagerClass[] = L"Windows.Management.Deployment.PackageManager";

// The current user, to the find methods: the empty string.
constexpr HSTRING kCurrentUser = nullptr;

// A string for the length of a call into the Windows Runtime. It points into itself.
class HStringReference
{
public:
    explicit HStringReference(const wchar_t* text)
    {
        ThrowIfFailed(
            WindowsCreateStringReference(text, static_cast<UINT32>(std::wcslen(text)), &m_header, &m_string));
    }
    HStringReference(const HStringReference&) = delete;
    HStringReference& operator=(const HStringReference&) = delete;
    [[nodiscard]] HSTRING Get() const noexcept { return m_string; }

private:
    HSTRING_HEADER m_header{};
    HSTRING m_string = nullptr;
};

} // namespace

namespace SystemPackages {

ComPtr<platform::IPackageManager> ActivateManager()
{
    ComPtr<IActivationFactory> factory;
    ThrowIfFailed(
        RoGetActivationFactory(HStringReference(kManagerClass).Get(), IID_PPV_ARGS(factory.GetAddressOf())));
    ComPtr<IInspectable> instance;
    ThrowIfFailed(factory->ActivateInstance(instance.GetAddressOf()));
    ComPtr<platform::IPackageManager> manager;
    ThrowIfFailed(instance->QueryInterface(IID_PPV_ARGS(manager.GetAddressOf())));
    return manager;
}

ComPtr<platform::IPackageIterable> All(platform::IPackageManager* manager)
{
    ComPtr<platform::IPackageIterable> packages;
    ThrowIfFailed(manager->FindPackagesByUserSecurityId(kCurrentUser, packages.GetAddressOf()));
    return packages;
}

ComPtr<platform::IPackageIterable> OfFamily(platform::IPackageManager* manager, const wchar_t* familyName)
{
    ComPtr<platform::IPackageIterable> packages;
    ThrowIfFailed(manager->FindPackagesByUserSecurityIdPackageFamilyName(
        kCurrentUser, HStringReference(familyName).Get(), packages.GetAddressOf()));
    return packages;
}

ComPtr<platform::IPackage> First(platform::IPackageIterable* packages)
{
    ComPtr<platform::IPackageIterator> iterator;
    ThrowIfFailed(packages->First(iterator.GetAddressOf()));
    boolean hasCurrent = 0;
    ThrowIfFailed(iterator->get_HasCurrent(&hasCurrent));
    ComPtr<platform::IPackage> package;
    if (hasCurrent) {
        ThrowIfFailed(iterator->get_Current(package.GetAddressOf()));
    }
    return package;
}

} // namespace SystemPackages
