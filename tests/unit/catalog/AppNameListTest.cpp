#include "catalog/AppNameList.h"

#include "catalog/ExcludeList.h"
#include "support/Allocations.h"
#include "support/LogCapture.h"
#include "unit/catalog/CatalogFile.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using test::Document;
using test::PackageProbe;
using test::RecordProbe;
using test::SavedText;
using testing::ElementsAre;
using testing::IsEmpty;

std::unique_ptr<CQanhPackage> Package(const wchar_t* familyName)
{
    return std::make_unique<CQanhPackage>(familyName, RecordVersion{1, 0, 0, 0}, FALSE, TRUE);
}

std::vector<std::wstring> Texts(const std::vector<WideString>& strings)
{
    std::vector<std::wstring> texts;
    for (const WideString& string : strings) {
        texts.emplace_back(string.c_str());
    }
    return texts;
}

TEST(AppNameList, IsEmptyAtFirst)
{
    const CQanhAppNameList list;
    EXPECT_THAT(list.PackageFamilyNames(), IsEmpty());
    EXPECT_THAT(list.DesktopShortcuts(), IsEmpty());
    EXPECT_EQ(SavedText(list), Document({"  <MetroApps />", "  <DesktopApps />"}));
}

TEST(AppNameListPackages, AreKeptInTheOrderOfAddingWithDuplicates)
{
    CQanhAppNameList list;
    for (const wchar_t* name : {L"b_1", L"a_1", L"b_1", L""}) {
        EXPECT_EQ(list.AddMetroPackage(Package(name)), S_OK);
    }
    EXPECT_THAT(Texts(list.PackageFamilyNames()), ElementsAre(L"b_1", L"a_1", L"b_1", L""));
    EXPECT_THAT(list.DesktopShortcuts(), IsEmpty());
}

TEST(AppNameListPackages, AreRefusedBeyondTheListsLimit)
{
    CQanhAppNameList list(2);
    int deleted = 0;
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(std::make_unique<PackageProbe>(L"c_1", [&] { ++deleted; })),
              E_OUTOFMEMORY);
    EXPECT_THAT(Texts(list.PackageFamilyNames()), ElementsAre(L"a_1", L"b_1"));
    EXPECT_EQ(deleted, 1);
    // The lists have a limit each, and a refusal leaves nothing locked.
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    list.Clear();
    EXPECT_EQ(list.AddMetroPackage(Package(L"c_1")), S_OK);
}

TEST(AppNameListPackages, AreRefusedWhenNull)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(std::unique_ptr<CQanhPackage>()), E_POINTER);
    EXPECT_THAT(list.PackageFamilyNames(), IsEmpty());
}

TEST(AppNameListPackages, AreDeletedWhenThereIsNoMemoryForThem)
{
    CQanhAppNameList list;
    int deleted = 0;
    std::unique_ptr<CQanhPackage> package = std::make_unique<PackageProbe>(L"a_1", [&] { ++deleted; });
    EXPECT_EQ(
        test::TryWithFailingAllocation(0, [&] { return list.AddMetroPackage(std::move(package)); }).result,
        E_OUTOFMEMORY);
    EXPECT_EQ(deleted, 1);
    EXPECT_THAT(list.PackageFamilyNames(), IsEmpty());
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
}

TEST(AppNameListPackages, AreAddedWithALog)
{
    CQanhAppNameList list(1);
    const test::LogCapture log;
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), E_OUTOFMEMORY);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                                         "CQanhAppNameList::AddMetroPackage OUT(0x00000000)",
                                         "CQanhAppNameList::AddMetroPackage IN",
                                         "CQanhAppNameList::AddMetroPackage OUT(0x8007000E)"));
}

