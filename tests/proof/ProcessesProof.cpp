// Several processes of one executable, and owners that are killed: who refreshes and who loads what goes by
// the rules, and no moment of a death costs a record.
#include "proof/Hosts.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>

namespace {

using proof::ok;
using Names = std::set<std::string>;

// A named event of this program's, not signalled.
class Start
{
public:
    explicit Start(int round)
        : m_name("QanHelperProofStart" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(round)),
          m_event(CreateEventA(nullptr, TRUE, FALSE, m_name.c_str()))
    {
    }
    ~Start() { CloseHandle(m_event); }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    [[nodiscard]] const std::string& Name() const { return m_name; }
    void Give() { SetEvent(m_event); }

private:
    std::string m_name;
    HANDLE m_event;
};

class Processes : public testing::Test
{
protected:
    Processes() { m_sandbox.Settings().DeleteValue(L"DebugLog"); }

    // A shortcut that no pass finds.
    std::string Kept(const std::wstring& name)
    {
        const std::wstring path = m_sandbox.Folder() + L"\\kept\\" + name + L".lnk";
        test::MakeFile(path);
        return proof::DesktopRecord(test::ToUtf8(name), test::ToUtf8(path), true);
    }

    static Names NamesOf(test::HostProcess& host)
    {
        const std::vector<std::string> names = proof::NamesIn(host.Command("query\tmail", 30000));
        Names different(names.begin(), names.end());
        EXPECT_EQ(different.size(), names.size()) << "a record is there twice";
        return different;
    }

    test::Sandbox m_sandbox;
};

class TenHosts : public Processes
{
protected:
    static constexpr std::size_t hostCount = 10;

    TenHosts()
    {
        test::WriteFileBytes(m_sandbox.PresetFile(), proof::CatalogOf("", Kept(L"preset mail")));
        m_sandbox.AddCommonShortcut(L"found mail.lnk");
        for (std::size_t index = 0; index < hostCount; ++index) {
            m_hosts.push_back(std::make_unique<test::HostProcess>(m_sandbox));
            m_hosts.back()->Do("pane");
        }
    }

    // Each of them has been the one that refreshes, and another one: what the platform keeps for good of that
    // comes with the first time.
    void WarmUp()
    {
        for (const auto& host : m_hosts) {
            host->Do("pace\t20");
            EXPECT_EQ(host->Command("cycles\t2"), ok);
            const HANDLE another = CreateMutexW(nullptr, FALSE, L"QanHelper_TestHost");
            EXPECT_EQ(host->Command("init"), proof::readToItsEnd);
            NamesOf(*host);
            host->Do("finalize");
            CloseHandle(another);
            host->Do("pace\t1");
            (void)proof::HoldingsOf(*host);
        }
    }

    // All at once: every one of them has loaded before the first pass of the one that refreshes begins. Tells
    // how long each took.
    void StartAll(int round, bool hasCatalog)
    {
        Start start(round);
        for (const auto& host : m_hosts) {
            host->Do("hold");
            host->Send("init-at\t" + start.Name());
        }
        Sleep(50); // they wait for it
        start.Give();
        std::size_t owners = 0;
        for (const auto& host : m_hosts) {
            const std::vector<std::string> fields = test::Split(host->Answer(60000), "\t");
            ASSERT_EQ(fields.size(), 2u) << fields[0];
            const bool isOwner = host->HasExitEvent();
            const auto milliseconds = std::stoul(fields[1]);
            owners += isOwner;
            EXPECT_EQ(fields[0], isOwner ? ok : proof::readToItsEnd);
            if (isOwner) {
                m_owner = host.get();
                m_longestOwner = std::max(m_longestOwner, milliseconds);
            } else {
                m_longestOther = std::max(m_longestOther, milliseconds);
                EXPECT_GE(milliseconds, hasCatalog ? 480u : 0u) << "five looks at the mutex";
            }
        }
        ASSERT_EQ(owners, 1u);
    }

    void ExpectWhatEachHasLoaded(bool hasCatalog)
    {
        for (const auto& host : m_hosts) {
            const bool isOwner = host.get() == m_owner;
            EXPECT_EQ(NamesOf(*host),
                      isOwner && hasCatalog ? Names({"found mail", "preset mail"}) : Names({"preset mail"}));
        }
    }

    void StopAll()
    {
        for (const auto& host : m_hosts) {
            host->Do("go");
        }
        test::WaitForFirstPass();
        EXPECT_EQ(NamesOf(*m_owner), Names({"found mail", "preset mail"}));
        for (const auto& host : m_hosts) {
            host->Do("finalize", 45000);
            EXPECT_FALSE(host->HasExitEvent());
        }
        proof::ExpectNoNamedObjects(m_sandbox);
    }

