#include "standin/platform/Classes.h"

#include "platform/PackageManifest.h"
#include "standin/platform/ActivationManager.h"
#include "standin/platform/AppVisibility.h"
#include "standin/platform/ManifestFactory.h"
#include "standin/platform/ServedObject.h"

#include <shobjidl.h>

#include <exception>
#include <string>

namespace standin {

namespace {

const ServedClass servedClasses[] = {
    {__uuidof(::AppVisibility), L"Stand-in app visibility", &CreateAppVisibility},
    {platform::kAppxFactoryClass, L"Stand-in manifest factory", &CreateManifestFactory},
    {__uuidof(ApplicationActivationManager), L"Stand-in activation manager", &CreateActivationManager},
};

class ClassFactory final : public ServedObject<IClassFactory>
{
public:
    explicit ClassFactory(const ServedClass& served) noexcept : m_served(served) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID interfaceId, void** object) override
    {
        return Give(object,
                    [&] { return outer ? CLASS_E_NOAGGREGATION : m_served.create(interfaceId, object); });
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; } // it never goes anyway

private:
    ~ClassFactory() override = default;

    const ServedClass& m_served;
};

std::wstring KeyOf(const ServedClass& served)
{
    wchar_t text[40] = L"";
    StringFromGUID2(served.classId, text, static_cast<int>(std::size(text)));
    return std::wstring(L"Software\\Classes\\CLSID\\") + text;
}

LSTATUS SetText(const std::wstring& key, const wchar_t* name, const wchar_t* text) noexcept
{
    const auto size = static_cast<DWORD>((wcslen(text) + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text, size);
}

LSTATUS Register(const ServedClass& served, const wchar_t* path)
{
    const std::wstring key = KeyOf(served);
    const std::wstring serverKey = key + L"\\InprocServer32";
    LSTATUS status = SetText(key, nullptr, served.name);
    if (status == ERROR_SUCCESS) {
        status = SetText(serverKey, nullptr, path);
    }
    return status == ERROR_SUCCESS ? SetText(serverKey, L"ThreadingModel", L"Both") : status;
}

} // namespace

HRESULT GetClassFactory(REFCLSID classId, REFIID interfaceId, void** object) noexcept
{
    if (!object) {
        return E_POINTER;
    }
    *object = nullptr;
    for (const ServedClass& served : servedClasses) {
        if (IsEqualCLSID(classId, served.classId)) {
            return CreateComObject<ClassFactory>(interfaceId, object, served);
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT RegisterClasses(const wchar_t* path) noexcept
{
    try {
        for (const ServedClass& served : servedClasses) {
            const LSTATUS status = Register(served, path);
            if (status != ERROR_SUCCESS) {
                return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
            }
        }
        return S_OK;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT UnregisterClasses() noexcept
{
    try {
        for (const ServedClass& served : servedClasses) {
            const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, KeyOf(served).c_str());
            if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
                return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
            }
        }
        return S_OK;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace standin
