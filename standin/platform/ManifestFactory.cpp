#include "standin/platform/ManifestFactory.h"

#include "platform/PackageManifest.h"
#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/platform/ServedObject.h"
#include "standin/store/PackageStore.h"

#include <algorithm>
#include <cwchar>
#include <memory>
#include <string>
#include <utility>

namespace standin {

namespace {

using ManifestPointer = std::shared_ptr<const Manifest>;

constexpr auto outOfBounds = static_cast<HRESULT>(0x8000000B); // E_BOUNDS

// The names that the platform knows, to the letter; any other is refused.
constexpr const wchar_t* valueNames[] = {
    L"AppListEntry",
    L"BackgroundColor",
    L"DefaultSize",
    L"Description",
    L"DisplayName",
    L"EntryPoint",
    L"Executable",
    L"ForegroundText",
    L"Id",
    L"LockScreenLogo",
    L"LockScreenNotification",
    L"Logo",
    L"MinWidth",
    L"ShortName",
    L"SmallLogo",
    L"Square150x150Logo",
    L"Square30x30Logo",
    L"Square310x310Logo",
    L"Square44x44Logo",
    L"Square70x70Logo",
    L"Square71x71Logo",
    L"StartPage",
    L"Tall150x310Logo",
    L"VisualGroup",
    L"WideLogo",
    L"Wide310x150Logo",
};

bool IsValueName(const wchar_t* name) noexcept
{
    for (const wchar_t* known : valueNames) {
        if (std::wcscmp(known, name) == 0) {
            return true;
        }
    }
    return false;
}

// In memory that the caller frees with CoTaskMemFree.
HRESULT GiveCopy(const std::wstring& text, wchar_t** copy) noexcept
{
    *copy = static_cast<wchar_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
    if (!*copy) {
        return E_OUTOFMEMORY;
    }
    std::copy_n(text.c_str(), text.size() + 1, *copy);
    return S_OK;
}

// The number of an application, from 1, is what the switches speak of.
bool IsAsked(Setting setting, size_t place) noexcept
{
    return GetSetting(setting) == place + 1;
}

class Application final : public ServedObject<platform::IAppxManifestApplication>
{
public:
    Application(ManifestPointer manifest, size_t place) noexcept
        : m_manifest(std::move(manifest)), m_place(place)
    {
    }

    HRESULT STDMETHODCALLTYPE GetStringValue(const wchar_t* name, wchar_t** value) override
    {
        return Give(value, [&] {
            if (!name) {
                return E_POINTER;
            }
            if (!IsValueName(name)) {
                return E_INVALIDARG;
            }
            if (IsAsked(Setting::FailManifestStringAt, m_place)) {
                return E_FAIL;
            }
            const std::wstring* text = m_manifest->applications[m_place].Find(name);
            return text ? GiveCopy(*text, value) : S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE GetAppUserModelId(wchar_t** appUserModelId) override
    {
        return Give(appUserModelId, [&] {
            // The family is made of the publisher, which only the store knows the short form of.
            const ManifestApplication& application = m_manifest->applications[m_place];
            for (const auto& package : ReadPackageStore()) {
                if (EqualIgnoringCase(package->manifest.name, m_manifest->name) &&
                    package->manifest.publisher == m_manifest->publisher) {
                    return GiveCopy(package->UserModelId(application), appUserModelId);
                }
            }
            return E_NOTIMPL;
        });
    }

private:
    ManifestPointer m_manifest;
    size_t m_place;
};

class Applications final : public ServedObject<platform::IAppxManifestApplicationsEnumerator>
{
public:
    explicit Applications(ManifestPointer manifest) noexcept : m_manifest(std::move(manifest)) {}

    HRESULT STDMETHODCALLTYPE GetCurrent(platform::IAppxManifestApplication** application) override
    {
        return Give(application, [&] {
            if (m_place >= m_manifest->applications.size()) {
                return outOfBounds;
            }
            return IsAsked(Setting::FailManifestCurrentAt, m_place)
                       ? E_FAIL
                       : MakeObject<Application>(application, m_manifest, m_place);
        });
    }

    HRESULT STDMETHODCALLTYPE GetHasCurrent(BOOL* hasCurrent) override
    {
        return Give(hasCurrent, [&] {
            *hasCurrent = m_place < m_manifest->applications.size();
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE MoveNext(BOOL* hasNext) override
    {
        return Give(hasNext, [&] {
            if (m_place >= m_manifest->applications.size()) {
                return outOfBounds;
            }
            if (IsAsked(Setting::FailManifestMoveNextAt, m_place)) {
                return E_FAIL;
            }
            ++m_place;
            return GetHasCurrent(hasNext);
        });
    }

private:
    ManifestPointer m_manifest;
    size_t m_place = 0;
};

class ManifestReader final : public ServedObject<platform::IAppxManifestReader>
{
public:
    ManifestReader(ManifestPointer manifest, IStream* stream) noexcept
        : m_manifest(std::move(manifest)), m_stream(stream)
    {
        m_stream->AddRef();
    }

    HRESULT STDMETHODCALLTYPE GetPackageId(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProperties(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPackageDependencies(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCapabilities(UINT32*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetResources(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDeviceCapabilities(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPrerequisite(const wchar_t*, UINT64*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE
    GetApplications(platform::IAppxManifestApplicationsEnumerator** applications) override
    {
        return Give(applications, [&] {
            const HRESULT failure = GetFailure(Setting::FailManifestApplications);
            return FAILED(failure) ? failure : MakeObject<Applications>(applications, m_manifest);
        });
    }

    HRESULT STDMETHODCALLTYPE GetStream(IStream** manifest) override
    {
        return Give(manifest, [&] {
            m_stream->AddRef();
            *manifest = m_stream;
            return S_OK;
        });
    }

private:
    ~ManifestReader() override { m_stream->Release(); }

    ManifestPointer m_manifest;
    IStream* m_stream;
};

class ManifestFactory final : public ServedObject<platform::IAppxFactory>
{
public:
    HRESULT STDMETHODCALLTYPE CreatePackageWriter() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreatePackageReader() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE CreateManifestReader(IStream* stream,
                                                   platform::IAppxManifestReader** reader) override
    {
        return Give(reader, [&] {
            if (!stream) {
                return E_POINTER;
            }
            const HRESULT failure = GetFailure(Setting::FailManifestReader);
            if (FAILED(failure)) {
                return failure;
            }
            const auto manifest = std::make_shared<Manifest>();
            const HRESULT hr = ReadManifest(stream, *manifest);
            return SUCCEEDED(hr) ? MakeObject<ManifestReader>(reader, manifest, stream) : hr;
        });
    }

    HRESULT STDMETHODCALLTYPE CreateBlockMapReader() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateValidatedBlockMapReader() override { return E_NOTIMPL; }
};

} // namespace

HRESULT CreateManifestFactory(REFIID interfaceId, void** object) noexcept
{
    const HRESULT failure = GetFailure(Setting::FailManifestFactory);
    return FAILED(failure) ? failure : CreateComObject<ManifestFactory>(interfaceId, object);
}

} // namespace standin
