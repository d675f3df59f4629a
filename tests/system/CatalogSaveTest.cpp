// Saves that are cut off, and saves of two processes at once: the next start has every record.
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/Passes.h"
#include "system/QueryFor.h"
#include "system/StoreCatalog.h"

#include <string>

namespace {

constexpr char ok[] = "0x00000000";
constexpr char shortPause[] = "slow-disk\t5";
constexpr char longPause[] = "slow-disk\t200";
constexpr char pauseToBeKilledIn[] = "slow-disk\t1000"; // nobody waits for the end of such a save

// No refresh pass would find the records again, which stand in no Start menu: they are the preset's alone,
// and when that is gone the catalogue's.
class CatalogSave : public test::StoreCatalog
{
protected:
    CatalogSave()
    {
        std::string xml = "<Applications><DesktopApps>";
        for (const char* name : names) {
            const std::wstring path = m_sandbox.Folder() + L"\\" + test::FromUtf8(name) + L".lnk";
            test::MakeFile(path);
            xml += std::string("<DesktopApp DisplayName=\"") + name + "\" LnkFileName=\"" +
                   test::ToUtf8(path) + "\" NeedReserve=\"1\"/>";
        }
        test::WriteFileBytes(m_sandbox.PresetFile(), xml + "</DesktopApps></Applications>");
    }

    // From here on only the catalogue has the records.
    void DropPreset() const { ASSERT_TRUE(DeleteFileW(m_sandbox.PresetFile().c_str())); }

    std::wstring Bak() const { return m_sandbox.CatalogFile() + L".bak"; }

    // Waits until a save has written something, and not all.
    void WaitForTheMiddleOfASave() const
    {
        const auto isInIt = [this] {
            if (!test::Exists(Bak()) || !test::Exists(m_sandbox.CatalogFile())) {
                return false;
            }
            const std::string catalog = test::ReadFileBytes(m_sandbox.CatalogFile());
            return catalog.find("\"one\"") != std::string::npos &&
                   catalog.find("\"six\"") == std::string::npos;
        };
        ASSERT_TRUE(test::WaitUntil(isInIt, 15000));
    }

    // Brings the library up, up to the middle of its first save. The host is to be killed in it.
    void SaveSlowly(test::HostProcess& host) const
    {
        host.Do(pauseToBeKilledIn);
        EXPECT_EQ(host.Command("init"), ok);
        WaitForTheMiddleOfASave();
    }

    // Has the library brought up where it finds another process in its first pass, which is to end now: the
    // half second in which it looks for that would soon be over on a slow machine, so it is five.
    void BeginAsTheSecond(test::HostProcess& host) const
    {
        const std::size_t offset = m_sandbox.LogLength();
        host.Do("stretch\t10");
        host.Send("init");
        ASSERT_TRUE(test::WaitUntil(
            [&] {
                return test::Exists(m_sandbox.LogFile()) &&
                       test::ReadFileBytes(m_sandbox.LogFile()).find("ERROR_ALREADY_EXISTS", offset) !=
                           std::string::npos;
            },
            15000));
    }

    // It has seen that pass end, and has read this file with every record.
    void ExpectEveryRecordRead(test::HostProcess& second, const std::string& file)
    {
        EXPECT_EQ(second.Answer(), "0x00000001");
        EXPECT_THAT(
            m_sandbox.Log(),
            testing::Contains("CQanhAppNameList::Load(<local>\\Vel\\QanHelper\\TestHost\\" + file + ") IN"));
        for (const char* name : names) {
            const std::string part = name + 1; // which excludes the whole
            EXPECT_EQ(test::QueryFor(m_sandbox, second, part), "\"" + part + "\" NOT(\"" + name + "\")");
        }
        second.Do("finalize");
    }

    // The first pass of the next start has all of them still.
    void ExpectEveryRecordAtTheNextStart()
    {
        RunOnePass();
        ExpectEveryRecord();
    }

