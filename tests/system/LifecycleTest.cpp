// Bringing the library up and down, loading and unloading it, at every moment and in several processes.
#include "support/HeapCheck.h"
#include "support/Text.h"
#include "system/HostProcess.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/SlowManifest.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

// Of a measure of the heap, in bytes: less than five of the smallest blocks.
constexpr std::size_t heapSlack = 64;
constexpr char ok[] = "0x00000000";
// In milliseconds: of another first pass QanhFinalize believes after ten seconds that it does not end, of the
// thread after thirty.
constexpr DWORD shorterThanAnyWait = 9000;

class Lifecycle : public testing::Test
{
protected:
    void SetUp() override { m_sandbox.Settings().DeleteValue(L"DebugLog"); }

    // So many that a pass takes its time: each line of the log is another opening of the file.
    void MakePassesLong()
    {
        m_sandbox.Settings().SetDword(L"DebugLog", 1);
        for (int index = 0; index < 40; ++index) {
            m_sandbox.AddCommonShortcut(std::to_wstring(index) + L"\\App.lnk");
        }
        m_sandbox.AddUserShortcut(L"Last.lnk");
    }

    bool HasCatalogue(const std::string& text) const
    {
        return test::Exists(m_sandbox.CatalogFile()) &&
               test::ReadFileBytes(m_sandbox.CatalogFile()).find(text) != std::string::npos;
    }

    // What the process holds before and after a command; so many handles are the runtime's.
    static void ExpectNothingLeft(test::HostProcess& host, const char* command, std::size_t runtimeHandles)
    {
        const std::size_t handles = host.Measure("handles");
        const std::size_t threads = host.Measure("threads");
        const std::size_t heap = host.Measure("heap");
        EXPECT_EQ(host.Command(command, 30000), ok);
        EXPECT_EQ(host.Measure("handles"), handles + runtimeHandles);
        EXPECT_EQ(host.Measure("threads"), threads);
        if (!test::AreHeapsChecked()) {
            EXPECT_LE(host.Measure("heap"), heap + heapSlack);
        }
    }

    test::Sandbox m_sandbox;
};

TEST_F(Lifecycle, IsUpFromTheFirstInitializeToTheLastFinalize)
{
    test::HostProcess host(m_sandbox);
    const std::size_t threads = host.Measure("threads");
    EXPECT_EQ(host.Command("init"), ok);
    EXPECT_EQ(host.Command("init"), ok);
    EXPECT_EQ(host.Measure("threads"), threads + 1) << "the refresh thread";
    host.Do("finalize");
    EXPECT_TRUE(host.HasExitEvent());
    EXPECT_EQ(host.Measure("threads"), threads + 1);
    host.Do("finalize");
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_EQ(host.Measure("threads"), threads);
    EXPECT_EQ(host.Command("init"), ok) << "and up again";
    EXPECT_TRUE(host.HasExitEvent());
}

TEST_F(Lifecycle, FinalizeInTheFirstSecondWaitsForTheFirstPass)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    test::HostProcess host(m_sandbox);
    const ULONGLONG start = GetTickCount64();
    host.Command("init");
    host.Do("finalize");
    EXPECT_GE(GetTickCount64() - start, 990u) << "the pass is a second away";
    EXPECT_FALSE(test::IsFirstPassRunning());
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_TRUE(HasCatalogue("A.lnk"));
}

TEST_F(Lifecycle, FinalizeDuringTheFirstPassLetsItEnd)
{
    MakePassesLong();
    test::HostProcess host(m_sandbox);
    host.Command("init");
    m_sandbox.WaitForLogLine(test::passBegin);
    EXPECT_TRUE(test::IsFirstPassRunning());
    EXPECT_FALSE(test::Exists(m_sandbox.CatalogFile())) << "not before the pass's end";
    host.Do("finalize");
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_TRUE(HasCatalogue("Last.lnk")) << "the pass was complete";
}

