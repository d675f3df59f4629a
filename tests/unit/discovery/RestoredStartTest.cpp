// A start after a save that was cut off.

#include "discovery/CatalogTurn.h"

#include "support/ImportPatch.h"
#include "unit/discovery/Start.h"

#include <gmock/gmock.h>

#include <shlwapi.h>

#include <thread>

namespace {

using namespace discovery_test;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class RestoredStart : public PackageManagerStart
{
protected:
    std::wstring Bak() const { return CatalogFile() + L".bak"; }
    std::wstring Tmp() const { return CatalogFile() + L".tmp"; }
    void WriteBak() const { test::WriteFileBytes(Bak(), CatalogOf({L"C:\\kept.lnk"})); }
    void WriteHalfOfACatalog() const { test::WriteFileBytes(CatalogFile(), "<Applications><Desk"); }
};

TEST_F(RestoredStart, LoadsTheOldCatalog)
{
    WriteBak();
    WriteHalfOfACatalog();
    WritePreset();
    test::WriteFileBytes(Tmp(), "x");
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\kept.lnk"));
    EXPECT_EQ(test::ReadFileBytes(CatalogFile()), CatalogOf({L"C:\\kept.lnk"}));
    EXPECT_FALSE(test::Exists(Bak()));
    EXPECT_FALSE(test::Exists(Tmp()));
}

TEST_F(RestoredStart, LoadsTheOldCatalogAlsoWhereNothingOfTheNewOneIsThere)
{
    WriteBak();
    WritePreset();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\kept.lnk"));
}

TEST_F(RestoredStart, LoadsThePresetAfterAFirstSaveThatWasCutOff)
{
    test::WriteFileBytes(Bak(), "");
    WriteHalfOfACatalog();
    WritePreset();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    EXPECT_FALSE(test::Exists(Bak()));
}

TEST_F(RestoredStart, WritesTheLinesOfAnyStart)
{
    test::WriteFileBytes(Bak(), "<Applications />");
    WriteHalfOfACatalog();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(InitializeLines(
                                   OwnerLines() + LoadLines(CatalogFile(), "0x00000001"), "0x00000000")));
}

// By a thread of this process that was terminated while it saved, for one.
TEST_F(RestoredStart, LoadsTheRollbackFileItselfWhileTheCatalogIsHeld)
{
    WriteBak();
    WriteHalfOfACatalog();
    IStream* stream = nullptr;
    ASSERT_EQ(SHCreateStreamOnFileW(CatalogFile().c_str(), STGM_WRITE, &stream), S_OK);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\kept.lnk"));
    EXPECT_TRUE(test::Exists(Bak()));
    stream->Release();
}

TEST_F(RestoredStart, LoadsThePresetWhileWhatAFirstSaveHasLeftIsHeld)
{
    test::WriteFileBytes(Bak(), "");
    WriteHalfOfACatalog();
    WritePreset();
    IStream* stream = nullptr;
    ASSERT_EQ(SHCreateStreamOnFileW(CatalogFile().c_str(), STGM_WRITE, &stream), S_OK);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    EXPECT_TRUE(test::Exists(Bak()));
    stream->Release();
}

TEST_F(RestoredStart, OfAnotherProcessThanTheOwnerLeavesAllAsItIs)
{
    WriteBak();
    WriteCatalog();
    test::WriteFileBytes(Tmp(), "x");
    HoldMutexElsewhere();
    test::FakeSleep sleep;
    sleep.OnSleep([](DWORD) { LoseMutex(); });
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    EXPECT_TRUE(test::Exists(Bak()));
    EXPECT_TRUE(test::Exists(Tmp()));
}

// Another process, whose first pass is long over, saves at this moment.
class StartDuringASave : public RestoredStart
{
protected:
    StartDuringASave()
        : m_wait("WaitForMultipleObjects",
                 [](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) -> DWORD {
                     SetEvent(s_saving->m_isAsked);
                     return s_saving->m_wait.Original()(count, handles, all,
                                                        s_saving->m_isPatient ? milliseconds : 0);
                 })
    {
        s_saving = this;
    }
    ~StartDuringASave() override { CloseHandle(m_isAsked); }

    static inline StartDuringASave* s_saving = nullptr;
    const HANDLE m_isAsked = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    bool m_isPatient = true;
    test::ImportPatch<decltype(&WaitForMultipleObjects)> m_wait;
};

TEST_F(StartDuringASave, WaitsForItsEnd)
{
    const HANDLE begun = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&] {
        const CatalogTurn turn(CatalogFile().c_str());
        WriteBak();
        WriteHalfOfACatalog();
        ResetEvent(m_isAsked);
        SetEvent(begun);
        WaitForSingleObject(m_isAsked, 20000);
        WriteCatalog();
        DeleteFileW(Bak().c_str());
    });
    WaitForSingleObject(begun, 20000);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    other.join();
    CloseHandle(begun);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    EXPECT_EQ(test::ReadFileBytes(CatalogFile()), CatalogOf({L"C:\\catalog.lnk"}));
}

TEST_F(StartDuringASave, ThatDoesNotEndLoadsTheOldCatalogAndLeavesTheSaveAlone)
{
    const HANDLE begun = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE over = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&] {
        const CatalogTurn turn(CatalogFile().c_str());
        SetEvent(begun);
        WaitForSingleObject(over, 20000);
    });
    WaitForSingleObject(begun, 20000);
    WriteBak();
    WriteHalfOfACatalog();
    m_isPatient = false;
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\kept.lnk"));
    EXPECT_EQ(test::ReadFileBytes(CatalogFile()), "<Applications><Desk");
    EXPECT_TRUE(test::Exists(Bak()));
    SetEvent(over);
    other.join();
    CloseHandle(begun);
    CloseHandle(over);
}

TEST_F(StartDuringASave, OfAnotherProcessThanTheOwnerDoesNotWait)
{
    WriteCatalog();
    WritePreset();
    HoldMutexElsewhere();
    const CatalogTurn turn(CatalogFile().c_str());
    ResetEvent(m_isAsked);
    const test::FakeSleep sleep;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_EQ(WaitForSingleObject(m_isAsked, 0), DWORD{WAIT_TIMEOUT});
}

TEST_F(StartDuringASave, LeavesTheTurnToOthersAfterwards)
{
    WriteCatalog();
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    HRESULT result = E_FAIL;
    m_isPatient = false;
    std::thread([&] { result = CatalogTurn(CatalogFile().c_str()).Result(); }).join();
    EXPECT_EQ(result, S_OK);
}

} // namespace
