#pragma once

#include "platform/WinRtPackages.h"
#include "standin/platform/ComObject.h"
#include "standin/platform/Unserved.h"

#include <inspectable.h>
#include <winstring.h>

#include <string>

namespace native {

template <typename Interface> class Inspectable : public standin::ComObject<Interface>
{
public:
    HRESULT STDMETHODCALLTYPE GetIids(ULONG*, IID**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel*) override { return E_NOTIMPL; }
};

// What a package of the system says of itself.
struct PackageFacts
{
    std::wstring familyName;
    platform::PackageVersion version{};
    std::wstring path;
};

[[nodiscard]] inline HRESULT Give(const std::wstring& text, HSTRING* value) noexcept
{
    return WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), value);
}

class SystemPackageId final : public standin::UnservedPackageId<Inspectable<platform::IPackageId>>
{
public:
    explicit SystemPackageId(const PackageFacts& facts) : m_facts(facts) {}

    HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) override { return Give(L"name", value); }
    HRESULT STDMETHODCALLTYPE get_Version(platform::PackageVersion* value) override
    {
        *value = m_facts.version;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_FullName(HSTRING* value) override { return Give(L"full name", value); }
    HRESULT STDMETHODCALLTYPE get_FamilyName(HSTRING* value) override
    {
        return Give(m_facts.familyName, value);
    }

private:
    PackageFacts m_facts;
};

class InstalledFolder final : public standin::UnservedStorageItem<Inspectable<platform::IStorageItem>>
{
public:
    explicit InstalledFolder(std::wstring path) : m_path(std::move(path)) {}

    HRESULT STDMETHODCALLTYPE get_Path(HSTRING* value) override { return Give(m_path, value); }

private:
    std::wstring m_path;
};

// The default interface of a package's folder, which is asked for the other.
class FolderDoor final : public Inspectable<platform::IStorageFolder>
{
public:
    explicit FolderDoor(std::wstring path) : m_path(std::move(path)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        return IsEqualIID(id, __uuidof(platform::IStorageItem))
                   ? standin::CreateComObject<InstalledFolder>(id, object, m_path)
                   : Inspectable::QueryInterface(id, object);
    }

private:
    std::wstring m_path;
};

class SystemPackage final : public Inspectable<platform::IPackage>
{
public:
    explicit SystemPackage(PackageFacts facts) : m_facts(std::move(facts)) {}

    HRESULT STDMETHODCALLTYPE get_Id(platform::IPackageId** value) override
    {
        return standin::MakeObject<SystemPackageId>(value, m_facts);
    }
    HRESULT STDMETHODCALLTYPE get_InstalledLocation(platform::IStorageFolder** value) override
    {
        return standin::MakeObject<FolderDoor>(value, m_facts.path);
    }
    HRESULT STDMETHODCALLTYPE get_IsFramework(boolean*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Dependencies(platform::IPackageVectorView**) override { return E_NOTIMPL; }

private:
    PackageFacts m_facts;
};

} // namespace native
