// What becomes of Store packages that the catalogue knows already.

#include "unit/catalog/AppNameListStore.h"

#include "unit/catalog/CatalogFile.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace store_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(AppNameListStore, TheSameVersionIsLeftAlone)
{
    WriteManifest({"Mail"});
    Add();
    WriteManifest({"Other"});
    m_package->facts.fullName = L"another full name";
    m_package->facts.name = L"another name";
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                            "CQanhAppNameList::GetPackage(Contoso.Mail_8wekyb3d8bbwe) IN",
                            "CQanhPackage::IsThisPackage(Contoso.Mail_8wekyb3d8bbwe) IN",
                            "CQanhPackage::IsThisPackage OUT(1)", "CQanhAppNameList::GetPackage OUT",
                            "CQanhAppNameList::AddMetroPackage OUT(0x00000000)"));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
    EXPECT_STREQ(Record()->FullName.c_str(), L"Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe");
    EXPECT_STREQ(Record()->Name.c_str(), L"Contoso.Mail");
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 1u);
}

struct VersionChange
{
    const char* part;
    platform::PackageVersion version;
};

class ChangedVersion : public AppNameListStore, public ::testing::WithParamInterface<VersionChange>
{
};

TEST_P(ChangedVersion, IsReadAnew)
{
    WriteManifest({"Mail", "Calendar"});
    Add();
    m_list.SetPackagesInstalled({FALSE});
    const CQanhPackage* record = Record();
    WriteManifest({"Post", "People", "Photos"});
    const platform::PackageVersion version = GetParam().version;
    m_package->facts.version = version;
    m_package->facts.fullName = L"another full name";
    m_package->facts.name = L"another name";
    EXPECT_EQ(Add(), S_FALSE); // what the check of the names returned
    EXPECT_EQ(Record(), record);
    EXPECT_EQ(record->Version, VersionOf(version.Major, version.Minor, version.Build, version.Revision));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"post", L"people", L"photos"));
    EXPECT_STREQ(record->FullName.c_str(), L"another full name");
    EXPECT_STREQ(record->Name.c_str(), L"another name");
    EXPECT_STREQ(record->PackageFamilyName.c_str(), kFamily);
    EXPECT_FALSE(record->NeedReserve);
    EXPECT_FALSE(record->IsInstalled);
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 1u);
    // Now it is known.
    WriteManifest({"Unread"});
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"post", L"people", L"photos"));
}

INSTANTIATE_TEST_SUITE_P(In, ChangedVersion,
                         ::testing::Values(VersionChange{"Major", {2, 2, 3, 4}},
                                           VersionChange{"Minor", {1, 0, 3, 4}},
                                           VersionChange{"Build", {1, 2, 65535, 4}},
                                           VersionChange{"Revision", {1, 2, 3, 0}},
                                           VersionChange{"BuildAndRevisionTraded", {1, 2, 4, 3}}),
                         [](const auto& each) { return std::string(each.param.part); });

TEST_F(AppNameListStore, WholeLogOfAChangedOne)
{
    WriteManifest({"Mail"});
    Add();
    m_package->facts.version.Major = 2;
    const test::LogCapture log;
    Add();
    EXPECT_THAT(WithoutSteps(log),
                ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                            "CQanhAppNameList::GetPackage(Contoso.Mail_8wekyb3d8bbwe) IN",
                            "CQanhPackage::IsThisPackage(Contoso.Mail_8wekyb3d8bbwe) IN",
                            "CQanhPackage::IsThisPackage OUT(1)", "CQanhAppNameList::GetPackage OUT",
                            "CQanhManifestReader::IsCanGetAppNameFromManifest IN",
                            "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x00000001)",
                            "CQanhPackage::DeleteAllApp IN", "CQanhPackage::DeleteAllApp OUT",
                            "CQanhManifestReader::AddAppsToPackage IN", "CQanhManifestReader::LoadSetting IN",
                            "CQanhManifestReader::LoadSetting OUT",
                            "CQanhManifestReader::GetAppNameUsingXmlParser IN",
                            "CQanhPackage::AddApplication(mail, s mail) IN",
                            "CQanhPackage::AddApplication OUT(0x00000000)",
                            "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)",
                            "CQanhManifestReader::AddAppsToPackage OUT(0x00000001)",
                            "CQanhAppNameList::AddMetroPackage OUT(0x00000001)"));
}

