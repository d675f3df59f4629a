// What is read of a Store package object.

#include "manifest/StorePackage.h"

#include "common/Apartment.h"
#include "common/WinRtError.h"
#include "support/FakePackages.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StorePackageObject : public ::testing::Test
{
protected:
    StorePackageObject() : m_package(m_objects.Make<test::FakePackage>(test::PackageFacts()))
    {
        m_package->AddRef();
    }
    ~StorePackageObject() override
    {
        m_package->Release();
        EXPECT_THAT(m_objects.Leaks(), IsEmpty());
    }

    // The result that the raised error carries; S_OK when nothing is raised.
    static HRESULT Raised(const std::function<void()>& body)
    {
        try {
            body();
        } catch (const WinRtError& error) {
            return error.Result();
        }
        return S_OK;
    }

    const ComApartment m_apartment{CoInitialize(nullptr)}; // the package's
    test::FakeObjects m_objects;
    test::FakePackage* m_package;
};

TEST_F(StorePackageObject, TellsItsIdentity)
{
    const auto identity = StorePackage::Identity(m_package);
    EXPECT_STREQ(StorePackage::FamilyName(identity.Get()).c_str(), L"Contoso.Mail_8wekyb3d8bbwe");
    EXPECT_STREQ(StorePackage::FullName(identity.Get()).c_str(), L"Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe");
    EXPECT_STREQ(StorePackage::Name(identity.Get()).c_str(), L"Contoso.Mail");
    EXPECT_THAT(m_objects.journal, ElementsAre("Id", "FamilyName", "FullName", "Name"));
}

TEST_F(StorePackageObject, TellsItsVersionPartByPart)
{
    m_package->facts.version = {1, 65535, 0, 16384};
    const auto version = StorePackage::Version(StorePackage::Identity(m_package).Get());
    EXPECT_EQ(version.Major, 1);
    EXPECT_EQ(version.Minor, 65535);
    EXPECT_EQ(version.Build, 0);
    EXPECT_EQ(version.Revision, 16384);
}

TEST_F(StorePackageObject, TellsItsFolderThroughTheStorageItem)
{
    m_package->facts.path = L"C:\\Program Files\\WindowsApps\\\u30e1";
    EXPECT_STREQ(StorePackage::InstalledPath(m_package).c_str(), L"C:\\Program Files\\WindowsApps\\\u30e1");
    EXPECT_THAT(m_objects.journal, ElementsAre("InstalledLocation", "QueryInterface", "Path"));
}

TEST_F(StorePackageObject, TellsEmptyTexts)
{
    m_package->facts.familyName.clear();
    m_package->facts.path.clear();
    EXPECT_STREQ(StorePackage::FamilyName(StorePackage::Identity(m_package).Get()).c_str(), L"");
    EXPECT_STREQ(StorePackage::InstalledPath(m_package).c_str(), L"");
}

TEST_F(StorePackageObject, RaisesTheResultOfEveryFailingCall)
{
    const auto identity = StorePackage::Identity(m_package);
    for (const char* call :
         {"Id", "FamilyName", "FullName", "Name", "Version", "InstalledLocation", "QueryInterface", "Path"}) {
        m_objects.Fail(call, E_ACCESSDENIED);
    }
    EXPECT_EQ(Raised([&] { return StorePackage::Identity(m_package); }), E_ACCESSDENIED);
    EXPECT_EQ(Raised([&] { return StorePackage::FamilyName(identity.Get()); }), E_ACCESSDENIED);
    EXPECT_EQ(Raised([&] { return StorePackage::FullName(identity.Get()); }), E_ACCESSDENIED);
    EXPECT_EQ(Raised([&] { return StorePackage::Name(identity.Get()); }), E_ACCESSDENIED);
    EXPECT_EQ(Raised([&] { return StorePackage::Version(identity.Get()); }), E_ACCESSDENIED);
    EXPECT_EQ(Raised([&] { return StorePackage::InstalledPath(m_package); }), E_ACCESSDENIED);
}

TEST_F(StorePackageObject, RaisesWhereverItsFolderFails)
{
    m_objects.Fail("QueryInterface", E_NOINTERFACE, 0);
    EXPECT_EQ(Raised([&] { return StorePackage::InstalledPath(m_package); }), E_NOINTERFACE);
    m_objects.Fail("Path", E_ABORT, 0);
    EXPECT_EQ(Raised([&] { return StorePackage::InstalledPath(m_package); }), E_ABORT);
}

TEST_F(StorePackageObject, ManifestStandsInItsFolder)
{
    EXPECT_STREQ(StorePackage::ManifestPath(L"C:\\Apps\\Mail").c_str(), L"C:\\Apps\\Mail\\AppxManifest.xml");
    EXPECT_STREQ(StorePackage::ManifestPath(L"C:\\Apps\\Mail\\").c_str(),
                 L"C:\\Apps\\Mail\\\\AppxManifest.xml");
    EXPECT_STREQ(StorePackage::ManifestPath(L"").c_str(), L"\\AppxManifest.xml");
    EXPECT_STREQ(StorePackage::ManifestPath(L"100%s").c_str(), L"100%s\\AppxManifest.xml");
}

TEST_F(StorePackageObject, ManifestPathHas259CharactersAtMost)
{
    // The name and its backslash take 17 characters.
    const std::wstring fits = L"C:\\" + std::wstring(239, L'x');
    EXPECT_EQ(StorePackage::ManifestPath(fits.c_str()).c_str(), fits + L"\\AppxManifest.xml");
    const std::wstring oneMore = fits + L"y";
    EXPECT_EQ(StorePackage::ManifestPath(oneMore.c_str()).c_str(), oneMore + L"\\AppxManifest.xm");
    const std::wstring tooLong(1000, L'z');
    EXPECT_EQ(StorePackage::ManifestPath(tooLong.c_str()).c_str(), std::wstring(259, L'z'));
}

} // namespace