    // The catalogue has all of them, once each, and nothing stands beside it.
    void ExpectEveryRecord() const
    {
        const std::string catalog = test::ReadFileBytes(m_sandbox.CatalogFile());
        for (const char* name : names) {
            const std::string record = std::string("DisplayName=\"") + name + "\"";
            EXPECT_NE(catalog.find(record), std::string::npos) << name << " in\n" << catalog;
            EXPECT_EQ(catalog.find(record), catalog.rfind(record)) << name << " in\n" << catalog;
        }
        EXPECT_TRUE(catalog.ends_with("</DesktopApps>")) << catalog;
        EXPECT_FALSE(test::Exists(Bak()));
    }

    static constexpr const char* names[] = {"one", "two", "three", "four", "five", "six"};
};

TEST_F(CatalogSave, CutOffByTheEndOfTheProcessLeavesTheOldCatalog)
{
    RunOnePass();
    DropPreset();
    const std::string old = test::ReadFileBytes(m_sandbox.CatalogFile());
    {
        test::HostProcess host(m_sandbox);
        SaveSlowly(host);
        EXPECT_EQ(test::ReadFileBytes(Bak()), old);
    }
    EXPECT_NE(test::ReadFileBytes(m_sandbox.CatalogFile()), old) << "the process was killed while it saved";
    ExpectEveryRecordAtTheNextStart();
}

TEST_F(CatalogSave, CutOffTheFirstTimeLeavesThePresetsRecords)
{
    {
        test::HostProcess host(m_sandbox);
        SaveSlowly(host);
    }
    ExpectEveryRecordAtTheNextStart();
}

TEST_F(CatalogSave, OfTwoProcessesAtOnceAreDoneInTurns)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    {
        test::HostProcess one(m_sandbox);
        test::HostProcess two(m_sandbox);
        for (test::HostProcess* host : {&one, &two}) {
            host->Do(shortPause);
            host->InitializeAndPass();
        }
        DropPreset();
        const HANDLE turn = CreateMutexW(nullptr, FALSE, m_sandbox.TurnName().c_str());
        for (int round = 0; round < 10; ++round) {
            // In this program's turn no process saves.
            ASSERT_EQ(WaitForSingleObject(turn, 15000), WAIT_OBJECT_0);
            ExpectEveryRecord();
            ReleaseMutex(turn);
            m_sandbox.WaitForLogLine(test::passEnd, m_sandbox.LogLength());
        }
        CloseHandle(turn);
        // Both are killed, in whatever they do.
    }
    ExpectEveryRecordAtTheNextStart();
}

// A process that found another one in its first pass, which is over now: it reads the catalogue that a third
// one saves. That one writes no log.
TEST_F(CatalogSave, IsWaitedForByAProcessThatDoesNotRefresh)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    m_sandbox.Settings().DeleteValue(L"DebugLog");
    test::HostProcess next(m_sandbox);
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    DropPreset();
    test::FirstPassOfAnother firstPass;
    m_sandbox.Settings().SetDword(L"DebugLog", 1);
    host.Do(longPause);
    WaitForTheMiddleOfASave();
    BeginAsTheSecond(next);
    firstPass.Leave();
    // Without the wait that would be the old one, or a piece of the new one.
    ExpectEveryRecordRead(next, "AppNameList.xml");
}

// The process that another one finds in its first pass dies while it saves.
TEST_F(CatalogSave, CutOffBesideAProcessThatDoesNotRefreshLeavesThatOneEveryRecord)
{
    RunOnePass();
    DropPreset();
    test::HostProcess next(m_sandbox);
    {
        test::HostProcess host(m_sandbox);
        SaveSlowly(host);
        BeginAsTheSecond(next);
    }
    ExpectEveryRecordRead(next, "AppNameList.xml.bak");
}

TEST_F(CatalogSave, CutOffWhileAnotherProcessStartsLeavesThatOneEveryRecord)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    test::HostProcess next(m_sandbox);
    {
        test::HostProcess host(m_sandbox);
        host.InitializeAndPass();
        DropPreset();
        host.Do(pauseToBeKilledIn);
        WaitForTheMiddleOfASave();
        const std::size_t offset = m_sandbox.LogLength();
        next.Send("init");
        m_sandbox.WaitForLogLine("CQanhPackageManager::Initialize CreateMutex() success. ", offset);
    }
    EXPECT_EQ(next.Answer(), ok);
    next.Do("finalize");
    ExpectEveryRecord();
    ExpectEveryRecordAtTheNextStart();
}

} // namespace
