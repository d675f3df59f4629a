// How the package manager starts in the first process of an executable.

#include "discovery/PackageManager.h"

#include "unit/discovery/Start.h"

#include <gmock/gmock.h>

#include <shlobj.h>

#include <string>
#include <utility>

namespace {

using namespace discovery_test;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

TEST_F(PackageManagerStart, FirstProcessLoadsItsCatalogAndStartsTheThread)
{
    WriteCatalog();
    WritePreset();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    EXPECT_NE(m_manager.m_hExitEvent, nullptr);
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    EXPECT_NE(CQanhPackageManager::m_hInstanceMutex, nullptr);
}

TEST_F(PackageManagerStart, FirstProcessLooksAtNoMutex)
{
    WriteEmptyCatalog();
    const test::FakeSleep sleep;
    const MutexLooks looks;
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(looks.Get(), IsEmpty());
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(InitializeLines(
                                   OwnerLines() + LoadLines(CatalogFile(), "0x00000001"), "0x00000000")));
}

TEST_F(PackageManagerStart, FirstRunLoadsThePreset)
{
    WritePreset();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
}

TEST_F(PackageManagerStart, LogOfAFirstRun)
{
    WriteEmptyPreset();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(
                    OwnerLines() + PresetLines() + LoadLines(PresetFile(), "0x00000001"), "0x00000000")));
}

TEST_F(PackageManagerStart, WithoutAnyFileTheThreadIsStartedAllTheSame)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(InitializeLines(
                                   OwnerLines() + PresetLines() + LoadLines(PresetFile(), "0x80070002") +
                                       Lines{"m_AppNameList.Load() failed. ErrCode = 0x80070002 "},
                                   "0x00000000")));
}

TEST_F(PackageManagerStart, ABrokenCatalogIsNotReplacedByThePreset)
{
    WritePreset();
    const std::string broken = "<Applications><MetroApps></Applications>";
    test::WriteFileBytes(CatalogFile(), broken);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), IsEmpty());
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(InitializeLines(
                                   OwnerLines() + LoadLines(CatalogFile(), "0xC00CEE3B") +
                                       Lines{"m_AppNameList.Load() failed. ErrCode = 0xC00CEE3B "},
                                   "0x00000000")));
}

TEST_F(PackageManagerStart, MutexAndExitEventHaveTheirNames)
{
    EXPECT_FALSE(MutexExists());
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_EQ(CQanhPackageManager::m_szInstanceMutexName, MutexName());
    EXPECT_TRUE(MutexExists());
    const HANDLE event = OpenEventW(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, EventName().c_str());
    ASSERT_NE(event, nullptr);
    // The same object, unsignalled, and signalled until somebody resets it.
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), DWORD{WAIT_TIMEOUT});
    SetEvent(event);
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), DWORD{WAIT_OBJECT_0});
    CloseHandle(event);
}

TEST_F(PackageManagerStart, MutexIsNotOwnedByAnybody)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    // Whoever waits for it gets it: this would fail on another thread if the library owned it.
    const HANDLE thread = CreateThread(
        nullptr, 0, [](void* mutex) { return WaitForSingleObject(mutex, 0); },
        CQanhPackageManager::m_hInstanceMutex, 0, nullptr);
    ResumeThread(thread);
    WaitForSingleObject(thread, 20000);
    DWORD result = WAIT_FAILED;
    GetExitCodeThread(thread, &result);
    CloseHandle(thread);
    EXPECT_EQ(result, DWORD{WAIT_OBJECT_0});
}

TEST_F(PackageManagerStart, MutexIsCreatedForEverybodyAndNotTaken)
{
    static std::wstring s_name;
    static bool s_plain;
    const test::ImportPatch<decltype(&CreateMutexW)> patch(
        "CreateMutexW", [](SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) -> HANDLE {
            s_plain = !security && !owned;
            s_name = name;
            SetLastError(ERROR_ACCESS_DENIED);
            return nullptr;
        });
    (void)m_manager.Initialize();
    EXPECT_TRUE(s_plain);
    EXPECT_EQ(s_name, MutexName());
}

class NamedMutex : public PackageManagerStart,
                   public ::testing::WithParamInterface<std::pair<const wchar_t*, const wchar_t*>>
{
};

