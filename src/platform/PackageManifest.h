#pragma once

// The system's reader for package manifests. Some toolchains' headers lack it, so these declarations are used
// with every toolchain. Only what the library calls has its real arguments; the other methods hold their
// places in the tables of functions.

#include "platform/InterfaceId.h"

#include <windows.h>

#include <objidl.h>

namespace platform {

QANH_INTERFACE("5da89bf4-3773-46be-b650-7e744863b7e8")
IAppxManifestApplication : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetStringValue(const wchar_t* name, wchar_t** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAppUserModelId(wchar_t * *appUserModelId) = 0;
};

QANH_INTERFACE("9eb8a55a-f04b-4d0d-808d-686185d4847a")
IAppxManifestApplicationsEnumerator : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetCurrent(IAppxManifestApplication * *application) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHasCurrent(BOOL * hasCurrent) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveNext(BOOL * hasNext) = 0;
};

QANH_INTERFACE("4e1bd148-55a0-4480-a3d1-15544710637c")
IAppxManifestReader : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetPackageId(void** packageId) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperties(void** properties) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPackageDependencies(void** dependencies) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCapabilities(UINT32 * capabilities) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetResources(void** resources) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDeviceCapabilities(void** capabilities) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPrerequisite(const wchar_t* name, UINT64* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetApplications(IAppxManifestApplicationsEnumerator *
                                                      *applications) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStream(IStream * *manifest) = 0;
};

QANH_INTERFACE("beb94909-e451-438b-b5a7-d79e767b75d8")
IAppxFactory : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CreatePackageWriter() = 0;
    virtual HRESULT STDMETHODCALLTYPE CreatePackageReader() = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateManifestReader(IStream * manifest,
                                                           IAppxManifestReader * *reader) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBlockMapReader() = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateValidatedBlockMapReader() = 0;
};

} // namespace platform

QANH_INTERFACE_ID(platform::IAppxManifestApplication, 0x5da89bf4, 0x3773, 0x46be, 0xb6, 0x50, 0x7e, 0x74,
                  0x48, 0x63, 0xb7, 0xe8)
QANH_INTERFACE_ID(platform::IAppxManifestApplicationsEnumerator, 0x9eb8a55a, 0xf04b, 0x4d0d, 0x80, 0x8d, 0x68,
                  0x61, 0x85, 0xd4, 0x84, 0x7a)
QANH_INTERFACE_ID(platform::IAppxManifestReader, 0x4e1bd148, 0x55a0, 0x4480, 0xa3, 0xd1, 0x15, 0x54, 0x47,
                  0x10, 0x63, 0x7c)
QANH_INTERFACE_ID(platform::IAppxFactory, 0xbeb94909, 0xe451, 0x438b, 0xb5, 0xa7, 0xd7, 0x9e, 0x76, 0x7b,
                  0x75, 0xd8)

namespace platform {

// The class whose object makes manifest readers.
inline constexpr CLSID kAppxFactoryClass = {
    0x5842a140, 0xff9f, 0x4166, {0x8f, 0x5c, 0x62, 0xf5, 0xb7, 0xb0, 0xc7, 0x81}};

} // namespace platform
