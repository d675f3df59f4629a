#include "catalog/Package.h"

#include "unit/catalog/Records.h"

#include <type_traits>

namespace {

using namespace test;

constexpr RecordVersion kVersion{1, 2, 3, 4};

class PackageTest : public Test
{
protected:
    ~PackageTest() override { m_package.DeleteAllApp(); } // which write down what is done with them

    std::unique_ptr<RecordProbe> Probe(const wchar_t* name)
    {
        return std::make_unique<RecordProbe>(name, &m_events);
    }
    void Add(CQanhPackage& package, const std::vector<const wchar_t*>& names)
    {
        for (const wchar_t* name : names) {
            EXPECT_EQ(package.AddApplication(Probe(name)), S_OK);
        }
    }

    RecordProbe::Events m_events;
    CQanhPackage m_package{L"p", kVersion, FALSE, TRUE};
};

std::vector<std::wstring> Apps(const CQanhPackage& package)
{
    return DisplayNames(package.Apps());
}

void ExpectPackage(const CQanhPackage& package, const wchar_t* fullName, const wchar_t* name,
                   BOOL needReserve, BOOL isInstalled)
{
    EXPECT_STREQ(package.PackageFamilyName.c_str(), L"Contoso.Mail_x1");
    EXPECT_STREQ(package.FullName.c_str(), fullName);
    EXPECT_STREQ(package.Name.c_str(), name);
    EXPECT_EQ(package.Version, kVersion);
    EXPECT_EQ(package.NeedReserve, needReserve);
    EXPECT_EQ(package.IsInstalled, isInstalled);
    EXPECT_EQ(package.Apps().Size(), 0u);
    EXPECT_EQ(package.Apps().SizeLimit(), 768614336404564650u);
}

TEST_F(PackageTest, HoldsItsVersionAsMajorMinorRevisionBuild)
{
    EXPECT_EQ(kVersion.Major, 1);
    EXPECT_EQ(kVersion.Minor, 2);
    EXPECT_EQ(kVersion.Revision, 3);
    EXPECT_EQ(kVersion.Build, 4);
    EXPECT_EQ(RecordVersion(), (RecordVersion{0, 0, 0, 0}));
    EXPECT_NE(kVersion, (RecordVersion{9, 2, 3, 4}));
    EXPECT_NE(kVersion, (RecordVersion{1, 9, 3, 4}));
    EXPECT_NE(kVersion, (RecordVersion{1, 2, 9, 4}));
    EXPECT_NE(kVersion, (RecordVersion{1, 2, 3, 9}));
}

TEST_F(PackageTest, IsInstalledAndNotReservedWhenItComesFromThePackageManager)
{
    ExpectPackage(
        CQanhPackage(L"Contoso.Mail_x1", L"Contoso.Mail_1.2.3.4_x64__x1", L"Contoso.Mail", kVersion),
        L"Contoso.Mail_1.2.3.4_x64__x1", L"Contoso.Mail", FALSE, TRUE);
    // From the file it has neither full name nor name.
    ExpectPackage(CQanhPackage(L"Contoso.Mail_x1", kVersion, TRUE, FALSE), L"", L"", TRUE, FALSE);
}

TEST_F(PackageTest, AppendsApplicationsInOrderAndNoneThatIsNull)
{
    Add(m_package, {L"b", L"a", L"b"});
    EXPECT_EQ(m_package.AddApplication(std::unique_ptr<CQanhApp>()), E_POINTER);
    EXPECT_THAT(Apps(m_package), ElementsAre(L"b", L"a", L"b"));
}

TEST_F(PackageTest, MakesStoreApplicationsOfTwoNames)
{
    EXPECT_EQ(m_package.AddApplication(L"Mail", L"M"), S_OK);
    EXPECT_EQ(m_package.AddApplication(L"Mail", L"M"), S_OK); // duplicates are nobody's concern here
    EXPECT_EQ(m_package.AddApplication(nullptr, nullptr), S_OK);
    ASSERT_THAT(Apps(m_package), ElementsAre(L"Mail", L"Mail", L""));
    const auto* app = dynamic_cast<const CQanhMetroApp*>(m_package.Apps().begin()->get());
    ASSERT_NE(app, nullptr);
    EXPECT_STREQ(app->ShortName.c_str(), L"M");
    EXPECT_TRUE(app->RubyDisplayName.empty());
    EXPECT_TRUE(app->RubyShortName.empty());
}

TEST_F(PackageTest, StaysAsItWasWhenMemoryRunsOut)
{
    const std::size_t failures = ForEachFailingAllocation([](std::size_t index) {
        CQanhPackage package(L"p", kVersion, FALSE, TRUE);
        EXPECT_EQ(package.AddApplication(L"first", nullptr), S_OK);
        const Attempt attempt =
            TryWithFailingAllocation(index, [&] { return package.AddApplication(L"display", L"short"); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(package.Apps().Size(), attempt.failed ? 1u : 2u);
        EXPECT_EQ(attempt.left == 0, attempt.failed);
        return attempt.failed;
    });
    EXPECT_GE(failures, 4u);
}

TEST_F(PackageTest, DeletesAnApplicationThatFindsNoMemoryInTheList)
{
    auto app = Probe(L"a");
    m_events.reserve(10);
    EXPECT_EQ(TryWithFailingAllocation(0, [&] { return m_package.AddApplication(std::move(app)); }).result,
              E_OUTOFMEMORY);
    EXPECT_EQ(m_package.Apps().Size(), 0u);
    EXPECT_THAT(m_events, ElementsAre(L"deleted a"));
}

TEST_F(PackageTest, RefusesApplicationsBeyondTheListsLimitAndLogsTheAdding)
{
    CQanhPackage package(L"p", L"full", L"name", kVersion, 1);
    const LogCapture log;
    EXPECT_EQ(package.AddApplication(std::unique_ptr<CQanhApp>()), E_POINTER);
    EXPECT_EQ(package.AddApplication(Probe(L"a")), S_OK);
    EXPECT_EQ(package.AddApplication(Probe(L"b")), E_OUTOFMEMORY);
    EXPECT_EQ(package.AddApplication(L"Mail", L"M"), E_OUTOFMEMORY);
    EXPECT_THAT(Apps(package), ElementsAre(L"a"));
    // The package owned what it refused.
    EXPECT_THAT(m_events, ElementsAre(L"deleted b"));
    package.DeleteAllApp();
    EXPECT_EQ(package.AddApplication(L"Mail", nullptr), S_OK);
    EXPECT_EQ(log.Lines(), Call("CQanhPackage::AddApplication", "(0x80004003)") +
                               Call("CQanhPackage::AddApplication", "(0x00000000)") +
                               Call("CQanhPackage::AddApplication", "(0x8007000E)") +
                               Call("CQanhPackage::AddApplication(Mail, M)", "(0x8007000E)") +
                               Call("CQanhPackage::DeleteAllApp") +
                               Call("CQanhPackage::AddApplication(Mail, (null))", "(0x00000000)"));
}

TEST_F(PackageTest, DeletesItsApplicationsFrontToBack)
{
    Add(m_package, {L"b", L"a", L"c"});
    m_package.DeleteAllApp();
    EXPECT_THAT(m_events, ElementsAre(L"deleted b", L"deleted a", L"deleted c"));
    EXPECT_EQ(m_package.Apps().Size(), 0u);
    m_package.DeleteAllApp();
    EXPECT_EQ(m_events.size(), 3u);
}

TEST_F(PackageTest, TakesItsApplicationsAlong)
{
    static_assert(std::has_virtual_destructor_v<CQanhPackage>);
    {
        CQanhPackage package(L"p", kVersion, FALSE, TRUE);
        Add(package, {L"b", L"a"});
    }
    EXPECT_THAT(m_events, ElementsAre(L"deleted b", L"deleted a"));
}

TEST_F(PackageTest, LeavesNoMemoryBehind)
{
    std::size_t left = 1;
    {
        const AllocationWatch watch;
        {
            CQanhPackage package(L"p", L"full", L"name", kVersion);
            EXPECT_EQ(package.AddApplication(L"a", L"b"), S_OK);
            EXPECT_EQ(package.AddApplication(L"c", L"d"), S_OK);
            package.DeleteAllApp();
            EXPECT_EQ(package.AddApplication(L"e", L"f"), S_OK);
            left = watch.Live();
            EXPECT_GT(left, 0u);
        }
        left = watch.Live();
    }
    EXPECT_EQ(left, 0u);
}

TEST_F(PackageTest, ChangesVersionAndApplicationsWithAnotherRecord)
{
    CQanhPackage package(L"a_1", {1, 0, 0, 0}, TRUE, FALSE);
    Add(package, {L"old"});
    {
        CQanhPackage replacement(L"b_1", L"full", L"name", {2, 0, 0, 0});
        Add(replacement, {L"new", L"newer"});
        package.SwapContents(replacement);
        EXPECT_EQ(replacement.Version, (RecordVersion{1, 0, 0, 0}));
        EXPECT_THAT(Apps(replacement), ElementsAre(L"old"));
        EXPECT_THAT(m_events, IsEmpty());
    }
    EXPECT_THAT(m_events, ElementsAre(L"deleted old"));
    EXPECT_EQ(package.Version, (RecordVersion{2, 0, 0, 0}));
    EXPECT_THAT(Apps(package), ElementsAre(L"new", L"newer"));
    // Everything else stays.
    EXPECT_STREQ(package.PackageFamilyName.c_str(), L"a_1");
    EXPECT_TRUE(package.FullName.empty());
    EXPECT_EQ(package.NeedReserve, TRUE);
    EXPECT_EQ(package.IsInstalled, FALSE);
}

TEST_F(PackageTest, IsKnownByItsFamilyNameToTheLetterUnlessThatIsEmpty)
{
    const CQanhPackage package(L"Contoso.Mail_x1", L"Contoso.Mail_1.2.3.4_x64__x1", L"Contoso.Mail",
                               kVersion);
    const CQanhPackage nameless(L"", kVersion, FALSE, TRUE);
    EXPECT_EQ(package.IsThisPackage(L"Contoso.Mail_x1"), 1);
    for (const wchar_t* other :
         {L"contoso.mail_x1", L"Contoso.Mail_X1", L"Contoso.Mail_x", L"Contoso.Mail_x11", L"Contoso.Mail",
          L"Contoso.Mail_1.2.3.4_x64__x1", L"a", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(package.IsThisPackage(other), 0) << PrintToString(other);
        EXPECT_EQ(nameless.IsThisPackage(other), 0) << PrintToString(other);
    }
}

TEST_F(PackageTest, LogsTheQuestionForItsFamilyName)
{
    const LogCapture log;
    EXPECT_TRUE(m_package.IsThisPackage(L"p"));
    EXPECT_FALSE(m_package.IsThisPackage(L"P"));
    EXPECT_EQ(log.Lines(),
              Call("CQanhPackage::IsThisPackage(p)", "(1)") + Call("CQanhPackage::IsThisPackage(P)", "(0)"));
}

class PackageExcludeTest : public PackageTest
{
protected:
    PackageExcludeTest()
    {
        for (const wchar_t* name : {L"b", L"a", L"c"}) {
            auto probe = Probe(name);
            m_probes.push_back(probe.get());
            EXPECT_EQ(m_package.AddApplication(std::move(probe)), S_OK);
        }
    }

    void Ask() { m_package.AddAppNameToExcludeList(L"wanted", &m_list, &m_found); }

    std::vector<RecordProbe*> m_probes;
    ExcludeList m_list;
    BOOL m_found = 7;
};

TEST_F(PackageExcludeTest, AsksEveryApplicationInOrderWithAFlagOfItsOwn)
{
    m_probes[0]->answersFound = TRUE;
    m_probes[0]->addsItsName = true;
    m_probes[2]->addsItsName = true;
    m_package.AddAppNameToExcludeList(L"Wanted", &m_list, &m_found);
    EXPECT_THAT(m_events, ElementsAre(L"asked b", L"asked a", L"asked c"));
    EXPECT_THAT(Names(m_list), ElementsAre(L"b", L"c"));
    EXPECT_EQ(m_found, 1);
    for (const RecordProbe* probe : m_probes) {
        EXPECT_EQ(probe->foundBefore, 0);
        EXPECT_EQ(probe->wanted, L"Wanted");
    }
}

TEST_F(PackageExcludeTest, IsFoundWhenAnyApplicationIs)
{
    for (RecordProbe* probe : m_probes) {
        m_found = 0;
        probe->answersFound = TRUE;
        Ask();
        EXPECT_EQ(m_found, 1);
        probe->answersFound = FALSE;
    }
}

TEST_F(PackageExcludeTest, LeavesFoundAloneWhenNoApplicationIs)
{
    Ask();
    EXPECT_EQ(m_found, 7);
    m_found = 1;
    Ask();
    EXPECT_EQ(m_found, 1);
}

TEST_F(PackageExcludeTest, IgnoresTheApplicationsResults)
{
    m_probes[0]->result = E_OUTOFMEMORY;
    m_probes[1]->result = E_FAIL;
    m_probes[2]->answersFound = TRUE;
    Ask();
    EXPECT_EQ(m_events.size(), 3u);
    EXPECT_EQ(m_found, 1);
}

TEST_F(PackageExcludeTest, DoesNothingWhenNotInstalled)
{
    m_probes[0]->answersFound = TRUE;
    m_package.IsInstalled = FALSE;
    for (const BOOL needReserve : {FALSE, TRUE}) {
        m_package.NeedReserve = needReserve;
        Ask();
    }
    EXPECT_THAT(m_events, IsEmpty());
    EXPECT_EQ(m_found, 7);
}

TEST_F(PackageExcludeTest, DoesNothingForAnEmptyOrMissingArgument)
{
    m_probes[0]->answersFound = TRUE;
    m_package.AddAppNameToExcludeList(L"", &m_list, &m_found);
    m_package.AddAppNameToExcludeList(nullptr, &m_list, &m_found);
    m_package.AddAppNameToExcludeList(L"wanted", nullptr, &m_found);
    m_package.AddAppNameToExcludeList(L"wanted", &m_list, nullptr);
    EXPECT_THAT(m_events, IsEmpty());
    EXPECT_EQ(m_found, 7);
}

TEST_F(PackageExcludeTest, LogsNoResultBehindAWantedName)
{
    const LogCapture log;
    m_probes[0]->result = E_FAIL;
    m_package.AddAppNameToExcludeList(L"", &m_list, &m_found);
    Ask();
    m_package.IsInstalled = FALSE;
    Ask();
    EXPECT_EQ(log.Lines(), Call("CQanhPackage::AddAppNameToExcludeList()", "(0x80070057)") +
                               Call("CQanhPackage::AddAppNameToExcludeList(wanted)") +
                               Call("CQanhPackage::AddAppNameToExcludeList(wanted)"));
}

} // namespace