    std::vector<std::unique_ptr<test::HostProcess>> m_hosts;
    test::HostProcess* m_owner = nullptr;
    unsigned long m_longestOwner = 0; // milliseconds
    unsigned long m_longestOther = 0;
};

TEST_F(TenHosts, StartAtTheSameMoment)
{
    const int rounds = proof::Count(3, 50);
    WarmUp();
    ASSERT_TRUE(DeleteFileW(m_sandbox.CatalogFile().c_str()));
    std::vector<proof::Holdings> before;
    std::vector<int> owned(m_hosts.size());
    for (const auto& host : m_hosts) {
        before.push_back(proof::HoldingsOf(*host));
    }
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const bool hasCatalog = round > 0;
        ASSERT_NO_FATAL_FAILURE(StartAll(round, hasCatalog));
        ExpectWhatEachHasLoaded(hasCatalog);
        StopAll();
        for (std::size_t index = 0; index < m_hosts.size(); ++index) {
            owned[index] += m_hosts[index].get() == m_owner;
        }
        proof::Progress(round + 1, rounds);
    }
    for (std::size_t index = 0; index < m_hosts.size() && !HasFailure(); ++index) {
        const proof::Holdings after = proof::HoldingsOf(*m_hosts[index]);
        // Each pass looks the package manager's class up, of which the platform here keeps a handle.
        const std::size_t handles = after.handles;
        m_hosts[index]->Do("look-up\t" + std::to_string(owned[index]));
        const std::size_t platforms = m_hosts[index]->Measure("handles") - handles;
        EXPECT_EQ(handles, before[index].handles + platforms);
        EXPECT_EQ(after.threads, before[index].threads);
        EXPECT_EQ(m_hosts[index]->Exit(), 0u);
    }
    proof::Figure("rounds of ten hosts that start at the same moment", rounds);
    proof::Figure("different owners in them", static_cast<double>(std::count_if(
                                                  owned.begin(), owned.end(), [](int n) { return n > 0; })));
    proof::Figure("longest QanhInitialize of an owner", m_longestOwner, "ms");
    proof::Figure("longest QanhInitialize of another process", m_longestOther, "ms");
}

using HostsThatComeAndGo = Processes;

// Starts, saves and stops of several processes meet in every way.
TEST_F(HostsThatComeAndGo, LoseNoRecord)
{
    constexpr unsigned hostCount = 4;
    constexpr std::size_t keptCount = 30;
    const int count = proof::Count(10, 300);
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    std::string records;
    for (std::size_t index = 0; index < keptCount; ++index) {
        records += Kept(L"kept mail " + std::to_wstring(index));
    }
    test::WriteFileBytes(m_sandbox.PresetFile(), proof::CatalogOf("", records));
    std::vector<std::unique_ptr<test::HostProcess>> hosts;
    const auto file = [this](std::size_t index) {
        return m_sandbox.Folder() + L"\\queries " + std::to_wstring(index) + L".txt";
    };
    for (unsigned index = 0; index < hostCount; ++index) {
        hosts.push_back(std::make_unique<test::HostProcess>(m_sandbox));
        hosts.back()->Do("own-desktop");
        hosts.back()->Do("pace\t20");
        hosts.back()->Do("slow-disk\t1");
    }
    for (unsigned index = 0; index < hostCount; ++index) {
        hosts[index]->Send("come-and-go\t" + std::to_string(count) + "\t" +
                           std::to_string(proof::Seed() * hostCount + index) + "\tmail\t" +
                           test::ToUtf8(file(index)));
    }
    int owners = 0;
    int others = 0;
    int partly = 0;
    int refused = 0;
    for (std::size_t index = 0; index < hosts.size(); ++index) {
        EXPECT_EQ(hosts[index]->Answer(1200000), "ok");
        std::vector<std::string> lines = test::Split(test::ReadFileBytes(file(index)), "\n");
        lines.pop_back();
        for (const std::string& line : lines) {
            const std::vector<std::string> fields = test::Split(line, "\t");
            if (fields[0] == ok) {
                ++owners;
                EXPECT_EQ(proof::NamesIn(fields.at(1)).size(), keptCount) << line;
            } else if (fields[0] == proof::readToItsEnd) {
                ++others;
                partly += proof::NamesIn(fields.at(1)).size() != keptCount;
            } else {
                ++refused;
                std::printf("%s\n", line.c_str());
            }
        }
        EXPECT_EQ(hosts[index]->Exit(), 0u);
        proof::Progress(static_cast<long long>(index) + 1, hostCount);
    }
    EXPECT_GT(owners, 0);
    EXPECT_GT(others, 0);
    EXPECT_EQ(owners + others + refused, static_cast<int>(hostCount) * count);
    EXPECT_EQ(partly, 0);
    EXPECT_EQ(refused, 0);
    proof::ExpectNoNamedObjects(m_sandbox);
    test::HostProcess last(m_sandbox);
    last.Do("pane");
    last.Do("hold");
    EXPECT_EQ(last.Command("init"), ok);
    EXPECT_EQ(NamesOf(last).size(), keptCount);
    proof::Figure("starts of processes that come and go", owners + others + refused);
    proof::Figure("of these as the one that refreshes", owners);
    proof::Figure("of these beside another one's first pass", others);
    proof::Figure("of these with a part of the catalogue", partly);
    proof::Figure("of these refused", refused);
}

