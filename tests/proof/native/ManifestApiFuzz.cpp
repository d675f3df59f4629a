// The reader that asks the system's interfaces takes whatever these answer: failures anywhere, names that are
// missing, empty or long, no applications or many.

#include "Fuzzing.h"
#include "Platform.h"
#include "catalog/Package.h"
#include "manifest/ManifestReader.h"
#include "platform/PackageManifest.h"
#include "standin/platform/ComObject.h"

const char fuzz::kName[] = "the reader by the system's interfaces";

namespace {

using fuzz::Check;
using standin::ComObject;

// What the objects answer; one document at a time.
proof::Bytes* s_bytes = nullptr;
int s_alive = 0;

HRESULT Answer()
{
    static constexpr HRESULT answers[] = {E_FAIL, E_OUTOFMEMORY, static_cast<HRESULT>(0x80080203)};
    const unsigned choice = s_bytes->Take();
    return choice < 20 ? answers[choice % 3] : S_OK;
}

template <typename Interface> class Counted : public ComObject<Interface>
{
public:
    Counted() { ++s_alive; }

protected:
    ~Counted() override { --s_alive; }
};

class Application final : public Counted<platform::IAppxManifestApplication>
{
public:
    HRESULT STDMETHODCALLTYPE GetStringValue(const wchar_t*, wchar_t** value) override
    {
        const HRESULT hr = Answer();
        if (FAILED(hr)) {
            return hr;
        }
        const unsigned length = s_bytes->TakeNumber() % 3000;
        // A success without a text, too.
        *value =
            length == 1 ? nullptr : static_cast<wchar_t*>(CoTaskMemAlloc((length + 1) * sizeof(wchar_t)));
        if (*value) {
            std::fill_n(*value, length, static_cast<wchar_t>(1 + s_bytes->TakeNumber() % 0xFFFF));
            (*value)[length] = L'\0';
        }
        return hr;
    }
    HRESULT STDMETHODCALLTYPE GetAppUserModelId(wchar_t**) override { return E_NOTIMPL; }
};

class Applications final : public Counted<platform::IAppxManifestApplicationsEnumerator>
{
public:
    HRESULT STDMETHODCALLTYPE GetCurrent(platform::IAppxManifestApplication** application) override
    {
        const HRESULT hr = Answer();
        return FAILED(hr) ? hr : standin::MakeObject<Application>(application);
    }
    HRESULT STDMETHODCALLTYPE GetHasCurrent(BOOL* hasCurrent) override
    {
        *hasCurrent = s_bytes->IsEmpty() ? FALSE : TRUE;
        return Answer();
    }
    HRESULT STDMETHODCALLTYPE MoveNext(BOOL* hasNext) override
    {
        *hasNext = s_bytes->Pick(2) == 0 ? FALSE : TRUE;
        return Answer();
    }
};

class Manifest final : public Counted<platform::IAppxManifestReader>
{
public:
    HRESULT STDMETHODCALLTYPE
    GetApplications(platform::IAppxManifestApplicationsEnumerator** applications) override
    {
        const HRESULT hr = Answer();
        return FAILED(hr) ? hr : standin::MakeObject<Applications>(applications);
    }
    HRESULT STDMETHODCALLTYPE GetPackageId(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProperties(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPackageDependencies(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCapabilities(UINT32*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetResources(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDeviceCapabilities(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPrerequisite(const wchar_t*, UINT64*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStream(IStream**) override { return E_NOTIMPL; }
};

class Factory final : public Counted<platform::IAppxFactory>
{
public:
    HRESULT STDMETHODCALLTYPE CreateManifestReader(IStream*, platform::IAppxManifestReader** reader) override
    {
        const HRESULT hr = Answer();
        return FAILED(hr) ? hr : standin::MakeObject<Manifest>(reader);
    }
    HRESULT STDMETHODCALLTYPE CreatePackageWriter() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreatePackageReader() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateBlockMapReader() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateValidatedBlockMapReader() override { return E_NOTIMPL; }
};

} // namespace

void fuzz::Run(proof::Bytes bytes)
{
    s_bytes = &bytes;
    native::SetFile(L"manifest", "");
    native::TheHooks().makeAppxFactory = [](void** factory) {
        return standin::MakeObject<Factory>(reinterpret_cast<Factory**>(factory));
    };
    const std::size_t limit = bytes.Pick(4) == 0 ? 2 : kListSizeLimit;
    CQanhPackage package(L"family", L"full name", L"name", RecordVersion(), limit);
    (void)CQanhManifestReader::GetAppNameUsingAPI(L"manifest", &package);
    Check(package.Apps().Size() <= limit, "a list keeps its limit");
    Check(s_alive == 0, "every object of the system is released");
}
