#include "catalog/AppNameList.h"

#include "unit/catalog/Records.h"

#include <type_traits>

namespace {

using namespace test;

class AppNameList : public Test
{
protected:
    void AddPackages(const std::vector<const wchar_t*>& familyNames)
    {
        for (const wchar_t* familyName : familyNames) {
            EXPECT_EQ(m_list.AddMetroPackage(Package(familyName)), S_OK);
        }
    }
    // Each has the shortcut "C:\NAME.lnk".
    void AddDesktopApps(const std::vector<std::wstring>& displayNames)
    {
        for (const std::wstring& name : displayNames) {
            EXPECT_EQ(m_list.AddDesktopApp(name.c_str(), (L"C:\\" + name + L".lnk").c_str()), S_OK);
        }
    }
    std::unique_ptr<CQanhPackage> Probe(const wchar_t* familyName)
    {
        return std::make_unique<PackageProbe>(familyName, [this] { ++m_deleted; });
    }
    void ExpectRecords(const std::vector<std::wstring>& familyNames,
                       const std::vector<std::wstring>& shortcuts) const
    {
        EXPECT_EQ(Names(m_list.PackageFamilyNames()), familyNames);
        EXPECT_EQ(Names(m_list.DesktopShortcuts()), shortcuts);
    }

    CQanhAppNameList m_list;
    int m_deleted = 0; // probes
};

TEST_F(AppNameList, RefusesPackagesBeyondTheListsLimit)
{
    CQanhAppNameList list(2);
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Probe(L"c_1")), E_OUTOFMEMORY);
    EXPECT_THAT(Names(list.PackageFamilyNames()), ElementsAre(L"a_1", L"b_1"));
    EXPECT_EQ(m_deleted, 1);
    // The lists have a limit each, and a refusal leaves nothing locked.
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    list.Clear();
    EXPECT_EQ(list.AddMetroPackage(Package(L"c_1")), S_OK);
}

TEST_F(AppNameList, RefusesAPackageThatIsNull)
{
    EXPECT_EQ(m_list.AddMetroPackage(std::unique_ptr<CQanhPackage>()), E_POINTER);
    ExpectRecords({}, {});
}

TEST_F(AppNameList, LogsTheAddingOfPackages)
{
    CQanhAppNameList list(1);
    const LogCapture log;
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), E_OUTOFMEMORY);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::AddMetroPackage", "(0x00000000)") +
                               Call("CQanhAppNameList::AddMetroPackage", "(0x8007000E)"));
}

TEST_F(AppNameList, FindsTheFirstPackageOfExactlyThisFamilyName)
{
    AddPackages({L"", L"a_1"});
    auto first = std::make_unique<CQanhPackage>(L"b_1", RecordVersion{9, 9, 9, 9}, FALSE, FALSE);
    const CQanhPackage* pFirst = first.get();
    EXPECT_EQ(m_list.AddMetroPackage(std::move(first)), S_OK);
    AddPackages({L"b_1"});
    EXPECT_EQ(m_list.GetPackage(L"b_1"), pFirst);
    EXPECT_NE(m_list.GetPackage(L"a_1"), nullptr);
    EXPECT_NE(m_list.GetPackage(L"a_1"), pFirst);
    for (const wchar_t* other : {L"B_1", L"b_", L"b_11", L"c_1", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(m_list.GetPackage(other), nullptr) << PrintToString(other);
    }
}

TEST_F(AppNameList, ShowsEveryRecordInOrder)
{
    AddDesktopApps({L"d", L"c"});
    AddPackages({L"b_1", L"a_1", L"b_1", L""});
    std::vector<std::wstring> records;
    m_list.ForEachRecord(
        [&](const CQanhPackage& package) { records.emplace_back(package.PackageFamilyName.c_str()); },
        [&](const CQanhDesktopApp& app) { records.emplace_back(app.DisplayName.c_str()); });
    EXPECT_THAT(records, ElementsAre(L"b_1", L"a_1", L"b_1", L"", L"d", L"c"));
    ExpectRecords({L"b_1", L"a_1", L"b_1", L""}, {L"C:\\d.lnk", L"C:\\c.lnk"});
    // Nothing is left locked.
    m_list.Clear();
}

TEST_F(AppNameList, HandsOutNothingThatCouldBeChangedWithoutTheLock)
{
    static_assert(
        std::is_same_v<decltype(std::declval<CQanhAppNameList&>().GetPackage(L"")), const CQanhPackage*>);
    static_assert(
        std::is_same_v<decltype(std::declval<const CQanhPackage&>().Apps().begin()->get()), const CQanhApp*>);
}

TEST_F(AppNameList, LogsEachPackageThatItAsksForItsFamilyName)
{
    AddPackages({L"a_1", L"b_1", L"c_1"});
    const LogCapture log;
    EXPECT_NE(m_list.GetPackage(L"b_1"), nullptr);
    EXPECT_EQ(m_list.GetPackage(nullptr), nullptr);
    EXPECT_EQ(m_list.GetPackage(L""), nullptr);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::GetPackage(b_1)", "",
                                Call("CQanhPackage::IsThisPackage(b_1)", "(0)") +
                                    Call("CQanhPackage::IsThisPackage(b_1)", "(1)")) +
                               Call("CQanhAppNameList::GetPackage((null))") +
                               Call("CQanhAppNameList::GetPackage()"));
}

