#include "standin/platform/RuntimeClasses.h"

#include "standin/Settings.h"
#include "standin/platform/PackageManager.h"
#include "standin/platform/RuntimeObject.h"

#include <exception>
#include <string>

namespace standin {

namespace {

const ServedRuntimeClass servedClasses[] = {
    {packageManagerClass, &CreatePackageManager},
};

class ActivationFactory final : public RuntimeObject<IActivationFactory>
{
public:
    explicit ActivationFactory(const ServedRuntimeClass& served) noexcept : m_served(served) {}

    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override
    {
        return Give(instance, [&] { return m_served.create(instance); });
    }

private:
    const ServedRuntimeClass& m_served;
};

std::wstring KeyOf(const ServedRuntimeClass& served)
{
    return std::wstring(L"Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\") + served.name;
}

HRESULT ToResult(LSTATUS status) noexcept
{
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

} // namespace

HRESULT GetActivationFactory(HSTRING className, IActivationFactory** factory) noexcept
{
    if (!factory) {
        return E_POINTER;
    }
    *factory = nullptr;
    if (!HasOwnApartment()) {
        return CO_E_NOTINITIALIZED; // the runtime enters one by itself, the real platform does not
    }
    const HRESULT failure = GetFailure(Setting::FailPackageFactory);
    if (FAILED(failure)) {
        return failure;
    }
    for (const ServedRuntimeClass& served : servedClasses) {
        if (std::wstring_view(served.name) == WindowsGetStringRawBuffer(className, nullptr)) {
            return MakeObject<ActivationFactory>(factory, served);
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT RegisterRuntimeClasses(const wchar_t* path) noexcept
{
    try {
        for (const ServedRuntimeClass& served : servedClasses) {
            const auto size = static_cast<DWORD>((wcslen(path) + 1) * sizeof(wchar_t));
            const LSTATUS status =
                RegSetKeyValueW(HKEY_LOCAL_MACHINE, KeyOf(served).c_str(), L"DllPath", REG_SZ, path, size);
            if (status != ERROR_SUCCESS) {
                return ToResult(status);
            }
        }
        return S_OK;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT UnregisterRuntimeClasses() noexcept
{
    try {
        for (const ServedRuntimeClass& served : servedClasses) {
            const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, KeyOf(served).c_str());
            if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
                return ToResult(status);
            }
        }
        return S_OK;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace standin
