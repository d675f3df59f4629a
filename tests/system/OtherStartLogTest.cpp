// The whole log of bringing the library up where that fails, where it is up already, or in a process that is
// not the first of its executable.
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/StartGoldens.h"
#include "system/StartLog.h"

#include <algorithm>

namespace {

using standin::Setting;
using namespace test;

class OtherStartLog : public StartLog
{
protected:
    OtherStartLog() { MakeLogFolder(); }

    // Without the object that tells what the screen shows, nothing is brought up.
    void ExpectFailure(const std::string& command, const std::string& result, std::string_view cause,
                       std::string_view code)
    {
        EXPECT_EQ(host.Command(command), result);
        EXPECT_TRUE(IsGolden(sandbox.Log(), Filled(R"(
            QanhInitialize IN
            CQanhMonitorMode::Initialize IN ... OUT <1>:(<2>)
            QanhInitialize OUT(s_MonitorMode.Initialize : hr=<2>)
        )",
                                                   {cause, code})));
    }

    HostProcess host{sandbox};
};

TEST_F(OtherStartLog, VisibilityObjectThatCannotBeCreated)
{
    standin::SetSetting(Setting::FailCreate, 0x80040154);
    ExpectFailure("init", "0x80040154", "CoCreateInstance", "-2147221164");
    EXPECT_FALSE(IsFirstPassRunning());
    EXPECT_FALSE(host.HasExitEvent());
}

TEST_F(OtherStartLog, ThreadOfAMultithreadedApartment)
{
    ExpectFailure("mta\tinit", "0x80010106", "CoInitializeEx", "-2147417850");
    EXPECT_EQ(host.Command("init"), "0x00000000") << "the failure left the library down";
}

TEST_F(OtherStartLog, SecondProcessDuringTheFirstPassTakesThePreset)
{
    WriteFileBytes(sandbox.CatalogFile(), emptyCatalog);
    WriteFileBytes(sandbox.PresetFile(), emptyCatalog);
    const FirstPassOfAnother owner;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(host.Command("init"), "0x00000001") << "the result of the load";
    EXPECT_GE(GetTickCount64() - start, 490u) << "five rounds of 100 ms each";
    EXPECT_FALSE(host.HasExitEvent());
    host.Do("finalize");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {OtherProcessBegins(), presetIsOpened, nothingIsRead,
                                         otherProcessIsUp, finalizeBegins, finalizeEnds}));
}

TEST_F(OtherStartLog, SecondProcessThatSeesTheFirstPassEndTakesTheCatalogue)
{
    WriteFileBytes(sandbox.CatalogFile(), emptyCatalog);
    FirstPassOfAnother owner;
    host.Do("stretch\t10"); // the half second in which it looks would soon be over on a slow machine
    host.Send("init");
    sandbox.WaitForLogLine("CQanhPackageManager::CreateAppNameListFolder OUT(C)");
    owner.Leave();
    EXPECT_EQ(host.Answer(), "0x00000001");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {OtherProcessBegins(), mutexIsGone, catalogIsOpened, nothingIsRead,
                                         otherProcessIsUp}));
}

TEST_F(OtherStartLog, SecondProcessWithoutAnyFileFails)
{
    const FirstPassOfAnother owner;
    EXPECT_EQ(host.Command("init"), "0x80070002");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {OtherProcessBegins(), presetIsOpened, presetIsMissing, R"(
        CQanhPackageManager::Initialize OUT(0x80070002)
        CQanhMonitorMode::Finalize IN ... OUT
        QanhInitialize OUT(s_PackageManager.Initialize : hr=-2147024894)
    )"}));
}

TEST_F(OtherStartLog, RefreshThreadWithoutStartMenuVariables)
{
    WriteFileBytes(sandbox.CatalogFile(), emptyCatalog);
    for (const wchar_t* variable : {L"ALLUSERSPROFILE", L"APPDATA"}) {
        const std::size_t offset = sandbox.LogLength();
        const ScopedEnvironment environment(variable, nullptr);
        HostProcess without(sandbox);
        EXPECT_EQ(Initialize(without), "0x00000000");
        WaitForFirstPass(); // the thread has ended
        without.Do("finalize");
        std::vector<std::string> log = sandbox.Log(offset);
        log.erase(log.begin(), std::find(log.begin(), log.end(), "CQanhPackageManager::RefreshThread IN"));
        EXPECT_TRUE(IsGolden(log, {ThreadBegins(), finalizeBegins, finalizeEnds}))
            << "without " << ToUtf8(variable);
    }
    EXPECT_EQ(ReadFileBytes(sandbox.CatalogFile()), emptyCatalog) << "nothing was saved";
}

TEST_F(OtherStartLog, FurtherCallsOnlyCount)
{
    Initialize(host);
    WaitForFirstPass();
    const std::size_t offset = sandbox.LogLength();
    EXPECT_EQ(host.Command("init"), "0x00000000");
    host.Do("finalize");
    host.Do("finalize");
    host.Do("finalize");
    EXPECT_TRUE(IsGolden(sandbox.Log(offset), {R"(
        CQanhReg::IsDebugLogOn IN
        CQanhReg::GetDWORDRegVal IN ... OUT(1)
        CQanhReg::IsDebugLogOn OUT(1)
        QanhInitialize IN ... OUT(0) : s_nCount(2)
        QanhFinalize IN ... OUT : s_nCount(1)
    )",
                                               finalizeBegins, threadEnds, finalizeEnds,
                                               "QanhFinalize IN ... OUT : s_nCount(0)"}));
}

} // namespace
