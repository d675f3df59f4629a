#pragma once

#include "platform/WinRtPackages.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <activation.h>
#include <roapi.h>
#include <winstring.h>

#include <functional>
#include <set>
#include <string>

namespace discovery_test {

// The system's package manager as a refresh pass sees it, until the end of the scope: no packages of the user
// at all, and families that are installed, or fail to be found, by their names. One at a time.
class FakeStore
{
public:
    FakeStore()
        : m_patch("RoGetActivationFactory", [](HSTRING, REFIID, void** factory) -> HRESULT {
              *factory = s_current->isAvailable ? &s_current->m_factory : nullptr;
              return s_current->isAvailable ? S_OK : REGDB_E_CLASSNOTREG;
          })
    {
        s_current = this;
    }
    FakeStore(const FakeStore&) = delete;
    FakeStore& operator=(const FakeStore&) = delete;

    bool isAvailable = true;
    std::set<std::wstring> installed;
    std::set<std::wstring> failing;
    // Called when all packages, or those of a family, are asked for.
    std::function<void()> onAll = [] {};
    std::function<void(const std::wstring& familyName)> onFamily = [](const std::wstring&) {};

private:
    // An object that lives as long as the store.
    template <typename Interface> class Lasting : public Interface
    {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
        {
            *object = this;
            return S_OK;
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE GetIids(ULONG*, IID**) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING*) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel*) override { return E_NOTIMPL; }
    };

    class Package : public Lasting<platform::IPackage>
    {
        HRESULT STDMETHODCALLTYPE get_Id(platform::IPackageId**) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE get_InstalledLocation(platform::IStorageFolder**) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE get_IsFramework(boolean*) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE get_Dependencies(platform::IPackageVectorView**) override
        {
            return E_NOTIMPL;
        }
    };

    // One package or none.
    class Iterator : public Lasting<platform::IPackageIterator>
    {
    public:
        bool hasPackage = false;

    private:
        HRESULT STDMETHODCALLTYPE get_Current(platform::IPackage** current) override
        {
            *current = &m_package;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* hasCurrent) override
        {
            *hasCurrent = hasPackage;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE MoveNext(boolean* hasCurrent) override
        {
            *hasCurrent = hasPackage = false;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE GetMany(UINT32, platform::IPackage**, UINT32*) override
        {
            return E_NOTIMPL;
        }

        Package m_package;
    };

    class Iterable : public Lasting<platform::IPackageIterable>
    {
    public:
        Iterator iterator;

    private:
        HRESULT STDMETHODCALLTYPE First(platform::IPackageIterator** first) override
        {
            *first = &iterator;
            return S_OK;
        }
    };

    class PackageManager : public Lasting<platform::IPackageManager>
    {
        using Iterables = platform::IPackageIterable**;

        HRESULT STDMETHODCALLTYPE AddPackageAsync() override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE UpdatePackageAsync() override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE RemovePackageAsync() override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE StagePackageAsync() override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE RegisterPackageAsync() override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE FindPackages(Iterables) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityId(HSTRING, Iterables packages) override
        {
            s_current->onAll();
            m_iterable.iterator.hasPackage = false;
            *packages = &m_iterable;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE FindPackagesByNamePublisher(HSTRING, HSTRING, Iterables) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdNamePublisher(HSTRING, HSTRING, HSTRING,
                                                                            Iterables) override
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
        HRESULT STDMETHODCALLTYPE FindPackagesByPackageFamilyName(HSTRING, Iterables) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdPackageFamilyName(HSTRING, HSTRING name,
                                                                                Iterables packages) override
        {
            const std::wstring familyName = WindowsGetStringRawBuffer(name, nullptr);
            s_current->onFamily(familyName);
            if (s_current->failing.contains(familyName)) {
                return E_ACCESSDENIED;
            }
            m_iterable.iterator.hasPackage = s_current->installed.contains(familyName);
            *packages = &m_iterable;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE FindPackageByUserSecurityIdPackageFullName(HSTRING, HSTRING,
                                                                             platform::IPackage**) override
        {
            return E_NOTIMPL;
        }

        Iterable m_iterable;
    };

    class Factory : public Lasting<IActivationFactory>
    {
        HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override
        {
            *instance = &s_current->m_manager;
            return S_OK;
        }
    };

    static inline FakeStore* s_current = nullptr;
    Factory m_factory;
    PackageManager m_manager;
    test::ImportPatch<decltype(&RoGetActivationFactory)> m_patch;
};

} // namespace discovery_test
