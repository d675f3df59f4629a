#include "discovery/PackageManager.h"

#include "support/HostExecutable.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <shlobj.h>

#include <string>
#include <vector>

namespace {

using test::HostExecutable;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CatalogPaths : public ::testing::Test
{
protected:
    HostExecutable m_host{L"C:\\Tools\\Launcher.exe"};
    test::LogCapture m_log;
    wchar_t m_text[MAX_PATH] = L"untouched";
};

using ModuleName = CatalogPaths;

TEST_F(ModuleName, IsTheExecutablesNameUpToItsFirstDot)
{
    const std::pair<const wchar_t*, const wchar_t*> names[] = {
        {L"C:\\Tools\\Launcher.exe", L"Launcher"},
        {L"C:\\Tools\\a.b.exe", L"a"},
        {L"C:\\Tools\\a.b.c.d.exe", L"a"},
        {L"C:\\Tools v1.2\\x.y\\Launcher.exe", L"Launcher"},
        {L"C:\\Launcher", L"Launcher"},
        {L"C:\\Tools\\.exe", L""},
        {L"C:\\Tools\\Launcher.", L"Launcher"},
        {L"C:\\Tools\\My Launcher (x64).exe", L"My Launcher (x64)"},
        {L"\\\\server\\share\\Launcher.exe", L"Launcher"},
        {L"C:\\Tools\\\u30e9\u30f3\u30c1\u30e3\u30fc.exe", L"\u30e9\u30f3\u30c1\u30e3\u30fc"},
        {L"C:\\Tools\\x\xd800y.exe", L"x\xd800y"},
    };
    for (const auto& [path, name] : names) {
        m_host.Set(path);
        EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
        EXPECT_STREQ(m_text, name);
    }
}

TEST_F(ModuleName, IsThatOfTheProcessNotOfTheLibrary)
{
    struct Call
    {
        HMODULE module;
        DWORD size;
    };
    static std::vector<Call> s_calls;
    s_calls.clear();
    const test::ImportPatch<decltype(&GetModuleFileNameW)> patch(
        "GetModuleFileNameW", [](HMODULE module, wchar_t* buffer, DWORD size) -> DWORD {
            s_calls.push_back({module, size});
            lstrcpyW(buffer, L"C:\\x.exe");
            return 8;
        });
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    ASSERT_EQ(s_calls.size(), 1u);
    EXPECT_EQ(s_calls[0].module, nullptr);
    EXPECT_EQ(s_calls[0].size, 260u);
}

TEST(ModuleNameOfThisProgram, IsItsOwn)
{
    wchar_t name[MAX_PATH];
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&name), S_OK);
    EXPECT_STREQ(name, L"unit_discovery");
}

TEST_F(ModuleName, Log)
{
    // The wide name is printed as a narrow text: what stands before its first zero byte.
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::GetModuleName IN",
                                           "CQanhPackageManager::GetModuleName OUT(L)"));
    m_log.Clear();
    m_host.Set(L"C:\\Tools\\\u30e9\u30f3.exe");
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::GetModuleName IN",
                                           "CQanhPackageManager::GetModuleName OUT(\xe9\x30\xf3\x30)"));
}

TEST_F(ModuleName, NeedsABuffer)
{
    EXPECT_EQ(CQanhPackageManager::GetModuleName(nullptr), E_POINTER);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::GetModuleName IN",
                                           "CQanhPackageManager::GetModuleName OUT(0x80004003)"));
}

TEST_F(ModuleName, CannotBeHadWithoutThePath)
{
    m_host.FailNext(1);
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), E_FAIL);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::GetModuleName IN",
                                           "CQanhPackageManager::GetModuleName OUT(0)"));
}

TEST_F(ModuleName, OfTheLongestPath)
{
    const std::wstring name(252, L'n');
    m_host.Set(L"C:\\" + name + L".exe");
    ASSERT_EQ(m_host.Path().size(), 259u);
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_EQ(m_text, name);
}

