#pragma once

// The Windows Runtime's package objects. Some toolchains' headers lack them, or have them in a form that does
// not compile, so these declarations are used with every toolchain. Only what the library calls has its real
// arguments; the other methods hold their places in the tables of functions.

#include "platform/InterfaceId.h"

#include <windows.h>

#include <hstring.h>
#include <inspectable.h>

namespace platform {

struct IPackage;
struct IPackageVectorView;

struct PackageVersion
{
    UINT16 Major;
    UINT16 Minor;
    UINT16 Build;
    UINT16 Revision;
};

QANH_INTERFACE("1adb665e-37c7-4790-9980-dd7ae74e8bb2")
IPackageId : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE get_Name(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Version(PackageVersion * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Architecture(INT32 * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ResourceId(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Publisher(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_PublisherId(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FullName(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FamilyName(HSTRING * value) = 0;
};

// The default interface of a package's installed location; it is asked for IStorageItem.
QANH_INTERFACE("72d1cb78-b3ef-4f75-a80b-6fd9dae2944b")
IStorageFolder : public IInspectable{};

QANH_INTERFACE("4207a996-ca2f-42f7-bde8-8b10457a7f30")
IStorageItem : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE RenameAsyncOverloadDefaultOptions(HSTRING name, void** operation) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenameAsync(HSTRING name, INT32 option, void** operation) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteAsyncOverloadDefaultOptions(void** operation) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteAsync(INT32 option, void** operation) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBasicPropertiesAsync(void** operation) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Name(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Path(HSTRING * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Attributes(UINT32 * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_DateCreated(INT64 * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsOfType(UINT32 type, boolean * value) = 0;
};

QANH_INTERFACE("163c792f-bd75-413c-bf23-b1fe7b95d825")
IPackage : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE get_Id(IPackageId * *value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_InstalledLocation(IStorageFolder * *value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_IsFramework(boolean * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Dependencies(IPackageVectorView * *value) = 0;
};

// The collections of packages are always had from another object, never asked for by an ID.

struct IPackageIterator : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE get_Current(IPackage** current) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* hasCurrent) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveNext(boolean* hasCurrent) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMany(UINT32 capacity, IPackage** values, UINT32* actual) = 0;
};

struct IPackageIterable : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE First(IPackageIterator** first) = 0;
};

struct IPackageVectorView : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, IPackage** item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) = 0;
    virtual HRESULT STDMETHODCALLTYPE IndexOf(IPackage* value, UINT32* index, boolean* found) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMany(UINT32 start, UINT32 capacity, IPackage** values,
                                              UINT32* actual) = 0;
};

QANH_INTERFACE("9a7d4b65-5e8f-4fc7-a2e5-7f6925cb8b53")
IPackageManager : public IInspectable
{
    virtual HRESULT STDMETHODCALLTYPE AddPackageAsync() = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdatePackageAsync() = 0;
    virtual HRESULT STDMETHODCALLTYPE RemovePackageAsync() = 0;
    virtual HRESULT STDMETHODCALLTYPE StagePackageAsync() = 0;
    virtual HRESULT STDMETHODCALLTYPE RegisterPackageAsync() = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackages(IPackageIterable * *packages) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityId(HSTRING userSecurityId,
                                                                   IPackageIterable * *packages) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackagesByNamePublisher(HSTRING name, HSTRING publisher,
                                                                  IPackageIterable * *packages) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdNamePublisher(
        HSTRING userSecurityId, HSTRING name, HSTRING publisher, IPackageIterable * *packages) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindUsers(HSTRING packageFullName, void** users) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPackageState(HSTRING packageFullName, INT32 state) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackageByPackageFullName(HSTRING packageFullName,
                                                                   IPackage * *package) = 0;
    virtual HRESULT STDMETHODCALLTYPE CleanupPackageForUserAsync() = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackagesByPackageFamilyName(HSTRING packageFamilyName,
                                                                      IPackageIterable * *packages) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdPackageFamilyName(
        HSTRING userSecurityId, HSTRING packageFamilyName, IPackageIterable * *packages) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPackageByUserSecurityIdPackageFullName(
        HSTRING userSecurityId, HSTRING packageFullName, IPackage * *package) = 0;
};

} // namespace platform

QANH_INTERFACE_ID(platform::IPackageId, 0x1adb665e, 0x37c7, 0x4790, 0x99, 0x80, 0xdd, 0x7a, 0xe7, 0x4e, 0x8b,
                  0xb2)
QANH_INTERFACE_ID(platform::IStorageFolder, 0x72d1cb78, 0xb3ef, 0x4f75, 0xa8, 0x0b, 0x6f, 0xd9, 0xda, 0xe2,
                  0x94, 0x4b)
QANH_INTERFACE_ID(platform::IStorageItem, 0x4207a996, 0xca2f, 0x42f7, 0xbd, 0xe8, 0x8b, 0x10, 0x45, 0x7a,
                  0x7f, 0x30)
QANH_INTERFACE_ID(platform::IPackage, 0x163c792f, 0xbd75, 0x413c, 0xbf, 0x23, 0xb1, 0xfe, 0x7b, 0x95, 0xd8,
                  0x25)
QANH_INTERFACE_ID(platform::IPackageManager, 0x9a7d4b65, 0x5e8f, 0x4fc7, 0xa2, 0xe5, 0x7f, 0x69, 0x25, 0xcb,
                  0x8b, 0x53)
