#pragma once

#include "Platform.h"
#include "platform/PackageManifest.h"
#include "standin/platform/ComObject.h"

#include <functional>

namespace native {

// What the system's manifest interfaces answer: each is asked at a call of that name. One at a time.
struct SystemManifest
{
    std::function<HRESULT()> open; // the reader, and then the list
    std::function<HRESULT(BOOL* hasCurrent)> getHasCurrent;
    std::function<HRESULT()> getCurrent;
    std::function<HRESULT(wchar_t** value)> getDisplayName;
    std::function<HRESULT(BOOL* hasNext)> moveNext;

    static inline int s_alive = 0; // of the objects
};

template <typename Interface> class SystemManifestObject : public standin::ComObject<Interface>
{
public:
    explicit SystemManifestObject(const SystemManifest& answers) : m_answers(answers)
    {
        ++SystemManifest::s_alive;
    }

protected:
    ~SystemManifestObject() override { --SystemManifest::s_alive; }

    // Makes the object, when that does not fail.
    template <typename Object, typename Made> HRESULT Give(HRESULT hr, Made** made) const
    {
        return FAILED(hr) ? hr : standin::MakeObject<Object>(made, m_answers);
    }

    const SystemManifest& m_answers;
};

class ManifestApplication final : public SystemManifestObject<platform::IAppxManifestApplication>
{
public:
    using SystemManifestObject::SystemManifestObject;

    HRESULT STDMETHODCALLTYPE GetStringValue(const wchar_t*, wchar_t** value) override
    {
        return m_answers.getDisplayName(value);
    }
    HRESULT STDMETHODCALLTYPE GetAppUserModelId(wchar_t**) override { return E_NOTIMPL; }
};

class ManifestApplications final : public SystemManifestObject<platform::IAppxManifestApplicationsEnumerator>
{
public:
    using SystemManifestObject::SystemManifestObject;

    HRESULT STDMETHODCALLTYPE GetCurrent(platform::IAppxManifestApplication** application) override
    {
        return Give<ManifestApplication>(m_answers.getCurrent(), application);
    }
    HRESULT STDMETHODCALLTYPE GetHasCurrent(BOOL* hasCurrent) override
    {
        return m_answers.getHasCurrent(hasCurrent);
    }
    HRESULT STDMETHODCALLTYPE MoveNext(BOOL* hasNext) override { return m_answers.moveNext(hasNext); }
};

class ManifestReader final : public SystemManifestObject<platform::IAppxManifestReader>
{
public:
    using SystemManifestObject::SystemManifestObject;

    HRESULT STDMETHODCALLTYPE
    GetApplications(platform::IAppxManifestApplicationsEnumerator** applications) override
    {
        return Give<ManifestApplications>(m_answers.open(), applications);
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

class ManifestFactory final : public SystemManifestObject<platform::IAppxFactory>
{
public:
    using SystemManifestObject::SystemManifestObject;

    HRESULT STDMETHODCALLTYPE CreateManifestReader(IStream*, platform::IAppxManifestReader** reader) override
    {
        return Give<ManifestReader>(m_answers.open(), reader);
    }
    HRESULT STDMETHODCALLTYPE CreatePackageWriter() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreatePackageReader() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateBlockMapReader() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateValidatedBlockMapReader() override { return E_NOTIMPL; }
};

// The answers must live as long as the library reads manifests.
inline void SetSystemManifest(const SystemManifest& answers)
{
    TheHooks().makeAppxFactory = [&answers](void** factory) {
        return standin::MakeObject<ManifestFactory>(reinterpret_cast<ManifestFactory**>(factory), answers);
    };
}

} // namespace native
