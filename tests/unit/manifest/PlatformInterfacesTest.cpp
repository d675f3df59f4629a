// The declarations of the platform's interfaces: their IDs, and the places of their methods.

#include "platform/PackageManifest.h"
#include "platform/WinRtPackages.h"

#include <activation.h>

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <utility>

namespace {

// The text of an ID.
std::wstring Text(REFIID id)
{
    wchar_t text[39] = {};
    StringFromGUID2(id, text, 39);
    return text;
}

TEST(PlatformInterfaces, HaveThePublishedIds)
{
    EXPECT_EQ(Text(__uuidof(platform::IPackageManager)), L"{9A7D4B65-5E8F-4FC7-A2E5-7F6925CB8B53}");
    EXPECT_EQ(Text(__uuidof(platform::IPackage)), L"{163C792F-BD75-413C-BF23-B1FE7B95D825}");
    EXPECT_EQ(Text(__uuidof(platform::IPackageId)), L"{1ADB665E-37C7-4790-9980-DD7AE74E8BB2}");
    EXPECT_EQ(Text(__uuidof(platform::IStorageItem)), L"{4207A996-CA2F-42F7-BDE8-8B10457A7F30}");
    EXPECT_EQ(Text(__uuidof(platform::IStorageFolder)), L"{72D1CB78-B3EF-4F75-A80B-6FD9DAE2944B}");
    EXPECT_EQ(Text(__uuidof(platform::IAppxFactory)), L"{BEB94909-E451-438B-B5A7-D79E767B75D8}");
    EXPECT_EQ(Text(__uuidof(platform::IAppxManifestReader)), L"{4E1BD148-55A0-4480-A3D1-15544710637C}");
    EXPECT_EQ(Text(__uuidof(platform::IAppxManifestApplicationsEnumerator)),
              L"{9EB8A55A-F04B-4D0D-808D-686185D4847A}");
    EXPECT_EQ(Text(__uuidof(platform::IAppxManifestApplication)), L"{5DA89BF4-3773-46BE-B650-7E744863B7E8}");
    EXPECT_EQ(Text(platform::kAppxFactoryClass), L"{5842A140-FF9F-4166-8F5C-62F5B7B0C781}");
    EXPECT_EQ(Text(__uuidof(IActivationFactory)), L"{00000035-0000-0000-C000-000000000046}");
}

TEST(PlatformInterfaces, HaveThePlatformsTypes)
{
    EXPECT_EQ(sizeof(boolean), 1u);
    EXPECT_EQ(sizeof(platform::PackageVersion), 8u);
    EXPECT_EQ(offsetof(platform::PackageVersion, Major), 0u);
    EXPECT_EQ(offsetof(platform::PackageVersion, Minor), 2u);
    EXPECT_EQ(offsetof(platform::PackageVersion, Build), 4u);
    EXPECT_EQ(offsetof(platform::PackageVersion, Revision), 6u);
}

// An object whose table of functions is made by hand: each function tells its place and its arguments. All
// arguments of the methods here travel in registers, so that one kind of function serves for them all.
constexpr std::size_t kPlaces = 32;
std::size_t g_place;
std::array<const void*, 3> g_arguments;

template <std::size_t Place>
HRESULT STDMETHODCALLTYPE Called(void*, const void* first, const void* second, const void* third)
{
    g_place = Place;
    g_arguments = {first, second, third};
    return static_cast<HRESULT>(100 + Place);
}

using Function = HRESULT(STDMETHODCALLTYPE*)(void*, const void*, const void*, const void*);

template <std::size_t... Places> constexpr std::array<Function, kPlaces> Table(std::index_sequence<Places...>)
{
    return {Called<Places>...};
}

template <typename Interface> class HandMade
{
public:
    Interface* operator->()
    {
        // The compiler must not see through to the function, whose arguments are not the method's.
        void* volatile object = &m_table;
        return static_cast<Interface*>(object);
    }

private:
    static constexpr std::array<Function, kPlaces> s_functions = Table(std::make_index_sequence<kPlaces>());
    const Function* m_table = s_functions.data();
};

HSTRING AsString(std::size_t value)
{
    return reinterpret_cast<HSTRING>(value);
}

const void* AsPointer(std::size_t value)
{
    return reinterpret_cast<const void*>(value);
}

#define EXPECT_PLACE(call, place)                                                                            \
    EXPECT_EQ(call, static_cast<HRESULT>(100 + (place)));                                                    \
    EXPECT_EQ(g_place, static_cast<std::size_t>(place))

// Three methods of IUnknown and three of IInspectable come first.

TEST(PlatformInterfaces, PackageManagerMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackageManager> manager;
    platform::IPackageIterable* packages = nullptr;
    EXPECT_PLACE(manager->FindPackagesByUserSecurityId(AsString(1), &packages), 12);
    EXPECT_EQ(g_arguments[0], AsPointer(1));
    EXPECT_EQ(g_arguments[1], &packages);
    EXPECT_PLACE(manager->FindPackagesByUserSecurityIdPackageFamilyName(AsString(1), AsString(2), &packages),
                 20);
    EXPECT_EQ(g_arguments[0], AsPointer(1));
    EXPECT_EQ(g_arguments[1], AsPointer(2));
    EXPECT_EQ(g_arguments[2], &packages);
}

TEST(PlatformInterfaces, PackageMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackage> package;
    platform::IPackageId* id = nullptr;
    EXPECT_PLACE(package->get_Id(&id), 6);
    EXPECT_EQ(g_arguments[0], &id);
    platform::IStorageFolder* folder = nullptr;
    EXPECT_PLACE(package->get_InstalledLocation(&folder), 7);
    EXPECT_EQ(g_arguments[0], &folder);
    platform::IPackageVectorView* dependencies = nullptr;
    EXPECT_PLACE(package->get_Dependencies(&dependencies), 9);
    EXPECT_EQ(g_arguments[0], &dependencies);
}

TEST(PlatformInterfaces, IdentityMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackageId> id;
    HSTRING text = nullptr;
    EXPECT_PLACE(id->get_Name(&text), 6);
    EXPECT_EQ(g_arguments[0], &text);
    platform::PackageVersion version{};
    EXPECT_PLACE(id->get_Version(&version), 7);
    EXPECT_EQ(g_arguments[0], &version);
    EXPECT_PLACE(id->get_FullName(&text), 12);
    EXPECT_PLACE(id->get_FamilyName(&text), 13);
}

TEST(PlatformInterfaces, StorageItemMethodsHaveTheirPlaces)
{
    HandMade<platform::IStorageItem> item;
    HSTRING text = nullptr;
    EXPECT_PLACE(item->get_Path(&text), 12);
    EXPECT_EQ(g_arguments[0], &text);
}

TEST(PlatformInterfaces, CollectionMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackageIterable> packages;
    platform::IPackageIterator* first = nullptr;
    EXPECT_PLACE(packages->First(&first), 6);
    EXPECT_EQ(g_arguments[0], &first);

    HandMade<platform::IPackageIterator> iterator;
    platform::IPackage* package = nullptr;
    boolean has = 0;
    EXPECT_PLACE(iterator->get_Current(&package), 6);
    EXPECT_EQ(g_arguments[0], &package);
    EXPECT_PLACE(iterator->get_HasCurrent(&has), 7);
    EXPECT_EQ(g_arguments[0], &has);
    EXPECT_PLACE(iterator->MoveNext(&has), 8);
    EXPECT_EQ(g_arguments[0], &has);

    HandMade<platform::IPackageVectorView> view;
    EXPECT_PLACE(view->GetAt(5, &package), 6);
    EXPECT_EQ(static_cast<UINT32>(reinterpret_cast<std::size_t>(g_arguments[0])), 5u);
    EXPECT_EQ(g_arguments[1], &package);
    UINT32 size = 0;
    EXPECT_PLACE(view->get_Size(&size), 7);
    EXPECT_EQ(g_arguments[0], &size);
}

TEST(PlatformInterfaces, FactoryMethodHasItsPlace)
{
    HandMade<IActivationFactory> factory;
    IInspectable* instance = nullptr;
    EXPECT_PLACE(factory->ActivateInstance(&instance), 6);
    EXPECT_EQ(g_arguments[0], &instance);
}

// These follow IUnknown's methods at once.

TEST(PlatformInterfaces, ManifestMethodsHaveTheirPlaces)
{
    HandMade<platform::IAppxFactory> factory;
    auto* stream = reinterpret_cast<IStream*>(std::size_t{64});
    platform::IAppxManifestReader* madeReader = nullptr;
    EXPECT_PLACE(factory->CreateManifestReader(stream, &madeReader), 5);
    EXPECT_EQ(g_arguments[0], stream);
    EXPECT_EQ(g_arguments[1], &madeReader);

    HandMade<platform::IAppxManifestReader> reader;
    platform::IAppxManifestApplicationsEnumerator* applications = nullptr;
    EXPECT_PLACE(reader->GetApplications(&applications), 10);
    EXPECT_EQ(g_arguments[0], &applications);

    HandMade<platform::IAppxManifestApplicationsEnumerator> enumerator;
    platform::IAppxManifestApplication* current = nullptr;
    BOOL has = FALSE;
    EXPECT_PLACE(enumerator->GetCurrent(&current), 3);
    EXPECT_EQ(g_arguments[0], &current);
    EXPECT_PLACE(enumerator->GetHasCurrent(&has), 4);
    EXPECT_EQ(g_arguments[0], &has);
    EXPECT_PLACE(enumerator->MoveNext(&has), 5);
    EXPECT_EQ(g_arguments[0], &has);

    HandMade<platform::IAppxManifestApplication> application;
    wchar_t* value = nullptr;
    EXPECT_PLACE(application->GetStringValue(L"DisplayName", &value), 3);
    EXPECT_STREQ(static_cast<const wchar_t*>(g_arguments[0]), L"DisplayName");
    EXPECT_EQ(g_arguments[1], &value);
}

} // namespace
