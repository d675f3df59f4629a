// Another process has made the objects before that the library makes by name: by the rules that delays the
// refresh or keeps it off, or the library does not come up; it does nothing else, and ends with that
// process's handle.
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/HostProcess.h"
#include "system/Passes.h"
#include "system/QueryFor.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using test::Squatter;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr char mutexCannotBeMade[] = "CQanhPackageManager::Initialize CreateMutex() failed. ";

// Others may see that the object is there, and nothing else.
class SightOnly
{
public:
    SightOnly()
    {
        SID everyone{SID_REVISION, 1, SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID}};
        InitializeAcl(Rights(), sizeof m_rights, ACL_REVISION);
        AddAccessAllowedAce(Rights(), ACL_REVISION, SYNCHRONIZE, &everyone);
        InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&m_descriptor, TRUE, Rights(), FALSE);
    }
    SECURITY_ATTRIBUTES* Get() { return &m_attributes; }

private:
    ACL* Rights() { return reinterpret_cast<ACL*>(m_rights); }

    alignas(ACL) BYTE m_rights[64]{};
    SECURITY_DESCRIPTOR m_descriptor{};
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), &m_descriptor, FALSE};
};

class Squatting : public testing::Test
{
protected:
    Squatting() { sandbox.AddCommonShortcut(L"my mail.lnk"); }

    // Each with one record, which counts as long as nobody refreshes it.
    void WriteCatalog() const
    {
        test::MakeFolder(sandbox.CatalogFolder());
        test::WriteFileBytes(sandbox.CatalogFile(), test::CatalogueOf("old mail", "C:\\nowhere"));
    }
    void WritePreset() const
    {
        test::WriteFileBytes(sandbox.PresetFile(), test::CatalogueOf("preset mail", "C:\\nowhere"));
    }

    // The library waits for nothing that does not come: of the mutex it would take ten seconds to believe
    // that, of the thread thirty.
    void Finalize() { host.Do("finalize", 9000); }

    std::string Query() { return test::QueryFor(sandbox, host, "Mail"); }

    // How many passes the log tells of.
    [[nodiscard]] std::ptrdiff_t Passes() const
    {
        const std::vector<std::string> log = sandbox.Log();
        return std::count(log.begin(), log.end(), test::passBegin);
    }

    // The name of the host's exit event, which others can know from the moment when the host begins.
    [[nodiscard]] std::wstring ExitEventName() const
    {
        return L"Local\\PYX_Event_Exit_RefreshThread" + std::to_wstring(host.ProcessId());
    }

    test::Sandbox sandbox;
    test::HostProcess host{sandbox};
};

using SquattedMutex = Squatting;
using SquattedExitEvent = Squatting;
using SquattedTurn = Squatting;

TEST_F(SquattedMutex, KeepsTheRefreshOffAndNothingElse)
{
    WriteCatalog();
    WritePreset();
    Squatter squatter(CreateMutexW(nullptr, TRUE, L"QanHelper_TestHost")); // owned, too
    EXPECT_EQ(host.Command("init"), "0x00000001");
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_EQ(Query(), R"("Mail" NOT("preset mail"))") << "launches and queries work";
    EXPECT_EQ(host.Command("installed\tNobody.App_0123456789abc"), "0x00000000\t0");
    Sleep(1500); // the first pass would have been
    EXPECT_EQ(Passes(), 0);
    host.Do("finalize");

    squatter.Leave();
    host.InitializeAndPass();
    EXPECT_EQ(Query(), R"("Mail" NOT("my mail"))");
}

TEST_F(SquattedMutex, WithoutAPresetTheLibraryDoesNotComeUp)
{
    WriteCatalog();
    Squatter squatter(CreateMutexW(nullptr, FALSE, L"QanHelper_TestHost"));
    EXPECT_EQ(host.Command("init"), "0x80070002");
    squatter.Leave();
    EXPECT_EQ(host.Command("init"), "0x00000000");
}

TEST_F(SquattedMutex, OfAnotherKindKeepsTheRefreshOffAndTheCatalogueIsLoaded)
{
    WriteCatalog();
    Squatter squatter(CreateEventW(nullptr, TRUE, FALSE, L"QanHelper_TestHost"));
    EXPECT_EQ(host.Command("init"), "0x00000001");
    EXPECT_THAT(sandbox.Log(), Contains(mutexCannotBeMade));
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_EQ(Query(), R"("Mail" NOT("old mail"))");
    host.Do("finalize");
    squatter.Leave();
    EXPECT_EQ(host.Command("init"), "0x00000000");
    EXPECT_TRUE(host.HasExitEvent());
}

TEST_F(SquattedMutex, ThatMayNotBeHadKeepsTheRefreshOff)
{
    WriteCatalog();
    WritePreset();
    SightOnly rights;
    const Squatter squatter(CreateMutexW(rights.Get(), FALSE, L"QanHelper_TestHost"));
    EXPECT_EQ(host.Command("init"), "0x00000001");
    EXPECT_THAT(sandbox.Log(), Contains(mutexCannotBeMade));
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_EQ(Query(), R"("Mail" NOT("preset mail"))");
}

