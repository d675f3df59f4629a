// Launches ask the catalogue while the refresh changes it: each sees a record as it was before a change or as
// it is after it.

#include "catalog/AppNameList.h"

#include "support/LockWatch.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

#include <atomic>
#include <thread>

namespace {

using namespace test;

constexpr std::size_t kRecords = 60;
constexpr int kEnough = 50; // looks

std::vector<std::wstring> Excluded(const CQanhAppNameList& list)
{
    ExcludeList excluded;
    BOOL found = FALSE;
    EXPECT_EQ(list.GetExcludeAppNameList(L"mail", &excluded, &found), S_OK);
    return Names(excluded);
}

// Changes the catalogue on another thread, again and again, until this one has looked often enough at each of
// the two states that there are: look() tells whether it saw the second one.
template <typename Change, typename Look> void LookBesides(Change change, Look look)
{
    std::atomic<bool> isOver = false;
    std::thread changing([&] {
        while (!isOver) {
            change();
        }
    });
    int looks[] = {0, 0};
    const ULONGLONG end = GetTickCount64() + 60000;
    while ((looks[0] < kEnough || looks[1] < kEnough) && !testing::Test::HasFailure() &&
           GetTickCount64() < end) {
        ++looks[look() ? 1 : 0];
    }
    isOver = true;
    changing.join();
    EXPECT_GE(looks[0], kEnough);
    EXPECT_GE(looks[1], kEnough);
}

// Sets the states of all records: a launch asks all of them or none.
template <typename Set> void ExpectAllOrNone(const CQanhAppNameList& list, Set set)
{
    LookBesides(
        [&] {
            set(std::vector<BOOL>(kRecords, FALSE));
            set(std::vector<BOOL>(kRecords, TRUE));
        },
        [&] {
            const std::size_t names = Excluded(list).size();
            EXPECT_THAT(names, AnyOf(0u, kRecords));
            return names > 0;
        });
}

TEST(AppNameListThreads, FlagsOfDesktopAppsChangeAllAtOnce)
{
    CQanhAppNameList list;
    for (std::size_t i = 0; i < kRecords; ++i) {
        const std::wstring name = L"mail " + std::to_wstring(i);
        ASSERT_EQ(list.AddDesktopApp(name.c_str(), name.c_str()), S_OK);
    }
    ExpectAllOrNone(list, [&](const std::vector<BOOL>& states) { list.SetDesktopAppsInstalled(states); });
}

TEST(AppNameListThreads, FlagsOfPackagesChangeAllAtOnce)
{
    CQanhAppNameList list;
    for (std::size_t i = 0; i < kRecords; ++i) {
        const std::wstring name = L"mail " + std::to_wstring(i);
        ASSERT_EQ(list.AddMetroPackage(Package(name, {name})), S_OK);
    }
    ExpectAllOrNone(list, [&](const std::vector<BOOL>& states) { list.SetPackagesInstalled(states); });
}

// A catalogue to which records are added one by one.
class AppNameListGrowth : public testing::Test
{
protected:
    void Grow()
    {
        const std::wstring name = L"mail " + std::to_wstring(m_count++);
        EXPECT_EQ(m_list.AddDesktopApp(name.c_str(), name.c_str()), S_OK);
        EXPECT_EQ(m_list.AddMetroPackage(Package(name, {L"a " + name, L"b " + name})), S_OK);
        Sleep(1);
    }

    // Whether there is more than at the last look.
    bool HasGrown(std::size_t size)
    {
        EXPECT_GE(size, m_last);
        const bool hasGrown = size > m_last;
        m_last = size;
        return hasGrown;
    }

    CQanhAppNameList m_list;

private:
    int m_count = 0;
    std::size_t m_last = 0;
};

TEST_F(AppNameListGrowth, ShowsRecordsAtOnceWholeAndInOrder)
{
    LookBesides([&] { Grow(); },
                [&] {
                    // The packages' names come first, two each; a desktop application is added before its
                    // package.
                    const std::vector<std::wstring> names = Excluded(m_list);
                    const std::size_t packages = names.size() / 3;
                    std::vector<std::wstring> expected;
                    for (std::size_t i = 0; i < packages; ++i) {
                        expected.push_back(L"a mail " + std::to_wstring(i));
                        expected.push_back(L"b mail " + std::to_wstring(i));
                    }
                    for (std::size_t i = 0; expected.size() < names.size(); ++i) {
                        expected.push_back(L"mail " + std::to_wstring(i));
                    }
                    EXPECT_EQ(names, expected);
                    return HasGrown(names.size());
                });
}

TEST_F(AppNameListGrowth, LeavesLookUpsAsTheyAre)
{
    Grow();
    const CQanhPackage* const first = m_list.GetPackage(L"mail 0");
    ASSERT_NE(first, nullptr);
    LookBesides([&] { Grow(); },
                [&] {
                    EXPECT_EQ(m_list.GetPackage(L"mail 0"), first);
                    EXPECT_EQ(m_list.GetPackage(L"none"), nullptr);
                    EXPECT_EQ(m_list.IsInDesktopAppList(L"mail 0"), 1);
                    EXPECT_EQ(m_list.IsInDesktopAppList(L"none"), 0);
                    const std::size_t packages = m_list.PackageFamilyNames().size();
                    EXPECT_GE(m_list.DesktopShortcuts().size(), packages);
                    return HasGrown(packages);
                });
}

// One change of a catalogue that holds the packages "a" and "b" and the desktop application "c".
struct Change
{
    const char* name;
    void (*make)(CQanhAppNameList& list);
    std::vector<std::wstring> after; // what is excluded then
};

class AppNameListChange : public testing::TestWithParam<Change>
{
protected:
    AppNameListChange()
    {
        auto app = std::make_unique<RecordProbe>(L"a mail", &m_events);
        app->addsItsName = true;
        m_app = app.get();
        auto package = Package(L"a", {});
        EXPECT_EQ(package->AddApplication(std::move(app)), S_OK);
        EXPECT_EQ(m_list.AddMetroPackage(std::move(package)), S_OK);
        EXPECT_EQ(m_list.AddMetroPackage(Package(L"b", {L"b mail"})), S_OK);
        EXPECT_EQ(m_list.AddDesktopApp(L"c mail", L"c"), S_OK);
    }
    ~AppNameListChange() override { m_list.Clear(); }

