// How a refresh pass asks the system about Store packages.

#include "catalog/Package.h"
#include "common/WinRtError.h"
#include "discovery/PackageManager.h"
#include "support/Apartments.h"
#include "support/FakePackages.h"
#include "support/LogCapture.h"
#include "support/Registry.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <new>
#include <string>
#include <vector>

namespace {

using test::Apartment;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

std::string Message(HRESULT result)
{
    return test::ToUtf8(WinRtError(result).Message());
}

class StoreRefresh : public ::testing::Test
{
protected:
    StoreRefresh() { m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    ~StoreRefresh() override
    {
        EXPECT_THAT(m_store.objects.Leaks(), IsEmpty());
        CloseHandle(m_manager.m_hExitEvent);
        m_manager.m_hExitEvent = nullptr;
    }

    void SetExitEventAt(const char* call, std::size_t index)
    {
        m_store.objects.At(
            call, [this] { SetEvent(m_manager.m_hExitEvent); }, index);
    }

    std::vector<std::string>& Journal() { return m_store.objects.journal; }

    // The catalogue's packages.
    std::vector<std::wstring> Families()
    {
        std::vector<std::wstring> families;
        for (const WideString& name : m_manager.m_AppNameList.PackageFamilyNames()) {
            families.emplace_back(name.c_str());
        }
        return families;
    }

    // The lines of the refresh itself and of its way to the package manager.
    static std::vector<std::string> OwnLines(const test::LogCapture& log)
    {
        std::vector<std::string> lines;
        for (const std::string& line : log.Lines()) {
            if (line.rfind("CQanhPackageManager::", 0) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    test::ScopedKey m_settings{HKEY_LOCAL_MACHINE, test::kSettingsKey};
    test::FakeStore m_store;
    CQanhPackageManager m_manager;
};

TEST_F(StoreRefresh, HandsEveryPackageOfTheUserToTheCatalogueInOrder)
{
    m_store.Add(L"b");
    m_store.Add(L"a");
    m_store.Add(L"c");
    const test::LogCapture log;
    EXPECT_TRUE(
        test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK); }));
    EXPECT_THAT(Families(), ElementsAre(L"b", L"a", L"c"));
    EXPECT_THAT(OwnLines(log), ElementsAre("CQanhPackageManager::RefreshMetroApps IN",
                                           "CQanhPackageManager::GetPackageManager IN",
                                           "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                           "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)"));
}

TEST_F(StoreRefresh, AsksForThePackagesOfTheCurrentUser)
{
    m_store.Add(L"a");
    EXPECT_TRUE(
        test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK); }));
    EXPECT_THAT(Journal(),
                ElementsAre("RoInitialize(0) = 0x00000000",
                            "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                            "ActivateInstance", "QueryInterface", "FindPackagesByUserSecurityId()", "First",
                            "HasCurrent", "Current", "Id", "FamilyName", "FullName", "Name", "Version",
                            "InstalledLocation", "QueryInterface", "Path", "MoveNext", "RoUninitialize"));
}

TEST_F(StoreRefresh, OfNoPackagesSucceeds)
{
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Families(), IsEmpty());
}

TEST_F(StoreRefresh, WorksInEveryApartment)
{
    for (const Apartment apartment :
         {Apartment::kNone, Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        Journal().clear();
        EXPECT_TRUE(test::KeepsApartment(apartment, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK); }));
        EXPECT_EQ(Journal().back() == "RoUninitialize", apartment != Apartment::kMultithreaded);
    }
}

TEST_F(StoreRefresh, WithoutAManagerFails)
{
    m_store.initializeResult = E_OUTOFMEMORY;
    const test::LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhPackageManager::RefreshMetroApps IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x8007000E)",
                            // With a capital, unlike the queries.
                            "CQanhPackageManager::RefreshMetroApps OUT(GetPackageManager Failed.)"));
}

// What was not entered is not left, lest the host lose an apartment of its own.
TEST_F(StoreRefresh, WithoutTheRuntimeDoesNotLeaveIt)
{
    m_store.initializeResult = E_OUTOFMEMORY;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kSingleThreaded,
                                     [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL); }));
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x8007000E"));
}

