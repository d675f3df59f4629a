// How the log is switched.

#include "unit/api/LifecycleHost.h"

namespace {

using namespace api_test;

TEST_F(LifecycleInShell, LogIsSwitchedOffByTheNextCallOnly)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    m_settings.SetDword(L"DebugLog", 0);
    QanhReleaseString(nullptr);
    EXPECT_EQ(m_log.Lines(), Call("QanhReleaseString"));
    m_log.Clear();
    EXPECT_EQ(QanhInitialize(), S_OK);
    QanhReleaseString(nullptr);
    QanhFinalize();
    // The last lines are those of the reading that found it off.
    EXPECT_EQ(m_log.Lines(), Call("CQanhReg::IsDebugLogOn", "(0)", Call("CQanhReg::GetDWORDRegVal", "(1)")));
}

TEST_F(LifecycleInShell, LogIsSwitchedOnByTheNextCallOnly)
{
    m_settings.Delete();
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_settings.SetDword(L"DebugLog", 1);
    QanhReleaseString(nullptr);
    EXPECT_FALSE(Exists(m_log.File()));
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(m_log.Lines(), Call("QanhInitialize", "(0) : s_nCount(2)"));
}

TEST_F(LifecycleInShell, WithoutTheSettingNoLogIsMade)
{
    m_settings.DeleteValue(L"DebugLog");
    ASSERT_EQ(QanhInitialize(), S_OK);
    QanhFinalize();
    EXPECT_FALSE(Exists(m_log.File()));
    m_settings.SetText(L"DebugLog", L"1");
    ASSERT_EQ(QanhInitialize(), S_OK);
    QanhFinalize();
    EXPECT_FALSE(Exists(m_log.File()));
}

TEST_F(Lifecycle, FailedCallSwitchesTheLogToo)
{
    EXPECT_EQ(QanhInitialize(), REGDB_E_CLASSNOTREG);
    m_log.Clear();
    EXPECT_EQ(QanhInitialize(), REGDB_E_CLASSNOTREG);
    const Lines lines = m_log.Lines();
    ASSERT_GT(lines.size(), kSettingLines.size());
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 4), kSettingLines);
    m_settings.SetDword(L"DebugLog", 0);
    EXPECT_EQ(QanhInitialize(), REGDB_E_CLASSNOTREG);
    m_log.Clear();
    EXPECT_EQ(QanhInitialize(), REGDB_E_CLASSNOTREG);
    EXPECT_THAT(m_log.Lines(), IsEmpty());
}

TEST_F(LifecycleInShell, LogLiesInTheFolderOfTheHostOfEachCall)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    const std::wstring otherName = m_hostName + L"x";
    const std::wstring otherFolder = m_log.LocalAppData() + L"\\Vel\\QanHelper\\" + otherName;
    MakeFolder(otherFolder);
    m_host.Set(m_folder / (otherName + L".y.exe"));
    EXPECT_EQ(QanhInitialize(), S_OK);
    ASSERT_TRUE(Exists(otherFolder + L"\\QanHelperLog.txt"));
    EXPECT_EQ(WithoutTimeStamps(ReadFileBytes(otherFolder + L"\\QanHelperLog.txt")),
              "QanhInitialize IN\r\nQanhInitialize OUT(0) : s_nCount(2)\r\n");
}

} // namespace
