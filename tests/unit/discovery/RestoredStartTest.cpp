// A start after a save that was cut off.

#include "discovery/CatalogTurn.h"

#include "unit/discovery/Start.h"
#include "unit/discovery/TurnWaits.h"

#include <shlwapi.h>

#include <thread>

namespace {

using namespace discovery_test;

class RestoredStart : public PackageManagerStart
{
protected:
    std::wstring Bak() const { return CatalogFile() + L".bak"; }
    std::wstring Tmp() const { return CatalogFile() + L".tmp"; }
    void WriteBak() const { WriteFileBytes(Bak(), CatalogOf({L"C:\\kept.lnk"})); }
    void WriteHalfOfACatalog() const { WriteFileBytes(CatalogFile(), "<Applications><Desk"); }

    // A start as the owner, which loads a file with this shortcut only.
    void ExpectLoaded(const std::wstring& shortcut)
    {
        EXPECT_EQ(m_manager.Initialize(), S_OK);
        EXPECT_THAT(Shortcuts(m_manager), ElementsAre(shortcut));
    }
    // While half of a catalogue is held: by a thread of this process that was terminated in its save, for
    // one.
    void ExpectLoadedWhileHeld(const std::wstring& shortcut)
    {
        WriteHalfOfACatalog();
        IStream* stream = nullptr;
        ASSERT_EQ(SHCreateStreamOnFileW(CatalogFile().c_str(), STGM_WRITE, &stream), S_OK);
        ExpectLoaded(shortcut);
        EXPECT_TRUE(Exists(Bak()));
        stream->Release();
    }
};

TEST_F(RestoredStart, LoadsTheOldCatalog)
{
    WriteBak();
    WriteHalfOfACatalog();
    WritePreset();
    WriteFileBytes(Tmp(), "x");
    ExpectLoaded(L"C:\\kept.lnk");
    ExpectLog("0x00000000", CatalogLines()); // as of any start
    EXPECT_EQ(ReadFileBytes(CatalogFile()), CatalogOf({L"C:\\kept.lnk"}));
    EXPECT_FALSE(Exists(Bak()));
    EXPECT_FALSE(Exists(Tmp()));
}

TEST_F(RestoredStart, LoadsTheOldCatalogAlsoWhereNothingOfTheNewOneIsThere)
{
    WriteBak();
    WritePreset();
    ExpectLoaded(L"C:\\kept.lnk");
}

TEST_F(RestoredStart, LoadsThePresetAfterAFirstSaveThatWasCutOff)
{
    WriteFileBytes(Bak(), "");
    WriteHalfOfACatalog();
    WritePreset();
    ExpectLoaded(L"C:\\preset.lnk");
    EXPECT_FALSE(Exists(Bak()));
}

TEST_F(RestoredStart, LoadsTheRollbackFileItselfWhileTheCatalogIsHeld)
{
    WriteBak();
    ExpectLoadedWhileHeld(L"C:\\kept.lnk");
}

TEST_F(RestoredStart, LoadsThePresetWhileWhatAFirstSaveHasLeftIsHeld)
{
    WriteFileBytes(Bak(), "");
    WritePreset();
    ExpectLoadedWhileHeld(L"C:\\preset.lnk");
}

// It reads the file that counts, and leaves the files to the owner.
TEST_F(RestoredStart, OfAnotherProcessThanTheOwnerLeavesAllAsItIs)
{
    const struct
    {
        const char* bak;
        const wchar_t* loaded;
    } rows[] = {{nullptr, L"C:\\kept.lnk"}, {"", L"C:\\preset.lnk"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.loaded));
        row.bak ? WriteFileBytes(Bak(), row.bak) : WriteBak();
        WriteCatalog();
        WritePreset();
        WriteFileBytes(Tmp(), "x");
        const std::string catalog = ReadFileBytes(CatalogFile());
        const std::string bak = ReadFileBytes(Bak());
        HoldMutexElsewhere();
        const FakeSleep sleep([](DWORD) { LoseMutex(); });
        EXPECT_EQ(m_manager.Initialize(), S_FALSE);
        EXPECT_THAT(Shortcuts(m_manager), ElementsAre(row.loaded));
        EXPECT_EQ(ReadFileBytes(CatalogFile()), catalog);
        EXPECT_EQ(ReadFileBytes(Bak()), bak);
        EXPECT_TRUE(Exists(Tmp()));
    }
}