TEST_F(SquattedMutex, DoesNotConcernAHostThatRefreshesAlready)
{
    sandbox.Settings().SetDword(L"RefreshInterval", 0);
    host.InitializeAndPass();
    const Squatter squatter(CreateMutexW(nullptr, TRUE, L"QanHelper_TestHost"));
    const std::ptrdiff_t before = Passes();
    EXPECT_TRUE(test::WaitUntil([&] { return Passes() > before + 1; }, 20000));
    Finalize();
}

TEST_F(SquattedExitEvent, ThatIsSetKeepsTheRefreshOff)
{
    WriteCatalog();
    const Squatter squatter(CreateEventW(nullptr, TRUE, TRUE, ExitEventName().c_str()));
    host.InitializeAndPass(); // the mutex is given back at once
    EXPECT_EQ(Query(), R"("Mail" NOT("old mail"))");
    Finalize();
    EXPECT_EQ(Passes(), 0);
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()), Not(HasSubstr("my mail"))) << "nothing was saved";
}

TEST_F(SquattedExitEvent, ThatIsSetLaterStopsTheRefreshAndNothingElse)
{
    sandbox.Settings().SetDword(L"RefreshInterval", 0);
    const Squatter squatter(CreateEventW(nullptr, TRUE, FALSE, ExitEventName().c_str()));
    host.InitializeAndPass();
    EXPECT_TRUE(test::WaitUntil([&] { return Passes() > 2; }, 20000)) << "until then it refreshes";
    SetEvent(squatter.Get());
    sandbox.WaitForLogLine("CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)");
    EXPECT_EQ(Query(), R"("Mail" NOT("my mail"))");
    Finalize();
    ResetEvent(squatter.Get());
    EXPECT_EQ(host.Command("init"), "0x00000000") << "the next start refreshes again";
    sandbox.WaitForLogLine(test::passBegin, sandbox.LogLength());
}

// Not manual-reset: who waits takes the signal away. Behind the first pass the thread does no more than wait.
TEST_F(SquattedExitEvent, ThatForgetsItsSignalStopsAThreadThatWaits)
{
    const Squatter squatter(CreateEventW(nullptr, FALSE, FALSE, ExitEventName().c_str()));
    host.InitializeAndPass();
    Finalize();
    EXPECT_THAT(sandbox.Log(), Contains("CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)"));
}

TEST_F(SquattedExitEvent, OfAnotherKindTheLibraryDoesNotComeUp)
{
    WriteCatalog();
    Squatter squatter(CreateMutexW(nullptr, FALSE, ExitEventName().c_str()));
    EXPECT_EQ(host.Command("init"), "0x80004005");
    EXPECT_FALSE(test::IsFirstPassRunning()) << "other processes may refresh";
    squatter.Leave();
    EXPECT_EQ(host.Command("init"), "0x00000000");
    EXPECT_TRUE(host.HasExitEvent());
}

TEST_F(SquattedTurn, DelaysTheStartAndKeepsTheCatalogueFromBeingSaved)
{
    sandbox.Settings().SetDword(L"RefreshInterval", 0);
    WriteCatalog();
    const std::string before = test::ReadFileBytes(sandbox.CatalogFile());
    Squatter squatter(CreateMutexW(nullptr, TRUE, sandbox.TurnName().c_str()));
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(host.Command("init"), "0x00000000");
    EXPECT_GE(GetTickCount64() - start, 4990u) << "five seconds";
    sandbox.WaitForLogLine("CQanhPackageManager::RefreshThread "
                           "pPyxPackageManager->m_AppNameList.Save() failed. ErrCode = 0x80070020 ");
    EXPECT_EQ(test::ReadFileBytes(sandbox.CatalogFile()), before);
    EXPECT_EQ(Query(), R"("Mail" NOT("my mail"))") << "what the pass has found counts";
    squatter.Leave();
    sandbox.WaitForLogLine(test::passEnd);
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()), HasSubstr("my mail"));
}

TEST_F(SquattedTurn, ThatMayNotBeHadKeepsTheCatalogueFromBeingSaved)
{
    WriteCatalog();
    const std::string before = test::ReadFileBytes(sandbox.CatalogFile());
    SightOnly rights;
    const Squatter squatter(CreateMutexW(rights.Get(), FALSE, sandbox.TurnName().c_str()));
    EXPECT_EQ(host.Command("init"), "0x00000000");
    test::WaitForFirstPass();
    EXPECT_EQ(test::ReadFileBytes(sandbox.CatalogFile()), before);
    EXPECT_EQ(Query(), R"("Mail" NOT("my mail"))");
}

TEST_F(SquattedTurn, OfAnotherKindIsDoneWithout)
{
    WriteCatalog();
    const Squatter squatter(CreateEventW(nullptr, TRUE, FALSE, sandbox.TurnName().c_str()));
    EXPECT_EQ(host.Command("init"), "0x00000000");
    test::WaitForFirstPass();
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()), HasSubstr("my mail"));
}

} // namespace
