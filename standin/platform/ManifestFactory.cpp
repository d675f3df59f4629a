#include "standin/platform/Makers.h"

#include "platform/PackageManifest.h"
#include "standin/Settings.h"
#include "standin/platform/ServedObject.h"
#include "standin/store/PackageStore.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace standin {

namespace {

using ManifestPointer = std::shared_ptr<const Manifest>;

constexpr auto outOfBounds = static_cast<HRESULT>(0x8000000B); // E_BOUNDS

// The names that the platform knows, to the letter; any other is refused.
constexpr std::wstring_view valueNames[] = {
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

bool IsValueName(std::wstring_view name) noexcept
{
    return std::find(std::begin(valueNames), std::end(valueNames), name) != std::end(valueNames);
}

// In memory that the caller frees with CoTaskMemFree.
wchar_t* CopyOf(const std::wstring& text)
{
    auto* const copy = static_cast<wchar_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
    Check(copy ? S_OK : E_OUTOFMEMORY);
    std::copy_n(text.c_str(), text.size() + 1, copy);
    return copy;
}

// The number of an application, from 1, is what the switches speak of.
void FailAt(Setting setting, size_t place)
{
    Check(GetSetting(setting) == place + 1 ? E_FAIL : S_OK);
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
            Check(name ? S_OK : E_POINTER);
            Check(IsValueName(name) ? S_OK : E_INVALIDARG);
            FailAt(Setting::FailManifestStringAt, m_place);
            const std::wstring* text = m_manifest->applications[m_place].Find(name);
            *value = text ? CopyOf(*text) : nullptr;
        });
    }

    HRESULT STDMETHODCALLTYPE GetAppUserModelId(wchar_t**) override { return E_NOTIMPL; }

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
            CheckPlace();
            FailAt(Setting::FailManifestCurrentAt, m_place);
            return MakeObject<Application>(application, m_manifest, m_place);
        });
    }

    HRESULT STDMETHODCALLTYPE GetHasCurrent(BOOL* hasCurrent) override
    {
        return Give(hasCurrent, [&] { *hasCurrent = Has(); });
    }

    HRESULT STDMETHODCALLTYPE MoveNext(BOOL* hasNext) override
    {
        return Give(hasNext, [&] {
            CheckPlace();
            FailAt(Setting::FailManifestMoveNextAt, m_place);
            ++m_place;
            *hasNext = Has();
        });
    }

private:
    [[nodiscard]] bool Has() const noexcept { return m_place < m_manifest->applications.size(); }
    void CheckPlace() const { Check(Has() ? S_OK : outOfBounds); }

    ManifestPointer m_manifest;
    size_t m_place = 0;
};

class ManifestReader final : public ServedObject<platform::IAppxManifestReader>
{
public:
    explicit ManifestReader(ManifestPointer manifest) noexcept : m_manifest(std::move(manifest)) {}

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
            Check(GetFailure(Setting::FailManifestApplications));
            return MakeObject<Applications>(applications, m_manifest);
        });
    }

    HRESULT STDMETHODCALLTYPE GetStream(IStream**) override { return E_NOTIMPL; }

private:
    ManifestPointer m_manifest;
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
            Check(stream ? S_OK : E_POINTER);
            Check(GetFailure(Setting::FailManifestReader));
            const auto manifest = std::make_shared<Manifest>();
            Check(ReadManifest(stream, *manifest));
            return MakeObject<ManifestReader>(reader, manifest);
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
