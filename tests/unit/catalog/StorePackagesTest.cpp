// How Store packages of the system enter the catalogue.

#include "catalog/AppNameList.h"

#include "catalog/ExcludeList.h"
#include "common/RuntimeError.h"
#include "support/FakePackages.h"
#include "support/FakeResources.h"
#include "support/LogCapture.h"
#include "support/Registry.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/catalog/Allocations.h"
#include "unit/catalog/CatalogFile.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr wchar_t kFamily[] = L"Contoso.Mail_8wekyb3d8bbwe";

// A package of the system with a real manifest, and a catalogue.
class StorePackages : public ::testing::Test
{
protected:
    StorePackages() : m_package(m_objects.Make<test::FakePackage>(Facts())) { m_package->AddRef(); }
    ~StorePackages() override
    {
        m_package->Release();
        EXPECT_THAT(m_objects.Leaks(), IsEmpty());
    }

    // A manifest with an application for each name.
    void WriteManifest(const std::vector<std::string>& displayNames, const std::string& tail = "")
    {
        std::string xml = "<Package><Applications>";
        for (const std::string& name : displayNames) {
            xml += "<Application><VisualElements DisplayName=\"" + name + "\"><DefaultTile ShortName=\"s " +
                   name + "\"/></VisualElements></Application>";
        }
        test::WriteFileBytes(m_folder / L"AppxManifest.xml", xml + tail + "</Applications></Package>");
    }

    HRESULT Add() { return m_list.AddMetroPackage(m_package); }
    CQanhPackage* Record(const wchar_t* familyName = kFamily) { return m_list.GetPackage(familyName); }

    static std::vector<std::wstring> DisplayNames(const CQanhPackage* package)
    {
        std::vector<std::wstring> names;
        for (const auto& app : package->Apps()) {
            names.emplace_back(app->DisplayName.c_str());
        }
        return names;
    }
    std::vector<std::wstring> DisplayNames() { return DisplayNames(Record()); }

    static PackageVersion VersionOf(UINT16 major, UINT16 minor, UINT16 build, UINT16 revision)
    {
        PackageVersion version;
        version.Major = major;
        version.Minor = minor;
        version.Build = build;
        version.Revision = revision;
        return version;
    }

    // What a search for "app" must exclude.
    std::vector<std::wstring> Excluded() const
    {
        ExcludeList names;
        BOOL found = FALSE;
        m_list.GetExcludeAppNameList(L"app", &names, &found);
        return test::Names(names);
    }

    // The log without the reader's steps.
    static std::vector<std::string> WithoutSteps(const test::LogCapture& log)
    {
        std::vector<std::string> lines;
        for (const std::string& line : log.Lines()) {
            if (line.find("MoveToElementByName") == std::string::npos &&
                line.find("GetAttributeValueByName") == std::string::npos &&
                line.find("ManifestReaderSetting") == std::string::npos &&
                line.find("GetDWORDRegVal") == std::string::npos) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    test::TemporaryFolder m_folder;
    test::ScopedKey m_settings{HKEY_LOCAL_MACHINE, test::kSettingsKey};
    test::FakeResources m_resources;
    test::FakeObjects m_objects;
    test::FakePackage* m_package;
    CQanhAppNameList m_list;

private:
    test::PackageFacts Facts() const
    {
        test::PackageFacts facts;
        facts.path = m_folder.Path();
        return facts;
    }
};

TEST_F(StorePackages, ANewOneIsAddedWithItsApplications)
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

TEST_F(StorePackages, NewOnesFollowThoseThatAreThere)
{
    test::LoadText(m_list, "<r><Package PackageFamilyName=\"a\"/><Package PackageFamilyName=\"b\"/></r>");
    EXPECT_EQ(Add(), S_OK);
    EXPECT_STREQ(m_list.PackageFamilyNames().back().c_str(), kFamily);
}

TEST_F(StorePackages, WholeLogOfANewOne)
{
    WriteManifest({"Mail"});
    const test::LogCapture log;
    Add();
    EXPECT_THAT(WithoutSteps(log), ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                                               "CQanhAppNameList::GetPackage(Contoso.Mail_8wekyb3d8bbwe) IN",
                                               "CQanhAppNameList::GetPackage OUT",
                                               "CQanhManifestReader::AddAppsToPackage IN",
                                               "CQanhManifestReader::LoadSetting IN",
                                               "CQanhManifestReader::LoadSetting OUT",
                                               "CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                               "CQanhPackage::AddApplication(mail, s mail) IN",
                                               "CQanhPackage::AddApplication OUT(0x00000000)",
                                               "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)",
                                               "CQanhManifestReader::AddAppsToPackage OUT(0x00000001)",
                                               "CQanhAppNameList::AddMetroPackage IN",
                                               "CQanhAppNameList::AddMetroPackage OUT(0x00000000)",
                                               "CQanhAppNameList::AddMetroPackage OUT(0x00000000)"));
}

TEST_F(StorePackages, NullIsRefused)
{
    const test::LogCapture log;
    EXPECT_EQ(m_list.AddMetroPackage(static_cast<platform::IPackage*>(nullptr)), E_POINTER);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhAppNameList::AddMetroPackage IN",
                                         "CQanhAppNameList::AddMetroPackage OUT(0x80004003)"));
}

