// How a refresh pass asks the system about Store packages.

#include "common/UniqueHandle.h"
#include "support/Registry.h"
#include "unit/discovery/StoreQueries.h"

namespace {

using namespace store_test;

class StoreRefresh : public StoreQueries
{
protected:
    StoreRefresh() { m_manager.m_hExitEvent = m_exitEvent.Get(); }

    void Add(std::initializer_list<const wchar_t*> families)
    {
        for (const wchar_t* family : families) {
            m_store.Add(family);
        }
    }
    void SetExitEventAt(const char* call, std::size_t index)
    {
        m_store.objects.At(
            call, [this] { SetEvent(m_exitEvent.Get()); }, index);
    }
    // The refresh on a thread of its own, which is in no apartment afterwards either.
    void ExpectRefresh(HRESULT result, Apartment apartment = Apartment::kNone)
    {
        InApartment(apartment, [&] { EXPECT_EQ(m_manager.RefreshMetroApps(), result); });
    }

    // The catalogue's packages.
    std::vector<std::wstring> Known() const { return Names(m_manager.m_AppNameList.PackageFamilyNames()); }

    // The lines of the refresh itself and of its way to the package manager.
    static Lines OwnLines(const LogCapture& log) { return LinesWith({"CQanhPackageManager::"}, log.Lines()); }
    static Lines RefreshLines(const Lines& onTheWay, const std::string& result)
    {
        return Call("CQanhPackageManager::RefreshMetroApps", "(" + result + ")", onTheWay);
    }
    static std::string ExitLine(const std::string& result) { return RefreshLines({}, result).back(); }

    const ScopedKey m_settings{HKEY_LOCAL_MACHINE, kSettingsKey}; // the manifest reader is chosen there
    const UniqueHandle m_exitEvent{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CQanhPackageManager m_manager;
};

TEST_F(StoreRefresh, HandsEveryPackageOfTheUserToTheCatalogueInOrder)
{
    Add({L"b", L"a", L"c"});
    const LogCapture log;
    ExpectRefresh(S_OK);
    EXPECT_THAT(Known(), ElementsAre(L"b", L"a", L"c"));
    EXPECT_EQ(OwnLines(log), RefreshLines(ManagerLines(), "0x00000000"));
}

TEST_F(StoreRefresh, AsksForThePackagesOfTheCurrentUser)
{
    Add({L"a"});
    ExpectRefresh(S_OK);
    EXPECT_EQ(Journal(), ManagerSteps("0x00000000",
                                      {"FindPackagesByUserSecurityId()", "First", "HasCurrent", "Current",
                                       "Id", "FamilyName", "FullName", "Name", "Version", "InstalledLocation",
                                       "QueryInterface", "Path", "MoveNext", "RoUninitialize"}));
}

TEST_F(StoreRefresh, OfNoPackagesSucceedsInEveryApartment)
{
    for (const Apartment apartment : kEveryApartment) {
        Journal().clear();
        ExpectRefresh(S_OK, apartment);
        EXPECT_EQ(Journal().back() == "RoUninitialize", apartment != Apartment::kMultithreaded);
        EXPECT_THAT(Known(), IsEmpty());
    }
}

// What was not entered is not left, lest the host lose an apartment of its own.
TEST_F(StoreRefresh, WithoutTheRuntimeFailsAndDoesNotLeaveIt)
{
    m_store.initializeResult = E_OUTOFMEMORY;
    const LogCapture log;
    ExpectRefresh(E_FAIL, Apartment::kSingleThreaded);
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x8007000E"));
    // With a capital, unlike the queries.
    EXPECT_EQ(log.Lines(), RefreshLines(ManagerLines("(0x8007000E)"), "GetPackageManager Failed."));
}

// The result is that of the last package.

TEST_F(StoreRefresh, APackageThatFailsDoesNotStopTheWalk)
{
    Add({L"a", L"b", L"c"});
    m_store.objects.Fail("Id", E_ACCESSDENIED, 0);
    m_store.objects.Fail("Id", E_ACCESSDENIED, 1);
    const LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Known(), ElementsAre(L"c"));
    EXPECT_THAT(log.Lines(),
                Contains("CQanhAppNameList::AddMetroPackage OUT(" + Message(E_ACCESSDENIED) + ")").Times(2));
    EXPECT_EQ(log.Lines().back(), ExitLine("0x00000000"));
}

TEST_F(StoreRefresh, ReturnsTheResultOfTheLastPackage)
{
    Add({L"a", L"b"});
    m_store.objects.Fail("Id", E_ACCESSDENIED, 1);
    const LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
    EXPECT_THAT(Known(), ElementsAre(L"a"));
    EXPECT_EQ(log.Lines().back(), ExitLine("0x80004005"));
}

TEST_F(StoreRefresh, ReturnsAnotherSuccessOfTheLastPackage)
{
    const TemporaryFolder folder;
    WriteFileBytes(folder / L"AppxManifest.xml", "<Package/>");
    PackageFacts facts;
    facts.path = folder.Path();
    Add({L"a"});
    FakePackage* const last = m_store.Add(facts);
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    ++last->facts.version.Major;
    const LogCapture log;
    // A changed package answers with the end of its manifest.
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_FALSE);
    EXPECT_EQ(log.Lines().back(), ExitLine("0x00000001"));
}

