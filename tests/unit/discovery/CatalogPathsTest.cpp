#include "discovery/PackageManager.h"

#include "support/HostExecutable.h"
#include "support/Test.h"

#include <shlobj.h>

#include <cwchar>

namespace {

using namespace test;

class CatalogPaths : public ::testing::Test
{
protected:
    HostExecutable m_host{L"C:\\Tools\\Launcher.exe"};
    LogCapture m_log;
    wchar_t m_text[MAX_PATH] = L"untouched";
};

class ModuleName : public CatalogPaths
{
protected:
    void ExpectOf(const std::wstring& path, const std::wstring& name)
    {
        m_host.Set(path);
        EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
        EXPECT_EQ(m_text, name);
    }
    // Of all calls. The wide name is printed as a narrow text: what stands before its first zero byte.
    void ExpectLog(const std::string& result) const
    {
        EXPECT_EQ(m_log.Lines(), Call("CQanhPackageManager::GetModuleName", result));
    }
};

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
        ExpectOf(path, name);
    }
}

TEST_F(ModuleName, IsThatOfTheProcessNotOfTheLibrary)
{
    std::vector<std::pair<HMODULE, DWORD>> calls; // module, size
    const CapturingPatch<decltype(&GetModuleFileNameW)> patch(
        "GetModuleFileNameW", [&](HMODULE module, wchar_t* buffer, DWORD size) {
            calls.emplace_back(module, size);
            lstrcpyW(buffer, L"C:\\x.exe");
            return 8;
        });
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), S_OK);
    EXPECT_THAT(calls, ElementsAre(std::pair(nullptr, 260u)));
}

TEST(ModuleNameOfThisProgram, IsItsOwn)
{
    wchar_t name[MAX_PATH];
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&name), S_OK);
    EXPECT_STREQ(name, L"unit_discovery");
}

TEST_F(ModuleName, Log)
{
    ExpectOf(L"C:\\Tools\\Launcher.exe", L"Launcher");
    ExpectLog("(L)");
    m_log.Clear();
    ExpectOf(L"C:\\Tools\\\u30e9\u30f3.exe", L"\u30e9\u30f3");
    ExpectLog("(\xe9\x30\xf3\x30)");
}

TEST_F(ModuleName, NeedsABuffer)
{
    EXPECT_EQ(CQanhPackageManager::GetModuleName(nullptr), E_POINTER);
    ExpectLog("(0x80004003)");
}

TEST_F(ModuleName, CannotBeHadWithoutThePath)
{
    m_host.FailNext(1);
    EXPECT_EQ(CQanhPackageManager::GetModuleName(&m_text), E_FAIL);
    ExpectLog("(0)");
}

TEST_F(ModuleName, OfTheLongestPath)
{
    const std::wstring name(252, L'n');
    ExpectOf(L"C:\\" + name + L".exe", name);
    ASSERT_EQ(m_host.Path().size(), 259u);
}

// 260 characters and more do not fit: what is left of the path decides, also when it has no end.
TEST_F(ModuleName, OfAPathThatIsCut)
{
    const std::wstring folder = L"C:\\" + std::wstring(246, L'f') + L"\\";
    ASSERT_EQ(folder.size(), 250u);
    ExpectOf(folder + L"123456.exe", L"123456");
    ExpectOf(folder + L"1234567890.exe", L"123456789");
    m_host.LeaveTerminatorOut();
    ExpectOf(folder + L"1234567890.exe", L"123456789");
}

class CatalogFolder : public CatalogPaths
{
protected:
    void ExpectMade(const std::wstring& folder)
    {
        EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
        EXPECT_EQ(m_text, folder);
    }
    void ExpectLog(const std::string& result, const Lines& lines = {}) const
    {
        EXPECT_EQ(m_log.Lines(), Call("CQanhPackageManager::CreateAppNameListFolder", result, lines));
    }
    // That the making of the folder that was asked for has failed is no failure.
    void ExpectFailedMaking(const std::string& code)
    {
        ExpectMade(m_log.LocalAppData() + L"\\Vel\\QanHelper\\Launcher");
        ExpectLog(Letter(), {"CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. "
                             "ErrCode = (" +
                             code + ")"});
    }
    // The folder in the exit line: of a wide text, what stands before its first zero byte.
    std::string Letter() const { return std::string("(") + static_cast<char>(m_text[0]) + ")"; }
};

TEST_F(CatalogFolder, IsMadeWithAllItsParents)
{
    const TemporaryFolder folder;
    const ScopedEnvironment environment(L"LOCALAPPDATA", (folder / L"not\\there").c_str());
    m_host.Set(L"C:\\Tools\\a.b.exe");
    ExpectMade(folder / L"not\\there\\Vel\\QanHelper\\a");
    EXPECT_TRUE(Exists(m_text));
    ExpectLog(Letter());
}

TEST_F(CatalogFolder, ThatIsThereAlreadyIsReportedAsASuccess)
{
    ExpectFailedMaking("183");
}

// Makes no folder, for values of the environment that are nowhere to be found.
class CatalogFolderNotMade : public CatalogFolder
{
protected:
    void ExpectFailure()
    {
        m_log.Clear();
        EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), E_FAIL);
        EXPECT_THAT(m_made, IsEmpty());
        ExpectLog("(0)");
    }

    std::vector<std::wstring> m_made; // the folders that would be made
    int m_result = 0;                 // of making them
    CapturingPatch<decltype(&SHCreateDirectoryExW)> m_patch{
        "SHCreateDirectoryExW",
        [this](HWND window, const wchar_t* path, const SECURITY_ATTRIBUTES* security) {
            m_made.push_back(window || security ? L"not asked for" : path);
            return m_result;
        }};
};