// The manifest of a new one.

TEST_F(StorePackages, ANewOneWithoutAManifestIsAddedWithoutApplications)
{
    EXPECT_EQ(Add(), S_OK);
    ASSERT_NE(Record(), nullptr);
    EXPECT_THAT(DisplayNames(), IsEmpty());
}

TEST_F(StorePackages, ANewOneWithABrokenManifestKeepsWhatWasRead)
{
    WriteManifest({"Mail"}, "</X>");
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
}

TEST_F(StorePackages, ANewOneWithUnresolvedNamesIsAddedWithTheReferences)
{
    WriteManifest({"ms-resource:Name"});
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"ms-resource:name"));
}

TEST_F(StorePackages, ResourcesAreThoseOfThePackage)
{
    WriteManifest({"ms-resource:Name"});
    m_resources.texts[L"@{Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe?ms-resource://Contoso.Mail/resources/name}"] =
        L"Post";
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"Post"));
}

TEST_F(StorePackages, TheSystemsReaderIsUsedWhenItIsSet)
{
    WriteManifest({"Mail"});
    m_settings.SetDword(L"ManifestReaderSetting", 0);
    const test::ImportPatch<decltype(&CoCreateInstance)> patch(
        "CoCreateInstance",
        [](REFCLSID, IUnknown*, DWORD, REFIID, void**) -> HRESULT { return REGDB_E_CLASSNOTREG; });
    const test::LogCapture log;
    EXPECT_EQ(Add(), S_OK); // what the reader returns is only logged
    EXPECT_THAT(DisplayNames(), IsEmpty());
    EXPECT_THAT(log.Lines(), ::testing::Contains("CQanhManifestReader::AddAppsToPackage OUT(0x80040154)"));
}

TEST_F(StorePackages, ThePathOfTheManifestHas259CharactersAtMost)
{
    // A folder in which the name of the manifest just fits, and one that is a character longer.
    for (const std::size_t length : {242u, 243u}) {
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
        m_package->facts.familyName = length == 242 ? L"fits" : L"too long";
        EXPECT_EQ(Add(), S_OK);
    }
    EXPECT_THAT(DisplayNames(Record(L"fits")), ElementsAre(L"app"));
    EXPECT_THAT(DisplayNames(Record(L"too long")), IsEmpty());
}

TEST_F(StorePackages, AFamilyNameInOtherLettersIsAnotherPackage)
{
    Add();
    m_package->facts.familyName = L"CONTOSO.Mail_8wekyb3d8bbwe";
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(m_list.PackageFamilyNames().size(), 2u);
}

// One that is known.

TEST_F(StorePackages, TheSameVersionIsLeftAlone)
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

class ChangedVersion : public StorePackages, public ::testing::WithParamInterface<VersionChange>
{
};

TEST_P(ChangedVersion, IsReadAnew)
{
    WriteManifest({"Mail", "Calendar"});
    Add();
    Record()->IsInstalled = FALSE;
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

TEST_F(StorePackages, WholeLogOfAChangedOne)
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
                            "CQanhManifestReader::AddAppsToPackage IN",
                            "CQanhManifestReader::LoadSetting IN", "CQanhManifestReader::LoadSetting OUT",
                            "CQanhManifestReader::GetAppNameUsingXmlParser IN",
                            "CQanhPackage::AddApplication(mail, s mail) IN",
                            "CQanhPackage::AddApplication OUT(0x00000000)",
                            "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)",
                            "CQanhManifestReader::AddAppsToPackage OUT(0x00000001)",
                            "CQanhAppNameList::AddMetroPackage OUT(0x00000001)"));
}

// Build and revision trade places when the file is read.
TEST_F(StorePackages, AVersionFromTheFileIsChangedWhenBuildAndRevisionDiffer)
{
    WriteManifest({"Mail"});
    test::LoadText(m_list, "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"1.2.3.4\"/></r>");
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
    EXPECT_STREQ(Record()->Name.c_str(), L"Contoso.Mail");
}