TEST(AppNameListGetPackage, FindsTheFirstOfExactlyThisFamilyName)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(Package(L"")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    auto first = Package(L"b_1");
    const CQanhPackage* pFirst = first.get();
    EXPECT_EQ(list.AddMetroPackage(std::move(first)), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), S_OK);
    EXPECT_EQ(list.GetPackage(L"b_1"), pFirst);
    EXPECT_NE(list.GetPackage(L"a_1"), nullptr);
    EXPECT_NE(list.GetPackage(L"a_1"), pFirst);
    EXPECT_EQ(list.GetPackage(L"B_1"), nullptr);
    EXPECT_EQ(list.GetPackage(L"b_"), nullptr);
    EXPECT_EQ(list.GetPackage(L"b_11"), nullptr);
    EXPECT_EQ(list.GetPackage(L"c_1"), nullptr);
}

TEST(AppNameListGetPackage, HandsOutNothingThatCouldBeChangedWithoutTheLock)
{
    static_assert(
        std::is_same_v<decltype(std::declval<CQanhAppNameList&>().GetPackage(L"")), const CQanhPackage*>);
    static_assert(
        std::is_same_v<decltype(std::declval<const CQanhPackage&>().Apps().begin()->get()), const CQanhApp*>);
}

TEST(AppNameListGetPackage, FindsNothingForNullOrAnEmptyName)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(Package(L"")), S_OK);
    EXPECT_EQ(list.GetPackage(nullptr), nullptr);
    EXPECT_EQ(list.GetPackage(L""), nullptr);
}

TEST(AppNameListGetPackage, LooksAtTheNameAlone)
{
    CQanhAppNameList list;
    auto package = std::make_unique<CQanhPackage>(L"a_1", RecordVersion{9, 9, 9, 9}, FALSE, FALSE);
    const CQanhPackage* pPackage = package.get();
    EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
    EXPECT_EQ(list.GetPackage(L"a_1"), pPackage);
}

TEST(AppNameListGetPackage, LogsEachPackageThatItAsks)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"c_1")), S_OK);
    const test::LogCapture log;
    EXPECT_NE(list.GetPackage(L"b_1"), nullptr);
    EXPECT_EQ(list.GetPackage(nullptr), nullptr);
    EXPECT_EQ(list.GetPackage(L""), nullptr);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhAppNameList::GetPackage(b_1) IN", "CQanhPackage::IsThisPackage(b_1) IN",
                            "CQanhPackage::IsThisPackage OUT(0)", "CQanhPackage::IsThisPackage(b_1) IN",
                            "CQanhPackage::IsThisPackage OUT(1)", "CQanhAppNameList::GetPackage OUT",
                            "CQanhAppNameList::GetPackage((null)) IN", "CQanhAppNameList::GetPackage OUT",
                            "CQanhAppNameList::GetPackage() IN", "CQanhAppNameList::GetPackage OUT"));
}

TEST(AppNameListAddDesktopApp, AppendsAnInstalledRecord)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\Word.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\Another.lnk"), S_OK);
    // Installed, not reserved, not of dual mode, without localised name and reading.
    EXPECT_EQ(SavedText(list),
              Document({"  <MetroApps />", "  <DesktopApps>",
                        R"(    <DesktopApp DisplayName="Word" LnkFileName="C:\Word.lnk" />)",
                        R"(    <DesktopApp DisplayName="Word" LnkFileName="C:\Another.lnk" />)",
                        "  </DesktopApps>"}));
}

TEST(AppNameListAddDesktopApp, TakesAShortcutOnceWhateverItsLetterCase)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\Word.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\Word.lnk"), S_FALSE);
    EXPECT_EQ(list.AddDesktopApp(L"Other", L"c:\\wORD.LNK"), S_FALSE);
    EXPECT_THAT(Texts(list.DesktopShortcuts()), ElementsAre(L"C:\\Word.lnk"));
}

