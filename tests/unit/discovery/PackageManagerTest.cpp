// How the package manager starts in the first process of an executable.

#include "catalog/ExcludeList.h"
#include "unit/discovery/Start.h"

#include <shlobj.h>

#include <thread>

namespace {

using namespace discovery_test;

TEST_F(PackageManagerStart, FirstProcessLoadsItsCatalogAndStartsTheThread)
{
    WriteCatalog();
    WritePreset();
    const FakeSleep sleep;
    const MutexLooks looks;
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    EXPECT_NE(m_manager.m_hExitEvent, nullptr);
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    EXPECT_NE(CQanhPackageManager::m_hInstanceMutex, nullptr);
    // It looks at no mutex.
    EXPECT_THAT(looks.Get(), IsEmpty());
    EXPECT_THAT(sleep.Calls(), IsEmpty());
    ExpectLog("0x00000000", CatalogLines());
}

TEST_F(PackageManagerStart, FirstRunLoadsThePreset)
{
    WritePreset();
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    ExpectLog("0x00000000", OwnerLines() + LoadPresetLines());
}

TEST_F(PackageManagerStart, WithoutAnyFileTheThreadIsStartedAllTheSame)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    ExpectLog("0x00000000", OwnerLines() + PresetLines() + FailedLoadLines(PresetFile(), "0x80070002"));
}

TEST_F(PackageManagerStart, ABrokenCatalogIsNotReplacedByThePreset)
{
    WritePreset();
    WriteFileBytes(CatalogFile(), "<Applications><MetroApps></Applications>");
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), IsEmpty());
    EXPECT_NE(m_manager.m_hRefreshThread, nullptr);
    ExpectLog("0x00000000", OwnerLines() + FailedLoadLines(CatalogFile(), "0xC00CEE3B"));
}

TEST_F(PackageManagerStart, ExitEventHasItsName)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    const UniqueHandle event(OpenEventW(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, EventName().c_str()));
    ASSERT_TRUE(event);
    // The same object, unsignalled, and signalled until somebody resets it.
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), DWORD{WAIT_TIMEOUT});
    SetEvent(event.Get());
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), DWORD{WAIT_OBJECT_0});
}

TEST_F(PackageManagerStart, MutexIsNotOwnedByAnybody)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    // Whoever waits for it gets it: this would fail on another thread if the library owned it.
    DWORD result = WAIT_FAILED;
    std::thread([&] { result = WaitForSingleObject(CQanhPackageManager::m_hInstanceMutex, 0); }).join();
    EXPECT_EQ(result, DWORD{WAIT_OBJECT_0});
}

TEST_F(PackageManagerStart, MutexIsCreatedForEverybodyAndNotTaken)
{
    std::wstring mutexName;
    bool isPlain = false;
    const CapturingPatch<decltype(&CreateMutexW)> patch(
        "CreateMutexW", [&](SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) {
            isPlain = !security && !owned;
            mutexName = name;
            SetLastError(ERROR_ACCESS_DENIED);
            return nullptr;
        });
    (void)m_manager.Initialize();
    EXPECT_TRUE(isPlain);
    EXPECT_EQ(mutexName, MutexName());
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
    EXPECT_TRUE(UniqueHandle(OpenMutexW(SYNCHRONIZE, FALSE, name)));
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

// The start of a log without the executable's path.
const Lines kNoModuleName = Call("CQanhPackageManager::GetModuleName", "(0)") +
                            Lines{"CQanhPackageManager::Initialize CreateMutex() success. "};

TEST_F(PackageManagerStart, MutexWithoutTheExecutablesNameHasTheProductsAlone)
{
    WriteCatalog();
    m_host.FailNext(1);
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_STREQ(CQanhPackageManager::m_szInstanceMutexName, L"QanHelper");
    ExpectLog("0x00000000", kNoModuleName + FolderLines() + LoadLines(CatalogFile(), "0x00000001"));
}

TEST_F(PackageManagerStart, WithoutThePathsOfBothFilesItFails)
{
    m_host.FailNext(HostExecutable::kAlways);
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    // The next process of the executable is to be the owner.
    ExpectNotOwner();
    ExpectLog("0x80004005", kNoModuleName + Call("CQanhPackageManager::CreateAppNameListFolder", "(0)") +
                                Call("CQanhPackageManager::GetPresetAppNameFullPath", "(0)"));
}

TEST_F(PackageManagerStart, WithoutACatalogFolderThePresetIsLoaded)
{
    WriteCatalog();
    WritePreset();
    const FakeSleep sleep;
    for (const std::wstring& value : {std::wstring(), L"C:\\" + std::wstring(300, L'x')}) {
        const ScopedEnvironment environment(L"LOCALAPPDATA", value.empty() ? nullptr : value.c_str());
        CQanhPackageManager manager;
        m_threadError = ERROR_NOT_ENOUGH_MEMORY;
        EXPECT_EQ(manager.Initialize(), E_FAIL);
        EXPECT_THAT(Shortcuts(manager), ElementsAre(L"C:\\preset.lnk"));
        manager.Finalize();
    }
}

TEST_F(PackageManagerStart, AFolderThatCannotBeMadeIsNoFailure)
{
    WriteCatalog();
    const ImportPatch<decltype(&SHCreateDirectoryExW)> patch(
        "SHCreateDirectoryExW", [](HWND, const wchar_t*, const SECURITY_ATTRIBUTES*) { return 5; });
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    ExpectLog("0x00000000", OwnerLines(5) + LoadLines(CatalogFile(), "0x00000001"));
}

TEST_F(PackageManagerStart, ThreadIsStartedWithTheManagerAsItsArgument)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(m_threadStarts,
                ElementsAre(ThreadStart(nullptr, 0, &CQanhPackageManager::RefreshThread, &m_manager, 0)));
}