TEST_F(StoreRefresh, WithoutAManagerLeavesTheRuntime)
{
    m_store.objects.Fail("ActivateInstance", E_ACCESSDENIED);
    EXPECT_TRUE(
        test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL); }));
    EXPECT_EQ(Journal().back(), "RoUninitialize");
}

// The result is that of the last package.

TEST_F(StoreRefresh, APackageThatFailsDoesNotStopTheWalk)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    m_store.Add(L"c");
    m_store.objects.Fail("Id", E_ACCESSDENIED, 0);
    m_store.objects.Fail("Id", E_ACCESSDENIED, 1);
    const test::LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Families(), ElementsAre(L"c"));
    EXPECT_THAT(log.Lines(),
                Contains("CQanhAppNameList::AddMetroPackage OUT(" + Message(E_ACCESSDENIED) + ")").Times(2));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)");
}

TEST_F(StoreRefresh, ReturnsTheResultOfTheLastPackage)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    m_store.objects.Fail("Id", E_ACCESSDENIED, 1);
    const test::LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
    EXPECT_THAT(Families(), ElementsAre(L"a"));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::RefreshMetroApps OUT(0x80004005)");
}

TEST_F(StoreRefresh, ReturnsAnotherSuccessOfTheLastPackage)
{
    const test::TemporaryFolder folder;
    test::WriteFileBytes(folder / L"AppxManifest.xml", "<Package/>");
    test::PackageFacts facts;
    facts.path = folder.Path();
    m_store.Add(L"a");
    test::FakePackage* const last = m_store.Add(facts);
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    ++last->facts.version.Major;
    const test::LogCapture log;
    // A changed package answers with the end of its manifest.
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_FALSE);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::RefreshMetroApps OUT(0x00000001)");
}

TEST_F(StoreRefresh, LeavesTheRuntimeBeforeItsExitLine)
{
    m_store.Add(L"a");
    const test::LogCapture log;
    std::vector<std::string> lastLines;
    m_store.onUninitialize = [&] { lastLines.push_back(log.Lines().back()); };
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(lastLines, ElementsAre("CQanhAppNameList::AddMetroPackage OUT(0x00000000)"));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)");
}

// The walk that fails.

struct FailingWalk
{
    const char* call;
    std::size_t index;
    std::size_t packages; // that are added all the same
};

class StoreRefreshWalk : public StoreRefresh, public ::testing::WithParamInterface<FailingWalk>
{
};

TEST_P(StoreRefreshWalk, ThatFailsIsLoggedAndKeepsWhatItReached)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    m_store.Add(L"c");
    m_store.objects.Fail(GetParam().call, E_ACCESSDENIED, GetParam().index);
    const test::LogCapture log;
    EXPECT_TRUE(
        test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK); }));
    EXPECT_EQ(Families().size(), GetParam().packages);
    EXPECT_THAT(OwnLines(log),
                ElementsAre("CQanhPackageManager::RefreshMetroApps IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                            "CQanhPackageManager::RefreshMetroApps OUT(" + Message(E_ACCESSDENIED) + ")",
                            "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)"));
    EXPECT_EQ(Journal().back(), "RoUninitialize");
}

INSTANTIATE_TEST_SUITE_P(At, StoreRefreshWalk,
                         ::testing::Values(FailingWalk{"FindPackagesByUserSecurityId", 0, 0},
                                           FailingWalk{"First", 0, 0}, FailingWalk{"HasCurrent", 0, 0},
                                           FailingWalk{"Current", 0, 0}, FailingWalk{"Current", 2, 2},
                                           FailingWalk{"MoveNext", 0, 1}, FailingWalk{"MoveNext", 2, 3}));

TEST_F(StoreRefresh, AWalkThatFailsReturnsTheResultReachedSoFar)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    m_store.objects.Fail("Id", E_ACCESSDENIED, 0);
    m_store.objects.Fail("MoveNext", E_ACCESSDENIED, 0);
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
}

TEST_F(StoreRefresh, AnExceptionOfAnotherKindIsOutOfMemory)
{
    m_store.Add(L"a");
    m_store.objects.At("MoveNext", [] { throw std::bad_alloc(); });
    const test::LogCapture log;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone,
                                     [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), E_OUTOFMEMORY); }));
    EXPECT_THAT(Families(), ElementsAre(L"a"));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::RefreshMetroApps OUT(0x8007000E)");
}