TEST_F(ModuleName, OfAPathThatIsCut)
{
    // 260 characters and more do not fit: what is left of the path decides.
    const std::wstring folder = L"C:\\" + std::wstring(246, L'f') + L"\\";
    ASSERT_EQ(folder.size(), 250u);
    m_host.Set(folder + L"123456.exe");
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_STREQ(m_text, L"123456");
    m_host.Set(folder + L"1234567890.exe");
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_STREQ(m_text, L"123456789");
}

TEST_F(ModuleName, OfACutPathWithoutItsEnd)
{
    m_host.LeaveTerminatorOut();
    m_host.Set(L"C:\\" + std::wstring(246, L'f') + L"\\1234567890.exe");
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_STREQ(m_text, L"123456789");
}

// The folder that would be made, and the result of making it.
std::vector<std::wstring> g_made;
int g_makingResult = 0;

class CatalogFolder : public CatalogPaths
{
protected:
    // The line that tells the folder: of a wide text, what stands before its first zero byte.
    std::string OutLine() const
    {
        return std::string("CQanhPackageManager::CreateAppNameListFolder OUT(") +
               static_cast<char>(m_text[0]) + ")";
    }
};

// Makes no folder, for values of the environment that are nowhere to be found.
class CatalogFolderNotMade : public CatalogFolder
{
protected:
    CatalogFolderNotMade()
        : m_patch("SHCreateDirectoryExW",
                  [](HWND window, const wchar_t* path, const SECURITY_ATTRIBUTES* security) {
                      g_made.push_back(window || security ? L"not asked for" : path);
                      return g_makingResult;
                  })
    {
        g_made.clear();
        g_makingResult = 0;
    }

    test::ImportPatch<decltype(&SHCreateDirectoryExW)> m_patch;
};

TEST_F(CatalogFolder, IsMadeWithAllItsParents)
{
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment environment(L"LOCALAPPDATA", (folder / L"not\\there").c_str());
    m_host.Set(L"C:\\Tools\\a.b.exe");
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_EQ(m_text, folder / L"not\\there\\Vel\\QanHelper\\a");
    EXPECT_TRUE(test::Exists(m_text));
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::CreateAppNameListFolder IN", OutLine()));
}

TEST_F(CatalogFolder, ThatIsThereAlreadyIsReportedAsASuccess)
{
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_EQ(m_text, m_log.LocalAppData() + L"\\Vel\\QanHelper\\Launcher");
    EXPECT_THAT(
        m_log.Lines(),
        ElementsAre(
            "CQanhPackageManager::CreateAppNameListFolder IN",
            "CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)",
            OutLine()));
}

TEST_F(CatalogFolderNotMade, ThatCannotBeMadeIsReportedAsASuccess)
{
    g_makingResult = 5;
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_EQ(m_text, m_log.LocalAppData() + L"\\Vel\\QanHelper\\Launcher");
    EXPECT_THAT(g_made, ElementsAre(m_text));
    EXPECT_THAT(
        m_log.Lines(),
        ElementsAre("CQanhPackageManager::CreateAppNameListFolder IN",
                    "CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (5)",
                    OutLine()));
}

TEST_F(CatalogFolderNotMade, OneBackslashAtTheEndOfTheVariableIsDropped)
{
    const std::pair<const wchar_t*, const wchar_t*> folders[] = {
        {L"D:\\Data", L"D:\\Data\\Vel\\QanHelper\\Launcher"},
        {L"D:\\Data\\", L"D:\\Data\\Vel\\QanHelper\\Launcher"},
        {L"D:\\Data\\\\", L"D:\\Data\\\\Vel\\QanHelper\\Launcher"},
        {L"D:\\", L"D:\\Vel\\QanHelper\\Launcher"},
        {L"\\", L"\\Vel\\QanHelper\\Launcher"},
        {L"D:\\Data/", L"D:\\Data/\\Vel\\QanHelper\\Launcher"},
        {L"D:\\\u30c7\u30fc\u30bf\\", L"D:\\\u30c7\u30fc\u30bf\\Vel\\QanHelper\\Launcher"},
    };
    for (const auto& [variable, folder] : folders) {
        const test::ScopedEnvironment environment(L"LOCALAPPDATA", variable);
        g_made.clear();
        EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
        EXPECT_STREQ(m_text, folder);
        EXPECT_THAT(g_made, ElementsAre(folder));
    }
}