TEST_P(NamedMutex, IsMadeOfTheExecutablesNameUpToItsFirstDot)
{
    const auto [executable, name] = GetParam();
    m_host.Set(m_folder / executable);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_STREQ(CQanhPackageManager::m_szInstanceMutexName, name);
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, name);
    EXPECT_NE(mutex, nullptr);
    CloseHandle(mutex);
}

INSTANTIATE_TEST_SUITE_P(Executables, NamedMutex,
                         ::testing::Values(std::pair(L"Launcher.exe", L"QanHelper_Launcher"),
                                           std::pair(L"a.b.exe", L"QanHelper_a"),
                                           std::pair(L".exe", L"QanHelper_"),
                                           std::pair(L"\u30e9\u30f3\u30c1\u30e3\u30fc.exe",
                                                     L"QanHelper_\u30e9\u30f3\u30c1\u30e3\u30fc")));

TEST_F(PackageManagerStart, ALongMutexNameIsCut)
{
    const std::wstring longest(255, L'n');
    m_host.Set(L"C:\\" + longest);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_EQ(CQanhPackageManager::m_szInstanceMutexName, (L"QanHelper_" + longest).substr(0, 259));
    EXPECT_NE(CQanhPackageManager::m_hInstanceMutex, nullptr);
}

TEST_F(PackageManagerStart, MutexWithoutTheExecutablesNameHasTheProductsAlone)
{
    WriteEmptyCatalog();
    m_host.FailNext(1);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_STREQ(CQanhPackageManager::m_szInstanceMutexName, L"QanHelper");
    EXPECT_THAT(m_log.Lines(), ElementsAreArray(InitializeLines(
                                   Lines{"CQanhPackageManager::GetModuleName IN",
                                         "CQanhPackageManager::GetModuleName OUT(0)",
                                         "CQanhPackageManager::Initialize CreateMutex() success. "} +
                                       FolderLines() + LoadLines(CatalogFile(), "0x00000001"),
                                   "0x00000000")));
}

TEST_F(PackageManagerStart, WithoutThePathsOfBothFilesItFails)
{
    m_host.FailNext(test::HostExecutable::kAlways);
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    EXPECT_EQ(m_manager.m_hExitEvent, nullptr);
    EXPECT_EQ(m_manager.m_hRefreshThread, nullptr);
    EXPECT_THAT(m_threadStarts, IsEmpty());
    // The next process of the executable is to be the owner.
    EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::Initialize IN",                      //
                                           "CQanhPackageManager::GetModuleName IN",                   //
                                           "CQanhPackageManager::GetModuleName OUT(0)",               //
                                           "CQanhPackageManager::Initialize CreateMutex() success. ", //
                                           "CQanhPackageManager::CreateAppNameListFolder IN",         //
                                           "CQanhPackageManager::CreateAppNameListFolder OUT(0)",     //
                                           "CQanhPackageManager::GetPresetAppNameFullPath IN",        //
                                           "CQanhPackageManager::GetPresetAppNameFullPath OUT(0)",    //
                                           "CQanhPackageManager::Initialize OUT(0x80004005)"));
}

TEST_F(PackageManagerStart, WithoutACatalogFolderThePresetIsLoaded)
{
    WriteCatalog();
    WritePreset();
    const test::FakeSleep sleep;
    for (const std::wstring& value : {std::wstring(), L"C:\\" + std::wstring(300, L'x')}) {
        const test::ScopedEnvironment environment(L"LOCALAPPDATA", value.empty() ? nullptr : value.c_str());
        CQanhPackageManager manager;
        m_threadError = ERROR_NOT_ENOUGH_MEMORY;
        EXPECT_EQ(manager.Initialize(), E_FAIL);
        EXPECT_THAT(Shortcuts(manager), ElementsAre(L"C:\\preset.lnk"));
        manager.Finalize();
    }
}

