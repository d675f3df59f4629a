#pragma once

#include "platform/PackageManifest.h"
#include "support/Current.h"
#include "support/FakeObjects.h"

#include <objbase.h>
#include <shlwapi.h>

#include <algorithm>
#include <cwchar>
#include <optional>
#include <string>
#include <vector>

namespace manifest_test {

using namespace test;

class FakeApplication : public FakeUnknown<platform::IAppxManifestApplication>
{
public:
    FakeApplication(FakeObjects& owner, std::wstring displayName)
        : FakeUnknown(owner, "application"), m_displayName(std::move(displayName))
    {
    }

    HRESULT STDMETHODCALLTYPE GetStringValue(const wchar_t* name, wchar_t** value) override
    {
        const HRESULT hr = m_owner.Enter(this, "GetStringValue", L"(" + std::wstring(name) + L")");
        if (FAILED(hr)) {
            return hr;
        }
        const std::size_t size = (m_displayName.size() + 1) * sizeof(wchar_t);
        *value = static_cast<wchar_t*>(CoTaskMemAlloc(size));
        std::wmemcpy(*value, m_displayName.c_str(), m_displayName.size() + 1);
        s_values.push_back(*value);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetAppUserModelId(wchar_t**) override { return NotImplemented(); }

    static inline std::vector<const void*> s_values; // handed out and not freed yet

private:
    std::wstring m_displayName;
};

class FakeApplications : public FakeUnknown<platform::IAppxManifestApplicationsEnumerator>
{
public:
    FakeApplications(FakeObjects& owner, const std::vector<std::wstring>& displayNames)
        : FakeUnknown(owner, "applications")
    {
        for (const std::wstring& displayName : displayNames) {
            m_applications.push_back(owner.Make<FakeApplication>(displayName));
        }
    }

    HRESULT STDMETHODCALLTYPE GetCurrent(platform::IAppxManifestApplication** application) override
    {
        if (m_position >= m_applications.size()) {
            return NotImplemented("GetCurrent behind the end");
        }
        return Give("GetCurrent", m_applications[m_position], application);
    }
    HRESULT STDMETHODCALLTYPE GetHasCurrent(BOOL* hasCurrent) override
    {
        return GiveValue("GetHasCurrent", Has(), hasCurrent);
    }
    HRESULT STDMETHODCALLTYPE MoveNext(BOOL* hasNext) override
    {
        const HRESULT hr = m_owner.Enter(this, "MoveNext");
        if (SUCCEEDED(hr)) {
            ++m_position;
            *hasNext = Has();
        }
        return hr;
    }

private:
    [[nodiscard]] BOOL Has() const { return m_position < m_applications.size() ? TRUE : FALSE; }

    std::vector<FakeApplication*> m_applications;
    std::size_t m_position = 0;
};

class FakeManifestReader : public FakeUnknown<platform::IAppxManifestReader>
{
public:
    FakeManifestReader(FakeObjects& owner, const std::vector<std::wstring>& displayNames)
        : FakeUnknown(owner, "manifest reader"), m_applications(owner.Make<FakeApplications>(displayNames))
    {
    }

    HRESULT STDMETHODCALLTYPE GetPackageId(void**) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetProperties(void**) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetPackageDependencies(void**) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetCapabilities(UINT32*) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetResources(void**) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetDeviceCapabilities(void**) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE GetPrerequisite(const wchar_t*, UINT64*) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE
    GetApplications(platform::IAppxManifestApplicationsEnumerator** applications) override
    {
        return Give("GetApplications", m_applications, applications);
    }
    HRESULT STDMETHODCALLTYPE GetStream(IStream**) override { return NotImplemented(); }

private:
    FakeApplications* m_applications;
};

class FakeManifestFactory : public FakeUnknown<platform::IAppxFactory>
{
public:
    FakeManifestFactory(FakeObjects& owner, const std::vector<std::wstring>* displayNames)
        : FakeUnknown(owner, "manifest factory"), m_displayNames(displayNames)
    {
    }