// Build and revision trade places when the file is read.
TEST_F(AppNameListStore, AVersionFromTheFileIsChangedWhenBuildAndRevisionDiffer)
{
    WriteManifest({"Mail"});
    test::LoadText(m_list,
                   "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"1.2.3.4\"/></r>");
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
    EXPECT_STREQ(Record()->Name.c_str(), L"Contoso.Mail");
}

TEST_F(AppNameListStore, AVersionFromTheFileIsKnownWhenBuildAndRevisionAreTheSame)
{
    WriteManifest({"Mail"});
    m_package->facts.version = {6, 2, 7, 7};
    test::LoadText(m_list,
                   "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"6.2.7.7\"/></r>");
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), IsEmpty());
    EXPECT_STREQ(Record()->Name.c_str(), L"");
}

TEST_F(AppNameListStore, AReservedOneIsNeverRefreshed)
{
    WriteManifest({"Mail"});
    test::LoadText(m_list, "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"0.0.0.1\" "
                           "NeedReserve=\"1\"><MetroApp DisplayName=\"Reserved\"/></Package></r>");
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(WithoutSteps(log).size(), 6u);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"Reserved"));
    EXPECT_STREQ(Record()->FullName.c_str(), L"");
    EXPECT_STREQ(Record()->Name.c_str(), L"");
    EXPECT_EQ(Record()->Version, VersionOf(0, 0, 1, 0));
}

// The names are checked with the one reader and read with the other: what comes of the reading is not told.
TEST_F(AppNameListStore, AChangedOneThatCannotBeReadAfterTheCheckHasNoApplications)
{
    WriteManifest({"Mail"});
    Add();
    m_package->facts.version.Major = 2;
    m_settings.SetDword(L"ManifestReaderSetting", 0);
    const test::ImportPatch<decltype(&CoCreateInstance)> patch(
        "CoCreateInstance",
        [](REFCLSID, IUnknown*, DWORD, REFIID, void**) -> HRESULT { return REGDB_E_CLASSNOTREG; });
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_THAT(LinesFrom("CQanhManifestReader::AddAppsToPackage OUT", log),
                ElementsAre("CQanhManifestReader::AddAppsToPackage OUT(0x80040154)",
                            "CQanhAppNameList::AddMetroPackage Error (0x80040154)",
                            "CQanhAppNameList::AddMetroPackage OUT(0x00000001)"));
    EXPECT_EQ(Record()->Version, VersionOf(2, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), IsEmpty());
}

// A changed one whose names cannot be had.

TEST_F(AppNameListStore, UnresolvedNamesKeepTheRecordButForItsTwoNames)
{
    WriteManifest({"Mail"});
    Add();
    WriteManifest({"Post", "ms-resource:Name"});
    m_package->facts.version.Major = 2;
    m_package->facts.fullName = L"another full name";
    m_package->facts.name = L"another name";
    EXPECT_EQ(Add(), S_OK); // the check ended at a name, without a failure
    EXPECT_EQ(Record()->Version, VersionOf(1, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
    EXPECT_STREQ(Record()->FullName.c_str(), L"another full name");
    EXPECT_STREQ(Record()->Name.c_str(), L"another name");
    // The names that were updated are those that the resources are looked for with.
    EXPECT_EQ(m_resources.requests.back().source, L"@{another full name? ms-resource://another name/name}");

    // It is tried again each time, until they can be resolved.
    m_resources.texts[L"@{another full name? ms-resource://another name/name}"] = L"Name";
    m_resources.texts[L"@{another full name? ms-resource://another name/s ms-resource:name}"] = L"x";
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_EQ(Record()->Version, VersionOf(2, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"post", L"Name"));
}

TEST_F(AppNameListStore, AMissingManifestKeepsTheRecordAndIsReported)
{
    WriteManifest({"Mail"});
    Add();
    m_package->facts.version.Major = 2;
    m_package->facts.name = L"another name";
    DeleteFileW((m_folder / L"AppxManifest.xml").c_str());
    const test::LogCapture log;
    EXPECT_EQ(Add(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(log.Lines().back(), "CQanhAppNameList::AddMetroPackage OUT(0x80070002)");
    EXPECT_EQ(Record()->Version, VersionOf(1, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
    EXPECT_STREQ(Record()->Name.c_str(), L"another name");
}

TEST_F(AppNameListStore, ABrokenManifestKeepsTheRecordAndIsReported)
{
    WriteManifest({"Mail"});
    Add();
    m_package->facts.version.Major = 2;
    WriteManifest({"Post"}, "</X>");
    EXPECT_EQ(Add(), static_cast<HRESULT>(0xC00CEE3B));
    EXPECT_EQ(Record()->Version, VersionOf(1, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
}

} // namespace