TEST_F(AppNameList, AppendsAnInstalledDesktopApp)
{
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", L"C:\\Word.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", L"C:\\Another.lnk"), S_OK);
    // Installed, not reserved, not of dual mode, without localised name and reading.
    EXPECT_EQ(SavedRecords(m_list), R"(<DesktopApp DisplayName="Word" LnkFileName="C:\Word.lnk" />)"
                                    R"(<DesktopApp DisplayName="Word" LnkFileName="C:\Another.lnk" />)");
}

TEST_F(AppNameList, TakesAShortcutOnceWhateverItsLetterCase)
{
    AddDesktopApps({L"Word"});
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", L"C:\\Word.lnk"), S_FALSE);
    EXPECT_EQ(m_list.AddDesktopApp(L"Other", L"c:\\wORD.LNK"), S_FALSE);
    ExpectRecords({}, {L"C:\\Word.lnk"});
}

TEST_F(AppNameList, TakesAShortcutsPathAsItIs)
{
    const std::wstring path = L"C:\\" + std::wstring(400, L'p');
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", L"%ProgramData%\\Word.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", path.c_str()), S_OK);
    ExpectRecords({}, {L"%ProgramData%\\Word.lnk", path});
    EXPECT_EQ(m_list.IsInDesktopAppList(path.c_str()), 1);
}

TEST_F(AppNameList, ChecksTheTextsOfADesktopAppForNullThenForEmpty)
{
    EXPECT_EQ(m_list.AddDesktopApp(nullptr, L"C:\\Word.lnk"), E_POINTER);
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", nullptr), E_POINTER);
    EXPECT_EQ(m_list.AddDesktopApp(L"", nullptr), E_POINTER);
    EXPECT_EQ(m_list.AddDesktopApp(nullptr, L""), E_POINTER);
    EXPECT_EQ(m_list.AddDesktopApp(L"", L"C:\\Word.lnk"), E_INVALIDARG);
    EXPECT_EQ(m_list.AddDesktopApp(L"Word", L""), E_INVALIDARG);
    ExpectRecords({}, {});
}