TEST_F(CatalogFolderNotMade, ThatCannotBeMadeIsReportedAsASuccess)
{
    m_result = 5;
    ExpectFailedMaking("5");
    EXPECT_THAT(m_made, ElementsAre(m_text));
}

TEST_F(CatalogFolderNotMade, OneBackslashAtTheEndOfTheVariableIsDropped)
{
    const std::pair<const wchar_t*, const wchar_t*> folders[] = {
        {L"D:\\Data", L"D:\\Data\\Vel\\QanHelper\\Launcher"},
        {L"D:\\Data\\", L"D:\\Data\\Vel\\QanHelper\\Launcher"},
        {L"D:\\Data\\\\", L"D:\\Data\\\\Vel\\QanHelper\\Launcher"},
        {L"D:\\", L"D:\\Vel\\QanHelper\\Launcher"},
        {L"\\", L"\\Vel\\QanHelper\\Launcher"},
        {L"", L"\\Vel\\QanHelper\\Launcher"}, // it is there, and has no last character to look at
        {L"D:\\Data/", L"D:\\Data/\\Vel\\QanHelper\\Launcher"},
        {L"D:\\\u30c7\u30fc\u30bf\\", L"D:\\\u30c7\u30fc\u30bf\\Vel\\QanHelper\\Launcher"},
    };
    for (const auto& [variable, folder] : folders) {
        SCOPED_TRACE(ToUtf8(variable));
        const ScopedEnvironment environment(L"LOCALAPPDATA", variable);
        m_made.clear();
        ExpectMade(folder);
        EXPECT_THAT(m_made, ElementsAre(folder));
    }
}

TEST_F(CatalogFolderNotMade, IsNamedAfterTheExecutableUpToItsFirstDot)
{
    const ScopedEnvironment environment(L"LOCALAPPDATA", L"D:");
    m_host.Set(L"C:\\v1.0\\\u30e9\u30f3\u30c1\u30e3\u30fc.b.exe");
    ExpectMade(L"D:\\Vel\\QanHelper\\\u30e9\u30f3\u30c1\u30e3\u30fc");
}

TEST_F(CatalogFolderNotMade, NeedsTheVariable)
{
    const ScopedEnvironment environment(L"LOCALAPPDATA", nullptr);
    ExpectFailure();
    EXPECT_STREQ(m_text, L"");
}

TEST_F(CatalogFolderNotMade, NeedsAVariableThatFits)
{
    for (const std::size_t length : {260u, 261u, 1000u}) {
        const ScopedEnvironment environment(L"LOCALAPPDATA",
                                            (L"D:\\" + std::wstring(length - 3, L'x')).c_str());
        ExpectFailure();
    }
}

TEST_F(CatalogFolderNotMade, OfTheLongestVariableStaysInItsBuffer)
{
    const ScopedEnvironment environment(L"LOCALAPPDATA", (L"D:\\" + std::wstring(256, L'x')).c_str());
    EXPECT_EQ(CQanhPackageManager::CreateAppNameListFolder(m_text), S_OK);
    EXPECT_LT(std::wcslen(m_text), 260u);
    EXPECT_EQ(m_made.size(), 1u);
}

TEST_F(CatalogFolderNotMade, NeedsThePathOfTheExecutable)
{
    m_host.FailNext(1);
    ExpectFailure();
}

class PresetFile : public CatalogPaths
{
protected:
    void ExpectOf(const std::wstring& executable, const std::wstring& preset)
    {
        m_host.Set(executable);
        EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
        EXPECT_EQ(m_text, preset);
    }
    void ExpectLog(const std::string& result) const
    {
        EXPECT_EQ(m_log.Lines(), Call("CQanhPackageManager::GetPresetAppNameFullPath", result));
    }
};

TEST_F(PresetFile, StandsBesideTheExecutable)
{
    ExpectOf(L"C:\\Tools v1.2\\a.b.exe", L"C:\\Tools v1.2\\PresetAppNameList.xml");
    ExpectLog("(C)");
    ExpectOf(L"D:\\Launcher.exe", L"D:\\PresetAppNameList.xml");
    ExpectOf(L"D:\\\u30c4\u30fc\u30eb\\\xd800.exe", L"D:\\\u30c4\u30fc\u30eb\\PresetAppNameList.xml");
}

TEST_F(PresetFile, CannotBeHadWithoutThePathOfTheExecutable)
{
    m_host.FailNext(1);
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), FALSE);
    ExpectLog("(0)");
}

TEST_F(PresetFile, OfTheLongestPathStaysInItsBuffer)
{
    const std::wstring folder = L"C:\\" + std::wstring(234, L'f');
    ExpectOf(folder + L"\\x.exe", folder + L"\\PresetAppNameList.xml");
    ASSERT_EQ(std::wcslen(m_text), 259u);
    m_host.Set(folder + L"ff\\x.exe");
    EXPECT_EQ(CQanhPackageManager::GetPresetAppNameFullPath(m_text), TRUE);
    EXPECT_LT(std::wcslen(m_text), 260u);
}

} // namespace
