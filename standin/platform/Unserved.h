#pragma once

#include "platform/WinRtPackages.h"

#include <windows.h>

// The methods of the platform's objects that the library never calls: each answers what NotImplemented() of
// its base says. For the stand-in's objects and for the fakes of the unit tests.
namespace standin {

template <typename Base> class UnservedPackageId : public Base
{
public:
    using Base::Base;

    HRESULT STDMETHODCALLTYPE get_Architecture(INT32*) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_ResourceId(HSTRING*) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_Publisher(HSTRING*) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_PublisherId(HSTRING*) override { return this->NotImplemented(); }
};

template <typename Base> class UnservedStorageItem : public Base
{
public:
    using Base::Base;

    HRESULT STDMETHODCALLTYPE RenameAsyncOverloadDefaultOptions(HSTRING, void**) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE RenameAsync(HSTRING, INT32, void**) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE DeleteAsyncOverloadDefaultOptions(void**) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE DeleteAsync(INT32, void**) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetBasicPropertiesAsync(void**) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_Name(HSTRING*) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_Attributes(UINT32*) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_DateCreated(INT64*) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE IsOfType(UINT32, boolean*) override { return this->NotImplemented(); }
};

template <typename Base> class UnservedPackageIterator : public Base
{
public:
    using Base::Base;

    HRESULT STDMETHODCALLTYPE GetMany(UINT32, platform::IPackage**, UINT32*) override
    {
        return this->NotImplemented();
    }
};

template <typename Base> class UnservedPackageList : public Base
{
public:
    using Base::Base;

    HRESULT STDMETHODCALLTYPE IndexOf(platform::IPackage*, UINT32*, boolean*) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE GetMany(UINT32, UINT32, platform::IPackage**, UINT32*) override
    {
        return this->NotImplemented();
    }
};

template <typename Base> class UnservedPackageManager : public Base
{
public:
    using Base::Base;
    using Packages = platform::IPackageIterable;

    HRESULT STDMETHODCALLTYPE AddPackageAsync() override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE UpdatePackageAsync() override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE RemovePackageAsync() override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE StagePackageAsync() override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE RegisterPackageAsync() override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE FindPackages(Packages**) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE FindPackagesByNamePublisher(HSTRING, HSTRING, Packages**) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdNamePublisher(HSTRING, HSTRING, HSTRING,
                                                                        Packages**) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE FindUsers(HSTRING, void**) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE SetPackageState(HSTRING, INT32) override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE FindPackageByPackageFullName(HSTRING, platform::IPackage**) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE CleanupPackageForUserAsync() override { return this->NotImplemented(); }
    HRESULT STDMETHODCALLTYPE FindPackagesByPackageFamilyName(HSTRING, Packages**) override
    {
        return this->NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE FindPackageByUserSecurityIdPackageFullName(HSTRING, HSTRING,
                                                                         platform::IPackage**) override
    {
        return this->NotImplemented();
    }
};

} // namespace standin
