#include "manifest/StorePackage.h"

#include "common/HString.h"
#include "common/WinRtError.h"

#include <cstdio>

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t kManifestFile[] = L"AppxManifest.xml";

// The text that a getter of the object hands out.
template <typename Object>
WideString Text(Object* object, HRESULT (STDMETHODCALLTYPE Object::*getter)(HSTRING*))
{
    HString text;
    ThrowIfFailed((object->*getter)(text.Put()));
    return text.c_str();
}

} // namespace

namespace StorePackage {

ComPtr<platform::IPackageId> Identity(platform::IPackage* package)
{
    ComPtr<platform::IPackageId> identity;
    ThrowIfFailed(package->get_Id(identity.GetAddressOf()));
    return identity;
}

WideString FamilyName(platform::IPackageId* identity)
{
    return Text(identity, &platform::IPackageId::get_FamilyName);
}

WideString FullName(platform::IPackageId* identity)
{
    return Text(identity, &platform::IPackageId::get_FullName);
}

WideString Name(platform::IPackageId* identity)
{
    return Text(identity, &platform::IPackageId::get_Name);
}

platform::PackageVersion Version(platform::IPackageId* identity)
{
    platform::PackageVersion version{};
    ThrowIfFailed(identity->get_Version(&version));
    return version;
}

WideString InstalledPath(platform::IPackage* package)
{
    ComPtr<platform::IStorageFolder> folder;
    ThrowIfFailed(package->get_InstalledLocation(folder.GetAddressOf()));
    ComPtr<platform::IStorageItem> item;
    ThrowIfFailed(folder->QueryInterface(IID_PPV_ARGS(item.GetAddressOf())));
    return Text(item.Get(), &platform::IStorageItem::get_Path);
}

WideString ManifestPath(const WideString& installedPath)
{
    wchar_t path[MAX_PATH];
    _snwprintf_s(path, MAX_PATH, _TRUNCATE, L"%s\\%s", installedPath.c_str(), kManifestFile);
    return path;
}

} // namespace StorePackage
