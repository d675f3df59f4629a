// What becomes of a start that fails, or that succeeds in another way than usual.

#include "support/Text.h"
#include "unit/api/LifecycleHost.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace api_test;
using test::Apartment;
using ::testing::ElementsAre;

TEST_F(LifecycleInShell, OtherSuccessOfThePackageManagerIsTheResult)
{
    // Another process of this executable is in its first pass: the preset file is all that there is.
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, MutexName().c_str());
    test::WriteFileBytes(m_folder / L"PresetAppNameList.xml", "<Applications/>");
    EXPECT_EQ(QanhInitialize(), S_FALSE);
    EXPECT_EQ(s_nCount, 1);
    const Lines lines = Outline(m_log.Lines());
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "QanhInitialize OUT(1) : s_nCount(1)");
    EXPECT_EQ(QanhInitialize(), S_OK); // there is nothing left to do
    CloseHandle(mutex);
}

TEST_F(LifecycleInShell, LoadFailureOfAnotherProcessLeavesTheLibraryDown)
{
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, MutexName().c_str());
    // Neither file is there.
    const HRESULT notFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(QanhInitialize(), notFound);
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(m_shell.visibility->References(), 0);
    EXPECT_THAT(Outline(m_log.Lines()),
                ElementsAre("QanhInitialize IN", "CQanhMonitorMode::Initialize IN",
                            "CQanhMonitorMode::Initialize OUT(0)", "CQanhPackageManager::Initialize IN",
                            "CQanhPackageManager::Initialize OUT(0x80070002)",
                            "CQanhMonitorMode::Finalize IN", "CQanhMonitorMode::Finalize OUT",
                            "QanhInitialize OUT(s_PackageManager.Initialize : hr=-2147024894)"));
    CloseHandle(mutex);
}

TEST_F(LifecycleInShell, PackageManagersFailureUndoesTheMonitorMode)
{
    m_host.FailNext(test::HostExecutable::kAlways);
    HRESULT hr = S_OK;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { hr = QanhInitialize(); }));
    EXPECT_EQ(hr, E_FAIL);
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(m_shell.Created(), 1u);
    EXPECT_EQ(m_shell.visibility->References(), 0);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, nullptr);
    EXPECT_THAT(Outline(m_log.Lines()),
                ElementsAre("QanhInitialize IN", "CQanhMonitorMode::Initialize IN",
                            "CQanhMonitorMode::Initialize OUT(0)", "CQanhPackageManager::Initialize IN",
                            "CQanhPackageManager::Initialize OUT(0x80004005)",
                            "CQanhMonitorMode::Finalize IN", "CQanhMonitorMode::Finalize OUT",
                            "QanhInitialize OUT(s_PackageManager.Initialize : hr=-2147467259)"));
}

TEST_F(LifecycleInShell, ThreadThatDoesNotStartLeavesTheLibraryDownAndTheNextCallTriesAgain)
{
    {
        const test::ImportPatch<decltype(&CreateThread)> patch(
            "CreateThread",
            [](SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*) -> HANDLE {
                SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                return nullptr;
            });
        EXPECT_EQ(QanhInitialize(), E_FAIL);
    }
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(m_shell.visibility->References(), 0);
    EXPECT_EQ(s_PackageManager.m_hExitEvent, nullptr);
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, MutexName().c_str()), nullptr);
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 1);
    EXPECT_NE(s_PackageManager.m_hRefreshThread, nullptr);
}

TEST_F(LifecycleInShell, FailedCallCanBeRepeated)
{
    m_host.FailNext(test::HostExecutable::kAlways);
    ASSERT_EQ(QanhInitialize(), E_FAIL);
    m_host.FailNext(0);
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 1);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, m_shell.visibility);
}

TEST_F(Lifecycle, ThreadInAMultithreadedApartmentIsRefused)
{
    const test::FakeShell shell;
    HRESULT hr = S_OK;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kMultithreaded, [&] { hr = QanhInitialize(); }));
    EXPECT_EQ(hr, RPC_E_CHANGED_MODE);
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(shell.Created(), 0u);
    EXPECT_THAT(m_log.Lines(), ElementsAre("QanhInitialize IN", "CQanhMonitorMode::Initialize IN",
                                           "CQanhMonitorMode::Initialize OUT CoInitializeEx:(-2147417850)",
                                           "QanhInitialize OUT(s_MonitorMode.Initialize : hr=-2147417850)"));
}

TEST_F(Lifecycle, WithoutAShellThePackageManagerIsNotTouched)
{
    HRESULT hr = S_OK;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { hr = QanhInitialize(); }));
    EXPECT_EQ(hr, REGDB_E_CLASSNOTREG);
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, nullptr);
    EXPECT_THAT(m_log.Lines(), ElementsAre("QanhInitialize IN", "CQanhMonitorMode::Initialize IN",
                                           "CQanhMonitorMode::Initialize OUT CoCreateInstance:(-2147221164)",
                                           "QanhInitialize OUT(s_MonitorMode.Initialize : hr=-2147221164)"));
}

} // namespace