TEST_F(StoreRefresh, LeavesTheRuntimeBeforeItsExitLine)
{
    Add({L"a"});
    const LogCapture log;
    Lines lastLines;
    m_store.onUninitialize = [&] { lastLines.push_back(log.Lines().back()); };
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(lastLines, ElementsAre("CQanhAppNameList::AddMetroPackage OUT(0x00000000)"));
    EXPECT_EQ(log.Lines().back(), ExitLine("0x00000000"));
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
    Add({L"a", L"b", L"c"});
    m_store.objects.Fail(GetParam().call, E_ACCESSDENIED, GetParam().index);
    const LogCapture log;
    ExpectRefresh(S_OK);
    EXPECT_EQ(Known().size(), GetParam().packages);
    EXPECT_EQ(OwnLines(log),
              RefreshLines(ManagerLines() + Lines{ExitLine(Message(E_ACCESSDENIED))}, "0x00000000"));
    EXPECT_EQ(Journal().back(), "RoUninitialize");
}

INSTANTIATE_TEST_SUITE_P(At, StoreRefreshWalk,
                         ::testing::Values(FailingWalk{"FindPackagesByUserSecurityId", 0, 0},
                                           FailingWalk{"First", 0, 0}, FailingWalk{"HasCurrent", 0, 0},
                                           FailingWalk{"Current", 0, 0}, FailingWalk{"Current", 2, 2},
                                           FailingWalk{"MoveNext", 0, 1}, FailingWalk{"MoveNext", 2, 3}));

TEST_F(StoreRefresh, AWalkThatFailsReturnsTheResultReachedSoFar)
{
    Add({L"a", L"b"});
    m_store.objects.Fail("Id", E_ACCESSDENIED, 0);
    m_store.objects.Fail("MoveNext", E_ACCESSDENIED, 0);
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
}

TEST_F(StoreRefresh, AnExceptionOfAnotherKindIsOutOfMemory)
{
    Add({L"a"});
    m_store.objects.At("MoveNext", [] { throw std::bad_alloc(); });
    const LogCapture log;
    ExpectRefresh(E_OUTOFMEMORY);
    EXPECT_THAT(Known(), ElementsAre(L"a"));
    EXPECT_EQ(log.Lines().back(), ExitLine("0x8007000E"));
}

TEST_F(StoreRefresh, SurvivesEveryFailingCall)
{
    Add({L"a", L"b"});
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    FailEachCall(20, [&](std::size_t index) {
        m_manager.m_AppNameList.Clear();
        const HRESULT hr = m_manager.RefreshMetroApps();
        if (index < 3) { // without a manager; after that the result is that of the last package
            EXPECT_EQ(hr, E_FAIL);
        }
        EXPECT_LE(Known().size(), 2u);
    });
}

// The exit event.

TEST_F(StoreRefresh, HandlesNoPackageOnceTheExitEventIsSet)
{
    Add({L"a"});
    SetEvent(m_exitEvent.Get());
    const LogCapture log;
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Known(), IsEmpty());
    EXPECT_THAT(Journal(), Not(Contains("Id")));
    EXPECT_EQ(log.Lines().back(), ExitLine("0x00000000"));
    EXPECT_EQ(WaitForSingleObject(m_exitEvent.Get(), 0), WAIT_OBJECT_0) << "it stays set";
}

TEST_F(StoreRefresh, AStoppedWalkReturnsTheResultReachedSoFar)
{
    Add({L"a", L"b"});
    m_store.objects.Fail("Id", E_ACCESSDENIED, 0);
    SetExitEventAt("Id", 0);
    EXPECT_EQ(m_manager.RefreshMetroApps(), E_FAIL);
    EXPECT_THAT(Known(), IsEmpty());
}

TEST_F(StoreRefresh, StopsBeforeTheNextPackageWhenTheExitEventIsSetAndLeavesTheRuntime)
{
    Add({L"a", L"b", L"c", L"d"});
    SetExitEventAt("Path", 1); // while the second one is read
    ExpectRefresh(S_OK);
    EXPECT_THAT(Known(), ElementsAre(L"a", L"b"));
    EXPECT_EQ(m_store.objects.Calls("Current"), 2u);
    EXPECT_EQ(Journal().back(), "RoUninitialize");
}

TEST_F(StoreRefresh, PollsTheExitEventBeforeEachPackage)
{
    Add({L"a", L"b", L"c"});
    {
        const CapturingPatch<decltype(&WaitForSingleObject)> patch(
            "WaitForSingleObject", [this](HANDLE handle, DWORD milliseconds) -> DWORD {
                m_store.objects.Note(handle == m_exitEvent.Get() && milliseconds == 0 ? "poll" : "wait");
                return WAIT_TIMEOUT;
            });
        EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    }
    EXPECT_THAT(LinesWith({"Current", "poll", "wait"}, Journal()),
                ElementsAre("poll", "Current", "poll", "Current", "poll", "Current"));
}

TEST_F(StoreRefresh, WithoutAnExitEventHandlesEveryPackage)
{
    Add({L"a", L"b"});
    m_manager.m_hExitEvent = nullptr;
    EXPECT_EQ(m_manager.RefreshMetroApps(), S_OK);
    EXPECT_THAT(Known(), ElementsAre(L"a", L"b"));
}

} // namespace
