// How Store packages of the system enter the catalogue.

#include "unit/catalog/AppNameListStore.h"

namespace {

using namespace store_test;

TEST_F(AppNameListStore, ANewOneIsAddedWithItsApplications)
{
    WriteManifest({"Mail", "Calendar"});
    EXPECT_EQ(Add(), S_OK);
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail", L"calendar"});
    EXPECT_FALSE(Record()->NeedReserve);
    EXPECT_TRUE(Record()->IsInstalled);
}

TEST_F(AppNameListStore, NewOnesFollowThoseThatAreThere)
{
    LoadText(m_list, "<r><Package PackageFamilyName=\"a\"/><Package PackageFamilyName=\"b\"/></r>");
    EXPECT_EQ(Add(), S_OK);
    EXPECT_STREQ(m_list.PackageFamilyNames().back().c_str(), kFamily);
}

TEST_F(AppNameListStore, WholeLogOfANewOne)
{
    WriteManifest({"Mail"});
    const LogCapture log;
    Add();
    EXPECT_EQ(WithoutSteps(log),
              Adding("(0x00000000)", {},
                     ReadingMail() + Call("CQanhAppNameList::AddMetroPackage", "(0x00000000)")));
}

TEST_F(AppNameListStore, NullIsRefused)
{
    const LogCapture log;
    EXPECT_EQ(m_list.AddMetroPackage(static_cast<platform::IPackage*>(nullptr)), E_POINTER);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::AddMetroPackage", "(0x80004003)"));
}

// The manifest of a new one.

class NewAppNameListStore : public AppNameListStore
{
protected:
    // The package is added with these applications although its manifest cannot be read, which is logged.
    void ExpectAddedAfter(const std::string& failure, const std::vector<std::wstring>& displayNames)
    {
        const LogCapture log;
        EXPECT_EQ(Add(), S_OK); // what the reader returns is only logged
        EXPECT_EQ(LinesFrom("CQanhManifestReader::AddAppsToPackage OUT", log),
                  Lines{"CQanhManifestReader::AddAppsToPackage OUT(" + failure + ")"} +
                      Lines{"CQanhAppNameList::AddMetroPackage Error (" + failure + ")"} +
                      Call("CQanhAppNameList::AddMetroPackage", "(0x00000000)") +
                      Lines{"CQanhAppNameList::AddMetroPackage OUT(0x00000000)"});
        ExpectRecord(VersionOf(1, 2, 3, 4), displayNames);
    }
};

TEST_F(NewAppNameListStore, WithoutAManifestIsAddedWithoutApplications)
{
    ExpectAddedAfter("0x80070002", {});
}

TEST_F(NewAppNameListStore, WithABrokenManifestKeepsWhatWasRead)
{
    WriteManifest({"Mail"}, "</X>");
    ExpectAddedAfter("0xC00CEE3B", {L"mail"});
}

TEST_F(NewAppNameListStore, IsReadWithTheSystemsReaderWhenThatIsSet)
{
    WriteManifest({"Mail"});
    BreakTheSystemsReader();
    ExpectAddedAfter("0x80040154", {});
}

TEST_F(AppNameListStore, ANewOneWithUnresolvedNamesIsAddedWithTheReferences)
{
    WriteManifest({"ms-resource:Name"});
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"ms-resource:name"));
}

TEST_F(AppNameListStore, ResourcesAreThoseOfThePackage)
{
    WriteManifest({"ms-resource:Name"});
    m_resources.texts[kNameSource] = L"Post";
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"Post"));
}

TEST_F(AppNameListStore, ThePathOfTheManifestHas259CharactersAtMost)
{
    // A folder in which the name of the manifest just fits, and some that are longer.
    for (const std::size_t length : {242u, 243u, 244u}) {
        std::wstring path = m_folder.Path() + L"\\";
        while (path.size() + 101 < length) {
            path += std::wstring(100, L'x') + L"\\";
        }
        path += std::wstring(length - path.size(), L'y');
        MakeFolder(path);
        WriteFileBytes(L"\\\\?\\" + path + L"\\AppxManifest.xml",
                       "<Applications><Application><VisualElements DisplayName=\"App\"/>"
                       "</Application></Applications>");
        m_package->facts.path = path;
        m_package->facts.familyName = std::to_wstring(length);
        EXPECT_EQ(Add(), S_OK);
    }
    EXPECT_THAT(DisplayNames(Record(L"242")), ElementsAre(L"app"));
    EXPECT_THAT(DisplayNames(Record(L"243")), IsEmpty());
    EXPECT_THAT(DisplayNames(Record(L"244")), IsEmpty());
}

TEST_F(AppNameListStore, AFamilyNameInOtherLettersIsAnotherPackage)
{
    Add();
    m_package->facts.familyName = L"CONTOSO.Mail_8wekyb3d8bbwe";
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 2u);
}

TEST_F(AppNameListStore, OneWithoutAFamilyNameIsAlwaysNew)
{
    m_package->facts.familyName.clear();
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 2u);
}

TEST_F(AppNameListStore, NamesMayHoldAnyCharactersAtAnyLength)
{
    const std::wstring family = L"\u30e1\xDC00\xD800%s" + std::wstring(5000, L'f');
    m_package->facts.familyName = family;
    m_package->facts.fullName = L"full " + family;
    m_package->facts.name = L"name " + family;
    EXPECT_EQ(Add(), S_OK);
    ASSERT_NE(Record(family.c_str()), nullptr);
    EXPECT_EQ(Record(family.c_str())->FullName.c_str(), L"full " + family);
    EXPECT_EQ(Record(family.c_str())->Name.c_str(), L"name " + family);
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 1u);
}