TEST(AppNameListAddDesktopApp, TakesAPathAsItIs)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"%ProgramData%\\Word.lnk"), S_OK);
    EXPECT_THAT(Texts(list.DesktopShortcuts()), ElementsAre(L"%ProgramData%\\Word.lnk"));
    const std::wstring path = L"C:\\" + std::wstring(400, L'p');
    EXPECT_EQ(list.AddDesktopApp(L"Word", path.c_str()), S_OK);
    EXPECT_EQ(list.IsInDesktopAppList(path.c_str()), 1);
}

TEST(AppNameListAddDesktopApp, ChecksForNullThenForEmptyTexts)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(nullptr, L"C:\\Word.lnk"), E_POINTER);
    EXPECT_EQ(list.AddDesktopApp(L"Word", nullptr), E_POINTER);
    EXPECT_EQ(list.AddDesktopApp(L"", nullptr), E_POINTER);
    EXPECT_EQ(list.AddDesktopApp(nullptr, L""), E_POINTER);
    EXPECT_EQ(list.AddDesktopApp(L"", L"C:\\Word.lnk"), E_INVALIDARG);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L""), E_INVALIDARG);
    EXPECT_THAT(list.DesktopShortcuts(), IsEmpty());
}

TEST(AppNameListAddDesktopApp, IsRefusedBeyondTheListsLimit)
{
    CQanhAppNameList list(1);
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"b", L"C:\\b.lnk"), E_OUTOFMEMORY);
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_FALSE);
    EXPECT_THAT(Texts(list.DesktopShortcuts()), ElementsAre(L"C:\\a.lnk"));
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
}

TEST(AppNameListAddDesktopApp, LeavesTheListAsItWasWhenMemoryRunsOut)
{
    const std::size_t failures = test::ForEachFailingAllocation([](std::size_t index) {
        CQanhAppNameList list;
        EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
        const test::Attempt attempt =
            test::TryWithFailingAllocation(index, [&] { return list.AddDesktopApp(L"b", L"C:\\b.lnk"); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(list.DesktopShortcuts().size(), attempt.failed ? 1u : 2u);
        EXPECT_EQ(attempt.left == 0, attempt.failed);
        return attempt.failed;
    });
    EXPECT_GE(failures, 4u);
}

TEST(AppNameListAddDesktopApp, LogsItsLookUp)
{
    CQanhAppNameList list(1);
    const test::LogCapture log;
    EXPECT_EQ(list.AddDesktopApp(nullptr, L"C:\\a.lnk"), E_POINTER);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L""), E_INVALIDARG);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"c:\\A.lnk"), S_FALSE);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\b.lnk"), E_OUTOFMEMORY);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            "CQanhAppNameList::AddDesktopApp((null), C:\\a.lnk) IN",
            "CQanhAppNameList::AddDesktopApp OUT(0x80004003)", "CQanhAppNameList::AddDesktopApp(Word, ) IN",
            "CQanhAppNameList::AddDesktopApp OUT(0x80070057)",
            "CQanhAppNameList::AddDesktopApp(Word, C:\\a.lnk) IN",
            "CQanhAppNameList::IsInDesktopAppList(C:\\a.lnk) IN",
            "CQanhAppNameList::IsInDesktopAppList OUT(0)", "CQanhAppNameList::AddDesktopApp OUT(0x00000000)",
            "CQanhAppNameList::AddDesktopApp(Word, c:\\A.lnk) IN",
            "CQanhAppNameList::IsInDesktopAppList(c:\\A.lnk) IN",
            "CQanhDesktopApp::IsSameShortcut IN(c:\\A.lnk)", "CQanhDesktopApp::IsSameShortcut OUT(1)",
            "CQanhAppNameList::IsInDesktopAppList OUT(1)", "CQanhAppNameList::AddDesktopApp OUT(0x00000001)",
            "CQanhAppNameList::AddDesktopApp(Word, C:\\b.lnk) IN",
            "CQanhAppNameList::IsInDesktopAppList(C:\\b.lnk) IN",
            "CQanhDesktopApp::IsSameShortcut IN(C:\\b.lnk)", "CQanhDesktopApp::IsSameShortcut OUT(0)",
            "CQanhAppNameList::IsInDesktopAppList OUT(0)",
            "CQanhAppNameList::AddDesktopApp OUT(0x8007000E)"));
}

