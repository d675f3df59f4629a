#include "standin/store/PackageStore.h"

#include "standin/Result.h"
#include "standin/Settings.h"
#include "standin/store/PackageFiles.h"
#include "support/CapturingPatch.h"
#include "support/CutDocument.h"
#include "support/TemporaryFolder.h"

#include <shlwapi.h>

#include <gtest/gtest.h>

#include <wrl/client.h>

#include <string>

using standin::DeletePackage;
using standin::ReadPackageStore;
using standin::WritePackage;

namespace {

constexpr char manifest[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                            "<Package xmlns=\"urn:a\" xmlns:b=\"urn:b\">\n"
                            "  <Identity Name=\"Vel.Post\" Publisher=\"CN=Vel\" Version=\"1.2.3.4\"\n"
                            "    ProcessorArchitecture=\"x64\" />\n"
                            "  <Properties><Framework>true</Framework></Properties>\n"
                            "  <Applications>\n"
                            "    <Application Id=\"Post\" Executable=\"post.exe\">\n"
                            "      <b:VisualElements DisplayName=\"Salt &amp; Pepper\">\n"
                            "        <b:DefaultTile ShortName=\"Salt\" />\n"
                            "        <b:LockScreen Notification=\"badge\" BadgeLogo=\"badge.png\" />\n"
                            "      </b:VisualElements>\n"
                            "    </Application>\n"
                            "    <Application Id=\"People\" />\n"
                            "  </Applications>\n"
                            "</Package>\n";

class StandInPackageStore : public testing::Test
{
protected:
    StandInPackageStore() { standin::SetText(standin::TextSetting::PackageStore, m_folder.Path()); }
    ~StandInPackageStore() override { standin::SetText(standin::TextSetting::PackageStore, L""); }

    // The store with one package, in the folder "Post".
    standin::StorePackages ReadWith(std::string_view ini) const
    {
        WritePackage(Folder(L"Post"), manifest, ini);
        standin::StorePackages packages = ReadPackageStore();
        EXPECT_EQ(packages.size(), 1u);
        return packages;
    }

    [[nodiscard]] std::wstring Folder(const wchar_t* name) const { return m_folder.Path() + L"\\" + name; }

    test::TemporaryFolder m_folder;
};

std::wstring Value(const standin::StorePackage& package, size_t application, const wchar_t* name)
{
    const std::wstring* value = package.manifest.applications.at(application).Find(name);
    return value ? *value : L"(none)";
}

std::string Parts(const standin::PackageVersion& version)
{
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
           std::to_string(version.build) + "." + std::to_string(version.revision);
}

} // namespace

TEST_F(StandInPackageStore, IsEmptyWithoutAFolder)
{
    standin::SetText(standin::TextSetting::PackageStore, L"");
    EXPECT_TRUE(ReadPackageStore().empty());
    standin::SetText(standin::TextSetting::PackageStore, Folder(L"nowhere"));
    EXPECT_TRUE(ReadPackageStore().empty());
}

TEST_F(StandInPackageStore, HasNoPackageThatGoesWhileItIsRead)
{
    WritePackage(Folder(L"Post"), manifest, "");
    const test::TemporaryFolder other;
    const test::CapturingPatch<decltype(&CreateFileW)> patch(
        "CreateFileW", [&](const wchar_t* path, auto... arguments) {
            if (path == Folder(L"Post") + L"\\" + standin::manifestFileName) {
                EXPECT_TRUE(MoveFileW(Folder(L"Post").c_str(), (other.Path() + L"\\Post").c_str()));
            }
            return patch.Original(path, arguments...);
        });
    EXPECT_TRUE(ReadPackageStore().empty());
    EXPECT_EQ(GetFileAttributesW(Folder(L"Post").c_str()), INVALID_FILE_ATTRIBUTES) << "it did not go";
}

TEST_F(StandInPackageStore, ReadsTheManifest)
{
    const auto packages = ReadWith("publisher_id = abc");
    const standin::StorePackage& package = *packages.at(0);
    EXPECT_EQ(package.name, L"Vel.Post");
    EXPECT_EQ(package.familyName, L"Vel.Post_abc");
    EXPECT_EQ(package.fullName, L"Vel.Post_1.2.3.4_x64__abc");
    EXPECT_EQ(package.installedPath, Folder(L"Post"));
    EXPECT_TRUE(package.isFramework);
    EXPECT_TRUE(package.isInstalled);
    ASSERT_EQ(package.manifest.applications.size(), 2u);
    EXPECT_EQ(Value(package, 0, L"DisplayName"), L"Salt & Pepper");
    EXPECT_EQ(Value(package, 0, L"ShortName"), L"Salt");
    EXPECT_EQ(Value(package, 0, L"LockScreenLogo"), L"badge.png");
    EXPECT_EQ(Value(package, 0, L"LockScreenNotification"), L"badge");
    EXPECT_EQ(package.UserModelId(package.manifest.applications[1]), L"Vel.Post_abc!People");
    EXPECT_EQ(Value(package, 1, L"DisplayName"), L"(none)");
}

TEST_F(StandInPackageStore, IniGoesBeforeTheManifest)
{
    const auto packages =
        ReadWith("name = Other\nfamily_name = Fam_x\nfull_name = Full\nversion = 9.8\nframework = 0\n"
                 "installed = 0\ndependencies = A_x, B_y\nlocation = C:\\far\\away\n"
                 "fail_id = 0x80070005\nfail_name = 7\n");
    const standin::StorePackage& package = *packages.at(0);
    EXPECT_EQ(package.name, L"Other");
    EXPECT_EQ(package.familyName, L"Fam_x");
    EXPECT_EQ(package.fullName, L"Full");
    EXPECT_EQ(Parts(package.version), "9.8.0.0");
    EXPECT_FALSE(package.isFramework);
    EXPECT_FALSE(package.isInstalled);
    EXPECT_EQ(package.dependencies, (std::vector<std::wstring>{L"A_x", L"B_y"}));
    EXPECT_EQ(package.installedPath, L"C:\\far\\away");
    EXPECT_EQ(package.Fault(L"fail_id"), E_ACCESSDENIED);
    EXPECT_EQ(package.Fault(L"fail_name"), S_OK);
    EXPECT_EQ(package.Fault(L"fail_version"), S_OK);
}

TEST_F(StandInPackageStore, RelativeLocationIsBelowThePackage)
{
    EXPECT_EQ(ReadWith("location = deep\\down").at(0)->installedPath, Folder(L"Post\\deep\\down"));
}

TEST_F(StandInPackageStore, OrderIsThatOfTheFoldersAndOthersAreLeftOut)
{
    for (const wchar_t* name : {L"b", L"C", L"A"}) {
        WritePackage(Folder(name), std::nullopt, "");
    }
    ASSERT_TRUE(CreateDirectoryW(Folder(L"empty").c_str(), nullptr));
    const auto packages = ReadPackageStore();
    ASSERT_EQ(packages.size(), 3u);
    EXPECT_EQ(packages[0]->name, L"A");
    EXPECT_EQ(packages[1]->name, L"b");
    EXPECT_EQ(packages[2]->name, L"C");
}

TEST(StandInManifest, CutOffDocumentFailsAndKeepsWhatStoodBefore)
{
    const std::string_view whole = manifest;
    standin::Manifest read;
    for (size_t length = 0; length <= whole.rfind('>'); ++length) {
        if (test::EndsTheProcess(whole.substr(0, length))) {
            continue;
        }
        Microsoft::WRL::ComPtr<IStream> stream;
        stream.Attach(
            SHCreateMemStream(reinterpret_cast<const BYTE*>(whole.data()), static_cast<UINT>(length)));
        EXPECT_LT(standin::ReadManifest(stream.Get(), read), 0) << length;
    }
    EXPECT_EQ(read.name, L"Vel.Post");
    EXPECT_EQ(read.applications.size(), 2u);
}

// Whoever moves a file has it open for a moment, for deleting, under its new name too.
TEST_F(StandInPackageStore, ManifestThatIsBeingMovedIsRead)
{
    WritePackage(Folder(L"Post"), manifest, "");
    const std::wstring path = Folder(L"Post\\AppxManifest.xml");
    const HANDLE mover = CreateFileW(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                     OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(mover, INVALID_HANDLE_VALUE);
    standin::Manifest read;
    EXPECT_EQ(standin::ReadManifestFile(path, read), S_OK);
    EXPECT_EQ(read.name, L"Vel.Post");
    CloseHandle(mover);
}

TEST_F(StandInPackageStore, DocumentsOfOthersAreRefused)
{
    standin::Manifest read;
    WritePackage(Folder(L"Post"), "<a><Identity Name=\"Vel.Post\" /></a>", "");
    EXPECT_EQ(standin::ReadManifestFile(Folder(L"Post\\AppxManifest.xml"), read),
              static_cast<HRESULT>(0x80080204));
}

TEST_F(StandInPackageStore, PackagesAreCopiedAndDeleted)
{
    WritePackage(Folder(L"deep\\Post"), manifest, "publisher_id = abc");
    standin::CopyPackage(Folder(L"deep\\Post"), Folder(L"Copy"));
    ASSERT_EQ(ReadPackageStore().size(), 1u);
    EXPECT_EQ(ReadPackageStore().at(0)->familyName, L"Vel.Post_abc");
    EXPECT_THROW(standin::CopyPackage(Folder(L"nowhere"), Folder(L"Other")), standin::Failure);
    EXPECT_TRUE(DeletePackage(Folder(L"Copy")));
    EXPECT_TRUE(ReadPackageStore().empty());
    EXPECT_EQ(GetFileAttributesW(Folder(L"Copy").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(StandInPackageVersion, MissingPartsAreZero)
{
    EXPECT_EQ(Parts(standin::ParseVersion(L"1.20")), "1.20.0.0");
    EXPECT_EQ(Parts(standin::ParseVersion(L"")), "0.0.0.0");
    EXPECT_EQ(Parts(standin::ParseVersion(L"1.2.3.65535")), "1.2.3.65535");
}