TEST_F(Lifecycle, FinalizeDuringALaterPassLeavesTheRestOfItOut)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    m_sandbox.AddCommonShortcut(L"First.lnk");
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    // A new package's manifest, which comes in the test's own time, holds a pass before it looks at the Start
    // menu.
    test::SlowManifest slow;
    const std::string manifest = test::Manifest("Vel.A", "1.0.0.0", "App", "");
    m_sandbox.WritePackage(L"A", manifest, "location = " + slow.Folder());
    slow.WaitForReader();
    EXPECT_TRUE(HasCatalogue("First.lnk"));
    ASSERT_TRUE(DeleteFileW(m_sandbox.CatalogFile().c_str()));
    host.Send("finalize");
    host.WaitForExitEvent();
    slow.Answer(manifest);
    EXPECT_EQ(host.Answer(), "ok");
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_FALSE(test::Exists(m_sandbox.CatalogFile())) << "it was saved again";
    EXPECT_EQ(host.Exit(), 0u);
}

TEST_F(Lifecycle, FinalizeAfterThePassIsQuick)
{
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    host.Do("stretch\t1000"); // a single pause would be longer than any wait
    host.Do("finalize", shorterThanAnyWait);
}

TEST_F(Lifecycle, ProcessMayEndWithoutFinalizeAtAnyMoment)
{
    MakePassesLong();
    const auto endAfter = [this](int code, const std::function<void(test::HostProcess&)>& act) {
        test::HostProcess host(m_sandbox);
        host.Command("init");
        act(host);
        EXPECT_EQ(host.Exit(code), static_cast<DWORD>(code));
    };
    endAfter(3, [](auto&) {}); // while the thread waits for its first pass
    endAfter(0, [this](auto&) { m_sandbox.WaitForLogLine(test::passBegin); });
    EXPECT_FALSE(test::IsFirstPassRunning()) << "the mutex went with the process";
    endAfter(0, [](auto&) { test::WaitForFirstPass(); }); // between two passes
    endAfter(0, [](auto& host) { EXPECT_EQ(host.Command("unload"), "1"); });
}

TEST_F(Lifecycle, UnloadedWithoutFinalizeItStaysInMemoryUntilTheThreadEnds)
{
    test::HostProcess host(m_sandbox);
    host.Command("init");
    EXPECT_EQ(host.Command("unload"), "1");
    EXPECT_EQ(host.Command("in-memory"), "1");
    test::WaitForFirstPass(); // the thread still runs its pass
    EXPECT_EQ(host.Command("in-memory"), "1");
    EXPECT_TRUE(host.HasExitEvent());
    host.Do("load");
    host.Do("finalize");
    EXPECT_FALSE(host.HasExitEvent());
    EXPECT_EQ(host.Command("unload"), "1");
    EXPECT_EQ(host.Command("in-memory"), "0");
    EXPECT_EQ(host.Exit(), 0u);
}

TEST_F(Lifecycle, UnloadedAfterFinalizeItIsGone)
{
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("unload"), "1");
    EXPECT_EQ(host.Command("in-memory"), "0") << "never used";
    for (int round = 0; round < 2; ++round) {
        host.Do("load");
        EXPECT_EQ(host.Command("init"), ok);
        host.Do("finalize");
        EXPECT_EQ(host.Command("unload"), "1");
        EXPECT_EQ(host.Command("in-memory"), "0");
    }
    EXPECT_EQ(host.Exit(), 0u);
}

TEST_F(Lifecycle, CyclesInTheFirstProcessLeaveNothingBehind)
{
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("cycles\t2"), ok); // what the platform keeps for good comes with the first ones
    const std::size_t before = host.Measure("handles");
    host.Do("look-up\t5");
    // Each cycle's pass looks the package manager's class up, for which Wine keeps a handle each time.
    ExpectNothingLeft(host, "cycles\t5", host.Measure("handles") - before);
}

TEST_F(Lifecycle, LoadsLeaveNothingBehind)
{
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("loads\t2\t0"), ok);
    ExpectNothingLeft(host, "loads\t5\t0", 0);
}

