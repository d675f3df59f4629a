// What becomes of Store packages that the catalogue knows already.

#include "unit/catalog/AppNameListStore.h"

#include <shlwapi.h>

#include <optional>
#include <string_view>

namespace {

using namespace store_test;

TEST_F(AppNameListStore, TheSameVersionIsLeftAlone)
{
    WriteManifest({"Mail"});
    Add();
    WriteManifest({"Other"});
    Rename();
    const LogCapture log;
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(log.Lines(), Adding("(0x00000000)", Known()));
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail"});
}

struct VersionChange
{
    const char* part;
    platform::PackageVersion version;
};

class ChangedVersion : public AppNameListStore, public WithParamInterface<VersionChange>
{
};

TEST_P(ChangedVersion, IsReadAnew)
{
    WriteManifest({"Mail", "Calendar"});
    Add();
    m_list.SetPackagesInstalled({FALSE});
    const CQanhPackage* record = Record();
    WriteManifest({"Post", "People", "Photos"});
    m_package->facts.version = GetParam().version;
    Rename();
    EXPECT_EQ(Add(), S_FALSE); // what the check of the names returned
    EXPECT_EQ(Record(), record);
    const auto [major, minor, build, revision] = GetParam().version;
    const RecordVersion version = VersionOf(major, minor, build, revision);
    ExpectRecord(version, {L"post", L"people", L"photos"}, L"another full name", L"another name");
    EXPECT_FALSE(record->NeedReserve);
    EXPECT_FALSE(record->IsInstalled);
    // Now it is known.
    WriteManifest({"Unread"});
    EXPECT_EQ(Add(), S_OK);
    ExpectRecord(version, {L"post", L"people", L"photos"}, L"another full name", L"another name");
}

INSTANTIATE_TEST_SUITE_P(In, ChangedVersion,
                         Values(VersionChange{"Major", {2, 2, 3, 4}}, VersionChange{"Minor", {1, 0, 3, 4}},
                                VersionChange{"Build", {1, 2, 65535, 4}},
                                VersionChange{"Revision", {1, 2, 3, 0}},
                                VersionChange{"BuildAndRevisionTraded", {1, 2, 4, 3}}),
                         [](const auto& each) { return std::string(each.param.part); });

TEST_F(AppNameListStore, WholeLogOfAChangedOne)
{
    AddAndChangeVersion();
    const LogCapture log;
    Add();
    EXPECT_EQ(WithoutSteps(log),
              Adding("(0x00000001)", Known(),
                     Call("CQanhManifestReader::IsCanGetAppNameFromManifest", "(0x00000001)") +
                         Call("CQanhPackage::DeleteAllApp") + ReadingMail()));
}

// Build and revision trade places when the file is read.
TEST_F(AppNameListStore, AVersionFromTheFileIsChangedWhenBuildAndRevisionDiffer)
{
    WriteManifest({"Mail"});
    LoadText(m_list,
             "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"1.2.3.4\"/></r>");
    EXPECT_EQ(Add(), S_FALSE);
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail"});
}

TEST_F(AppNameListStore, AVersionFromTheFileIsKnownWhenBuildAndRevisionAreTheSame)
{
    WriteManifest({"Mail"});
    m_package->facts.version = {6, 2, 7, 7};
    LoadText(m_list,
             "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"6.2.7.7\"/></r>");
    EXPECT_EQ(Add(), S_OK);
    ExpectRecord(VersionOf(6, 2, 7, 7), {}, L"", L"");
}

TEST_F(AppNameListStore, AReservedOneIsNeverRefreshed)
{
    WriteManifest({"Mail"});
    LoadText(m_list, "<r><Package PackageFamilyName=\"Contoso.Mail_8wekyb3d8bbwe\" Version=\"0.0.0.1\" "
                     "NeedReserve=\"1\"><MetroApp DisplayName=\"Reserved\"/></Package></r>");
    const LogCapture log;
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(log.Lines(), Adding("(0x00000000)", Known()));
    ExpectRecord(VersionOf(0, 0, 1, 0), {L"Reserved"}, L"", L"");
}

// The names are checked with the one reader and read with the other: what comes of the reading is not told.
TEST_F(AppNameListStore, AChangedOneThatCannotBeReadAfterTheCheckHasNoApplications)
{
    AddAndChangeVersion();
    BreakTheSystemsReader();
    const LogCapture log;
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_THAT(LinesFrom("CQanhManifestReader::AddAppsToPackage OUT", log),
                ElementsAre("CQanhManifestReader::AddAppsToPackage OUT(0x80040154)",
                            "CQanhAppNameList::AddMetroPackage Error (0x80040154)",
                            "CQanhAppNameList::AddMetroPackage OUT(0x00000001)"));
    ExpectRecord(VersionOf(2, 2, 3, 4), {});
}

// A changed one whose names cannot be had.

TEST_F(AppNameListStore, UnresolvedNamesKeepTheRecordButForItsTwoNames)
{
    AddAndChangeVersion();
    WriteManifest({"Post", "ms-resource:Name"});
    Rename();
    EXPECT_EQ(Add(), S_OK); // the check ended at a name, without a failure
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail"}, L"another full name", L"another name");
    // The names that were updated are those that the resources are looked for with.
    EXPECT_EQ(m_resources.requests.back().source, L"@{another full name? ms-resource://another name/name}");

    // It is tried again each time, until they can be resolved.
    m_resources.texts[L"@{another full name? ms-resource://another name/name}"] = L"Name";
    m_resources.texts[L"@{another full name? ms-resource://another name/s ms-resource:name}"] = L"x";
    EXPECT_EQ(Add(), S_FALSE);
    ExpectRecord(VersionOf(2, 2, 3, 4), {L"post", L"Name"}, L"another full name", L"another name");
}

// What is read of a new version takes the place of the old one without any memory, also while records of a
// file are not in the index yet.
TEST_F(AppNameListStore, ANewVersionTakesItsPlaceWhenNoMemoryIsLeft)
{
    AddAndChangeVersion();
    const std::wstring file = m_folder / L"records.xml";
    WriteFileBytes(file, "<r><Package PackageFamilyName='a_1'/></r>");
    HRESULT result = E_UNEXPECTED;
    bool failed = true;
    {
        // The manifest can be checked, but no longer be read, and there is no memory for what is next.
        std::optional<AllocationWatch> noMemory;
        int readings = 0;
        const CapturingPatch<decltype(&SHCreateStreamOnFileW)> files(
            "SHCreateStreamOnFileW", [&](const wchar_t* path, DWORD mode, IStream** stream) -> HRESULT {
                if (!std::wstring_view(path).ends_with(L"AppxManifest.xml") || ++readings == 1) {
                    return files.Original(path, mode, stream);
                }
                EXPECT_EQ(m_list.Load(file.c_str()), S_FALSE);
                noMemory.emplace(0);
                return E_ACCESSDENIED;
            });
        result = Add();
        ASSERT_TRUE(noMemory);
        failed = noMemory->Failed();
    }
    EXPECT_FALSE(failed);
    EXPECT_EQ(result, S_FALSE);
    ASSERT_NE(Record(), nullptr);
    EXPECT_EQ(Record()->Version, VersionOf(2, 2, 3, 4));
    EXPECT_THAT(DisplayNames(), IsEmpty());
}

TEST_F(AppNameListStore, AMissingOrBrokenManifestKeepsTheRecordAndIsReported)
{
    AddAndChangeVersion();
    Rename();
    DeleteFileW((m_folder / L"AppxManifest.xml").c_str());
    const LogCapture log;
    EXPECT_EQ(Add(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(log.Lines().back(), "CQanhAppNameList::AddMetroPackage OUT(0x80070002)");
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail"}, L"another full name", L"another name");
    WriteManifest({"Post"}, "</X>");
    EXPECT_EQ(Add(), static_cast<HRESULT>(0xC00CEE3B));
    ExpectRecord(VersionOf(1, 2, 3, 4), {L"mail"}, L"another full name", L"another name");
}

} // namespace
