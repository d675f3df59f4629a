// The whole log of bringing the library up where that fails, where it is up already, or in a process that is
// not the first of its executable.
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/Golden.h"
#include "system/StartGoldens.h"
#include "system/StartLog.h"

#include <algorithm>

namespace {

using standin::Setting;
using namespace test;

using OtherStartLog = StartLog;

TEST_F(OtherStartLog, VisibilityObjectThatCannotBeCreated)
{
    MakeLogFolder();
    standin::SetSetting(Setting::FailCreate, 0x80040154);
    test::HostProcess host(sandbox);
    EXPECT_EQ(host.Command("init"), "0x80040154");
    EXPECT_TRUE(IsGolden(sandbox.Log(), R"(
        QanhInitialize IN
        CQanhMonitorMode::Initialize IN
        CQanhMonitorMode::Initialize OUT CoCreateInstance:(-2147221164)
        QanhInitialize OUT(s_MonitorMode.Initialize : hr=-2147221164)
    )"));
    EXPECT_FALSE(test::IsFirstPassRunning());
    EXPECT_FALSE(host.HasExitEvent());
}

TEST_F(OtherStartLog, ThreadOfAMultithreadedApartment)
{
    MakeLogFolder();
    test::HostProcess host(sandbox);
    EXPECT_EQ(host.Command("mta\tinit"), "0x80010106");
    EXPECT_TRUE(IsGolden(sandbox.Log(), R"(
        QanhInitialize IN
        CQanhMonitorMode::Initialize IN
        CQanhMonitorMode::Initialize OUT CoInitializeEx:(-2147417850)
        QanhInitialize OUT(s_MonitorMode.Initialize : hr=-2147417850)
    )"));
    EXPECT_EQ(host.Command("init"), "0x00000000") << "the failure left the library down";
}

TEST_F(OtherStartLog, SecondProcessDuringTheFirstPassTakesThePreset)
{
    MakeLogFolder();
    test::WriteFileBytes(sandbox.CatalogFile(), test::emptyCatalog);
    test::WriteFileBytes(sandbox.PresetFile(), test::emptyCatalog);
    const test::FirstPassOfAnother owner;
    test::HostProcess host(sandbox);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(host.Command("init"), "0x00000001") << "the result of the load";
    EXPECT_GE(GetTickCount64() - start, 490u) << "five rounds of 100 ms each";
    EXPECT_FALSE(host.HasExitEvent());
    host.Do("finalize");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {otherProcessBegins, presetIsChosen, presetIsOpened, nothingIsRead,
                                         otherProcessIsUp, finalizeBegins, finalizeEnds}));
}

TEST_F(OtherStartLog, SecondProcessThatSeesTheFirstPassEndTakesTheCatalogue)
{
    MakeLogFolder();
    test::WriteFileBytes(sandbox.CatalogFile(), test::emptyCatalog);
    test::FirstPassOfAnother owner;
    test::HostProcess host(sandbox);
    host.Send("init");
    sandbox.WaitForLogLine("CQanhPackageManager::CreateAppNameListFolder OUT(C)");
    owner.End();
    EXPECT_EQ(host.Answer(), "0x00000001");
    EXPECT_TRUE(IsGolden(
        sandbox.Log(), {otherProcessBegins, mutexIsGone, catalogIsOpened, nothingIsRead, otherProcessIsUp}));
}

TEST_F(OtherStartLog, SecondProcessWithoutAnyFileFails)
{
    MakeLogFolder();
    const test::FirstPassOfAnother owner;
    test::HostProcess host(sandbox);
    EXPECT_EQ(host.Command("init"), "0x80070002");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {
                                            otherProcessBegins,
                                            presetIsChosen,
                                            presetIsOpened,
                                            presetIsMissing,
                                            R"(
        CQanhPackageManager::Initialize OUT(0x80070002)
        CQanhMonitorMode::Finalize IN
        CQanhMonitorMode::Finalize OUT
        QanhInitialize OUT(s_PackageManager.Initialize : hr=-2147024894)
                                            )",
                                        }));
}

TEST_F(OtherStartLog, RefreshThreadWithoutStartMenuVariables)
{
    MakeLogFolder();
    test::WriteFileBytes(sandbox.CatalogFile(), test::emptyCatalog);
    for (const wchar_t* variable : {L"ALLUSERSPROFILE", L"APPDATA"}) {
        const std::size_t offset = sandbox.LogLength();
        sandbox.SetVariable(L"ALLUSERSPROFILE", sandbox.Folder() + L"\\allusers");
        sandbox.SetVariable(L"APPDATA", sandbox.Folder() + L"\\roaming");
        sandbox.SetVariable(variable, std::nullopt);
        test::HostProcess host(sandbox);
        EXPECT_EQ(Initialize(host), "0x00000000");
        test::WaitForFirstPass(); // the thread has ended
        host.Do("finalize");
        std::vector<std::string> log = sandbox.Log(offset);
        const auto thread = std::find(log.begin(), log.end(), "CQanhPackageManager::RefreshThread IN");
        EXPECT_TRUE(IsGolden(std::vector<std::string>(thread, log.end()),
                             {threadBegins, finalizeBegins, finalizeEnds}))
            << "without " << test::ToUtf8(variable);
    }
    EXPECT_EQ(test::ReadFileBytes(sandbox.CatalogFile()), test::emptyCatalog) << "nothing was saved";
}

TEST_F(OtherStartLog, FurtherCallsOnlyCount)
{
    test::HostProcess host(sandbox);
    host.Do("line-up");
    host.Command("init");
    host.Do("open");
    test::WaitForFirstPass();
    const std::size_t offset = sandbox.LogLength();
    EXPECT_EQ(host.Command("init"), "0x00000000");
    host.Do("finalize");
    host.Do("finalize");
    host.Do("finalize");
    EXPECT_TRUE(IsGolden(sandbox.Log(offset), {
                                                  R"(
        CQanhReg::IsDebugLogOn IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(1)
        CQanhReg::IsDebugLogOn OUT(1)
        QanhInitialize IN
        QanhInitialize OUT(0) : s_nCount(2)
        QanhFinalize IN
        QanhFinalize OUT : s_nCount(1)
                                                  )",
                                                  finalizeBegins,
                                                  threadEnds,
                                                  finalizeEnds,
                                                  R"(
        QanhFinalize IN
        QanhFinalize OUT : s_nCount(0)
                                                  )",
                                              }));
}

} // namespace