TEST(AppNameListIsInDesktopAppList, ComparesWholePathsIgnoringCase)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"b", L"C:\\Menu\\b.lnk"), S_OK);
    EXPECT_EQ(list.IsInDesktopAppList(L"C:\\Menu\\b.lnk"), 1);
    EXPECT_EQ(list.IsInDesktopAppList(L"c:\\MENU\\B.LNK"), 1);
    EXPECT_EQ(list.IsInDesktopAppList(L"C:\\Menu\\b.ln"), 0);
    EXPECT_EQ(list.IsInDesktopAppList(L"C:\\Menu\\b.lnk1"), 0);
    EXPECT_EQ(list.IsInDesktopAppList(L"b.lnk"), 0);
    EXPECT_EQ(list.IsInDesktopAppList(nullptr), 0);
    EXPECT_EQ(list.IsInDesktopAppList(L""), 0);
}

TEST(AppNameListIsInDesktopAppList, IsFalseForAnEmptyPathEvenWithARecordWithoutPath)
{
    CQanhAppNameList list;
    test::LoadText(list, "<DesktopApps><DesktopApp/></DesktopApps>");
    ASSERT_THAT(Texts(list.DesktopShortcuts()), ElementsAre(L""));
    EXPECT_EQ(list.IsInDesktopAppList(L""), 0);
}

TEST(AppNameListIsInDesktopAppList, LogsItsAnswer)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    const test::LogCapture log;
    EXPECT_FALSE(list.IsInDesktopAppList(nullptr));
    EXPECT_FALSE(list.IsInDesktopAppList(L""));
    EXPECT_TRUE(list.IsInDesktopAppList(L"C:\\A.lnk"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::IsInDesktopAppList((null)) IN",
                                         "CQanhAppNameList::IsInDesktopAppList OUT(0)",
                                         "CQanhAppNameList::IsInDesktopAppList() IN",
                                         "CQanhAppNameList::IsInDesktopAppList OUT(0)",
                                         "CQanhAppNameList::IsInDesktopAppList(C:\\A.lnk) IN",
                                         "CQanhDesktopApp::IsSameShortcut IN(C:\\A.lnk)",
                                         "CQanhDesktopApp::IsSameShortcut OUT(1)",
                                         "CQanhAppNameList::IsInDesktopAppList OUT(1)"));
}

TEST(AppNameListClear, DeletesPackagesWithTheirAppsFrontToBack)
{
    CQanhAppNameList list;
    std::vector<std::wstring> events;
    for (const wchar_t* name : {L"b", L"a"}) {
        auto package = std::make_unique<PackageProbe>(
            name, [&events, name] { events.push_back(std::wstring(L"deleted package ") + name); });
        EXPECT_EQ(package->AddApplication(std::make_unique<RecordProbe>(name, &events)), S_OK);
        EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
    }
    list.Clear();
    EXPECT_THAT(events, ElementsAre(L"deleted package b", L"deleted b", L"deleted package a", L"deleted a"));
}

TEST(AppNameListClear, DeletesDesktopAppsAfterThePackages)
{
    CQanhAppNameList list;
    const test::AllocationWatch* pWatch = nullptr;
    std::size_t liveAtDeletion = 0;
    auto package = std::make_unique<PackageProbe>(L"a", [&] { liveAtDeletion = pWatch->Live(); });
    std::size_t ofThePackage = 0;
    std::size_t ofBoth = 0;
    std::size_t left = 1;
    {
        const test::AllocationWatch watch;
        pWatch = &watch;
        EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
        ofThePackage = watch.Live();
        EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
        ofBoth = watch.Live();
        list.Clear();
        left = watch.Live();
    }
    // All that the desktop application consists of was still there when the package went.
    EXPECT_GT(ofBoth, ofThePackage + 2);
    EXPECT_GE(liveAtDeletion, ofBoth - ofThePackage);
    EXPECT_EQ(left, 0u);
}