TEST_F(CatalogFolderNotMade, IsNamedAfterTheExecutableUpToItsFirstDot)
{
    const test::ScopedEnvironment environment(L"LOCALAPPDATA", L"D:");
    m_host.Set(L"C:\\v1.0\\a.b.exe");
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_STREQ(m_text, L"D:\\Vel\\QanHelper\\a");
    m_host.Set(L"C:\\v1.0\\\u30e9\u30f3\u30c1\u30e3\u30fc.exe");
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_STREQ(m_text, L"D:\\Vel\\QanHelper\\\u30e9\u30f3\u30c1\u30e3\u30fc");
}

TEST_F(CatalogFolderNotMade, NeedsTheVariable)
{
    const test::ScopedEnvironment environment(L"LOCALAPPDATA", nullptr);
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), E_FAIL);
    EXPECT_STREQ(m_text, L"");
    EXPECT_THAT(g_made, IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::CreateAppNameListFolder IN",
                                           "CQanhPackageManager::CreateAppNameListFolder OUT(0)"));
}

TEST_F(CatalogFolderNotMade, NeedsAVariableThatFits)
{
    for (const std::size_t length : {260u, 261u, 1000u}) {
        const test::ScopedEnvironment environment(L"LOCALAPPDATA",
                                                  (L"D:\\" + std::wstring(length - 3, L'x')).c_str());
        m_log.Clear();
        EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), E_FAIL);
        EXPECT_THAT(g_made, IsEmpty());
        EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::CreateAppNameListFolder IN",
                                               "CQanhPackageManager::CreateAppNameListFolder OUT(0)"));
    }
}

TEST_F(CatalogFolderNotMade, OfTheLongestVariableStaysInItsBuffer)
{
    const test::ScopedEnvironment environment(L"LOCALAPPDATA", (L"D:\\" + std::wstring(256, L'x')).c_str());
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_LT(std::wcslen(m_text), 260u);
    EXPECT_EQ(g_made.size(), 1u);
}

TEST_F(CatalogFolderNotMade, NeedsThePathOfTheExecutable)
{
    m_host.FailNext(1);
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), E_FAIL);
    EXPECT_THAT(g_made, IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::CreateAppNameListFolder IN",
                                           "CQanhPackageManager::CreateAppNameListFolder OUT(0)"));
}

using PresetFile = CatalogPaths;

TEST_F(PresetFile, StandsBesideTheExecutable)
{
    m_host.Set(L"C:\\Tools v1.2\\a.b.exe");
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
    EXPECT_STREQ(m_text, L"C:\\Tools v1.2\\PresetAppNameList.xml");
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::GetPresetAppNameFullPath IN",
                                           "CQanhPackageManager::GetPresetAppNameFullPath OUT(C)"));
    m_host.Set(L"D:\\Launcher.exe");
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
    EXPECT_STREQ(m_text, L"D:\\PresetAppNameList.xml");
    m_host.Set(L"D:\\\u30c4\u30fc\u30eb\\\xd800.exe");
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
    EXPECT_STREQ(m_text, L"D:\\\u30c4\u30fc\u30eb\\PresetAppNameList.xml");
}

TEST_F(PresetFile, CannotBeHadWithoutThePathOfTheExecutable)
{
    m_host.FailNext(1);
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), FALSE);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::GetPresetAppNameFullPath IN",
                                           "CQanhPackageManager::GetPresetAppNameFullPath OUT(0)"));
}

TEST_F(PresetFile, OfTheLongestPathStaysInItsBuffer)
{
    const std::wstring folder = L"C:\\" + std::wstring(234, L'f');
    m_host.Set(folder + L"\\x.exe");
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
    EXPECT_EQ(m_text, folder + L"\\PresetAppNameList.xml");
    ASSERT_EQ(std::wcslen(m_text), 259u);
    m_host.Set(folder + L"ff\\x.exe");
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
    EXPECT_LT(std::wcslen(m_text), 260u);
}

} // namespace
