// What becomes of a start that fails, or that succeeds in another way than usual.

#include "common/UniqueHandle.h"
#include "unit/api/LifecycleHost.h"

namespace {

using namespace api_test;

// The outline of a start that ends at a package manager with this result.
Lines FailedStart(const Lines& start, const std::string& result)
{
    return Call("QanhInitialize", "(s_PackageManager.Initialize : hr=" + result + ")",
                start + Call("CQanhMonitorMode::Finalize"));
}

TEST_F(LifecycleInShell, OtherSuccessOfThePackageManagerIsTheResult)
{
    // Another process of this executable is in its first pass: the preset file is all that there is.
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, MutexName().c_str()));
    WriteFileBytes(m_folder / L"PresetAppNameList.xml", "<Applications/>");
    EXPECT_EQ(QanhInitialize(), S_FALSE);
    EXPECT_EQ(s_nCount, 1);
    EXPECT_EQ(m_log.Lines().back(), "QanhInitialize OUT(1) : s_nCount(1)");
    EXPECT_EQ(QanhInitialize(), S_OK); // there is nothing left to do
}

TEST_F(LifecycleInShell, LoadFailureOfAnotherProcessLeavesTheLibraryDown)
{
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, MutexName().c_str()));
    // Neither file is there.
    EXPECT_EQ(QanhInitialize(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    ExpectDown();
    EXPECT_EQ(Outline(m_log.Lines()), FailedStart(StartLines("0x80070002"), "-2147024894"));
}

TEST_F(LifecycleInShell, PackageManagersFailureUndoesTheMonitorMode)
{
    m_host.FailNext(HostExecutable::kAlways);
    HRESULT hr = S_OK;
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [&] { hr = QanhInitialize(); }));
    EXPECT_EQ(hr, E_FAIL);
    EXPECT_EQ(m_shell.Created(), 1u);
    ExpectDown();
    EXPECT_EQ(Outline(m_log.Lines()), FailedStart(StartLines("0x80004005"), "-2147467259"));
    // The call can be repeated.
    m_host.FailNext(0);
    EXPECT_EQ(QanhInitialize(), S_OK);
    ExpectUp(1);
}

TEST_F(LifecycleInShell, ThreadThatDoesNotStartLeavesTheLibraryDownAndTheNextCallTriesAgain)
{
    {
        const ImportPatch<decltype(&CreateThread)> patch(
            "CreateThread",
            [](SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*) -> HANDLE {
                SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                return nullptr;
            });
        EXPECT_EQ(QanhInitialize(), E_FAIL);
    }
    ExpectDown();
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, MutexName().c_str()), nullptr);
    EXPECT_EQ(QanhInitialize(), S_OK);
    ExpectUp(1);
}

class LifecycleWithoutMonitorMode : public Lifecycle
{
protected:
    // A start in this apartment fails at the monitor mode; the package manager is not touched.
    void ExpectFailure(Apartment apartment, HRESULT result, const std::string& step,
                       const std::string& number)
    {
        HRESULT hr = S_OK;
        EXPECT_TRUE(KeepsApartment(apartment, [&] { hr = QanhInitialize(); }));
        EXPECT_EQ(hr, result);
        ExpectDown();
        EXPECT_EQ(m_log.Lines(),
                  Call("QanhInitialize", "(s_MonitorMode.Initialize : hr=" + number + ")",
                       Call("CQanhMonitorMode::Initialize", " " + step + ":(" + number + ")")));
    }
};

TEST_F(LifecycleWithoutMonitorMode, ThreadInAMultithreadedApartmentIsRefused)
{
    const FakeShell shell;
    ExpectFailure(Apartment::kMultithreaded, RPC_E_CHANGED_MODE, "CoInitializeEx", "-2147417850");
    EXPECT_EQ(shell.Created(), 0u);
}

TEST_F(LifecycleWithoutMonitorMode, WithoutAShellThePackageManagerIsNotTouched)
{
    ExpectFailure(Apartment::kNone, REGDB_E_CLASSNOTREG, "CoCreateInstance", "-2147221164");
}

} // namespace
