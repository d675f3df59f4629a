// Where the log is, and when nothing is written.
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

class Logging : public testing::Test
{
protected:
    // A little of everything.
    void Work()
    {
        test::HostProcess host(m_sandbox);
        EXPECT_EQ(host.Command("init"), "0x00000000");
        host.Command("installed\tfamily");
        host.Command("search\t3\t0\tMail");
        host.Command("release\t(null)");
        host.Do("finalize");
    }

    test::Sandbox m_sandbox;
};

TEST_F(Logging, SwitchedOffNoFileIsMade)
{
    m_sandbox.Settings().SetDword(L"DebugLog", 0);
    Work();
    EXPECT_TRUE(test::Exists(m_sandbox.CatalogFile()));
    EXPECT_FALSE(test::Exists(m_sandbox.LogFile()));
    EXPECT_FALSE(test::Exists(m_sandbox.Folder() + L"\\QanHelperLog.txt"));
}

TEST_F(Logging, WithoutTheSettingAnOldFileIsNotTouched)
{
    m_sandbox.Settings().Delete();
    test::MakeFolder(m_sandbox.CatalogFolder());
    test::WriteFileBytes(m_sandbox.LogFile(), "old");
    const auto lastWrite = [this] {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        GetFileAttributesExW(m_sandbox.LogFile().c_str(), GetFileExInfoStandard, &data);
        return data.ftLastWriteTime;
    };
    const FILETIME before = lastWrite();
    Work();
    const FILETIME after = lastWrite();
    EXPECT_EQ(CompareFileTime(&before, &after), 0);
    EXPECT_EQ(test::ReadFileBytes(m_sandbox.LogFile()), "old");
}

TEST_F(Logging, SettingOfAnotherTypeCountsAsOff)
{
    m_sandbox.Settings().SetText(L"DebugLog", L"1");
    Work();
    EXPECT_FALSE(test::Exists(m_sandbox.LogFile()));
}

TEST_F(Logging, SettingTakesEffectAtTheNextInitialize)
{
    m_sandbox.Settings().SetDword(L"DebugLog", 0);
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    m_sandbox.Settings().SetDword(L"DebugLog", 2); // anything but 0
    host.Command("release\t(null)");
    EXPECT_FALSE(test::Exists(m_sandbox.LogFile()));
    host.Command("init");
    EXPECT_TRUE(test::IsGolden(m_sandbox.Log(), "QanhInitialize IN ... OUT(0) : s_nCount(2)"));
    m_sandbox.Settings().SetDword(L"DebugLog", 0);
    host.Command("release\t(null)");
    host.Command("init");
    host.Command("release\t(null)");
    EXPECT_TRUE(test::IsGolden(m_sandbox.Log(), R"(
        QanhInitialize IN ... OUT(0) : s_nCount(2)
        QanhReleaseString IN ... OUT
        CQanhReg::IsDebugLogOn IN
        CQanhReg::GetDWORDRegVal IN ... OUT(1)
        CQanhReg::IsDebugLogOn OUT(0)
    )"));
}

TEST_F(Logging, EveryLineBeginsWithItsTime)
{
    test::HostProcess host(m_sandbox);
    host.Do("line-up");
    host.Command("init");
    host.Do("open");
    m_sandbox.WaitForLogLine(test::passEnd);
    host.Do("finalize");
    const std::string log = test::ReadFileBytes(m_sandbox.LogFile());
    ASSERT_TRUE(log.ends_with("\r\n"));
    const std::regex line(R"(\[\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3}\][^\[].*)");
    for (const std::string& text : test::Split(log.substr(0, log.size() - 2), "\r\n")) {
        EXPECT_TRUE(std::regex_match(text, line)) << text;
    }
}

TEST_F(Logging, WithoutAPlaceForItItGoesToTheCurrentFolder)
{
    const test::ScopedEnvironment local(L"LOCALAPPDATA", nullptr);
    test::WriteFileBytes(m_sandbox.PresetFile(), "<Applications/>");
    // Not the first process, so that nothing is saved anywhere.
    const test::FirstPassOfAnother owner;
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("init"), "0x00000001");
    host.Do("finalize");
    const std::string log = test::ReadFileBytes(m_sandbox.Folder() + L"\\QanHelperLog.txt");
    EXPECT_NE(log.find("]QanhInitialize IN\r\n"), std::string::npos);
    EXPECT_NE(log.find("]CQanhPackageManager::CreateAppNameListFolder OUT(0)\r\n"), std::string::npos);
    EXPECT_FALSE(test::Exists(m_sandbox.Local() + L"\\Vel"));
}

// The host's main() takes narrow arguments, so nobody has made the C runtime's wide copy of the environment.
// The platform's C runtime would make it from the narrow one, which lacks such letters; Wine's makes it from
// the environment itself, so that a library that asks the C runtime passes here too. HostEnvironmentTest
// tells the two apart.
TEST_F(Logging, FoldersMayHaveNamesThatTheCodePageLacks)
{
    const std::wstring folder = m_sandbox.Folder() + L"\\\u0436\u30e1\u0e01\xd83d\xde00";
    const std::wstring programs = L"\\Microsoft\\Windows\\Start Menu\\Programs";
    test::MakeFolder(folder + L" local");
    test::MakeFile(folder + L" all" + programs + L"\\Common.lnk");
    test::MakeFile(folder + L" me" + programs + L"\\Own.lnk");
    const test::ScopedEnvironment local(L"LOCALAPPDATA", (folder + L" local").c_str());
    const test::ScopedEnvironment allUsers(L"ALLUSERSPROFILE", (folder + L" all").c_str());
    const test::ScopedEnvironment roaming(L"APPDATA", (folder + L" me").c_str());
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    host.Do("finalize");
    const std::wstring files = folder + L" local\\Vel\\QanHelper\\TestHost\\";
    ASSERT_TRUE(test::Exists(files + L"QanHelperLog.txt"));
    EXPECT_NE(test::ReadFileBytes(files + L"QanHelperLog.txt").find("]QanhFinalize IN\r\n"),
              std::string::npos);
    ASSERT_TRUE(test::Exists(files + L"AppNameList.xml"));
    const std::string catalog = test::ReadFileBytes(files + L"AppNameList.xml");
    EXPECT_NE(catalog.find("DisplayName=\"Common\""), std::string::npos) << catalog;
    EXPECT_NE(catalog.find("DisplayName=\"Own\""), std::string::npos) << catalog;
}

TEST_F(Logging, NamesThatTheCodePageLacksDoNotSwallowTheLine)
{
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    const std::size_t offset = m_sandbox.LogLength();
    host.Command("search\t3\t0\tกა"); // Thai and Georgian, which no code page holds together
    EXPECT_TRUE(test::IsGolden(m_sandbox.Log(offset), "QanhLaunchBySearch(??, 3, 0) IN ... OUT(0x80070057)"));
}

} // namespace