TEST_F(StoreRefresh, SurvivesEveryFailingCall)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    const std::size_t calls = m_store.objects.Calls();
    ASSERT_GT(calls, 20u);
    for (std::size_t index = 0; index < calls; ++index) {
        m_manager.m_AppNameList.Clear();
        m_store.objects.FailCall(m_store.objects.Calls() + index, E_ACCESSDENIED);
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { (void)m_manager.RefreshMetroApps(); }));
        EXPECT_EQ(Journal().back(), "RoUninitialize");
        EXPECT_LE(Families().size(), 2u);
    }
}

// The exit event.

TEST_F(StoreRefresh, HandlesNoPackageOnceTheExitEventIsSet)
{
    m_store.Add(L"a");
    SetEvent(m_manager.m_hExitEvent);
    const test::LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Families(), IsEmpty());
    EXPECT_THAT(Journal(), Not(Contains("Id")));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)");
}

TEST_F(StoreRefresh, StopsBeforeTheNextPackageWhenTheExitEventIsSet)
{
    for (const wchar_t* family : {L"a", L"b", L"c", L"d"}) {
        m_store.Add(family);
    }
    SetExitEventAt("Path", 1); // while the second one is read
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Families(), ElementsAre(L"a", L"b"));
}

TEST_F(StoreRefresh, AStoppedWalkReturnsTheResultReachedSoFar)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    m_store.objects.Fail("Id", E_ACCESSDENIED, 0);
    SetExitEventAt("Id", 0);
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
    EXPECT_THAT(Families(), IsEmpty());
}

TEST_F(StoreRefresh, AStoppedWalkLeavesTheRuntimeAndGivesEverythingBack)
{
    for (const wchar_t* family : {L"a", L"b", L"c"}) {
        m_store.Add(family);
    }
    SetExitEventAt("MoveNext", 0);
    EXPECT_TRUE(
        test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK); }));
    EXPECT_THAT(Families(), ElementsAre(L"a"));
    EXPECT_EQ(m_store.objects.Calls("Current"), 1u);
    EXPECT_EQ(Journal().back(), "RoUninitialize");
}

TEST_F(StoreRefresh, PollsTheExitEventBeforeEachPackage)
{
    for (const wchar_t* family : {L"a", L"b", L"c"}) {
        m_store.Add(family);
    }
    static HANDLE s_event;
    static test::FakeStore* s_store;
    static decltype(&WaitForSingleObject) s_wait;
    s_event = m_manager.m_hExitEvent;
    s_store = &m_store;
    {
        const test::ImportPatch<decltype(&WaitForSingleObject)> patch(
            "WaitForSingleObject", [](HANDLE handle, DWORD milliseconds) -> DWORD {
                if (handle != s_event) {
                    return s_wait(handle, milliseconds);
                }
                s_store->objects.Note(milliseconds == 0 ? "poll" : "wait");
                return WAIT_TIMEOUT;
            });
        s_wait = patch.Original();
        EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    }
    std::vector<std::string> events;
    for (const std::string& event : Journal()) {
        if (event == "Current" || event == "poll" || event == "wait") {
            events.push_back(event);
        }
    }
    EXPECT_THAT(events, ElementsAre("poll", "Current", "poll", "Current", "poll", "Current"));
}

TEST_F(StoreRefresh, PollsTheExitEventWithoutWaitingAndLeavesItSet)
{
    m_store.Add(L"a");
    SetEvent(m_manager.m_hExitEvent);
    static std::vector<DWORD> s_waits;
    s_waits.clear();
    {
        const test::ImportPatch<decltype(&WaitForSingleObject)> patch(
            "WaitForSingleObject", [](HANDLE, DWORD milliseconds) -> DWORD {
                s_waits.push_back(milliseconds);
                return WAIT_TIMEOUT;
            });
        EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    }
    EXPECT_THAT(s_waits, ElementsAre(0u));
    EXPECT_EQ(WaitForSingleObject(m_manager.m_hExitEvent, 0), WAIT_OBJECT_0);
}

TEST_F(StoreRefresh, WithoutAnExitEventHandlesEveryPackage)
{
    m_store.Add(L"a");
    m_store.Add(L"b");
    const HANDLE event = m_manager.m_hExitEvent;
    m_manager.m_hExitEvent = nullptr;
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    m_manager.m_hExitEvent = event;
    EXPECT_THAT(Families(), ElementsAre(L"a", L"b"));
}

