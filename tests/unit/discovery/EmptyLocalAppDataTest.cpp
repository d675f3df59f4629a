#include "discovery/PackageManager.h"

#include "support/HostExecutable.h"
#include "support/ImportPatch.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <shlobj.h>

namespace {

// An empty variable is there, and has no last character to look at.
TEST(EmptyLocalAppData, GivesAFolderWithoutABeginning)
{
    const test::HostExecutable host(L"C:\\Tools\\Launcher.exe");
    const test::ScopedEnvironment variable(L"LOCALAPPDATA", L"");
    const test::ImportPatch<decltype(&SHCreateDirectoryExW)> patch(
        "SHCreateDirectoryExW", [](HWND, const wchar_t*, const SECURITY_ATTRIBUTES*) -> int { return 0; });
    wchar_t folder[MAX_PATH] = {};
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(folder), S_OK);
    EXPECT_STREQ(folder, L"\\Vel\\QanHelper\\Launcher");
}

} // namespace
