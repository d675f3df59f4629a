// How the package manager starts in a process whose executable has another one in its first refresh pass.

#include "support/OtherProcess.h"
#include "common/DiagnosticLog.h"
#include "unit/discovery/Start.h"

namespace {

using namespace discovery_test;

class OtherProcessStart : public PackageManagerStart
{
protected:
    // The pauses of a start, while the other process ends its first pass at this one of them.
    std::vector<DWORD> StartWhileMutexVanishesAt(std::size_t pause)
    {
        HoldMutexElsewhere();
        std::size_t pauses = 0;
        const FakeSleep sleep([&](DWORD) {
            if (++pauses == pause) {
                LoseMutex();
            }
        });
        EXPECT_EQ(m_manager.Initialize(), S_FALSE);
        return sleep.Calls();
    }
};

// Another process of the same executable that is in its first refresh pass.
const Part g_holdMutex(L"HoldMutex", [](const Part::Context& context) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, context.Argument().c_str());
    context.ReadyUntilEnd();
    CloseHandle(mutex);
    return 0;
});

TEST_F(OtherProcessStart, DuringTheFirstPassLoadsThePreset)
{
    WriteCatalog();
    WritePreset();
    const OtherProcess other(L"HoldMutex", MutexName());
    const FakeSleep sleep;
    // The end of the file is what ended the reading.
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    EXPECT_THAT(sleep.Calls(), ElementsAre(100u, 100u, 100u, 100u, 100u));
    ExpectLog("0x00000001", OtherLines() + LoadPresetLines());
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, LooksForTheMutexFiveTimes)
{
    WriteCatalog();
    HoldMutexElsewhere();
    const FakeSleep sleep;
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
    WriteCatalog();
    HoldMutexElsewhere();
    const MutexLooks looks;
    bool isOpen = true;
    const FakeSleep sleep([&](DWORD) {
        DWORD flags = 0;
        isOpen = isOpen && GetHandleInformation(looks.Get().back().mutex, &flags);
    });
    (void)m_manager.Initialize();
    EXPECT_TRUE(isOpen);
}

TEST_F(OtherProcessStart, LoadsTheCatalogWhenTheMutexVanishes)
{
    WriteCatalog();
    WritePreset();
    EXPECT_THAT(StartWhileMutexVanishesAt(3), ElementsAre(100u, 100u, 100u));
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    ExpectLog("0x00000001", OtherLines() + Lines{kNoMutex} + LoadLines(CatalogFile(), "0x00000001"));
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, AMutexThatVanishesAfterTheFifthLookIsTooLate)
{
    WriteCatalog();
    WritePreset();
    StartWhileMutexVanishesAt(5);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
}

TEST_F(OtherProcessStart, WithoutACatalogDoesNotLookForTheMutex)
{
    WritePreset();
    HoldMutexElsewhere();
    const FakeSleep sleep;
    const MutexLooks looks;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(looks.Get(), IsEmpty());
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    ExpectLog("0x00000001", OtherLines() + LoadPresetLines());
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, ReturnsTheFailureOfTheLoad)
{
    HoldMutexElsewhere();
    EXPECT_EQ(m_manager.Initialize(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    ExpectLog("0x80070002", OtherLines() + PresetLines() + FailedLoadLines(PresetFile(), "0x80070002"));
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, WithoutThePathsFails)
{
    // Without its path, a host takes the product's name for the mutex.
    HoldMutexElsewhere(L"QanHelper");
    m_host.FailNext(HostExecutable::kAlways);
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    ExpectNotOwner();
}

TEST_F(OtherProcessStart, WithoutAMutexItIsNotTheFirstProcess)
{
    WriteCatalog();
    const ImportPatch<decltype(&CreateMutexW)> patch(
        "CreateMutexW", [](SECURITY_ATTRIBUTES*, BOOL, const wchar_t*) -> HANDLE {
            SetLastError(ERROR_ALREADY_EXISTS);
            return nullptr;
        });
    const FakeSleep sleep;
    const MutexLooks looks;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_EQ(looks.Get().size(), 1u);
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    ExpectLog("0x00000001", ModuleNameLines() +
                                Lines{"CQanhPackageManager::Initialize CreateMutex() failed. "} +
                                FolderLines() + Lines{kNoMutex} + LoadLines(CatalogFile(), "0x00000001"));
    ExpectNotOwner();
}

} // namespace
