// The save at the end of a pass, with what guards it.

#include "discovery/CatalogTurn.h"

#include "support/PiecewiseStream.h"
#include "unit/discovery/FileSteps.h"
#include "unit/discovery/ThreadRun.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace discovery_test;
using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kOldCatalog[] = "<Applications />";

class CatalogSave : public RefreshThread
{
protected:
    void WriteOldCatalog() const { test::WriteFileBytes(CatalogFile(), kOldCatalog); }
    std::wstring Bak() const { return CatalogFile() + L".bak"; }
    std::wstring Tmp() const { return CatalogFile() + L".tmp"; }
    void ExpectNothingBesideTheCatalog() const
    {
        EXPECT_FALSE(test::Exists(Bak()));
        EXPECT_FALSE(test::Exists(Tmp()));
    }
    Lines FailedSaveLines(const std::string& code) const
    {
        return {"CQanhPackageManager::RefreshThread pPyxPackageManager->m_AppNameList.Save() failed. "
                "ErrCode = " +
                code + " "};
    }
    Lines LinesUpToTheSave() const
    {
        return StartLines() + kPassIn + kStore + WalkLines(Common()) + WalkLines(User());
    }
};

TEST_F(CatalogSave, KeepsTheOldCatalogBesideTheNewOneUntilItIsWritten)
{
    WriteOldCatalog();
    std::string bak;
    m_onStep = [&](const std::wstring& step) {
        if (step == L"save " + CatalogFile()) {
            bak = test::ReadFileBytes(Bak());
        }
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(bak, kOldCatalog);
    EXPECT_NE(Saved(), kOldCatalog);
    ExpectNothingBesideTheCatalog();
    EXPECT_THAT(ThreadLines(), ElementsAreArray(StartLines() + PassLines() + kPassesOut));
}

TEST_F(CatalogSave, ThatFailsAtItsBeginningLeavesTheOldCatalog)
{
    WriteOldCatalog();
    m_saveResult = STG_E_ACCESSDENIED;
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(Saved(), kOldCatalog);
    ExpectNothingBesideTheCatalog();
}

// The disk is full after this many bytes of the new catalogue, by tens.
class FullDisk : public CatalogSave, public ::testing::WithParamInterface<int>
{
protected:
    FullDisk()
        : m_stream("SHCreateStreamOnFileW", [](const wchar_t* path, DWORD mode, IStream** stream) -> HRESULT {
              const HRESULT hr = s_disk->m_stream.Original()(path, mode, stream);
              if (SUCCEEDED(hr) && mode != STGM_READ) {
                  *stream = new test::PiecewiseStream(
                      *stream, 10, [] { return s_disk->m_room-- > 0 ? S_OK : STG_E_MEDIUMFULL; });
              }
              return hr;
          })
    {
        s_disk = this;
    }

    static inline FullDisk* s_disk = nullptr;
    int m_room = GetParam();
    test::ImportPatch<decltype(&SHCreateStreamOnFileW)> m_stream;
};

TEST_P(FullDisk, BringsTheOldCatalogBack)
{
    WriteOldCatalog();
    EXPECT_EQ(Run(), 0u);
    EXPECT_LE(m_room, 0) << "it was full";
    EXPECT_EQ(Saved(), kOldCatalog);
    ExpectNothingBesideTheCatalog();
    EXPECT_THAT(ThreadLines(),
                ElementsAreArray(LinesUpToTheSave() +
                                 Lines{SaveLines()[0], "CQanhAppNameList::Save OUT(0x80030070)"} +
                                 FailedSaveLines("0x80030070") + kPassesOut));
}

TEST_P(FullDisk, LeavesNoCatalogWhereThereWasNone)
{
    EXPECT_EQ(Run(), 0u);
    EXPECT_FALSE(test::Exists(CatalogFile()));
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
    EXPECT_EQ(Saved(), kOldCatalog);
    ExpectNothingBesideTheCatalog();
    EXPECT_THAT(ThreadLines(),
                ElementsAreArray(LinesUpToTheSave() + FailedSaveLines("0x80070070") + kPassesOut));
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
    EXPECT_THAT(ThreadLines(), ElementsAreArray(StartLines() + PassLines() + kPassesOut));
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
    CatalogSaveInTurn()
        : m_turnWait("WaitForMultipleObjects",
                     [](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) -> DWORD {
                         return s_inTurn->m_onWait(count, handles, all, milliseconds);
                     })
    {
        s_inTurn = this;
        WriteOldCatalog();
    }

    static inline CatalogSaveInTurn* s_inTurn = nullptr;
    std::function<DWORD(DWORD, const HANDLE*, BOOL, DWORD)> m_onWait =
        [this](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
            return m_turnWait.Original()(count, handles, all, milliseconds);
        };
    test::ImportPatch<decltype(&WaitForMultipleObjects)> m_turnWait;
};

TEST_F(CatalogSaveInTurn, WaitsForTheEndOfAnotherProcesssSave)
{
    // Which puts a catalogue of its own there meanwhile: that is the old one now.
    std::string bak;
    m_onStep = [&](const std::wstring& step) {
        if (step == L"save " + CatalogFile()) {
            bak = test::ReadFileBytes(Bak());
        }
    };
    m_onWait = [this](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
        test::WriteFileBytes(CatalogFile(), "<Applications><!-- other --></Applications>");
        return m_turnWait.Original()(count, handles, all, milliseconds);
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(bak, "<Applications><!-- other --></Applications>");
}

TEST_F(CatalogSaveInTurn, IsNotTriedWhileAnotherProcessDoesNotEndItsOwn)
{
    const CatalogTurn other(CatalogFile().c_str());
    m_onWait = [](DWORD, const HANDLE*, BOOL, DWORD) { return DWORD{WAIT_TIMEOUT}; };
    const std::string before = Saved();
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, Not(Contains(L"save " + CatalogFile())));
    EXPECT_EQ(Saved(), before);
    EXPECT_THAT(ThreadLines(),
                ElementsAreArray(LinesUpToTheSave() + FailedSaveLines("0x80070020") + kPassesOut));
}

TEST_F(CatalogSaveInTurn, IsLeftOutWithoutALineWhenTheThreadIsToStopMeanwhile)
{
    const CatalogTurn other(CatalogFile().c_str());
    m_onWait = [this](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
        SetEvent(m_exitEvent);
        return m_turnWait.Original()(count, handles, all, milliseconds);
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, Not(Contains(L"save " + CatalogFile())));
    EXPECT_EQ(Saved(), kOldCatalog);
    EXPECT_THAT(ThreadLines(), ElementsAreArray(LinesUpToTheSave() + kPassesOut));
    ExpectMutexClosed();
}

} // namespace
