// How the library is brought up and taken down.

#include "support/TemporaryFolder.h"
#include "unit/api/LifecycleHost.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace api_test;
using test::Apartment;
using ::testing::ElementsAre;

TEST_F(LifecycleInShell, FirstCallBringsUpTheMonitorModeThenThePackageManager)
{
    HANDLE mutexBefore = INVALID_HANDLE_VALUE;
    m_shell.objects.At("CoCreateInstance", [&] { mutexBefore = CQanhPackageManager::m_hInstanceMutex; });
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(mutexBefore, nullptr);
    EXPECT_EQ(s_nCount, 1);
    EXPECT_EQ(m_shell.Created(), 1u);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, m_shell.visibility);
    EXPECT_NE(s_PackageManager.m_hExitEvent, nullptr);
    EXPECT_NE(s_PackageManager.m_hRefreshThread, nullptr);
    EXPECT_THAT(Outline(m_log.Lines()),
                ElementsAre("QanhInitialize IN", "CQanhMonitorMode::Initialize IN",
                            "CQanhMonitorMode::Initialize OUT(0)", "CQanhPackageManager::Initialize IN",
                            "CQanhPackageManager::Initialize OUT(0x00000000)",
                            "QanhInitialize OUT(0) : s_nCount(1)"));
}

TEST_F(LifecycleInShell, LastCallTakesDownThePackageManagerThenTheMonitorMode)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    HANDLE threadAtRelease = INVALID_HANDLE_VALUE;
    m_shell.objects.At("Release", [&] { threadAtRelease = s_PackageManager.m_hRefreshThread; });
    QanhFinalize();
    EXPECT_EQ(threadAtRelease, nullptr);
    EXPECT_EQ(m_shell.visibility->References(), 0);
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, nullptr);
    EXPECT_EQ(s_PackageManager.m_hExitEvent, nullptr);
    EXPECT_EQ(s_PackageManager.m_hRefreshThread, nullptr);
    EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
    EXPECT_THAT(Outline(m_log.Lines()),
                ElementsAre("QanhFinalize IN", "CQanhPackageManager::Finalize IN",
                            "CQanhPackageManager::Finalize OUT", "CQanhMonitorMode::Finalize IN",
                            "CQanhMonitorMode::Finalize OUT", "QanhFinalize OUT : s_nCount(0)"));
}

TEST_F(LifecycleInShell, SecondCallOnlyCountsAndReadsTheSetting)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 2);
    EXPECT_EQ(m_shell.Created(), 1u);
    Lines expected = kSettingLines;
    expected.insert(expected.end(), {"QanhInitialize IN", "QanhInitialize OUT(0) : s_nCount(2)"});
    EXPECT_EQ(m_log.Lines(), expected);
}

TEST_F(LifecycleInShell, StaysUpUntilEveryCallIsTakenBack)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    QanhFinalize();
    EXPECT_EQ(s_nCount, 1);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, m_shell.visibility);
    EXPECT_NE(s_PackageManager.m_hRefreshThread, nullptr);
    EXPECT_THAT(m_log.Lines(), ElementsAre("QanhFinalize IN", "QanhFinalize OUT : s_nCount(1)"));
    QanhFinalize();
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(m_shell.visibility->References(), 0);
    EXPECT_EQ(s_PackageManager.m_hRefreshThread, nullptr);
}

TEST_F(LifecycleInShell, IsBroughtUpAgainAfterItWasDown)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    QanhFinalize();
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 1);
    EXPECT_EQ(m_shell.Created(), 2u);
    EXPECT_NE(s_PackageManager.m_hRefreshThread, nullptr);
}

TEST_F(LifecycleInShell, FinalizeTooManyDoesNothing)
{
    DiagnosticLog::SetEnabled(true);
    QanhFinalize();
    QanhFinalize();
    EXPECT_EQ(s_nCount, 0);
    EXPECT_THAT(m_log.Lines(), ElementsAre("QanhFinalize IN", "QanhFinalize OUT : s_nCount(0)",
                                           "QanhFinalize IN", "QanhFinalize OUT : s_nCount(0)"));
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 1);
}

TEST_F(LifecycleInShell, FinalizeTooManyDoesNotLeaveTheHostsApartment)
{
    EXPECT_TRUE(test::KeepsApartment(Apartment::kSingleThreaded, [] { QanhFinalize(); }));
}

TEST_F(LifecycleInShell, EntersAnApartmentAndLeavesItAtTheEnd)
{
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [] {
        EXPECT_EQ(QanhInitialize(), S_OK);
        EXPECT_EQ(test::ApartmentOfThread(), Apartment::kSingleThreaded);
        QanhInitialize();
        QanhFinalize();
        EXPECT_EQ(test::ApartmentOfThread(), Apartment::kSingleThreaded);
        QanhFinalize();
    }));
    EXPECT_TRUE(test::KeepsApartment(Apartment::kSingleThreaded, [] {
        EXPECT_EQ(QanhInitialize(), S_OK);
        QanhFinalize();
    }));
}

TEST(LifecycleWithThread, FinalizeWaitsForTheFirstPass)
{
    const std::wstring hostName = NewHostName();
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment environment(L"LOCALAPPDATA", folder.Path().c_str());
    const test::ScopedKey settings(HKEY_LOCAL_MACHINE, test::kSettingsKey);
    const test::HostExecutable host(folder / (hostName + L".exe"));
    const test::FakeShell shell;
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(QanhInitialize(), S_OK);
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, (L"QanHelper_" + hostName).c_str());
    EXPECT_NE(mutex, nullptr);
    CloseHandle(mutex);
    QanhFinalize();
    EXPECT_GE(GetTickCount64() - start, 950u);
    EXPECT_EQ(s_PackageManager.m_hRefreshThread, nullptr);
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, (L"QanHelper_" + hostName).c_str()), nullptr);
    EXPECT_TRUE(test::Exists(folder / (L"Vel\\QanHelper\\" + hostName + L"\\AppNameList.xml")));
    s_PackageManager.m_AppNameList.Clear();
}

} // namespace
