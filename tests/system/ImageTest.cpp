// The built library as a file: what a launcher's installer and the loader see.
#include "system/ImageFile.h"
#include "system/Sandbox.h"
#include "system/Windows8Imports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <set>
#include <sstream>
#include <utility>
#include <vector>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::wstring LibraryPath()
{
    return test::BuildFolder() + L"\\QanHelper.dll";
}

TEST(Image, ExportsExactlyTheNineUndecoratedNames)
{
    const test::ImageFile image(LibraryPath());
    EXPECT_THAT(image.ExportNames(),
                ElementsAre("QanhFinalize", "QanhGetAppDisplayNameByPFN", "QanhInitialize", "QanhIsInstalled",
                            "QanhIsInstalledByAppUserModeID", "QanhLaunchByManager", "QanhLaunchBySearch",
                            "QanhLaunchIEBySearch", "QanhReleaseString"));
    EXPECT_EQ(image.ExportCount(), 9u); // none by number only
}

// What the image imports and Windows 8 may not have, as "library: function".
std::vector<std::string> ForeignImports(const test::ImageFile& image)
{
    std::set<std::pair<std::string, std::string>> known;
    for (const test::Windows8Library& library : test::windows8Libraries) {
        std::istringstream functions{std::string(library.functions)};
        for (std::string function; functions >> function;) {
            known.emplace(library.name, function);
        }
    }
    std::vector<std::string> foreign;
    for (const auto& [library, function] : image.Imports()) {
        if (!known.contains({library, function})) {
            foreign.push_back(library + ": " + function);
        }
    }
    return foreign;
}

TEST(Image, ImportsOnlyWhatWindows8Has)
{
    const test::ImageFile image(LibraryPath());
    EXPECT_THAT(ForeignImports(image), IsEmpty());
    EXPECT_THAT(image.Imports(),
                Contains(std::pair<std::string, std::string>("kernel32.dll", "CreateMutexW")));
    EXPECT_FALSE(image.HasDelayedImports());
}

TEST(Image, ImportsOfOtherFunctionsAreSeen)
{
    const test::ImageFile tests(test::BuildFolder() + L"\\system_tests.exe");
    EXPECT_THAT(ForeignImports(tests), Contains("version.dll: VerQueryValueW"));
    EXPECT_THAT(ForeignImports(tests), Contains("kernel32.dll: CreateProcessW"));
}

TEST(Image, MayBePlacedAnywhereInMemoryAndRunsNoData)
{
    const test::ImageFile image(LibraryPath());
    EXPECT_TRUE(image.Characteristics() & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(image.Characteristics() & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
    EXPECT_TRUE(image.Characteristics() & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    EXPECT_TRUE(image.HasRelocations());
}

class VersionResource : public testing::Test
{
protected:
    void SetUp() override
    {
        DWORD ignored = 0;
        const DWORD size = GetFileVersionInfoSizeW(LibraryPath().c_str(), &ignored);
        ASSERT_GT(size, 0u);
        m_data.resize(size);
        ASSERT_TRUE(GetFileVersionInfoW(LibraryPath().c_str(), 0, size, m_data.data()));
    }

    VS_FIXEDFILEINFO Numbers() const
    {
        void* block = nullptr;
        UINT length = 0;
        EXPECT_TRUE(VerQueryValueW(m_data.data(), L"\\", &block, &length));
        return block ? *static_cast<const VS_FIXEDFILEINFO*>(block) : VS_FIXEDFILEINFO();
    }

    std::wstring Text(const std::wstring& name) const
    {
        void* text = nullptr;
        UINT length = 0;
        const std::wstring path = L"\\StringFileInfo\\040904B0\\" + name;
        return VerQueryValueW(m_data.data(), path.c_str(), &text, &length) ? static_cast<const wchar_t*>(text)
                                                                           : L"(none)";
    }

    std::vector<BYTE> m_data;
};

TEST_F(VersionResource, HoldsTheVersionAsNumbers)
{
    const VS_FIXEDFILEINFO version = Numbers();
    EXPECT_EQ(version.dwFileVersionMS, static_cast<DWORD>(MAKELONG(0, 1)));
    EXPECT_EQ(version.dwFileVersionLS, 0u);
    EXPECT_EQ(version.dwProductVersionMS, static_cast<DWORD>(MAKELONG(0, 1)));
    EXPECT_EQ(version.dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST_F(VersionResource, HoldsTheNamesAndTheVersionAsText)
{
    EXPECT_EQ(Text(L"FileVersion"), L"1.0.0");
    EXPECT_EQ(Text(L"ProductVersion"), L"1.0.0");
    EXPECT_EQ(Text(L"ProductName"), L"QanHelper");
    EXPECT_EQ(Text(L"InternalName"), L"QanHelper");
    EXPECT_EQ(Text(L"OriginalFilename"), L"QanHelper.dll");
}

TEST(Image, LinksWithItsImportLibraryInCAndInCpp)
{
    test::Sandbox sandbox;
    const test::StartedProcess linked = sandbox.Start(test::BuildFolder() + L"\\LinkedHost.exe");
    ASSERT_EQ(WaitForSingleObject(linked.process, 15000), WAIT_OBJECT_0);
    DWORD failures = STILL_ACTIVE;
    GetExitCodeProcess(linked.process, &failures);
    EXPECT_EQ(failures, 0u);
    CloseHandle(linked.process);
}

} // namespace
