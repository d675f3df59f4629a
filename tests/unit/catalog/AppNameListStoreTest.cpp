// How Store packages of the system enter the catalogue.

#include "unit/catalog/AppNameListStore.h"

#include "common/WinRtError.h"
#include "support/Allocations.h"
#include "unit/catalog/CatalogFile.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace store_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(AppNameListStore, ANewOneIsAddedWithItsApplications)
{
    WriteManifest({"Mail", "Calendar"});
    EXPECT_EQ(Add(), S_OK);
    const CQanhPackage* record = Record();
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(record->PackageFamilyName.c_str(), kFamily);
    EXPECT_STREQ(record->FullName.c_str(), L"Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe");
    EXPECT_STREQ(record->Name.c_str(), L"Contoso.Mail");
    EXPECT_EQ(record->Version, VersionOf(1, 2, 3, 4));
    EXPECT_FALSE(record->NeedReserve);
    EXPECT_TRUE(record->IsInstalled);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail", L"calendar"));
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 1u);
}

TEST_F(AppNameListStore, NewOnesFollowThoseThatAreThere)
{
    test::LoadText(m_list, "<r><Package PackageFamilyName=\"a\"/><Package PackageFamilyName=\"b\"/></r>");
    EXPECT_EQ(Add(), S_OK);
    EXPECT_STREQ(m_list.PackageFamilyNames().back().c_str(), kFamily);
}

TEST_F(AppNameListStore, WholeLogOfANewOne)
{
    WriteManifest({"Mail"});
    const test::LogCapture log;
    Add();
    EXPECT_THAT(
        WithoutSteps(log),
        ElementsAre(
            "CQanhAppNameList::AddMetroPackage IN",
            "CQanhAppNameList::GetPackage(Contoso.Mail_8wekyb3d8bbwe) IN", "CQanhAppNameList::GetPackage OUT",
            "CQanhManifestReader::AddAppsToPackage IN", "CQanhManifestReader::LoadSetting IN",
            "CQanhManifestReader::LoadSetting OUT", "CQanhManifestReader::GetAppNameUsingXmlParser IN",
            "CQanhPackage::AddApplication(mail, s mail) IN", "CQanhPackage::AddApplication OUT(0x00000000)",
            "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)",
            "CQanhManifestReader::AddAppsToPackage OUT(0x00000001)", "CQanhAppNameList::AddMetroPackage IN",
            "CQanhAppNameList::AddMetroPackage OUT(0x00000000)",
            "CQanhAppNameList::AddMetroPackage OUT(0x00000000)"));
}

TEST_F(AppNameListStore, NullIsRefused)
{
    const test::LogCapture log;
    EXPECT_EQ(m_list.AddMetroPackage(static_cast<platform::IPackage*>(nullptr)), E_POINTER);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                                         "CQanhAppNameList::AddMetroPackage OUT(0x80004003)"));
}

// The manifest of a new one.

// The end of the log when the manifest could not be read.
std::vector<std::string> AddedAfter(const std::string& failure)
{
    return {"CQanhManifestReader::AddAppsToPackage OUT(" + failure + ")",
            "CQanhAppNameList::AddMetroPackage Error (" + failure + ")",
            "CQanhAppNameList::AddMetroPackage IN", "CQanhAppNameList::AddMetroPackage OUT(0x00000000)",
            "CQanhAppNameList::AddMetroPackage OUT(0x00000000)"};
}

TEST_F(AppNameListStore, ANewOneWithoutAManifestIsAddedWithoutApplications)
{
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(LinesFrom("CQanhManifestReader::AddAppsToPackage OUT", log), AddedAfter("0x80070002"));
    ASSERT_NE(Record(), nullptr);
    EXPECT_THAT(DisplayNames(), IsEmpty());
}

TEST_F(AppNameListStore, ANewOneWithABrokenManifestKeepsWhatWasRead)
{
    WriteManifest({"Mail"}, "</X>");
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(LinesFrom("CQanhManifestReader::AddAppsToPackage OUT", log), AddedAfter("0xC00CEE3B"));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
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
    m_resources
        .texts[L"@{Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe?ms-resource://Contoso.Mail/resources/name}"] =
        L"Post";
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"Post"));
}

