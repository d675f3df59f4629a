// The declarations of the platform's interfaces: their IDs, and the places of their methods.

#include "platform/PackageManifest.h"
#include "platform/WinRtPackages.h"

#include <activation.h>

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

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
using Arguments = std::vector<const void*>;
std::array<const void*, 3> g_arguments;

Arguments FirstArguments(std::size_t count)
{
    return Arguments(g_arguments.begin(), g_arguments.begin() + static_cast<std::ptrdiff_t>(count));
}

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

// The method must be called at this place of the table, with these arguments.
#define EXPECT_PLACE(place, call, ...)                                                                       \
    EXPECT_EQ(call, static_cast<HRESULT>(100 + (place)));                                                    \
    EXPECT_EQ(g_place, static_cast<std::size_t>(place));                                                     \
    EXPECT_EQ(FirstArguments(Arguments{__VA_ARGS__}.size()), (Arguments{__VA_ARGS__}))

// Three methods of IUnknown and three of IInspectable come first.

TEST(PlatformInterfaces, PackageManagerMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackageManager> manager;
    platform::IPackageIterable* packages = nullptr;
    EXPECT_PLACE(12, manager->FindPackagesByUserSecurityId(AsString(1), &packages), AsPointer(1), &packages);
    EXPECT_PLACE(20,
                 manager->FindPackagesByUserSecurityIdPackageFamilyName(AsString(1), AsString(2), &packages),
                 AsPointer(1), AsPointer(2), &packages);
}

TEST(PlatformInterfaces, PackageMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackage> package;
    platform::IPackageId* id = nullptr;
    EXPECT_PLACE(6, package->get_Id(&id), &id);
    platform::IStorageFolder* folder = nullptr;
    EXPECT_PLACE(7, package->get_InstalledLocation(&folder), &folder);
    platform::IPackageVectorView* dependencies = nullptr;
    EXPECT_PLACE(9, package->get_Dependencies(&dependencies), &dependencies);
}

TEST(PlatformInterfaces, IdentityMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackageId> id;
    HSTRING text = nullptr;
    EXPECT_PLACE(6, id->get_Name(&text), &text);
    platform::PackageVersion version{};
    EXPECT_PLACE(7, id->get_Version(&version), &version);
    EXPECT_PLACE(12, id->get_FullName(&text), &text);
    EXPECT_PLACE(13, id->get_FamilyName(&text), &text);
}

TEST(PlatformInterfaces, StorageItemMethodsHaveTheirPlaces)
{
    HandMade<platform::IStorageItem> item;
    HSTRING text = nullptr;
    EXPECT_PLACE(12, item->get_Path(&text), &text);
}

TEST(PlatformInterfaces, CollectionMethodsHaveTheirPlaces)
{
    HandMade<platform::IPackageIterable> packages;
    platform::IPackageIterator* first = nullptr;
    EXPECT_PLACE(6, packages->First(&first), &first);

    HandMade<platform::IPackageIterator> iterator;
    platform::IPackage* package = nullptr;
    boolean has = 0;
    EXPECT_PLACE(6, iterator->get_Current(&package), &package);
    EXPECT_PLACE(7, iterator->get_HasCurrent(&has), &has);
    EXPECT_PLACE(8, iterator->MoveNext(&has), &has);

    HandMade<platform::IPackageVectorView> view;
    EXPECT_PLACE(6, view->GetAt(5, &package), g_arguments[0], &package);
    EXPECT_EQ(static_cast<UINT32>(reinterpret_cast<std::size_t>(g_arguments[0])), 5u);
    UINT32 size = 0;
    EXPECT_PLACE(7, view->get_Size(&size), &size);
}

TEST(PlatformInterfaces, FactoryMethodHasItsPlace)
{
    HandMade<IActivationFactory> factory;
    IInspectable* instance = nullptr;
    EXPECT_PLACE(6, factory->ActivateInstance(&instance), &instance);
}

// These follow IUnknown's methods at once.

TEST(PlatformInterfaces, ManifestMethodsHaveTheirPlaces)
{
    HandMade<platform::IAppxFactory> factory;
    auto* stream = reinterpret_cast<IStream*>(std::size_t{64});
    platform::IAppxManifestReader* madeReader = nullptr;
    EXPECT_PLACE(5, factory->CreateManifestReader(stream, &madeReader), stream, &madeReader);

    HandMade<platform::IAppxManifestReader> reader;
    platform::IAppxManifestApplicationsEnumerator* applications = nullptr;
    EXPECT_PLACE(10, reader->GetApplications(&applications), &applications);

    HandMade<platform::IAppxManifestApplicationsEnumerator> enumerator;
    platform::IAppxManifestApplication* current = nullptr;
    BOOL has = FALSE;
    EXPECT_PLACE(3, enumerator->GetCurrent(&current), &current);
    EXPECT_PLACE(4, enumerator->GetHasCurrent(&has), &has);
    EXPECT_PLACE(5, enumerator->MoveNext(&has), &has);

    HandMade<platform::IAppxManifestApplication> application;
    wchar_t* value = nullptr;
    constexpr wchar_t name[] = L"DisplayName";
    EXPECT_PLACE(3, application->GetStringValue(name, &value), name, &value);
}

} // namespace