// One that does not answer.

class SilentPackage : public AppNameListStore, public WithParamInterface<const char*>
{
};

TEST_P(SilentPackage, IsAFailureAndChangesNothing)
{
    constexpr HRESULT failureWithoutAText = static_cast<HRESULT>(0xA0000003); // its message is its number
    for (const bool isKnown : {false, true}) {
        if (isKnown) {
            AddAndChangeVersion();
        }
        m_objects.Fail(GetParam(), failureWithoutAText, m_objects.Calls(GetParam()));
        const LogCapture log;
        EXPECT_EQ(Add(), E_FAIL);
        EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::AddMetroPackage", "(0xA0000003)"));
        EXPECT_EQ(Record() != nullptr, isKnown);
    }
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail"});
}

INSTANTIATE_TEST_SUITE_P(To, SilentPackage,
                         Values("Id", "FamilyName", "FullName", "Name", "Version", "InstalledLocation",
                                "QueryInterface", "Path"));

TEST_P(SilentPackage, IsAFailureAlsoWhenItIsReserved)
{
    LoadText(m_list, "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" NeedReserve=\"1\"/>"
                     "</r>");
    m_objects.Fail(GetParam(), E_ACCESSDENIED);
    EXPECT_EQ(Add(), E_FAIL);
}

TEST_P(SilentPackage, IsOutOfMemoryAfterAnyOtherException)
{
    m_objects.At(GetParam(), [] { throw 1; });
    const LogCapture log;
    EXPECT_EQ(Add(), E_OUTOFMEMORY);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::AddMetroPackage", "(0x8007000E)"));
    EXPECT_EQ(Record(), nullptr);
}

// Limits.

TEST_F(AppNameListStore, AFullListIsOutOfMemory)
{
    CQanhAppNameList list(1);
    WriteManifest({"Mail"});
    EXPECT_EQ(list.AddMetroPackage(m_package), S_OK);
    m_package->facts.familyName = L"another";
    const LogCapture log;
    EXPECT_EQ(list.AddMetroPackage(m_package), E_OUTOFMEMORY);
    EXPECT_EQ(log.Lines().back(), "CQanhAppNameList::AddMetroPackage OUT(0x8007000E)");
    EXPECT_EQ(list.PackageFamilyNames().size(), 1u);
    EXPECT_EQ(list.GetPackage(L"another"), nullptr);
}

TEST_F(AppNameListStore, AFullListOfApplicationsKeepsTheFirstOnes)
{
    CQanhAppNameList list(2);
    WriteManifest({"Mail", "Calendar", "People"});
    EXPECT_EQ(list.AddMetroPackage(m_package), S_OK);
    EXPECT_THAT(DisplayNames(list.GetPackage(kFamily)), ElementsAre(L"mail", L"calendar"));
    m_package->facts.version.Major = 2;
    WriteManifest({"Post", "Photos", "Phone"});
    EXPECT_EQ(list.AddMetroPackage(m_package), S_FALSE);
    EXPECT_THAT(DisplayNames(list.GetPackage(kFamily)), ElementsAre(L"post", L"photos"));
}

class AppNameListStoreMemory : public AppNameListStore
{
protected:
    // Adds the package to a list that prepare(list) made ready, once with each allocation failing. Hands how
    // it went to check(list, result); it must be refused several times.
    template <typename Prepare, typename Check> void ForEachFailure(Prepare prepare, Check check)
    {
        m_objects.isQuiet = true;
        std::size_t refused = 0;
        const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
            SCOPED_TRACE(index);
            CQanhAppNameList list;
            prepare(list);
            const Attempt attempt =
                TryWithFailingAllocation(index, [&] { return list.AddMetroPackage(m_package); });
            EXPECT_TRUE(SUCCEEDED(attempt.result) || attempt.failed);
            check(list, attempt.result);
            refused += FAILED(attempt.result) ? 1 : 0;
            return attempt.failed;
        });
        EXPECT_GT(failures, 8u);
        EXPECT_GT(refused, 4u);
    }
};

TEST_F(AppNameListStoreMemory, ThatRunsOutAddsNothingOrARecord)
{
    WriteManifest({"A display name that is long"});
    ForEachFailure([](const CQanhAppNameList&) {},
                   [](const CQanhAppNameList& list, HRESULT result) {
                       // Within the reader it only costs the application.
                       EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY);
                       EXPECT_EQ(list.PackageFamilyNames().size(), result == S_OK ? 1u : 0u);
                   });
}

TEST_F(AppNameListStoreMemory, ThatRunsOutLeavesAKnownOneWhole)
{
    ForEachFailure(
        [&](CQanhAppNameList& list) {
            m_package->facts.version.Major = 1;
            WriteManifest({"A display name that is long"});
            EXPECT_EQ(list.AddMetroPackage(m_package), S_OK);
            m_package->facts.version.Major = 2;
            WriteManifest({"Another display name"});
        },
        [&](const CQanhAppNameList& list, HRESULT result) {
            const CQanhPackage* record = list.GetPackage(kFamily);
            EXPECT_EQ(record->Version, FAILED(result) ? VersionOf(1, 2, 3, 4) : VersionOf(2, 2, 3, 4));
            if (FAILED(result)) {
                EXPECT_THAT(DisplayNames(record), ElementsAre(L"a display name that is long"));
            }
        });
}

} // namespace
