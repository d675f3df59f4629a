#pragma once

#include "platform/WinRtPackages.h"
#include "standin/platform/Unserved.h"
#include "support/Current.h"
#include "support/FakeObjects.h"

#include <activation.h>
#include <roapi.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace test {

// What a fake package says of itself.
struct PackageFacts
{
    std::wstring familyName = L"Contoso.Mail_8wekyb3d8bbwe";
    std::wstring fullName = L"Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe";
    std::wstring name = L"Contoso.Mail";
    platform::PackageVersion version{1, 2, 3, 4};
    std::wstring path = L"C:\\No\\Such\\Folder";
    std::vector<std::wstring> dependencies{}; // family names
};

// Where the text of "ms-resource:name" is looked for in a package of these names.
inline constexpr wchar_t kNameSource[] =
    L"@{Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe?ms-resource://Contoso.Mail/resources/name}";

class FakePackageId : public standin::UnservedPackageId<FakeInspectable<platform::IPackageId>>
{
public:
    FakePackageId(FakeObjects& owner, const PackageFacts* facts)
        : UnservedPackageId(owner, "identity"), m_facts(facts)
    {
    }

    HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) override
    {
        return GiveText("Name", m_facts->name, value);
    }
    HRESULT STDMETHODCALLTYPE get_Version(platform::PackageVersion* value) override
    {
        return GiveValue("Version", m_facts->version, value);
    }
    HRESULT STDMETHODCALLTYPE get_FullName(HSTRING* value) override
    {
        return GiveText("FullName", m_facts->fullName, value);
    }
    HRESULT STDMETHODCALLTYPE get_FamilyName(HSTRING* value) override
    {
        return GiveText("FamilyName", m_facts->familyName, value);
    }

private:
    const PackageFacts* m_facts;
};

class FakeStorageItem : public standin::UnservedStorageItem<FakeInspectable<platform::IStorageItem>>
{
public:
    FakeStorageItem(FakeObjects& owner, const PackageFacts* facts)
        : UnservedStorageItem(owner, "storage item"), m_facts(facts)
    {
    }

    HRESULT STDMETHODCALLTYPE get_Path(HSTRING* value) override
    {
        return GiveText("Path", m_facts->path, value);
    }

private:
    const PackageFacts* m_facts;
};

// An object that has to be asked for another one's interface.
template <typename Interface, typename Other> class FakeDoor : public FakeInspectable<Interface>
{
public:
    FakeDoor(FakeObjects& owner, std::string label, Other* other)
        : FakeInspectable<Interface>(owner, std::move(label)), m_other(other)
    {
    }

protected:
    IUnknown* Ask(REFIID id) override
    {
        return IsEqualIID(id, __uuidof(typename Other::Served)) ? m_other : nullptr;
    }

private:
    Other* m_other;
};

// The folder of a package, whose path only its storage item tells.
using FakeFolder = FakeDoor<platform::IStorageFolder, FakeStorageItem>;

class FakePackageList;

class FakePackage : public FakeInspectable<platform::IPackage>
{
public:
    FakePackage(FakeObjects& owner, PackageFacts packageFacts, std::string label = "package");

    HRESULT STDMETHODCALLTYPE get_Id(platform::IPackageId** value) override
    {
        return Give("Id", m_id, value);
    }
    HRESULT STDMETHODCALLTYPE get_InstalledLocation(platform::IStorageFolder** value) override
    {
        return Give("InstalledLocation", m_folder, value);
    }
    HRESULT STDMETHODCALLTYPE get_IsFramework(boolean*) override { return NotImplemented(); }
    HRESULT STDMETHODCALLTYPE get_Dependencies(platform::IPackageVectorView** value) override;

    PackageFacts facts;

private:
    FakePackageId* m_id;
    FakeFolder* m_folder;
    FakePackageList* m_dependencies;
};

class FakePackageList : public standin::UnservedPackageList<FakeInspectable<platform::IPackageVectorView>>
{
public:
    FakePackageList(FakeObjects& owner, const std::vector<std::wstring>& familyNames)
        : UnservedPackageList(owner, "list of dependencies")
    {
        for (const std::wstring& familyName : familyNames) {
            PackageFacts facts;
            facts.familyName = familyName;
            m_packages.push_back(owner.Make<FakePackage>(facts, "dependency"));
        }
    }

    HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, platform::IPackage** item) override
    {
        if (index >= m_packages.size()) {
            return NotImplemented("GetAt behind the end");
        }
        return Give("GetAt", m_packages[index], item, L"(" + std::to_wstring(index) + L")");
    }
    HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override
    {
        return GiveValue("Size", static_cast<UINT32>(m_packages.size()), size);
    }

private:
    std::vector<FakePackage*> m_packages;
};

inline FakePackage::FakePackage(FakeObjects& owner, PackageFacts packageFacts, std::string label)
    : FakeInspectable(owner, std::move(label)), facts(std::move(packageFacts)),
      m_id(owner.Make<FakePackageId>(&facts)),
      m_folder(owner.Make<FakeFolder>("folder", owner.Make<FakeStorageItem>(&facts))),
      m_dependencies(owner.Make<FakePackageList>(facts.dependencies))
{
}

inline HRESULT FakePackage::get_Dependencies(platform::IPackageVectorView** value)
{
    return Give("Dependencies", m_dependencies, value);
}

class FakeIterator : public standin::UnservedPackageIterator<FakeInspectable<platform::IPackageIterator>>
{
public:
    FakeIterator(FakeObjects& owner, std::vector<FakePackage*> packages)
        : UnservedPackageIterator(owner, "iterator"), m_packages(std::move(packages))
    {
    }

    HRESULT STDMETHODCALLTYPE get_Current(platform::IPackage** current) override
    {
        if (m_position >= m_packages.size()) {
            return NotImplemented("Current behind the end");
        }
        return Give("Current", m_packages[m_position], current);
    }
    HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* hasCurrent) override
    {
        return GiveValue("HasCurrent", Has(), hasCurrent);
    }
    HRESULT STDMETHODCALLTYPE MoveNext(boolean* hasCurrent) override
    {
        const HRESULT hr = m_owner.Enter(this, "MoveNext");
        if (SUCCEEDED(hr)) {
            ++m_position;
            *hasCurrent = Has();
        }
        return hr;
    }

private:
    [[nodiscard]] boolean Has() const { return m_position < m_packages.size() ? 1 : 0; }

    std::vector<FakePackage*> m_packages;
    std::size_t m_position = 0;
};

class FakeCollection : public FakeInspectable<platform::IPackageIterable>
{
public:
    FakeCollection(FakeObjects& owner, std::vector<FakePackage*> packages)
        : FakeInspectable(owner, "collection"), m_packages(std::move(packages))
    {
    }

    HRESULT STDMETHODCALLTYPE First(platform::IPackageIterator** first) override
    {
        return Give("First", m_owner.Make<FakeIterator>(m_packages), first);
    }

private:
    std::vector<FakePackage*> m_packages;
};

// The packages of the user, in their order.
struct StoreContents
{
    std::vector<FakePackage*> packages;
    // Called first at a search for a family, with its name.
    std::function<void(const std::wstring&)> onFamily = [](const std::wstring&) {};
};

class FakePackageManager : public standin::UnservedPackageManager<FakeInspectable<platform::IPackageManager>>
{
public:
    FakePackageManager(FakeObjects& owner, const StoreContents* contents)
        : UnservedPackageManager(owner, "package manager"), m_contents(contents)
    {
    }

    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityId(HSTRING user,
                                                           platform::IPackageIterable** packages) override
    {
        return Give("FindPackagesByUserSecurityId", m_owner.Make<FakeCollection>(m_contents->packages),
                    packages, L"(" + Text(user) + L")");
    }
    HRESULT STDMETHODCALLTYPE FindPackagesByUserSecurityIdPackageFamilyName(
        HSTRING user, HSTRING familyName, platform::IPackageIterable** packages) override
    {
        const std::wstring name = Text(familyName);
        m_contents->onFamily(name);
        std::vector<FakePackage*> wanted;
        for (FakePackage* package : m_contents->packages) {
            if (package->facts.familyName == name) {
                wanted.push_back(package);
            }
        }
        return Give("FindPackagesByUserSecurityIdPackageFamilyName", m_owner.Make<FakeCollection>(wanted),
                    packages, L"(" + Text(user) + L", " + name + L")");
    }

private:
    static std::wstring Text(HSTRING string)
    {
        UINT32 length = 0;
        const wchar_t* text = WindowsGetStringRawBuffer(string, &length);
        return std::wstring(text, length);
    }

