// Launches ask the catalogue while the refresh changes it: each sees the state before a change or the one
// after it.

#include "catalog/AppNameList.h"

#include "catalog/ExcludeList.h"
#include "unit/catalog/CatalogFile.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kRecords = 60;

std::vector<std::wstring> Excluded(const CQanhAppNameList& list)
{
    ExcludeList excluded;
    BOOL found = FALSE;
    list.GetExcludeAppNameList(L"mail", &excluded, &found);
    return test::Names(excluded);
}

// Runs both at the same time: check again and again on this thread, at least so many times, until change is
// done on another. Change may go on until it is told that it may stop.
template <typename Change, typename Check> void RunBesides(int checks, Change change, Check check)
{
    std::atomic<bool> mayStop = false;
    std::atomic<bool> done = false;
    std::thread thread([&] {
        change(mayStop);
        done = true;
    });
    for (int i = 0; (i < checks || !done) && !testing::Test::HasFatalFailure(); ++i) {
        mayStop = i + 1 >= checks;
        check();
    }
    mayStop = true;
    thread.join();
}

TEST(AppNameListThreads, FlagsOfDesktopAppsChangeAllAtOnce)
{
    CQanhAppNameList list;
    for (std::size_t i = 0; i < kRecords; ++i) {
        const std::wstring name = L"mail " + std::to_wstring(i);
        list.AddDesktopApp(name.c_str(), name.c_str());
    }
    RunBesides(
        1000,
        [&](const std::atomic<bool>& mayStop) {
            while (!mayStop) {
                list.SetDesktopAppsInstalled(std::vector<BOOL>(kRecords, FALSE));
                list.SetDesktopAppsInstalled(std::vector<BOOL>(kRecords, TRUE));
            }
        },
        [&] { ASSERT_THAT(Excluded(list).size(), testing::AnyOf(0u, kRecords)); });
}

TEST(AppNameListThreads, FlagsOfPackagesChangeAllAtOnce)
{
    CQanhAppNameList list;
    for (std::size_t i = 0; i < kRecords; ++i) {
        const std::wstring name = L"mail " + std::to_wstring(i);
        auto package = std::make_unique<CQanhPackage>(name.c_str(), RecordVersion(), FALSE, TRUE);
        package->AddApplication(name.c_str(), nullptr);
        list.AddMetroPackage(std::move(package));
    }
    RunBesides(
        1000,
        [&](const std::atomic<bool>& mayStop) {
            while (!mayStop) {
                list.SetPackagesInstalled(std::vector<BOOL>(kRecords, FALSE));
                list.SetPackagesInstalled(std::vector<BOOL>(kRecords, TRUE));
            }
        },
        [&] { ASSERT_THAT(Excluded(list).size(), testing::AnyOf(0u, kRecords)); });
}

TEST(AppNameListThreads, RecordsAppearWholeAndInOrder)
{
    CQanhAppNameList list;
    RunBesides(
        1,
        [&](const std::atomic<bool>&) {
            for (int i = 0; i < 300; ++i) {
                const std::wstring name = L"mail " + std::to_wstring(i);
                list.AddDesktopApp(name.c_str(), name.c_str());
                auto package = std::make_unique<CQanhPackage>(name.c_str(), RecordVersion(), FALSE, TRUE);
                package->AddApplication((L"a " + name).c_str(), (L"b " + name).c_str());
                list.AddMetroPackage(std::move(package));
            }
        },
        [&] {
            // The packages' names come first, two each; a desktop application is added before its package.
            const std::vector<std::wstring> names = Excluded(list);
            const std::size_t packages = names.size() / 3;
            for (std::size_t i = 0; i < packages; ++i) {
                ASSERT_EQ(names[2 * i], L"a mail " + std::to_wstring(i));
                ASSERT_EQ(names[2 * i + 1], L"b mail " + std::to_wstring(i));
            }
            for (std::size_t i = 2 * packages; i < names.size(); ++i) {
                ASSERT_EQ(names[i], L"mail " + std::to_wstring(i - 2 * packages));
            }
        });
    EXPECT_EQ(list.PackageFamilyNames().size(), 300u);
    EXPECT_EQ(list.DesktopShortcuts().size(), 300u);
}

TEST(AppNameListThreads, LookUpsWorkBesideAppending)
{
    CQanhAppNameList list;
    list.AddMetroPackage(std::make_unique<CQanhPackage>(L"first_1", RecordVersion(), FALSE, TRUE));
    const CQanhPackage* first = list.GetPackage(L"first_1");
    RunBesides(
        1,
        [&](const std::atomic<bool>&) {
            for (int i = 0; i < 1000; ++i) {
                const std::wstring name = std::to_wstring(i);
                list.AddMetroPackage(
                    std::make_unique<CQanhPackage>(name.c_str(), RecordVersion(), FALSE, TRUE));
                list.AddDesktopApp(name.c_str(), name.c_str());
            }
        },
        [&] {
            ASSERT_EQ(list.GetPackage(L"first_1"), first);
            ASSERT_EQ(list.GetPackage(L"none"), nullptr);
            ASSERT_EQ(list.IsInDesktopAppList(L"none"), 0);
            ASSERT_LE(list.PackageFamilyNames().size(), 1001u);
            ASSERT_LE(list.DesktopShortcuts().size(), 1000u);
        });
}

TEST(AppNameListThreads, ASavedFileHoldsOneState)
{
    CQanhAppNameList list;
    for (std::size_t i = 0; i < kRecords; ++i) {
        const std::wstring name = std::to_wstring(i);
        list.AddDesktopApp(name.c_str(), name.c_str());
    }
    const std::string all = test::SavedText(list);
    const std::string none = test::Document({"  <MetroApps />", "  <DesktopApps />"});
    RunBesides(
        30,
        [&](const std::atomic<bool>& mayStop) {
            while (!mayStop) {
                list.SetDesktopAppsInstalled(std::vector<BOOL>(kRecords, FALSE));
                list.SetDesktopAppsInstalled(std::vector<BOOL>(kRecords, TRUE));
            }
        },
        [&] { ASSERT_THAT(test::SavedText(list), testing::AnyOf(none, all)); });
}

TEST(AppNameListThreads, SavingLetsLaunchesAskButHoldsChangesBack)
{
    CQanhAppNameList list;
    list.AddDesktopApp(L"my mail", L"C:\\a.lnk");
    const test::TemporaryFolder folder;
    test::WriterProbe writer;
    std::vector<std::wstring> names;
    std::atomic<bool> changed = false;
    bool changedWhileSaving = true;
    std::thread changing;
    writer.onCall = [&](const std::wstring& call) {
        if (call != L"start MetroApps") {
            return;
        }
        // If this needed the lock for itself, it would never come back.
        std::thread([&] { names = Excluded(list); }).join();
        changing = std::thread([&] {
            list.SetDesktopAppsInstalled({FALSE});
            changed = true;
        });
        Sleep(50);
        changedWhileSaving = changed;
    };
    {
        const test::WriterInstead patch(&writer);
        EXPECT_EQ(list.Save((folder / L"a.xml").c_str()), S_OK);
    }
    changing.join();
    EXPECT_THAT(names, testing::ElementsAre(L"my mail"));
    EXPECT_FALSE(changedWhileSaving);
    EXPECT_TRUE(changed);
    EXPECT_THAT(writer.calls, testing::Contains(L"DisplayName=my mail"));
}

} // namespace