TEST_F(StorePackages, AVersionFromTheFileIsKnownWhenBuildAndRevisionAreTheSame)
{
    WriteManifest({"Mail"});
    m_package->facts.version = {6, 2, 7, 7};
    test::LoadText(m_list, "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"6.2.7.7\"/></r>");
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(DisplayNames(), IsEmpty());
    EXPECT_STREQ(Record()->Name.c_str(), L"");
}

TEST_F(StorePackages, AReservedOneIsNeverRefreshed)
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

// A changed one whose names cannot be had.

TEST_F(StorePackages, UnresolvedNamesKeepTheRecordButForItsTwoNames)
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

TEST_F(StorePackages, AMissingManifestKeepsTheRecordAndIsReported)
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

TEST_F(StorePackages, ABrokenManifestKeepsTheRecordAndIsReported)
{
    WriteManifest({"Mail"});
    Add();
    m_package->facts.version.Major = 2;
    WriteManifest({"Post"}, "</X>");
    EXPECT_EQ(Add(), static_cast<HRESULT>(0xC00CEE3B));
    EXPECT_EQ(Record()->Version, VersionOf(1, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), ElementsAre(L"mail"));
}

// One that does not answer.

class SilentPackage : public StorePackages, public ::testing::WithParamInterface<const char*>
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
            const std::string message = test::ToUtf8(RuntimeError(E_ACCESSDENIED).Message());
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

// Limits.

TEST_F(StorePackages, AFullListIsOutOfMemory)
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

TEST_F(StorePackages, AFullListOfApplicationsKeepsTheFirstOnes)
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

TEST_F(StorePackages, RunningOutOfMemoryAddsNothingOrARecord)
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

TEST_F(StorePackages, RunningOutOfMemoryLeavesAKnownOneWhole)
{
    m_objects.isQuiet = true;
    std::size_t refused = 0;
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        CQanhAppNameList list;
        m_package->facts.version.Major = 1;
        WriteManifest({"A display name that is long"});
        list.AddMetroPackage(m_package);
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

// A launch on another thread.

TEST_F(StorePackages, ALaunchNeverSeesANewOneHalfRead)
{
    WriteManifest({"App X", "ms-resource:Name", "App Z"});
    std::vector<std::wstring> meanwhile = {L"not asked"};
    // The resource is read when the first application is there already.
    m_resources.onLoad = [&] { meanwhile = Excluded(); };
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(meanwhile, IsEmpty());
    EXPECT_THAT(Excluded(), ElementsAre(L"app x", L"s app x", L"app z", L"s app z"));
}

TEST_F(StorePackages, ALaunchSeesTheOldNamesUntilTheNewOnesAreComplete)
{
    WriteManifest({"App X"});
    Add();
    WriteManifest({"App B", "ms-resource:Name", "App D"});
    m_package->facts.version.Major = 2;
    m_resources
        .texts[L"@{Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe?ms-resource://Contoso.Mail/resources/name}"] =
        L"app Y";
    std::vector<std::vector<std::wstring>> meanwhile;
    m_resources.onLoad = [&] { meanwhile.push_back(Excluded()); };
    EXPECT_EQ(Add(), S_FALSE);
    // Once in the check of the names, once in the reading of them.
    EXPECT_EQ(meanwhile.size(), 2u);
    for (const auto& names : meanwhile) {
        EXPECT_THAT(names, ElementsAre(L"app x", L"s app x"));
    }
    EXPECT_THAT(Excluded(),
                ElementsAre(L"app b", L"s app b", L"app Y", L"app d", L"s app d"));
}

TEST_F(StorePackages, LaunchesBesideChangesSeeOneVersionOrTheOther)
{
    WriteManifest({"App A1", "App A2"});
    Add();
    std::atomic<bool> isOver = false;
    std::atomic<int> torn = 0;
    std::atomic<int> looks = 0;
    std::thread launches([&] {
        while (!isOver) {
            const auto names = Excluded();
            const bool isWhole =
                names == std::vector<std::wstring>{L"app a1", L"s app a1", L"app a2", L"s app a2"} ||
                names == std::vector<std::wstring>{L"app b1", L"s app b1", L"app b2", L"s app b2"};
            torn += isWhole ? 0 : 1;
            ++looks;
        }
    });
    for (UINT16 change = 1; change <= 40 || looks < 40; ++change) {
        m_package->facts.version.Major = static_cast<UINT16>(change + 1);
        WriteManifest(change % 2 != 0 ? std::vector<std::string>{"App B1", "App B2"}
                                      : std::vector<std::string>{"App A1", "App A2"});
        EXPECT_EQ(Add(), S_FALSE);
    }
    isOver = true;
    launches.join();
    EXPECT_EQ(torn, 0);
}

} // namespace