// A catalogue with records that only the file knows, and with those of a Start menu to which each round adds
// one.
class KilledOwner : public Processes
{
protected:
    static constexpr int keptCount = 30;

    KilledOwner()
    {
        m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
        std::string records;
        for (int index = 0; index < keptCount; ++index) {
            const std::wstring name = L"kept mail " + std::to_wstring(index);
            records += Kept(name);
            m_inFile.insert(test::ToUtf8(name));
        }
        test::WriteFileBytes(m_sandbox.PresetFile(), proof::CatalogOf("", records));
    }

    // One shortcut more in the Start menu.
    void Add()
    {
        const std::wstring name = L"new mail " + std::to_wstring(m_added++);
        m_sandbox.AddCommonShortcut(name + L".lnk");
        m_found.insert(test::ToUtf8(name));
    }

    // An owner that has loaded and begins its first pass with "go"; what it has loaded must be the old
    // catalogue or the new one.
    std::unique_ptr<test::HostProcess> StartOwner()
    {
        auto host = std::make_unique<test::HostProcess>(m_sandbox);
        host->Do("pane");
        host->Do("hold");
        EXPECT_EQ(host->Command("init", 30000), ok);
        EXPECT_TRUE(host->HasExitEvent());
        const Names loaded = NamesOf(*host);
        EXPECT_TRUE(loaded == m_inFile || loaded == m_saved)
            << loaded.size() << " records; the old catalogue has " << m_inFile.size() << ", the new one "
            << m_saved.size();
        m_isNew = loaded == m_saved && m_saved != m_inFile;
        // From here on each save that succeeds has these.
        m_inFile = loaded;
        m_saved = loaded;
        m_saved.insert(m_found.begin(), m_found.end());
        return host;
    }

    // Its end must leave every name free at once.
    void Kill(std::unique_ptr<test::HostProcess> host)
    {
        host.reset();
        EXPECT_FALSE(test::IsFirstPassRunning());
        proof::ExpectNoNamedObjects(m_sandbox);
        m_cutOff += IsInSave();
    }

    [[nodiscard]] bool IsInSave() const
    {
        return test::Exists(m_sandbox.CatalogFile() + L".tmp") ||
               test::Exists(m_sandbox.CatalogFile() + L".bak");
    }

    void ExpectEverythingAtTheEnd()
    {
        const auto host = StartOwner();
        host->Do("go");
        test::WaitForFirstPass();
        EXPECT_EQ(NamesOf(*host), m_saved);
        host->Do("finalize", 45000);
        EXPECT_FALSE(IsInSave());
    }

    Names m_inFile; // the old catalogue
    Names m_saved;  // the new one
    Names m_found;  // the Start menu's
    int m_added = 0;
    int m_cutOff = 0;
    bool m_isNew = false;
};

TEST_F(KilledOwner, InASaveLosesNothing)
{
    const int rounds = proof::Count(6, 200);
    constexpr std::size_t bytesOfARecord = 150;
    constexpr std::size_t bytesOfAPiece = 64;
    proof::Random random;
    int taken = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        Add();
        auto host = StartOwner();
        taken += m_isNew;
        host->Do("slow-disk\t1");
        const auto length = static_cast<unsigned>(m_saved.size() * bytesOfARecord / bytesOfAPiece);
        const unsigned moment = random.UpTo(2 * length);
        SCOPED_TRACE("round " + std::to_string(round) + ", " + std::to_string(moment) +
                     " ms into the save, seed " + std::to_string(proof::Seed()));
        host->Do("go");
        ASSERT_TRUE(test::WaitUntil([this] { return IsInSave(); }, 20000));
        Sleep(moment);
        Kill(std::move(host));
        proof::Progress(round + 1, rounds);
    }
    ExpectEverythingAtTheEnd();
    EXPECT_GT(m_cutOff, 0) << "no save was cut off";
    proof::Figure("owners killed at moments of chance of a save", rounds);
    proof::Figure("saves that were cut off by it", m_cutOff);
    proof::Figure("starts after it that had the new catalogue", taken);
}

TEST_F(KilledOwner, InAPassLosesNothing)
{
    const int rounds = proof::Count(6, 200);
    proof::Random random;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        Add();
        auto host = StartOwner();
        const unsigned moment = random.UpTo(round % 2 == 0 ? 20 : 200);
        SCOPED_TRACE("round " + std::to_string(round) + ", " + std::to_string(moment) +
                     " ms into the pass, seed " + std::to_string(proof::Seed()));
        host->Do("go");
        Sleep(moment);
        Kill(std::move(host));
        proof::Progress(round + 1, rounds);
    }
    ExpectEverythingAtTheEnd();
    proof::Figure("owners killed at moments of chance of their passes", rounds);
    proof::Figure("saves that were cut off among them", m_cutOff);
}

} // namespace
