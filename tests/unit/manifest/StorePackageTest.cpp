// What is read of a Store package object.

#include "manifest/StorePackage.h"

#include "common/Apartment.h"
#include "support/FakePackages.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(StorePackage, TellsItsFamilyNameAndItsVersionPartByPart)
{
    const ComApartment apartment(CoInitialize(nullptr)); // the package's
    test::FakeObjects objects;
    test::PackageFacts facts;
    facts.version = {1, 65535, 0, 16384};
    const Microsoft::WRL::ComPtr<platform::IPackage> package = objects.Make<test::FakePackage>(facts);
    const auto identity = StorePackage::Identity(package.Get());
    EXPECT_STREQ(StorePackage::FamilyName(identity.Get()).c_str(), L"Contoso.Mail_8wekyb3d8bbwe");
    const auto version = StorePackage::Version(identity.Get());
    EXPECT_EQ(version.Major, 1);
    EXPECT_EQ(version.Minor, 65535);
    EXPECT_EQ(version.Build, 0);
    EXPECT_EQ(version.Revision, 16384);
}

TEST(StorePackage, TellsItsFolder)
{
    const ComApartment apartment(CoInitialize(nullptr)); // the package's
    test::FakeObjects objects;
    for (const wchar_t* path : {L"C:\\Program Files\\WindowsApps\\\u30e1", L""}) {
        test::PackageFacts facts;
        facts.path = path;
        const Microsoft::WRL::ComPtr<platform::IPackage> package = objects.Make<test::FakePackage>(facts);
        EXPECT_STREQ(StorePackage::InstalledPath(package.Get()).c_str(), path);
    }
}

TEST(StorePackage, ManifestStandsInItsFolder)
{
    EXPECT_STREQ(StorePackage::ManifestPath(L"C:\\Apps\\Mail").c_str(), L"C:\\Apps\\Mail\\AppxManifest.xml");
    EXPECT_STREQ(StorePackage::ManifestPath(L"C:\\Apps\\Mail\\").c_str(),
                 L"C:\\Apps\\Mail\\\\AppxManifest.xml");
    EXPECT_STREQ(StorePackage::ManifestPath(L"").c_str(), L"\\AppxManifest.xml");
    EXPECT_STREQ(StorePackage::ManifestPath(L"100%s").c_str(), L"100%s\\AppxManifest.xml");
}

TEST(StorePackage, ManifestPathHas259CharactersAtMost)
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
