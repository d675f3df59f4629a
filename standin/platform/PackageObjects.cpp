#include "standin/platform/PackageObjects.h"

#include "standin/Text.h"
#include "standin/platform/RuntimeObject.h"
#include "standin/platform/Unserved.h"

namespace standin {

namespace {

using PackagePointer = std::shared_ptr<const StorePackage>;

// The text of a property, or the fault that the package asks for.
HRESULT GiveProperty(const StorePackage& package, const wchar_t* faultKey, const std::wstring& text,
                     HSTRING* value) noexcept
{
    return Give(value, [&] {
        Check(package.Fault(faultKey));
        return GiveText(text, value);
    });
}

class PackageId final : public UnservedPackageId<RuntimeObject<platform::IPackageId>>
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
class InstalledFolder final
    : public UnservedStorageItem<RuntimeObject<platform::IStorageFolder, platform::IStorageItem>>
{
public:
    explicit InstalledFolder(PackagePointer package) noexcept : m_package(std::move(package)) {}

    HRESULT STDMETHODCALLTYPE get_Path(HSTRING* value) override
    {
        return GiveProperty(*m_package, L"fail_path", m_package->installedPath, value);
    }

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
    HRESULT STDMETHODCALLTYPE get_IsFramework(boolean*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Dependencies(platform::IPackageVectorView** value) override
    {
        return Give(value, [&] {
            Check(m_package->Fault(L"fail_dependencies"));
            return MakePackageList(DependenciesOf(*m_package), value);
        });
    }

private:
    template <typename Class, typename Interface>
    HRESULT GiveObject(const wchar_t* faultKey, Interface** value) noexcept
    {
        return Give(value, [&] {
            Check(m_package->Fault(faultKey));
            return MakeObject<Class>(value, m_package);
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
