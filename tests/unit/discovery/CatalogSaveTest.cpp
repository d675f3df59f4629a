// The save at the end of a pass, with what guards it.

#include "discovery/CatalogTurn.h"

#include "support/PiecewiseStream.h"
#include "unit/discovery/FileSteps.h"
#include "unit/discovery/ThreadRun.h"
#include "unit/discovery/TurnWaits.h"

namespace {

using namespace discovery_test;

constexpr char kOldCatalog[] = "<Applications />";

class CatalogSave : public RefreshThread
{
protected:
    void WriteOldCatalog() const { WriteFileBytes(CatalogFile(), kOldCatalog); }
    std::wstring Bak() const { return CatalogFile() + L".bak"; }
    std::wstring Tmp() const { return CatalogFile() + L".tmp"; }
    void ExpectNothingBesideTheCatalog() const
    {
        EXPECT_FALSE(Exists(Bak()));
        EXPECT_FALSE(Exists(Tmp()));
    }
    // The old catalogue stands there as it was, and nothing beside it.
    void ExpectOldCatalog() const
    {
        EXPECT_EQ(Saved(), kOldCatalog);
        ExpectNothingBesideTheCatalog();
    }
    // What the rollback file holds when the new catalogue is about to be written; empty when it never is.
    std::string RunAndReadBak()
    {
        std::string bak;
        m_onStep = [&](const std::wstring& step) {
            if (step == L"save " + CatalogFile()) {
                bak = ReadFileBytes(Bak());
            }
        };
        EXPECT_EQ(Run(), 0u);
        return bak;
    }
    // The log of a thread whose save writes this.
    void ExpectSaveLog(const Lines& save) const { ExpectLog(kStore + WalksLines() + save); }
    static Lines FailedSaveLines(const std::string& code)
    {
        return {"CQanhPackageManager::RefreshThread pPyxPackageManager->m_AppNameList.Save() failed. "
                "ErrCode = " +
                code + " "};
    }
};

TEST_F(CatalogSave, KeepsTheOldCatalogBesideTheNewOneUntilItIsWritten)
{
    WriteOldCatalog();
    EXPECT_EQ(RunAndReadBak(), kOldCatalog);
    EXPECT_NE(Saved(), kOldCatalog);
    ExpectNothingBesideTheCatalog();
    ExpectSaveLog(SaveLines());
}

TEST_F(CatalogSave, ThatFailsAtItsBeginningLeavesTheOldCatalogAndTheMutexIsClosedAllTheSame)
{
    WriteOldCatalog();
    m_saveResult = STG_E_ACCESSDENIED;
    bool wasMutexClosed = false;
    m_onStep = [&](const std::wstring& step) {
        wasMutexClosed = step == L"wait 180000" && !CQanhPackageManager::m_hInstanceMutex && !MutexExists();
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_TRUE(wasMutexClosed);
    ExpectOldCatalog();
    ExpectSaveLog(SaveLines("0x80030005") + FailedSaveLines("0x80030005"));
}

// The disk is full after this many bytes of the new catalogue, by tens.
class FullDisk : public CatalogSave, public ::testing::WithParamInterface<int>
{
protected:
    int m_room = GetParam();
    // Over the patch of the pass, which is called then.
    CapturingPatch<decltype(&SHCreateStreamOnFileW), 1> m_stream{
        "SHCreateStreamOnFileW", [this](const wchar_t* path, DWORD mode, IStream** stream) {
            const HRESULT hr = m_stream.Original(path, mode, stream);
            if (SUCCEEDED(hr) && mode != STGM_READ) {
                *stream = new PiecewiseStream(*stream, 10,
                                              [this] { return m_room-- > 0 ? S_OK : STG_E_MEDIUMFULL; });
            }
            return hr;
        }};
};

TEST_P(FullDisk, BringsTheOldCatalogBack)
{
    WriteOldCatalog();
    EXPECT_EQ(Run(), 0u);
    EXPECT_LE(m_room, 0) << "it was full";
    ExpectOldCatalog();
    ExpectSaveLog(SaveLines("0x80030070") + FailedSaveLines("0x80030070"));
}

TEST_P(FullDisk, LeavesNoCatalogWhereThereWasNone)
{
    EXPECT_EQ(Run(), 0u);
    EXPECT_FALSE(Exists(CatalogFile()));
    ExpectNothingBesideTheCatalog();
}

INSTANTIATE_TEST_SUITE_P(AfterTensOfBytes, FullDisk, ::testing::Values(0, 1, 5, 8));

TEST_F(CatalogSave, IsNotTriedWithoutRoomForTheOldCatalog)
{
    WriteOldCatalog();
    {
        const FileSteps steps(FailAt("write AppNameList.xml.tmp", ERROR_DISK_FULL));
        EXPECT_EQ(Run(), 0u);
    }
    EXPECT_THAT(m_steps, Not(Contains(L"save " + CatalogFile())));
    ExpectOldCatalog();
    ExpectSaveLog(FailedSaveLines("0x80070070"));
    ExpectMutexClosed();
}

// A folder that takes no new files, but lets those in it be changed.
TEST_F(CatalogSave, GoesAheadInAFolderThatTakesNoNewFiles)
{
    WriteOldCatalog();
    {
        const FileSteps steps(FailAt("open AppNameList.xml.tmp", ERROR_ACCESS_DENIED));
        EXPECT_EQ(Run(), 0u);
    }
    EXPECT_NE(Saved(), kOldCatalog);
    ExpectNothingBesideTheCatalog();
    ExpectSaveLog(SaveLines());
}

TEST_F(CatalogSave, TouchesTheRollbackFileWithoutTheCataloguesLock)
{
    WriteOldCatalog();
    int steps = 0;
    {
        const FileSteps fileSteps([&](const std::string&) {
            // A change waits for every reader, so it would wait for ever under the lock.
            ++steps;
            m_manager.m_AppNameList.SetDesktopAppsInstalled({});
            return DWORD{ERROR_SUCCESS};
        });
        EXPECT_EQ(Run(), 0u);
    }
    EXPECT_GE(steps, 8);
}

// Another process is in the middle of a save: a thread of this one does for it.
class CatalogSaveInTurn : public CatalogSave
{
protected:
    CatalogSaveInTurn() { WriteOldCatalog(); }

    TurnWaits m_waits;
};

TEST_F(CatalogSaveInTurn, WaitsForTheEndOfAnotherProcesssSave)
{
    // Which puts a catalogue of its own there meanwhile: that is the old one now.
    const std::string other = "<Applications><!-- other --></Applications>";
    m_waits.onWait = [&] { WriteFileBytes(CatalogFile(), other); };
    EXPECT_EQ(RunAndReadBak(), other);
}

TEST_F(CatalogSaveInTurn, IsNotTriedWhileAnotherProcessDoesNotEndItsOwn)
{
    const CatalogTurn other(CatalogFile().c_str());
    m_waits.isPatient = false;
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, Not(Contains(L"save " + CatalogFile())));
    EXPECT_EQ(Saved(), kOldCatalog);
    ExpectSaveLog(FailedSaveLines("0x80070020"));
}

TEST_F(CatalogSaveInTurn, IsLeftOutWithoutALineWhenTheThreadIsToStopMeanwhile)
{
    const CatalogTurn other(CatalogFile().c_str());
    m_waits.onWait = [this] { SetEvent(m_exitEvent); };
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, Not(Contains(L"save " + CatalogFile())));
    EXPECT_EQ(Saved(), kOldCatalog);
    ExpectSaveLog({});
    ExpectMutexClosed();
}

} // namespace