TEST_F(AppNameList, LogsTheLookUpOfADesktopAppThatIsAdded)
{
    CQanhAppNameList list(1);
    const LogCapture log;
    EXPECT_EQ(list.AddDesktopApp(nullptr, L"C:\\a.lnk"), E_POINTER);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L""), E_INVALIDARG);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"c:\\A.lnk"), S_FALSE);
    EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\b.lnk"), E_OUTOFMEMORY);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::AddDesktopApp((null), C:\\a.lnk)", "(0x80004003)") +
                               Call("CQanhAppNameList::AddDesktopApp(Word, )", "(0x80070057)") +
                               Call("CQanhAppNameList::AddDesktopApp(Word, C:\\a.lnk)", "(0x00000000)",
                                    Call("CQanhAppNameList::IsInDesktopAppList(C:\\a.lnk)", "(0)")) +
                               Call("CQanhAppNameList::AddDesktopApp(Word, c:\\A.lnk)", "(0x00000001)",
                                    Call("CQanhAppNameList::IsInDesktopAppList(c:\\A.lnk)", "(1)",
                                         Lines{"CQanhDesktopApp::IsSameShortcut IN(c:\\A.lnk)",
                                               "CQanhDesktopApp::IsSameShortcut OUT(1)"})) +
                               Call("CQanhAppNameList::AddDesktopApp(Word, C:\\b.lnk)", "(0x8007000E)",
                                    Call("CQanhAppNameList::IsInDesktopAppList(C:\\b.lnk)", "(0)",
                                         Lines{"CQanhDesktopApp::IsSameShortcut IN(C:\\b.lnk)",
                                               "CQanhDesktopApp::IsSameShortcut OUT(0)"})));
    EXPECT_THAT(Names(list.DesktopShortcuts()), ElementsAre(L"C:\\a.lnk"));
}

TEST_F(AppNameList, KnowsShortcutsByTheirWholePathsIgnoringCase)
{
    AddDesktopApps({L"a", L"Menu\\b"});
    EXPECT_EQ(m_list.IsInDesktopAppList(L"C:\\Menu\\b.lnk"), 1);
    EXPECT_EQ(m_list.IsInDesktopAppList(L"c:\\MENU\\B.LNK"), 1);
    // Not even a record without a path has an empty one.
    LoadText(m_list, "<DesktopApps><DesktopApp/></DesktopApps>");
    ExpectRecords({}, {L"C:\\a.lnk", L"C:\\Menu\\b.lnk", L""});
    for (const wchar_t* other :
         {L"C:\\Menu\\b.ln", L"C:\\Menu\\b.lnk1", L"b.lnk", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(m_list.IsInDesktopAppList(other), 0) << PrintToString(other);
    }
}

TEST_F(AppNameList, LogsTheLookUpOfAShortcut)
{
    AddDesktopApps({L"a"});
    const LogCapture log;
    EXPECT_FALSE(m_list.IsInDesktopAppList(nullptr));
    EXPECT_FALSE(m_list.IsInDesktopAppList(L""));
    EXPECT_TRUE(m_list.IsInDesktopAppList(L"C:\\A.lnk"));
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::IsInDesktopAppList((null))", "(0)") +
                               Call("CQanhAppNameList::IsInDesktopAppList()", "(0)") +
                               Call("CQanhAppNameList::IsInDesktopAppList(C:\\A.lnk)", "(1)",
                                    Lines{"CQanhDesktopApp::IsSameShortcut IN(C:\\A.lnk)",
                                          "CQanhDesktopApp::IsSameShortcut OUT(1)"}));
}

TEST_F(AppNameList, ClearingDeletesPackagesWithTheirAppsFrontToBack)
{
    std::vector<std::wstring> events;
    for (const wchar_t* name : {L"b", L"a"}) {
        auto package = std::make_unique<PackageProbe>(
            name, [&events, name] { events.push_back(std::wstring(L"deleted package ") + name); });
        EXPECT_EQ(package->AddApplication(std::make_unique<RecordProbe>(name, &events)), S_OK);
        EXPECT_EQ(m_list.AddMetroPackage(std::move(package)), S_OK);
    }
    m_list.Clear();
    EXPECT_THAT(events, ElementsAre(L"deleted package b", L"deleted b", L"deleted package a", L"deleted a"));
}

