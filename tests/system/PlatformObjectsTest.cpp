// What the stand-in's objects make of a caller without an apartment, which the real platform does not forgive
// and this runtime would not notice.
#include "common/Apartment.h"
#include "discovery/SystemPackages.h"
#include "platform/PackageManifest.h"
#include "standin/Faults.h"
#include "standin/Settings.h"
#include "support/Apartments.h"
#include "system/Sandbox.h"

#include <gtest/gtest.h>

#include <objbase.h>
#include <shlwapi.h>
#include <shobjidl.h>

#include <thread>

namespace {

using Microsoft::WRL::ComPtr;
using standin::Fault;
using test::Apartment;

constexpr wchar_t family[] = L"Vel.Calendar_1vel7kq0n3rta";

class PlatformObjects : public testing::Test
{
protected:
    PlatformObjects() { m_sandbox.UseSamplePackages(); }
    // The faults here are the test's own.
    ~PlatformObjects() override { standin::ClearSettings(); }

    static DWORD Uses() { return standin::GetFaults(Fault::UseOutsideApartment); }
    static DWORD Releases() { return standin::GetFaults(Fault::ReleaseOutsideApartment); }

    template <typename Interface> static ComPtr<Interface> Create(const CLSID& classId)
    {
        ComPtr<Interface> object;
        EXPECT_EQ(
            CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(object.GetAddressOf())),
            S_OK);
        return object;
    }

    // A reference that was taken in an apartment that has been left since.
    static platform::IPackage* PackageFromAnotherTime()
    {
        const ComApartment apartment(CoInitialize(nullptr));
        const auto manager = SystemPackages::ActivateManager();
        return SystemPackages::First(SystemPackages::OfFamily(manager.Get(), family).Get()).Detach();
    }

    test::Sandbox m_sandbox;
};

TEST_F(PlatformObjects, WorkInAnApartment)
{
    for (const Apartment apartment : {Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        EXPECT_TRUE(test::KeepsApartment(apartment, [] {
            const auto manager = SystemPackages::ActivateManager();
            const auto package = SystemPackages::First(SystemPackages::OfFamily(manager.Get(), family).Get());
            ComPtr<platform::IPackageId> id;
            EXPECT_EQ(package->get_Id(id.GetAddressOf()), S_OK);
        }));
    }
    EXPECT_EQ(Uses(), 0u);
    EXPECT_EQ(Releases(), 0u);
}

TEST_F(PlatformObjects, OfAnApartmentThatWasLeftAnswerNothingAndTellOfIt)
{
    std::thread([] {
        platform::IPackage* const package = PackageFromAnotherTime();
        ASSERT_EQ(Uses(), 0u);
        ASSERT_EQ(Releases(), 0u);
        platform::IPackageId* id = nullptr;
        EXPECT_EQ(package->get_Id(&id), CO_E_NOTINITIALIZED);
        platform::IStorageFolder* folder = nullptr;
        EXPECT_EQ(package->get_InstalledLocation(&folder), CO_E_NOTINITIALIZED);
        void* other = nullptr;
        EXPECT_EQ(package->QueryInterface(__uuidof(IInspectable), &other), CO_E_NOTINITIALIZED);
        EXPECT_EQ(Uses(), 3u);
        EXPECT_EQ(Releases(), 0u);
        package->Release();
        EXPECT_EQ(Uses(), 3u);
        EXPECT_EQ(Releases(), 1u);
    }).join();
}

// It may end at any moment.
TEST_F(PlatformObjects, AnApartmentThatOthersKeepUpDoesNotCount)
{
    EXPECT_TRUE(test::KeepsApartment(Apartment::kMultithreaded, [] {
        std::thread([] {
            platform::IPackage* const package = PackageFromAnotherTime();
            platform::IPackageId* id = nullptr;
            EXPECT_EQ(package->get_Id(&id), CO_E_NOTINITIALIZED);
            package->Release();
            EXPECT_EQ(Uses(), 1u);
            EXPECT_EQ(Releases(), 1u);
        }).join();
    }));
}

// The runtime would enter one by itself.
TEST_F(PlatformObjects, ThePackageManagerIsNotHadWithoutAnApartment)
{
    std::thread([] {
        try {
            (void)SystemPackages::ActivateManager();
            ADD_FAILURE() << "there is a manager";
        } catch (const WinRtError& error) {
            EXPECT_EQ(error.Result(), CO_E_NOTINITIALIZED);
        }
    }).join();
    EXPECT_EQ(Uses(), 0u) << "a result tells it";
}

// Each served class.
TEST_F(PlatformObjects, OfEveryClassNeedAnApartment)
{
    for (const CLSID& classId :
         {platform::kAppxFactoryClass, __uuidof(ApplicationActivationManager), __uuidof(AppVisibility)}) {
        std::thread([&] {
            IUnknown* object = nullptr;
            {
                const ComApartment apartment(CoInitialize(nullptr));
                object = Create<IUnknown>(classId).Detach();
            }
            const DWORD releases = Releases();
            object->Release();
            EXPECT_EQ(Releases(), releases + 1);
        }).join();
    }
}

TEST_F(PlatformObjects, TheManifestReaderKnowsNamesToTheLetter)
{
    const ComApartment apartment(CoInitialize(nullptr));
    const auto factory = Create<platform::IAppxFactory>(platform::kAppxFactoryClass);
    ComPtr<IStream> stream;
    const std::wstring path = test::SamplePackages() + L"\\Lumen.Photos\\AppxManifest.xml";
    ASSERT_EQ(SHCreateStreamOnFileEx(path.c_str(), STGM_READ, 0, FALSE, nullptr, stream.GetAddressOf()),
              S_OK);
    ComPtr<platform::IAppxManifestReader> reader;
    ASSERT_EQ(factory->CreateManifestReader(stream.Get(), reader.GetAddressOf()), S_OK);
    ComPtr<platform::IAppxManifestApplicationsEnumerator> applications;
    ASSERT_EQ(reader->GetApplications(applications.GetAddressOf()), S_OK);
    ComPtr<platform::IAppxManifestApplication> application;
    ASSERT_EQ(applications->GetCurrent(application.GetAddressOf()), S_OK);
    wchar_t* value = nullptr;
    EXPECT_EQ(application->GetStringValue(L"DisplayName", &value), S_OK);
    EXPECT_STREQ(value, L"Photo Album");
    CoTaskMemFree(value);
    for (const wchar_t* name : {L"displayname", L"Displayname", L"DISPLAYNAME", L"DisplayNames"}) {
        EXPECT_EQ(application->GetStringValue(name, &value), E_INVALIDARG);
        EXPECT_EQ(value, nullptr);
    }
}

// The primary monitor is one, a number is none.
TEST_F(PlatformObjects, TheVisibilityObjectKnowsMonitors)
{
    const ComApartment apartment(CoInitialize(nullptr));
    const auto visibility = Create<IAppVisibility>(__uuidof(AppVisibility));
    MONITOR_APP_VISIBILITY mode = MAV_UNKNOWN;
    EXPECT_EQ(
        visibility->GetAppVisibilityOnMonitor(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY), &mode),
        S_OK);
    EXPECT_EQ(mode, MAV_NO_APP_VISIBLE);
    EXPECT_EQ(visibility->GetAppVisibilityOnMonitor(nullptr, &mode), E_INVALIDARG);
    EXPECT_EQ(
        visibility->GetAppVisibilityOnMonitor(reinterpret_cast<HMONITOR>(static_cast<INT_PTR>(4660)), &mode),
        E_INVALIDARG);
}

} // namespace