TEST_F(RestoredStart, OfAnotherProcessFailsWhereThePresetThatCountsHasNoPath)
{
    WriteFileBytes(Bak(), "");
    WriteCatalog();
    HoldMutexElsewhere();
    const FakeSleep sleep([this](DWORD) {
        LoseMutex();
        m_host.FailNext(HostExecutable::kAlways);
    });
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    EXPECT_EQ(sleep.Calls().size(), 1u) << "the catalogue file was there to be read";
    EXPECT_THAT(Shortcuts(m_manager), IsEmpty());
}

// Another process, whose first pass is long over, saves at this moment.
class StartDuringASave : public RestoredStart
{
protected:
    StartDuringASave()
    {
        m_waits.onWait = [this] { SetEvent(m_isAsked.Get()); };
    }

    // A thread that does for the other process: has the turn while it does this.
    std::thread Save(std::function<void()> save)
    {
        std::thread other([this, save] {
            const CatalogTurn turn(CatalogFile().c_str());
            ResetEvent(m_isAsked.Get());
            save();
        });
        WaitForSingleObject(m_isBegun.Get(), 20000);
        return other;
    }

    const UniqueHandle m_isBegun{CreateEventW(nullptr, TRUE, FALSE, nullptr)}; // by Save's action
    const UniqueHandle m_isAsked{CreateEventW(nullptr, TRUE, FALSE, nullptr)}; // somebody waits for the turn
    TurnWaits m_waits;
};

TEST_F(StartDuringASave, WaitsForItsEnd)
{
    std::thread other = Save([this] {
        WriteBak();
        WriteHalfOfACatalog();
        SetEvent(m_isBegun.Get());
        WaitForSingleObject(m_isAsked.Get(), 20000);
        WriteCatalog();
        DeleteFileW(Bak().c_str());
    });
    ExpectLoaded(L"C:\\catalog.lnk");
    other.join();
    EXPECT_EQ(ReadFileBytes(CatalogFile()), CatalogOf({L"C:\\catalog.lnk"}));
}

TEST_F(StartDuringASave, ThatDoesNotEndLoadsTheOldCatalogAndLeavesTheSaveAlone)
{
    const UniqueHandle over(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread other = Save([this, &over] {
        SetEvent(m_isBegun.Get());
        WaitForSingleObject(over.Get(), 20000);
    });
    WriteBak();
    WriteHalfOfACatalog();
    m_waits.isPatient = false;
    ExpectLoaded(L"C:\\kept.lnk");
    EXPECT_EQ(ReadFileBytes(CatalogFile()), "<Applications><Desk");
    EXPECT_TRUE(Exists(Bak()));
    SetEvent(over.Get());
    other.join();
}

TEST_F(StartDuringASave, OfAnotherProcessThanTheOwnerDoesNotWait)
{
    WriteCatalog();
    WritePreset();
    HoldMutexElsewhere();
    const CatalogTurn turn(CatalogFile().c_str());
    ResetEvent(m_isAsked.Get());
    const FakeSleep sleep;
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_EQ(WaitForSingleObject(m_isAsked.Get(), 0), DWORD{WAIT_TIMEOUT});
}

TEST_F(StartDuringASave, LeavesTheTurnToOthersAfterwards)
{
    WriteCatalog();
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    HRESULT result = E_FAIL;
    m_waits.isPatient = false;
    std::thread([&] { result = CatalogTurn(CatalogFile().c_str()).Result(); }).join();
    EXPECT_EQ(result, S_OK);
}

} // namespace