TEST_F(AppNameList, ClearingDeletesDesktopAppsAfterThePackages)
{
    const AllocationWatch* pWatch = nullptr;
    std::size_t liveAtDeletion = 0;
    auto package = std::make_unique<PackageProbe>(L"a", [&] { liveAtDeletion = pWatch->Live(); });
    std::size_t ofThePackage = 0;
    std::size_t ofBoth = 0;
    std::size_t left = 1;
    {
        const AllocationWatch watch;
        pWatch = &watch;
        EXPECT_EQ(m_list.AddMetroPackage(std::move(package)), S_OK);
        ofThePackage = watch.Live();
        EXPECT_EQ(m_list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
        ofBoth = watch.Live();
        m_list.Clear();
        left = watch.Live();
    }
    // All that the desktop application consists of was still there when the package went.
    EXPECT_GT(ofBoth, ofThePackage + 2);
    EXPECT_GE(liveAtDeletion, ofBoth - ofThePackage);
    EXPECT_EQ(left, 0u);
}

TEST_F(AppNameList, CanBeFilledAgainAfterClearing)
{
    AddPackages({L"a_1"});
    AddDesktopApps({L"Word"});
    const LogCapture log;
    m_list.Clear();
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Clear"));
    ExpectRecords({}, {});
    EXPECT_EQ(m_list.GetPackage(L"a_1"), nullptr);
    m_list.Clear();
    AddDesktopApps({L"Word"});
}

TEST_F(AppNameList, DeletesEverythingAtTheEndOfItsLife)
{
    std::size_t left = 1;
    auto package = Probe(L"a_1");
    {
        const AllocationWatch watch;
        {
            CQanhAppNameList list;
            EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
            EXPECT_EQ(list.AddDesktopApp(L"Word", L"C:\\a.lnk"), S_OK);
        }
        left = watch.Live();
    }
    EXPECT_EQ(m_deleted, 1);
    EXPECT_EQ(left, 0u);
}

TEST_F(AppNameList, GivesInstalledStatesToTheRecordsInOrder)
{
    AddPackages({L"a_1", L"b_1", L"c_1"});
    m_list.SetPackagesInstalled({FALSE, TRUE, FALSE});
    EXPECT_EQ(SavedRecords(m_list), R"(<Package PackageFamilyName="b_1" Version="0.0.0.0" />)");
    m_list.SetPackagesInstalled({TRUE, TRUE, TRUE});
    EXPECT_EQ(m_list.GetPackage(L"a_1")->IsInstalled, TRUE);

    AddDesktopApps({L"a", L"b", L"c"});
    m_list.SetDesktopAppsInstalled({FALSE, TRUE, FALSE});
    m_list.SetPackagesInstalled({FALSE, FALSE, TRUE});
    EXPECT_EQ(SavedRecords(m_list), R"(<Package PackageFamilyName="c_1" Version="0.0.0.0" />)"
                                    R"(<DesktopApp DisplayName="b" LnkFileName="C:\b.lnk" />)");
}

TEST_F(AppNameList, LeavesRecordsWithoutAnInstalledStateAlone)
{
    AddPackages({L"a_1", L"b_1"});
    AddDesktopApps({L"a", L"b"});
    // A record was added since the states were asked for.
    m_list.SetPackagesInstalled({FALSE});
    m_list.SetDesktopAppsInstalled({FALSE});
    m_list.SetPackagesInstalled({});
    m_list.SetDesktopAppsInstalled({});
    EXPECT_EQ(SavedRecords(m_list), R"(<Package PackageFamilyName="b_1" Version="0.0.0.0" />)"
                                    R"(<DesktopApp DisplayName="b" LnkFileName="C:\b.lnk" />)");
    // More states than records are no trouble.
    m_list.SetPackagesInstalled({TRUE, TRUE, TRUE});
    m_list.SetDesktopAppsInstalled({TRUE, TRUE, TRUE});
    EXPECT_EQ(m_list.GetPackage(L"a_1")->IsInstalled, TRUE);
}

} // namespace
