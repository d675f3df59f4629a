#include "standin/platform/Classes.h"

#include "platform/PackageManifest.h"
#include "standin/Settings.h"
#include "standin/platform/Makers.h"
#include "standin/platform/RuntimeObject.h"

#include <shobjidl.h>

#include <cwchar>
#include <iterator>
#include <string>

namespace standin {

namespace {

constexpr wchar_t packageManagerClass[] = L"Windows.Management.Deployment.PackageManager";
constexpr wchar_t packageManagerKey[] =
    L"Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\Windows.Management.Deployment.PackageManager";

struct ServedClass
{
    CLSID classId;
    const wchar_t* name;
    HRESULT (*create)(REFIID interfaceId, void** object) noexcept;
};

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

class PackageManagerFactory final : public RuntimeObject<IActivationFactory>
{
public:
    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override
    {
        return Give(instance, [&] { return CreatePackageManager(instance); });
    }
};

std::wstring KeyOf(const ServedClass& served)
{
    wchar_t text[40] = L"";
    StringFromGUID2(served.classId, text, static_cast<int>(std::size(text)));
    return std::wstring(L"Software\\Classes\\CLSID\\") + text;
}

void SetText(const std::wstring& key, const wchar_t* name, const wchar_t* text)
{
    const auto size = static_cast<DWORD>((std::wcslen(text) + 1) * sizeof(wchar_t));
    CheckStatus(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text, size));
}

void DeleteKey(const std::wstring& key)
{
    const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
    CheckStatus(status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status);
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

HRESULT GetActivationFactory(HSTRING className, IActivationFactory** factory) noexcept
{
    if (!factory) {
        return E_POINTER;
    }
    *factory = nullptr;
    if (!HasOwnApartment()) {
        return CO_E_NOTINITIALIZED; // the runtime enters one by itself, the real platform does not
    }
    return ResultOf([&] {
        Check(GetFailure(Setting::FailPackageFactory));
        return TextOf(className) == packageManagerClass ? MakeObject<PackageManagerFactory>(factory)
                                                        : CLASS_E_CLASSNOTAVAILABLE;
    });
}

HRESULT RegisterClasses(const wchar_t* path) noexcept
{
    return ResultOf([&] {
        for (const ServedClass& served : servedClasses) {
            const std::wstring serverKey = KeyOf(served) + L"\\InprocServer32";
            SetText(KeyOf(served), nullptr, served.name);
            SetText(serverKey, nullptr, path);
            SetText(serverKey, L"ThreadingModel", L"Both");
        }
        SetText(packageManagerKey, L"DllPath", path);
    });
}

HRESULT UnregisterClasses() noexcept
{
    return ResultOf([] {
        for (const ServedClass& served : servedClasses) {
            DeleteKey(KeyOf(served));
        }
        DeleteKey(packageManagerKey);
    });
}

} // namespace standin