TEST_F(Lifecycle, CyclesInAnotherProcessLeaveNothingBehind)
{
    test::WriteFileBytes(m_sandbox.PresetFile(), test::emptyCatalog);
    test::HostProcess owner(m_sandbox);
    test::HostProcess host(m_sandbox);
    // The owner's first pass does not come past its first line, so that the other one never becomes the owner
    // itself.
    m_sandbox.Settings().SetDword(L"DebugLog", 1);
    owner.Do("line-up");
    owner.Command("init");
    m_sandbox.Settings().DeleteValue(L"DebugLog");
    EXPECT_EQ(host.Command("init"), "0x00000001");
    host.Do("finalize");
    EXPECT_EQ(host.Command("cycles\t20"), ok);
    ExpectNothingLeft(host, "cycles\t300", 0);
}

TEST_F(Lifecycle, SecondProcessOfTheExecutableStartsNoThreadDuringTheFirstPass)
{
    test::WriteFileBytes(m_sandbox.PresetFile(), test::emptyCatalog);
    test::HostProcess first(m_sandbox);
    test::HostProcess second(m_sandbox);
    first.Do("hold"); // until the end
    EXPECT_EQ(first.Command("init"), ok);
    const std::size_t threads = second.Measure("threads");
    EXPECT_EQ(second.Command("init"), "0x00000001");
    EXPECT_EQ(second.Measure("threads"), threads);
    EXPECT_FALSE(second.HasExitEvent());
    EXPECT_TRUE(first.HasExitEvent());
    second.Do("stretch\t1000");                // behind "init", which does pause
    second.Do("finalize", shorterThanAnyWait); // it has nothing to wait for
    EXPECT_TRUE(test::IsFirstPassRunning()) << "the mutex is the first process's";
}

TEST_F(Lifecycle, ProcessThatStartsAfterTheFirstPassRefreshesForItself)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    test::HostProcess first(m_sandbox);
    first.InitializeAndPass();
    test::HostProcess second(m_sandbox);
    EXPECT_EQ(second.Command("init"), ok);
    EXPECT_TRUE(second.HasExitEvent()) << "the mutex marks no more than a first pass that runs";
    test::WaitForFirstPass();
    first.Do("finalize");
    EXPECT_TRUE(second.HasExitEvent()) << "the events are the processes' own";
}

TEST_F(Lifecycle, ExecutablesOfOtherNamesShareNothing)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    test::HostProcess one(m_sandbox, L"One.exe");
    test::HostProcess two(m_sandbox, L"Two.exe");
    EXPECT_EQ(one.Command("init"), ok);
    EXPECT_EQ(two.Command("init"), ok);
    EXPECT_TRUE(one.HasExitEvent());
    EXPECT_TRUE(two.HasExitEvent());
    test::WaitForFirstPass(L"One");
    test::WaitForFirstPass(L"Two");
    EXPECT_TRUE(test::Exists(m_sandbox.CatalogFile(L"One")));
    EXPECT_TRUE(test::Exists(m_sandbox.CatalogFile(L"Two")));
}

TEST_F(Lifecycle, NamesAreMadeOfTheExecutablesNameUpToItsFirstDot)
{
    m_sandbox.Settings().SetDword(L"DebugLog", 1);
    test::HostProcess host(m_sandbox, L"a.b.exe");
    EXPECT_EQ(host.Command("init"), ok);
    EXPECT_TRUE(test::IsFirstPassRunning(L"a")) << "the mutex is QanHelper_a";
    test::WaitForFirstPass(L"a");
    EXPECT_TRUE(test::Exists(m_sandbox.Local() + L"\\Vel\\QanHelper\\a\\AppNameList.xml"));
    EXPECT_TRUE(test::Exists(m_sandbox.Local() + L"\\Vel\\QanHelper\\a\\QanHelperLog.txt"));
    EXPECT_FALSE(test::Exists(m_sandbox.Local() + L"\\Vel\\QanHelper\\a.b"));

    test::HostProcess other(m_sandbox, L"a.c.exe");
    EXPECT_EQ(other.Command("init"), ok);
    EXPECT_TRUE(test::IsFirstPassRunning(L"a")) << "another executable, the same names";
}

} // namespace