TEST_F(PackageManagerStart, AFolderThatCannotBeMadeIsNoFailure)
{
    WriteEmptyCatalog();
    const test::ImportPatch<decltype(&SHCreateDirectoryExW)> patch(
        "SHCreateDirectoryExW", [](HWND, const wchar_t*, const SECURITY_ATTRIBUTES*) { return 5; });
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    Lines folder = FolderLines();
    folder[1] = "CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (5)";
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(
                    ModuleNameLines() + Lines{"CQanhPackageManager::Initialize CreateMutex() success. "} +
                        folder + LoadLines(CatalogFile(), "0x00000001"),
                    "0x00000000")));
}

TEST_F(PackageManagerStart, ThreadIsStartedWithTheManagerAsItsArgument)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    ASSERT_EQ(m_threadStarts.size(), 1u);
    EXPECT_EQ(m_threadStarts[0].security, nullptr);
    EXPECT_EQ(m_threadStarts[0].stack, 0u);
    EXPECT_EQ(m_threadStarts[0].start, &CQanhPackageManager::RefreshThread);
    EXPECT_EQ(m_threadStarts[0].argument, &m_manager);
    EXPECT_EQ(m_threadStarts[0].flags, 0u);
}

TEST_F(PackageManagerStart, ThreadThatDoesNotStartIsAFailure)
{
    WriteEmptyCatalog();
    m_threadError = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    ExpectNothingHeld();
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(OwnerLines() + LoadLines(CatalogFile(), "0x00000001") +
                                                     Lines{"CreateThread() failed. ErrCode = 8 "},
                                                 "0x80004005")));
}

TEST_F(PackageManagerStart, ThreadThatDoesNotStartHidesTheFailureOfTheLoad)
{
    m_threadError = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
}

TEST_F(PackageManagerStart, EventThatCannotBeMadeIsAFailure)
{
    static std::wstring s_name;
    static bool s_manualReset;
    const test::ImportPatch<decltype(&CreateEventW)> patch(
        "CreateEventW",
        [](SECURITY_ATTRIBUTES* security, BOOL manual, BOOL signalled, const wchar_t* name) -> HANDLE {
            s_name = name;
            s_manualReset = !security && manual && !signalled;
            SetLastError(ERROR_INVALID_HANDLE);
            return nullptr;
        });
    WriteEmptyCatalog();
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    EXPECT_EQ(s_name, EventName());
    EXPECT_TRUE(s_manualReset);
    ExpectNothingHeld();
    EXPECT_THAT(m_threadStarts, IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAreArray(InitializeLines(OwnerLines() + LoadLines(CatalogFile(), "0x00000001") +
                                                     Lines{"CreateEventW() failed. ErrCode = 6 "},
                                                 "0x80004005")));
}

TEST_F(PackageManagerStart, ASecondStartDoesNothing)
{
    WriteCatalog();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    const HANDLE event = m_manager.m_hExitEvent;
    const HANDLE thread = m_manager.m_hRefreshThread;
    const HANDLE mutex = CQanhPackageManager::m_hInstanceMutex;
    m_log.Clear();
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::Initialize IN"));
    EXPECT_EQ(m_manager.m_hExitEvent, event);
    EXPECT_EQ(m_manager.m_hRefreshThread, thread);
    EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, mutex);
    EXPECT_EQ(Shortcuts(m_manager).size(), 1u);
}

TEST_F(PackageManagerStart, AnEventWithoutAThreadIsNotAStart)
{
    WriteEmptyCatalog();
    HoldMutexElsewhere();
    const test::FakeSleep sleep;
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    m_manager.m_hExitEvent = event;
    (void)m_manager.Initialize();
    EXPECT_EQ(m_log.Lines().size(), InitializeLines(OtherLines() + PresetLines() + Lines(3), "").size());
}

TEST_F(PackageManagerStart, ASecondTryAfterAFailureIsThatOfAnOwner)
{
    WriteCatalog();
    m_threadError = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    m_threadError = 0;
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_NE(CQanhPackageManager::m_hInstanceMutex, nullptr);
    // The records of the first try are not there twice.
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
}

TEST_F(PackageManagerStart, NothingIsHeldBeforeTheStart)
{
    const CQanhPackageManager manager;
    EXPECT_EQ(manager.m_hExitEvent, nullptr);
    EXPECT_EQ(manager.m_hRefreshThread, nullptr);
    EXPECT_THAT(Shortcuts(manager), IsEmpty());
}

} // namespace