TEST_F(PackageManagerStart, ThreadThatDoesNotStartIsAFailure)
{
    WriteCatalog();
    m_threadError = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    ExpectNothingHeld();
    ExpectLog("0x80004005", CatalogLines() + Lines{"CreateThread() failed. ErrCode = 8 "});
}

// A thread that does not hold the library would run in freed memory one day: none is started.
TEST_F(PackageManagerStart, WithoutItsModuleStartsNoThread)
{
    const ImportPatch<decltype(&GetModuleHandleExW)> patch("GetModuleHandleExW",
                                                           [](DWORD, const wchar_t*, HMODULE*) -> BOOL {
                                                               SetLastError(ERROR_MOD_NOT_FOUND);
                                                               return FALSE;
                                                           });
    WriteCatalog();
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    EXPECT_THAT(m_threadStarts, IsEmpty());
    EXPECT_THAT(m_log.Lines(), Contains("CreateThread() failed. ErrCode = 126 "));
    ExpectNothingHeld();
}

TEST_F(PackageManagerStart, EventThatCannotBeMadeIsAFailure)
{
    bool isManualReset = false;
    const CapturingPatch<decltype(&CreateEventW)> patch(
        "CreateEventW", [&](SECURITY_ATTRIBUTES* security, BOOL manual, BOOL signalled, const wchar_t*) {
            isManualReset = !security && manual && !signalled;
            SetLastError(ERROR_INVALID_HANDLE);
            return nullptr;
        });
    WriteCatalog();
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    EXPECT_TRUE(isManualReset);
    ExpectNothingHeld();
    EXPECT_THAT(m_threadStarts, IsEmpty());
    ExpectLog("0x80004005", CatalogLines() + Lines{"CreateEventW() failed. ErrCode = 6 "});
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
    WriteCatalog();
    HoldMutexElsewhere();
    const FakeSleep sleep;
    m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    (void)m_manager.Initialize();
    // The whole log of a start without a preset: entry and exit line, and three of the load that fails.
    EXPECT_EQ(m_log.Lines().size(), (OtherLines() + PresetLines()).size() + 3 + 2);
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

// The question is logged here and once more by the catalogue, whose answer it is.
TEST(ExcludeQuestion, IsPassedOnToTheCatalogue)
{
    const CQanhPackageManager manager;
    ExcludeList excluded;
    BOOL found = TRUE;
    const LogCapture log;
    EXPECT_EQ(manager.GetExcludeAppNameList(L"mail", &excluded, &found), S_OK);
    EXPECT_EQ(found, FALSE);
    EXPECT_EQ(log.Lines(), Call("CQanhPackageManager::GetExcludeAppNameList(mail)", "(0x00000000)",
                                Call("CQanhAppNameList::GetExcludeAppNameList(mail)", "(0x00000000)")));
    EXPECT_EQ(manager.GetExcludeAppNameList(L"", &excluded, &found), E_INVALIDARG);
}

} // namespace