    const StoreContents* m_contents;
};

// What the class's factory makes: an object that has to be asked for the package manager's interface.
using FakeInstance = FakeDoor<IInspectable, FakePackageManager>;

class FakeFactory : public FakeInspectable<IActivationFactory>
{
public:
    FakeFactory(FakeObjects& owner, const StoreContents* contents)
        : FakeInspectable(owner, "factory"), m_contents(contents)
    {
    }

    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override
    {
        FakePackageManager* manager = m_owner.Make<FakePackageManager>(m_contents);
        return Give("ActivateInstance", m_owner.Make<FakeInstance>("instance", manager), instance);
    }

private:
    const StoreContents* m_contents;
};

// The system's package manager for the library in this program, until the end of the scope: holds these
// packages in this order. The thread's way into the Windows Runtime and out of it is the real one, and noted
// in the journal with the rest. One at a time.
class FakeStore : private Current<FakeStore>
{
public:
    FakeStore()
        : m_initialize("RoInitialize", Initialize), m_uninitialize("RoUninitialize", Uninitialize),
          m_getFactory("RoGetActivationFactory", GetFactory)
    {
    }

    FakePackage* Add(PackageFacts facts)
    {
        contents.packages.push_back(objects.Make<FakePackage>(std::move(facts)));
        return contents.packages.back();
    }
    FakePackage* Add(const wchar_t* familyName, std::vector<std::wstring> dependencies = {})
    {
        PackageFacts facts;
        facts.familyName = familyName;
        facts.dependencies = std::move(dependencies);
        return Add(std::move(facts));
    }

    FakeObjects objects;
    StoreContents contents;
    // When set, the Windows Runtime is not entered and this is the answer.
    std::optional<HRESULT> initializeResult;
    // Runs when the thread leaves the Windows Runtime.
    std::function<void()> onUninitialize = [] {};

private:
    static HRESULT WINAPI Initialize(RO_INIT_TYPE type)
    {
        const HRESULT hr = s_current->initializeResult ? *s_current->initializeResult
                                                       : s_current->m_initialize.Original()(type);
        s_current->objects.NoteResult("RoInitialize(" + std::to_string(type) + ")", hr);
        return hr;
    }
    static void WINAPI Uninitialize()
    {
        s_current->onUninitialize();
        s_current->m_uninitialize.Original()();
        // What is still held lives on in the apartment that the thread was in before.
        const bool isTooEarly = s_current->objects.IsAnyHeld() && ApartmentOfThread() == Apartment::kNone;
        s_current->objects.Note(isTooEarly ? "RoUninitialize too early" : "RoUninitialize");
    }
    static HRESULT WINAPI GetFactory(HSTRING name, REFIID id, void** factory)
    {
        *factory = nullptr;
        const HRESULT hr = s_current->objects.EnterMaker(
            "RoGetActivationFactory", L"(" + std::wstring(WindowsGetStringRawBuffer(name, nullptr)) + L")");
        if (FAILED(hr)) {
            return hr;
        }
        if (!IsEqualIID(id, __uuidof(IActivationFactory))) {
            return E_NOINTERFACE;
        }
        auto* made = s_current->objects.Make<FakeFactory>(&s_current->contents);
        made->AddRef();
        *factory = static_cast<IActivationFactory*>(made);
        return S_OK;
    }

    friend Current<FakeStore>;

    ImportPatch<decltype(&RoInitialize)> m_initialize;
    ImportPatch<decltype(&RoUninitialize)> m_uninitialize;
    ImportPatch<decltype(&RoGetActivationFactory)> m_getFactory;
};

} // namespace test
