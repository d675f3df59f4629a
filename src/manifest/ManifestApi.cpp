// The manifest reader that asks the system's own interfaces.

#include "catalog/Package.h"
#include "common/Apartment.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"
#include "common/WinRtError.h"
#include "manifest/ManifestReader.h"
#include "platform/PackageManifest.h"

#include <objbase.h>
#include <shlwapi.h>

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace {

// A manifest and its applications. Everything is held to the end: the file is the reader's alone until then.
struct OpenManifest
{
    ComPtr<platform::IAppxFactory> factory;
    ComPtr<IStream> stream;
    ComPtr<platform::IAppxManifestReader> reader;
    ComPtr<platform::IAppxManifestApplicationsEnumerator> applications;
};

HRESULT Open(const wchar_t* path, OpenManifest& manifest)
{
    HRESULT hr = CoCreateInstance(platform::kAppxFactoryClass, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_PPV_ARGS(manifest.factory.GetAddressOf()));
    if (FAILED(hr)) {
        return hr;
    }
    hr = SHCreateStreamOnFileEx(path, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, FALSE, nullptr,
                                manifest.stream.GetAddressOf());
    if (FAILED(hr)) {
        return hr;
    }
    hr = manifest.factory->CreateManifestReader(manifest.stream.Get(), manifest.reader.GetAddressOf());
    if (FAILED(hr)) {
        return hr;
    }
    return manifest.reader->GetApplications(manifest.applications.GetAddressOf());
}

// An application that does not answer is skipped.
void AddApplication(platform::IAppxManifestApplicationsEnumerator* applications, CQanhPackage* package)
{
    ComPtr<platform::IAppxManifestApplication> application;
    wchar_t* displayName = nullptr;
    if (SUCCEEDED(applications->GetCurrent(application.GetAddressOf())) &&
        SUCCEEDED(application->GetStringValue(L"DisplayName", &displayName))) {
        // Out of memory for one is logged there; the others are still read.
        (void)package->AddApplication(displayName, nullptr);
        CoTaskMemFree(displayName);
    }
}

HRESULT ReadApplications(const wchar_t* path, CQanhPackage* package)
{
    OpenManifest manifest;
    HRESULT hr = Open(path, manifest);
    platform::IAppxManifestApplicationsEnumerator* const applications = manifest.applications.Get();
    while (SUCCEEDED(hr)) {
        BOOL hasCurrent = FALSE;
        hr = applications->GetHasCurrent(&hasCurrent);
        if (FAILED(hr) || !hasCurrent) {
            break;
        }
        AddApplication(applications, package);
        BOOL hasNext = FALSE;
        hr = applications->MoveNext(&hasNext);
    }
    return hr;
}

} // namespace

HRESULT CQanhManifestReader::GetAppNameUsingAPI(const wchar_t* path, CQanhPackage* pPackage) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::GetAppNameUsingAPI";
    LogIn(kName);
    HRESULT hr = CheckStringAndPointer(path, pPackage);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    const HRESULT entered = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(entered) && entered != RPC_E_CHANGED_MODE) {
        return LogOut(kName, entered);
    }
    try {
        const ComApartment apartment(entered);
        hr = ReadApplications(path, pPackage);
    } catch (...) {
        return LogCaught(kName, E_FAIL);
    }
    return LogOut(kName, hr);
}