    HRESULT STDMETHODCALLTYPE CreatePackageWriter() override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE CreatePackageReader() override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE CreateManifestReader(IStream* stream,
                                                   platform::IAppxManifestReader** reader) override
    {
        manifest.resize(4096);
        ULONG size = 0;
        stream->Read(manifest.data(), static_cast<ULONG>(manifest.size()), &size);
        manifest.resize(size);
        return Give("CreateManifestReader", m_owner.Make<FakeManifestReader>(*m_displayNames), reader);
    }
    HRESULT STDMETHODCALLTYPE CreateBlockMapReader() override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE CreateValidatedBlockMapReader() override { return NotImplemented(); }

    std::string manifest; // what the stream holds

private:
    const std::vector<std::wstring>* m_displayNames;
};

// The system's manifest reader for the library in this program, until the end of the scope: whatever the
// file, it declares applications of these display names. The thread's way into COM and out of it is the real
// one, and noted in the journal with the rest. One at a time.
class FakeManifest : private Current<FakeManifest>
{
public:
    FakeManifest()
        : factory(objects.Make<FakeManifestFactory>(&displayNames)),
          m_initialize("CoInitializeEx", Initialize), m_uninitialize("CoUninitialize", Uninitialize),
          m_create("CoCreateInstance", Create), m_openStream("SHCreateStreamOnFileEx", OpenStream),
          m_free("CoTaskMemFree", Free)
    {
        FakeApplication::s_values.clear();
    }

    // The texts that were handed out must be back by then.
    ~FakeManifest() { EXPECT_THAT(FakeApplication::s_values, ::testing::IsEmpty()); }

    FakeObjects objects;
    std::vector<std::wstring> displayNames;
    FakeManifestFactory* factory;
    // When set, COM is not entered and this is the answer.
    std::optional<HRESULT> initializeResult;

private:
    static HRESULT WINAPI Initialize(void* reserved, DWORD flags)
    {
        const HRESULT hr = s_current->initializeResult ? *s_current->initializeResult
                                                       : s_current->m_initialize.Original()(reserved, flags);
        s_current->objects.NoteResult("CoInitializeEx(" + std::to_string(flags) + ")", hr);
        return hr;
    }
    static void WINAPI Uninitialize()
    {
        s_current->objects.Note(s_current->objects.IsAnyHeld() ? "CoUninitialize too early"
                                                               : "CoUninitialize");
        s_current->m_uninitialize.Original()();
    }
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                                 void** object)
    {
        wchar_t text[39] = {};
        StringFromGUID2(classId, text, 39);
        const HRESULT hr = s_current->objects.EnterMaker(
            "CoCreateInstance", text + std::wstring(outer ? L" outer " : L" ") + std::to_wstring(context));
        if (FAILED(hr)) {
            return hr;
        }
        if (!IsEqualIID(interfaceId, __uuidof(platform::IAppxFactory))) {
            return E_NOINTERFACE;
        }
        s_current->factory->AddRef();
        *object = static_cast<platform::IAppxFactory*>(s_current->factory);
        return S_OK;
    }
    static HRESULT WINAPI OpenStream(const wchar_t* path, DWORD mode, DWORD attributes, BOOL create,
                                     IStream* pattern, IStream** stream)
    {
        wchar_t arguments[64];
        wsprintfW(arguments, L"(0x%X, %d, %d, %s)", mode, static_cast<int>(attributes), create,
                  pattern ? L"pattern" : L"null");
        const HRESULT hr = s_current->objects.Enter(nullptr, "SHCreateStreamOnFileEx", arguments);
        return FAILED(hr)
                   ? hr
                   : s_current->m_openStream.Original()(path, mode, attributes, create, pattern, stream);
    }
    static void WINAPI Free(void* memory)
    {
        auto& values = FakeApplication::s_values;
        values.erase(std::remove(values.begin(), values.end(), memory), values.end());
        s_current->m_free.Original()(memory);
    }

    friend Current<FakeManifest>;

    ImportPatch<decltype(&CoInitializeEx)> m_initialize;
    ImportPatch<decltype(&CoUninitialize)> m_uninitialize;
    ImportPatch<decltype(&CoCreateInstance)> m_create;
    ImportPatch<decltype(&SHCreateStreamOnFileEx)> m_openStream;
    ImportPatch<decltype(&CoTaskMemFree)> m_free;
};

} // namespace manifest_test