    RecordProbe::Events m_events;
    RecordProbe* m_app = nullptr; // the application that is asked first
    CQanhAppNameList m_list;
};

TEST_P(AppNameListChange, WaitsForALaunchAndIsSeenByTheNext)
{
    const LockWatch locks(m_list);
    std::thread changing;
    bool isFirstLaunch = true;
    m_app->onAsked = [&] {
        if (isFirstLaunch) {
            changing = std::thread([&] { GetParam().make(m_list); });
            EXPECT_TRUE(locks.WaitForBlocked());
        }
    };
    EXPECT_THAT(Excluded(m_list), ElementsAre(L"a mail", L"b mail", L"c mail"));
    changing.join();
    isFirstLaunch = false;
    EXPECT_THAT(Excluded(m_list), ElementsAreArray(GetParam().after));
}

TEST_P(AppNameListChange, IsSeenAsAWhole)
{
    std::vector<std::vector<std::wstring>> seen;
    {
        const AfterEachChange watch([&] { seen.push_back(Excluded(m_list)); });
        GetParam().make(m_list);
    }
    EXPECT_THAT(seen, ElementsAre(GetParam().after));
}

INSTANTIATE_TEST_SUITE_P(
    Of, AppNameListChange,
    testing::Values(Change{"PackageStates",
                           [](CQanhAppNameList& list) {
                               list.SetPackagesInstalled({FALSE, FALSE});
                           },
                           {L"c mail"}},
                    Change{"DesktopStates",
                           [](CQanhAppNameList& list) { list.SetDesktopAppsInstalled({FALSE}); },
                           {L"a mail", L"b mail"}},
                    Change{"NewPackage",
                           [](CQanhAppNameList& list) {
                               EXPECT_EQ(list.AddMetroPackage(Package(L"d", {L"d mail"})), S_OK);
                           },
                           {L"a mail", L"b mail", L"d mail", L"c mail"}},
                    Change{
                        "NewDesktopApp",
                        [](CQanhAppNameList& list) { EXPECT_EQ(list.AddDesktopApp(L"d mail", L"d"), S_OK); },
                        {L"a mail", L"b mail", L"c mail", L"d mail"}},
                    Change{"Reloaded",
                           [](CQanhAppNameList& list) {
                               const TemporaryFolder folder;
                               const std::wstring path = folder / L"AppNameList.xml";
                               WriteFileBytes(path, "<r><Package><MetroApp DisplayName='e mail'/></Package>"
                                                    "<DesktopApps><DesktopApp DisplayName='f mail'/>"
                                                    "</DesktopApps></r>");
                               EXPECT_EQ(list.Reload(path.c_str()), S_FALSE);
                           },
                           {L"e mail", L"f mail"}},
                    Change{"EverythingDeleted", [](CQanhAppNameList& list) { list.Clear(); }, {}}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(AppNameListThreads, ALaunchWaitsForAChangeAndSeesAllOfIt)
{
    CQanhAppNameList list;
    const LockWatch locks(list);
    std::thread launch;
    std::vector<std::wstring> names = {L"not asked"};
    ASSERT_EQ(list.AddMetroPackage(std::make_unique<PackageProbe>(L"a_1",
                                                                  [&] {
                                                                      launch = std::thread(
                                                                          [&] { names = Excluded(list); });
                                                                      EXPECT_TRUE(locks.WaitForBlocked());
                                                                  })),
              S_OK);
    ASSERT_EQ(list.AddDesktopApp(L"my mail", L"C:\\a.lnk"), S_OK);
    list.Clear();
    launch.join();
    EXPECT_THAT(names, IsEmpty());
}

TEST(AppNameListThreads, SavingLetsLaunchesAskButHoldsChangesBack)
{
    CQanhAppNameList list;
    ASSERT_EQ(list.AddDesktopApp(L"my mail", L"C:\\a.lnk"), S_OK);
    const TemporaryFolder folder;
    const LockWatch locks(list);
    WriterProbe writer;
    std::vector<std::wstring> names;
    std::thread changing;
    writer.onCall = [&](const std::wstring& call) {
        if (call != L"start MetroApps") {
            return;
        }
        std::thread launch([&] { names = Excluded(list); });
        launch.join();
        EXPECT_FALSE(locks.HasBlocked());
        changing = std::thread([&] { list.SetDesktopAppsInstalled({FALSE}); });
        EXPECT_TRUE(locks.WaitForBlocked());
    };
    {
        const WriterInstead patch(&writer);
        EXPECT_EQ(list.Save((folder / L"a.xml").c_str()), S_OK);
    }
    changing.join();
    EXPECT_THAT(names, ElementsAre(L"my mail"));
    EXPECT_THAT(writer.calls, testing::Contains(L"DisplayName=my mail"));
    EXPECT_THAT(Excluded(list), IsEmpty());
}

} // namespace