TEST_F(AppNameListStore, TheSystemsReaderIsUsedWhenItIsSet)
{
    WriteManifest({"Mail"});
    m_settings.SetDword(L"ManifestReaderSetting", 0);
    const test::ImportPatch<decltype(&CoCreateInstance)> patch(
        "CoCreateInstance",
        [](REFCLSID, IUnknown*, DWORD, REFIID, void**) -> HRESULT { return REGDB_E_CLASSNOTREG; });
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_OK); // what the reader returns is only logged
    EXPECT_EQ(LinesFrom("CQanhManifestReader::AddAppsToPackage OUT", log), AddedAfter("0x80040154"));
    EXPECT_THAT(DisplayNames(), IsEmpty());
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
        test::MakeFolder(path);
        test::WriteFileBytes(L"\\\\?\\" + path + L"\\AppxManifest.xml",
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

class SilentPackage : public AppNameListStore, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(SilentPackage, IsAFailureAndChangesNothing)
{
    for (const bool isKnown : {false, true}) {
        if (isKnown) {
            WriteManifest({"Mail"});
            Add();
            m_package->facts.version.Major = 2;
        }
        m_objects.Fail(GetParam(), E_ACCESSDENIED, m_objects.Calls(GetParam()));
        {
            const test::LogCapture log;
            EXPECT_EQ(Add(), E_FAIL);
            const std::string message = test::ToUtf8(WinRtError(E_ACCESSDENIED).Message());
            EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                                                 "CQanhAppNameList::AddMetroPackage OUT(" + message + ")"));
        }
        EXPECT_EQ(Record() != nullptr, isKnown);
        if (isKnown) {
            EXPECT_EQ(Record()->Version, VersionOf(1, 2, 3, 4));
            EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(To, SilentPackage,
                         ::testing::Values("Id", "FamilyName", "FullName", "Name", "Version",
                                           "InstalledLocation", "QueryInterface", "Path"));

TEST_P(SilentPackage, IsAFailureAlsoWhenItIsReserved)
{
    test::LoadText(m_list, "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" NeedReserve=\"1\"/>"
                           "</r>");
    m_objects.Fail(GetParam(), E_ACCESSDENIED);
    EXPECT_EQ(Add(), E_FAIL);
}

TEST_P(SilentPackage, IsOutOfMemoryAfterAnyOtherException)
{
    m_objects.At(GetParam(), [] { throw 1; });
    const test::LogCapture log;
    EXPECT_EQ(Add(), E_OUTOFMEMORY);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                                         "CQanhAppNameList::AddMetroPackage OUT(0x8007000E)"));
    EXPECT_EQ(Record(), nullptr);
}

// Limits.

TEST_F(AppNameListStore, AFullListIsOutOfMemory)
{
    CQanhAppNameList list(1);
    WriteManifest({"Mail"});
    EXPECT_EQ(list.AddMetroPackage(m_package), S_OK);
    m_package->facts.familyName = L"another";
    const test::LogCapture log;
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

TEST_F(AppNameListStore, RunningOutOfMemoryAddsNothingOrARecord)
{
    m_objects.isQuiet = true;
    WriteManifest({"A display name that is long"});
    std::size_t refused = 0;
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        CQanhAppNameList list;
        HRESULT hr = S_OK;
        bool failed = false;
        {
            const test::AllocationWatch watch(index);
            hr = list.AddMetroPackage(m_package);
            failed = watch.Failed();
        }
        // Within the reader it only costs the application.
        EXPECT_TRUE(hr == S_OK || (failed && hr == E_OUTOFMEMORY)) << index;
        EXPECT_EQ(list.PackageFamilyNames().size(), hr == S_OK ? 1u : 0u) << index;
        refused += hr == E_OUTOFMEMORY ? 1 : 0;
        return failed;
    });
    EXPECT_GT(failures, 8u);
    EXPECT_GT(refused, 4u);
}

TEST_F(AppNameListStore, RunningOutOfMemoryLeavesAKnownOneWhole)
{
    m_objects.isQuiet = true;
    std::size_t refused = 0;
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        CQanhAppNameList list;
        m_package->facts.version.Major = 1;
        WriteManifest({"A display name that is long"});
        EXPECT_EQ(list.AddMetroPackage(m_package), S_OK);
        m_package->facts.version.Major = 2;
        WriteManifest({"Another display name"});
        HRESULT hr = S_OK;
        bool failed = false;
        {
            const test::AllocationWatch watch(index);
            hr = list.AddMetroPackage(m_package);
            failed = watch.Failed();
        }
        const CQanhPackage* record = list.GetPackage(kFamily);
        if (FAILED(hr)) {
            ++refused;
            EXPECT_EQ(record->Version, VersionOf(1, 2, 3, 4)) << index;
            EXPECT_THAT(DisplayNames(record), ElementsAre(L"a display name that is long")) << index;
        } else {
            EXPECT_EQ(record->Version, VersionOf(2, 2, 3, 4)) << index;
        }
        return failed;
    });
    EXPECT_GT(failures, 8u);
    EXPECT_GT(refused, 4u);
}

} // namespace
