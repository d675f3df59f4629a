#include "standin/platform/PackageObjects.h"

#include "standin/Text.h"
#include "standin/platform/RuntimeObject.h"

namespace standin {

namespace {

using PackagePointer = std::shared_ptr<const StorePackage>;

// The text of a property, or the fault that the package asks for.
HRESULT GiveProperty(const StorePackage& package, const wchar_t* faultKey, const std::wstring& text,
                     HSTRING* value) noexcept
{
    return Give(value, [&] {
        const HRESULT fault = package.Fault(faultKey);
        return FAILED(fault) ? fault : GiveText(text, value);
    });
}

// As the platform numbers processors.
INT32 ArchitectureNumber(const std::wstring& name) noexcept
{
    struct Architecture
    {
        const wchar_t* name;
        INT32 number;
    };
    constexpr Architecture architectures[] = {{L"x86", 0}, {L"arm", 5}, {L"x64", 9}, {L"neutral", 11}};
    for (const Architecture& architecture : architectures) {
        if (EqualIgnoringCase(name, architecture.name)) {
            return architecture.number;
        }
    }
    return 0xFFFF; // unknown
}

class PackageId final : public RuntimeObject<platform::IPackageId>
{
public:
    explicit PackageId(PackagePointer package) noexcept : m_package(std::move(package)) {}

    HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_name", m_package->name, value);
    }
    HRESULT STDMETHODCALLTYPE get_Version(platform::PackageVersion* value) override
    {
        return Give(value, [&] {
            const PackageVersion& version = m_package->version;
            *value = {version.major, version.minor, version.build, version.revision};
            return m_package->Fault(L"fail_version");
        });
    }
    HRESULT STDMETHODCALLTYPE get_Architecture(INT32* value) override
    {
        return Give(value, [&] {
            *value = ArchitectureNumber(m_package->architecture);
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE get_ResourceId(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_resource_id", m_package->resourceId, value);
    }
    HRESULT STDMETHODCALLTYPE get_Publisher(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_publisher", m_package->publisher, value);
    }
    HRESULT STDMETHODCALLTYPE get_PublisherId(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_publisher_id", m_package->publisherId, value);
    }
    HRESULT STDMETHODCALLTYPE get_FullName(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_full_name", m_package->fullName, value);
    }
    HRESULT STDMETHODCALLTYPE get_FamilyName(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_family_name", m_package->familyName, value);
    }

private:
    PackagePointer m_package;
};

// The folder of an installed package, which need not be there.
class InstalledFolder final : public RuntimeObject<platform::IStorageFolder, platform::IStorageItem>
{
public:
    explicit InstalledFolder(PackagePointer package) noexcept : m_package(std::move(package)) {}

    HRESULT STDMETHODCALLTYPE RenameAsyncOverloadDefaultOptions(HSTRING, void**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RenameAsync(HSTRING, INT32, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteAsyncOverloadDefaultOptions(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteAsync(INT32, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetBasicPropertiesAsync(void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) override
    {
        return Give(value, [&] {
            const std::wstring& path = m_package->installedPath;
            return GiveText(path.substr(path.find_last_of(L'\\') + 1), value);
        });
    }
    HRESULT STDMETHODCALLTYPE get_Path(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_path", m_package->installedPath, value);
    }
    HRESULT STDMETHODCALLTYPE get_Attributes(UINT32* value) override
    {
        return Give(value, [&] {
            *value = FILE_ATTRIBUTE_DIRECTORY;
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE get_DateCreated(INT64*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsOfType(UINT32, boolean*) override { return E_NOTIMPL; }

private:
    PackagePointer m_package;
};

// The packages of the store that a package depends on; one that is not there is known by its family only.
StorePackages DependenciesOf(const StorePackage& package)
{
    const StorePackages store = ReadPackageStore();
    StorePackages dependencies;
    for (const std::wstring& familyName : package.dependencies) {
        PackagePointer found;
        for (const PackagePointer& candidate : store) {
            if (!found && EqualIgnoringCase(candidate->familyName, familyName)) {
                found = candidate;
            }
        }
        dependencies.push_back(found ? found : UnknownPackage(familyName));
    }
    return dependencies;
}

class Package final : public RuntimeObject<platform::IPackage>
{
public:
    explicit Package(PackagePointer package) noexcept : m_package(std::move(package)) {}

    HRESULT STDMETHODCALLTYPE get_Id(platform::IPackageId** value) override
    {
        return GiveObject<PackageId>(L"fail_id", value);
    }
    HRESULT STDMETHODCALLTYPE get_InstalledLocation(platform::IStorageFolder** value) override
    {
        return GiveObject<InstalledFolder>(L"fail_installed_location", value);
    }
    HRESULT STDMETHODCALLTYPE get_IsFramework(boolean* value) override
    {
        return Give(value, [&] {
            *value = m_package->isFramework ? 1 : 0;
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE get_Dependencies(platform::IPackageVectorView** value) override
    {
        return Give(value, [&] {
            const HRESULT fault = m_package->Fault(L"fail_dependencies");
            return FAILED(fault) ? fault : MakePackageList(DependenciesOf(*m_package), value);
        });
    }

private:
    template <typename Class, typename Interface>
    HRESULT GiveObject(const wchar_t* faultKey, Interface** value) noexcept
    {
        return Give(value, [&] {
            const HRESULT fault = m_package->Fault(faultKey);
            return FAILED(fault) ? fault : MakeObject<Class>(value, m_package);
        });
    }

    PackagePointer m_package;
};

} // namespace

HRESULT MakePackage(std::shared_ptr<const StorePackage> package, platform::IPackage** object) noexcept
{
    return MakeObject<Package>(object, std::move(package));
}

} // namespace standin
