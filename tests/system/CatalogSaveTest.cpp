// Saves that are cut off, and saves of two processes at once: the next start has every record.
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/Passes.h"
#include "system/StoreCatalog.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr char ok[] = "0x00000000";
constexpr char shortPause[] = "slow-disk\t5";
constexpr char longPause[] = "slow-disk\t200";

// The records are the preset's alone: no refresh pass would find them again.
class CatalogSave : public test::StoreCatalog
{
protected:
    CatalogSave()
    {
        std::string xml = "<Applications><DesktopApps>";
        for (const char* name : names) {
            xml += std::string("<DesktopApp DisplayName=\"") + name + "\" LnkFileName=\"C:\\nowhere\\" +
                   name + ".lnk\" NeedReserve=\"1\"/>";
        }
        test::WriteFileBytes(m_sandbox.PresetFile(), xml + "</DesktopApps></Applications>");
    }

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

    // Brings the library up, up to the middle of its first save.
    void SaveSlowly(test::HostProcess& host) const
    {
        host.Do(longPause);
        EXPECT_EQ(host.Command("init"), ok);
        WaitForTheMiddleOfASave();
    }

    // Has the library brought up where it finds another process in its first pass; returns where its lines
    // begin.
    std::size_t BeginAsTheSecond(test::HostProcess& host) const
    {
        const std::size_t offset = m_sandbox.LogLength();
        host.Send("init");
        EXPECT_TRUE(test::WaitUntil(
            [&] {
                return test::ReadFileBytes(m_sandbox.LogFile()).find("ERROR_ALREADY_EXISTS", offset) !=
                       std::string::npos;
            },
            15000));
        return offset;
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

// This program's turn at the catalogue file, which no process saves meanwhile.
class Turn
{
public:
    explicit Turn(const std::wstring& name) : m_mutex(CreateMutexW(nullptr, FALSE, name.c_str()))
    {
        if (WaitForSingleObject(m_mutex, 15000) != WAIT_OBJECT_0) {
            ADD_FAILURE() << "no turn";
        }
    }
    ~Turn()
    {
        ReleaseMutex(m_mutex);
        CloseHandle(m_mutex);
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    HANDLE m_mutex;
};

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
        for (int turn = 0; turn < 10; ++turn) {
            {
                const Turn own(m_sandbox.TurnName());
                ExpectEveryRecord();
            }
            m_sandbox.WaitForLogLine(test::passEnd, m_sandbox.LogLength());
        }
        // Both are killed, in whatever they do.
    }
    ExpectEveryRecordAtTheNextStart();
}

// A process that found another one in its first pass, which is over now: it reads the catalogue that a third
// one saves.
TEST_F(CatalogSave, IsWaitedForByAProcessThatDoesNotRefresh)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    test::HostProcess next(m_sandbox);
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    test::FirstPassOfAnother firstPass;
    host.Do(longPause);
    WaitForTheMiddleOfASave();
    BeginAsTheSecond(next);
    firstPass.End();
    EXPECT_EQ(next.Answer(), "0x00000001");
    next.Do("finalize");
}

// The process that another one finds in its first pass dies while it saves.
TEST_F(CatalogSave, CutOffBesideAProcessThatDoesNotRefreshLeavesThatOneEveryRecord)
{
    // A launch tells its query, and goes no further.
    standin::SetSetting(standin::Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    test::HostProcess next(m_sandbox);
    std::size_t offset = 0;
    {
        test::HostProcess host(m_sandbox);
        SaveSlowly(host);
        offset = BeginAsTheSecond(next);
    }
    EXPECT_EQ(next.Answer(), "0x00000001");
    EXPECT_EQ(next.Command("search\t0\t1\tix"), "0x80004005");
    EXPECT_NE(test::ReadFileBytes(m_sandbox.LogFile()).find("szKeyword = \"ix\" NOT(\"six\")", offset),
              std::string::npos);
    next.Do("finalize");
}

TEST_F(CatalogSave, CutOffWhileAnotherProcessStartsLeavesThatOneEveryRecord)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    test::HostProcess next(m_sandbox);
    {
        test::HostProcess host(m_sandbox);
        host.InitializeAndPass();
        host.Do(longPause);
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