// A pass of the refresh thread.

class StorePass : public StoreRefresh
{
protected:
    StorePass()
    {
        for (const wchar_t* family : {L"mail", L"news"}) {
            EXPECT_EQ(m_manager.m_AppNameList.AddMetroPackage(
                          std::make_unique<CQanhPackage>(family, RecordVersion(), FALSE, TRUE)),
                      S_OK);
        }
    }

    // One pass, which ends when the Store packages are there.
    void RunPass()
    {
        // Without the second that a thread waits at first.
        static decltype(&WaitForSingleObject) s_wait;
        const test::ImportPatch<decltype(&WaitForSingleObject)> patch(
            "WaitForSingleObject", [](HANDLE handle, DWORD milliseconds) -> DWORD {
                return s_wait(handle, milliseconds == 1000 ? 0 : milliseconds);
            });
        s_wait = patch.Original();
        const HANDLE thread =
            CreateThread(nullptr, 0, CQanhPackageManager::RefreshThread, &m_manager, 0, nullptr);
        s_wait(thread, 20000);
        CloseHandle(thread);
    }

    BOOL IsInstalled(const wchar_t* family)
    {
        return m_manager.m_AppNameList.GetPackage(family)->IsInstalled;
    }

    test::TemporaryFolder m_folder;
    test::ScopedEnvironment m_allUsers{L"ALLUSERSPROFILE", m_folder.Path().c_str()};
    test::ScopedEnvironment m_user{L"APPDATA", m_folder.Path().c_str()};
    test::ScopedEnvironment m_localUser{L"LOCALAPPDATA", m_folder.Path().c_str()};
};

TEST_F(StorePass, MarksEachPackageByWhetherTheSystemHasIt)
{
    m_store.Add(L"mail");
    m_manager.m_AppNameList.SetPackagesInstalled({FALSE, TRUE});
    SetExitEventAt("FindPackagesByUserSecurityId", 0);
    RunPass();
    EXPECT_EQ(IsInstalled(L"mail"), 1);
    EXPECT_EQ(IsInstalled(L"news"), 0);
}

TEST_F(StorePass, CountsAPackageAsInstalledWhoseStateCannotBeRead)
{
    m_manager.m_AppNameList.SetPackagesInstalled({TRUE, FALSE});
    m_store.objects.Fail("First", E_ACCESSDENIED, 1);
    SetExitEventAt("FindPackagesByUserSecurityId", 0);
    RunPass();
    EXPECT_EQ(IsInstalled(L"mail"), 0);
    EXPECT_EQ(IsInstalled(L"news"), 1);
}

TEST_F(StorePass, AsksAboutTheKnownPackagesFirst)
{
    m_store.Add(L"post");
    SetExitEventAt("Path", 0);
    RunPass();
    std::vector<std::string> finds;
    for (const std::string& event : Journal()) {
        if (event.rfind("Find", 0) == 0) {
            finds.push_back(event);
        }
    }
    EXPECT_THAT(finds, ElementsAre("FindPackagesByUserSecurityIdPackageFamilyName(, mail)",
                                   "FindPackagesByUserSecurityIdPackageFamilyName(, news)",
                                   "FindPackagesByUserSecurityId()"));
    EXPECT_THAT(Families(), ElementsAre(L"mail", L"news", L"post"));
}

TEST_F(StorePass, GoesOnWithoutAPackageManager)
{
    static int s_entries;
    static HANDLE s_event;
    s_entries = 0;
    s_event = m_manager.m_hExitEvent;
    const test::LogCapture log;
    // The third way into the Windows Runtime, after those of the two packages, is that of the refresh.
    const test::ImportPatch<decltype(&RoInitialize)> patch("RoInitialize", [](RO_INIT_TYPE) {
        if (++s_entries == 3) {
            SetEvent(s_event);
        }
        return E_OUTOFMEMORY;
    });
    RunPass();
    // Without one, nothing is installed.
    EXPECT_EQ(IsInstalled(L"mail"), 0);
    EXPECT_EQ(IsInstalled(L"news"), 0);
    EXPECT_THAT(
        log.Lines(),
        Contains("CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 "));
}

} // namespace
