// How the package manager starts in a process whose executable has another one in its first refresh pass.

#include "discovery/PackageManager.h"

#include "common/DiagnosticLog.h"
#include "support/OtherProcess.h"
#include "unit/discovery/Start.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace discovery_test;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using OtherProcessStart = PackageManagerStart;

// Another process of the same executable that is in its first refresh pass.
const test::Part g_holdMutex(L"HoldMutex", [](const test::Part::Context& context) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, context.Argument().c_str());
    context.ReadyUntilEnd();
    CloseHandle(mutex);
    return 0;
});

// The other process ends its first pass at the last of these pauses.
int g_pausesLeft = 0;

void LoseMutexAtLast(DWORD)
{
    if (--g_pausesLeft == 0) {
        OtherProcessStart::LoseMutex();
    }
}

TEST_F(OtherProcessStart, DuringTheFirstPassLoadsThePreset)
{
    WriteCatalog();
    WritePreset();
    const test::OtherProcess other(L"HoldMutex", MutexName());
    const test::FakeSleep sleep;
    // The end of the file is what ended the reading.
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    EXPECT_THAT(sleep.Calls(), ElementsAre(100u, 100u, 100u, 100u, 100u));
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, LogOfAnotherProcessDuringTheFirstPass)
{
    WriteEmptyCatalog();
    WriteEmptyPreset();
    HoldMutexElsewhere();
    const test::FakeSleep sleep;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(
                    OtherLines() + PresetLines() + LoadLines(PresetFile(), "0x00000001"), "0x00000001")));
}

TEST_F(OtherProcessStart, LooksForTheMutexFiveTimes)
{
    WriteEmptyCatalog();
    HoldMutexElsewhere();
    const test::FakeSleep sleep;
    const MutexLooks looks;
    DiagnosticLog::SetEnabled(false);
    std::vector<HANDLE> closed;
    {
        const ClosedHandles closedHandles;
        (void)m_manager.Initialize();
        closed = closedHandles.Get();
    }
    ASSERT_EQ(looks.Get().size(), 5u);
    looks.ExpectFor(MutexName());
    // First the handle of the creation, then that of each look.
    ASSERT_EQ(closed.size(), 6u);
    for (std::size_t look = 0; look < 5; ++look) {
        EXPECT_NE(looks.Get()[look].mutex, nullptr);
        EXPECT_EQ(closed[look + 1], looks.Get()[look].mutex);
    }
    // Nothing of this process keeps the mutex alive.
    LoseMutex();
    EXPECT_FALSE(MutexExists());
}

TEST_F(OtherProcessStart, KeepsEachLookOpenWhileItPauses)
{
    WriteEmptyCatalog();
    HoldMutexElsewhere();
    test::FakeSleep sleep;
    const MutexLooks looks;
    static const MutexLooks* s_looks;
    static bool s_open;
    s_looks = &looks;
    s_open = true;
    sleep.OnSleep([](DWORD) {
        DWORD flags = 0;
        s_open = s_open && GetHandleInformation(s_looks->Get().back().mutex, &flags);
    });
    (void)m_manager.Initialize();
    EXPECT_TRUE(s_open);
}

TEST_F(OtherProcessStart, LoadsTheCatalogWhenTheMutexVanishes)
{
    WriteCatalog();
    WritePreset();
    HoldMutexElsewhere();
    g_pausesLeft = 3;
    test::FakeSleep sleep;
    sleep.OnSleep(LoseMutexAtLast);
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(sleep.Calls(), ElementsAre(100u, 100u, 100u));
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, LogWhenTheMutexVanishes)
{
    WriteEmptyCatalog();
    HoldMutexElsewhere();
    g_pausesLeft = 1;
    test::FakeSleep sleep;
    sleep.OnSleep(LoseMutexAtLast);
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(
                    OtherLines() + Lines{kNoMutex} + LoadLines(CatalogFile(), "0x00000001"), "0x00000001")));
}

TEST_F(OtherProcessStart, AMutexThatVanishesAfterTheFifthLookIsTooLate)
{
    WriteCatalog();
    WritePreset();
    HoldMutexElsewhere();
    g_pausesLeft = 5;
    test::FakeSleep sleep;
    sleep.OnSleep(LoseMutexAtLast);
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
}

TEST_F(OtherProcessStart, WithoutACatalogDoesNotLookForTheMutex)
{
    WriteEmptyPreset();
    HoldMutexElsewhere();
    const test::FakeSleep sleep;
    const MutexLooks looks;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(looks.Get(), IsEmpty());
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(
                    OtherLines() + PresetLines() + LoadLines(PresetFile(), "0x00000001"), "0x00000001")));
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, ReturnsTheFailureOfTheLoad)
{
    HoldMutexElsewhere();
    EXPECT_EQ(m_manager.Initialize(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(InitializeLines(
                                   OtherLines() + PresetLines() + LoadLines(PresetFile(), "0x80070002") +
                                       Lines{"m_AppNameList.Load() failed. ErrCode = 0x80070002 "},
                                   "0x80070002")));
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, WithoutThePathsFails)
{
    // Without its path, a host takes the product's name for the mutex.
    HoldMutexElsewhere(L"QanHelper");
    m_host.FailNext(test::HostExecutable::kAlways);
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, WithoutAMutexItIsNotTheFirstProcess)
{
    WriteEmptyCatalog();
    const test::ImportPatch<decltype(&CreateMutexW)> patch(
        "CreateMutexW", [](SECURITY_ATTRIBUTES*, BOOL, const wchar_t*) -> HANDLE {
            SetLastError(ERROR_ALREADY_EXISTS);
            return nullptr;
        });
    const test::FakeSleep sleep;
    const MutexLooks looks;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_EQ(looks.Get().size(), 1u);
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(
                    ModuleNameLines() + Lines{"CQanhPackageManager::Initialize CreateMutex() failed. "} +
                        FolderLines() + Lines{kNoMutex} + LoadLines(CatalogFile(), "0x00000001"),
                    "0x00000001")));
    ExpectNotOwner();
}

} // namespace