TEST(AppNameListClear, LeavesAnEmptyCatalogueThatCanBeFilledAgain)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    list.Clear();
    EXPECT_THAT(list.PackageFamilyNames(), IsEmpty());
    EXPECT_THAT(list.DesktopShortcuts(), IsEmpty());
    EXPECT_EQ(list.GetPackage(L"a_1"), nullptr);
    list.Clear();
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
}

TEST(AppNameListClear, LogsEntryAndExit)
{
    CQanhAppNameList list;
    const test::LogCapture log;
    list.Clear();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::Clear IN", "CQanhAppNameList::Clear OUT"));
}

TEST(AppNameList, DeletesEverythingAtTheEndOfItsLife)
{
    int deleted = 0;
    std::size_t left = 1;
    auto package = std::make_unique<PackageProbe>(L"a_1", [&] { ++deleted; });
    {
        const test::AllocationWatch watch;
        {
            CQanhAppNameList list;
            EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
            EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
        }
        left = watch.Live();
    }
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(left, 0u);
}

TEST(AppNameListInstalledStates, GoToTheRecordsInOrder)
{
    CQanhAppNameList list;
    for (const wchar_t* name : {L"a_1", L"b_1", L"c_1"}) {
        EXPECT_EQ(list.AddMetroPackage(Package(name)), S_OK);
    }
    list.SetPackagesInstalled({FALSE, TRUE, FALSE});
    EXPECT_EQ(list.GetPackage(L"a_1")->IsInstalled, FALSE);
    EXPECT_EQ(list.GetPackage(L"b_1")->IsInstalled, TRUE);
    EXPECT_EQ(list.GetPackage(L"c_1")->IsInstalled, FALSE);
    list.SetPackagesInstalled({TRUE, TRUE, TRUE});
    EXPECT_EQ(list.GetPackage(L"a_1")->IsInstalled, TRUE);

    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"b", L"C:\\b.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"c", L"C:\\c.lnk"), S_OK);
    list.SetDesktopAppsInstalled({FALSE, TRUE, FALSE});
    list.SetPackagesInstalled({FALSE, FALSE, TRUE});
    EXPECT_EQ(SavedText(list),
              Document({"  <MetroApps>", R"(    <Package PackageFamilyName="c_1" Version="1.0.0.0" />)",
                        "  </MetroApps>", "  <DesktopApps>",
                        R"(    <DesktopApp DisplayName="b" LnkFileName="C:\b.lnk" />)", "  </DesktopApps>"}));
}

TEST(AppNameListInstalledStates, LeaveRecordsWithoutAStateAlone)
{
    CQanhAppNameList list;
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"b", L"C:\\b.lnk"), S_OK);
    // A record was added since the states were asked for.
    list.SetPackagesInstalled({FALSE});
    list.SetDesktopAppsInstalled({FALSE});
    list.SetPackagesInstalled({});
    list.SetDesktopAppsInstalled({});
    EXPECT_EQ(list.GetPackage(L"b_1")->IsInstalled, TRUE);
    EXPECT_EQ(SavedText(list),
              Document({"  <MetroApps>", R"(    <Package PackageFamilyName="b_1" Version="1.0.0.0" />)",
                        "  </MetroApps>", "  <DesktopApps>",
                        R"(    <DesktopApp DisplayName="b" LnkFileName="C:\b.lnk" />)", "  </DesktopApps>"}));
    // More states than records are no trouble.
    list.SetPackagesInstalled({TRUE, TRUE, TRUE});
    list.SetDesktopAppsInstalled({TRUE, TRUE, TRUE});
    EXPECT_EQ(list.GetPackage(L"a_1")->IsInstalled, TRUE);
}

} // namespace
