// The one display name of a package.

#include "support/Allocations.h"
#include "support/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"

#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace manifest_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DisplayName : public StoreManifest
{
protected:
    HRESULT Get(std::string_view text)
    {
        Write(text);
        return GetName();
    }

    // Gets the name; the result is the one that is logged.
    void ExpectResult(const std::string& logged)
    {
        const test::LogCapture log;
        EXPECT_EQ(GetName(), Result(logged));
        EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(" + logged + ")");
    }
    void ExpectName(const std::optional<std::wstring>& name) const
    {
        ASSERT_EQ(m_name != nullptr, name.has_value());
        if (name) {
            EXPECT_EQ(std::wstring(m_name), *name);
        }
    }
};

struct NameCase
{
    const char* name;
    std::string manifest;
    const char* result;
    std::optional<std::wstring> displayName; // none: nothing is handed out
};

constexpr char kOk[] = "0x00000000";
constexpr char kSeveral[] = "0xA0000002";
constexpr char kFail[] = "0x80004005";

const NameCase kNames[] = {
    {"IsLowered", Manifest(Named("Weather")), kOk, L"weather"},
    {"WithPercentSignsIsNoFormat", Manifest(Named("100%s %d %n")), kOk, L"100%s %d %n"},
    {"OfOtherScriptsStays", Manifest(Named("\xC3\x89t\xC3\x89 \xF0\x9F\x98\x80")), kOk,
     L"\u00c9t\u00c9 \xD83D\xDE00"},
    {"WithAReferenceFurtherOnIsNoResource", Manifest(Named("About ms-resource:A")), kOk,
     L"about ms-resource:a"},

    // Texts of the buffer's length.
    {"Of255CharactersFits", Manifest(Named(std::string(255, 'A'))), kOk, std::wstring(255, L'a')},
    {"Of256CharactersIsCut", Manifest(Named(std::string(256, 'A'))), kOk, std::wstring(255, L'a')},
    {"Of257CharactersIsCut", Manifest(Named(std::string(257, 'A'))), kOk, std::wstring(255, L'a')},
    {"Of5000CharactersIsCut", Manifest(Named(std::string(5000, 'A'))), kOk, std::wstring(255, L'a')},
    {"IsCutBetweenTheHalvesOfASurrogatePairToo", Manifest(Named(std::string(254, 'A') + "\xF0\x9F\x98\x80")),
     kOk, std::wstring(254, L'a') + L'\xD83D'},

    // Which one is taken.
    {"MissingIsAnEmptyTextAndNoFailure", Manifest("<Application><VisualElements/></Application>"),
     "0x00000001", L""},
    {"ThatIsEmptyIsAnEmptyTextToo", Manifest(Named("")), kOk, L""},
    {"OfTwoApplicationsIsNone", Manifest(Named("A") + Named("B")), kSeveral, {}},
    {"OfTwoApplicationsAsksForNoResource", Manifest(Named("ms-resource:A") + Named("B")), kSeveral, {}},
    {"ASecondApplicationCountsWhereverItStands",
     "<Package><Applications>" + Named("A") + "</Applications><Extras><APPLICATION/></Extras></Package>",
     kSeveral,
     {}},
    {"ASecondApplicationCountsAlsoWhenTheFirstHasNoName",
     Manifest("<Application><VisualElements/></Application><Application/>"),
     kSeveral,
     {}},
    {"AnotherElementIsNoSecondApplication", Manifest(Named("A") + "<ApplicationX/><Applications/>"), kOk,
     L"a"},
    {"WithoutVisualElementsOfItsOwnIsTheNextOne", Manifest("<Application/>" + Named("B")), kOk, L"b"},

    {"OfADocumentWithoutApplications", "<Package/>", kFail, {}},
    {"OfADocumentWithoutTheList", "<Package><Application/></Package>", kFail, {}},
    {"OfAnEmptyList", "<Package><Applications/></Package>", kFail, {}},
    {"OfAnApplicationWithNothing", "<Applications><Application/></Applications>", kFail, {}},
    // The reader's own failure does not show between these elements.
    {"OfAFaultInTheList", "<Applications></X>", kFail, {}},
    {"OfAFaultInTheApplication", "<Applications><Application></X>", kFail, {}},
    {"AFaultBeforeTheListIsReturnedAsItIs", "<Package></X>", "0xC00CEE3B", {}},
    {"AFaultBehindTheFirstApplicationDoesNotCount", "<Package><Applications>" + Named("A") + "</X>", kOk,
     L"a"},
};

class DisplayNames : public DisplayName, public ::testing::WithParamInterface<NameCase>
{
};

TEST_P(DisplayNames, AreReadOutOfTheManifest)
{
    Write(GetParam().manifest);
    ExpectResult(GetParam().result);
    ExpectName(GetParam().displayName);
    EXPECT_THAT(m_resources.requests, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(That, DisplayNames, ::testing::ValuesIn(kNames),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(DisplayName, IsATextOf256UnitsForLocalFree)
{
    static UINT s_flags;
    static SIZE_T s_size;
    static decltype(&LocalAlloc) s_original;
    {
        const test::ImportPatch<decltype(&LocalAlloc)> patch("LocalAlloc", [](UINT flags, SIZE_T size) {
            s_flags = flags;
            s_size = size;
            return s_original(flags, size);
        });
        s_original = patch.Original();
        EXPECT_EQ(Get(Manifest(Named("Weather"))), S_OK);
    }
    EXPECT_EQ(s_flags, static_cast<UINT>(LPTR));
    EXPECT_EQ(s_size, 512u);
    EXPECT_EQ(std::wstring(m_name, 256), L"weather" + std::wstring(249, L'\0'));
    EXPECT_EQ(LocalFree(m_name), nullptr);
    m_name = nullptr;
}

TEST_F(DisplayName, WholeLogs)
{
    test::LogCapture log;
    Get(Manifest(Named("Weather")));
    EXPECT_EQ(log.Lines(), Step("CQanhManifestReader::GetAppDisplayName", "OUT(0x00000000)",
                                {Found("Applications"), Found("Application"), Found("VisualElements"),
                                 Value("DisplayName"), NotFound("Application")}));
    log.Clear();
    Get(Manifest(Named("A") + Named("B")));
    EXPECT_EQ(log.Lines(), Step("CQanhManifestReader::GetAppDisplayName", "OUT(0xA0000002)",
                                {Found("Applications"), Found("Application"), Found("VisualElements"),
                                 Value("DisplayName"), Found("Application")}));
    log.Clear();
    // The application is looked for all the same, and nothing behind it.
    Get("<Package/>");
    EXPECT_EQ(log.Lines(), Step("CQanhManifestReader::GetAppDisplayName", "OUT(0x80004005)",
                                {NotFound("Applications"), NotFound("Application")}));
    log.Clear();
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    Get(Manifest(Named("ms-resource:AppName")));
    // The reference is lowered, and the buffer empty, when the resolution begins.
    EXPECT_EQ(log.Lines(),
              Step("CQanhManifestReader::GetAppDisplayName", "OUT(0x00000000)",
                   {Found("Applications"), Found("Application"), Found("VisualElements"),
                    Value("DisplayName"), NotFound("Application"),
                    Converted("ms-resource:appname", {"@{F?ms-resource://N/resources/appname}"}, "My App")}));
}

TEST_F(DisplayName, NullArgumentsLeaveWithoutALine)
{
    Write(Manifest(Named("Weather")));
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppDisplayName(nullptr, &m_name), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppDisplayName(m_store, nullptr), E_POINTER);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_THAT(m_objects.journal, IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                         "CQanhManifestReader::GetAppDisplayName IN"));
}

TEST_F(DisplayName, OfAPackageWhosePathIsTooLong)
{
    m_store->facts.path = L"C:\\" + std::wstring(400, L'x');
    EXPECT_TRUE(FAILED(Get(Manifest(Named("A")))));
    EXPECT_EQ(m_name, nullptr);
}

// Names that are resources.

struct ResourceCase
{
    const char* name;
    const char* reference;
    std::wstring source; // the last one that is asked for
    std::wstring text;   // what that is
    std::wstring displayName;
};

const ResourceCase kResources[] = {
    {"ItsTextAsItIs", "MS-Resource:AppName", L"@{F?ms-resource://N/resources/appname}", L"My App", L"My App"},
    {"TheTextOfTheSecondSource", "ms-resource:/AppName/", L"@{F? ms-resource://N/appname}", L"My App",
     L"My App"},
    {"ATextThatJustFits", "ms-resource:A", L"@{F?ms-resource://N/resources/a}", std::wstring(255, L'X'),
     std::wstring(255, L'X')},
    {"ATextOf256CharactersCut", "ms-resource:A", L"@{F?ms-resource://N/resources/a}", std::wstring(256, L'X'),
     std::wstring(255, L'X')},
    {"ATextOf257CharactersCut", "ms-resource:A", L"@{F?ms-resource://N/resources/a}", std::wstring(257, L'X'),
     std::wstring(255, L'X')},
    {"AReferenceThatIsNotResolvedAgain", "ms-resource:A", L"@{F?ms-resource://N/resources/a}",
     L"MS-Resource:B", L"MS-Resource:B"},
};

class DisplayNameOfAResource : public DisplayName, public ::testing::WithParamInterface<ResourceCase>
{
};

TEST_P(DisplayNameOfAResource, IsTheTextThatTheUserSees)
{
    m_resources.texts[GetParam().source] = GetParam().text;
    EXPECT_EQ(Get(Manifest(Named(GetParam().reference))), S_OK);
    ExpectName(GetParam().displayName);
    ASSERT_FALSE(m_resources.requests.empty());
    EXPECT_EQ(m_resources.requests.back().source, GetParam().source);
    EXPECT_EQ(m_resources.requests.back().buffer, m_name);
    EXPECT_TRUE(m_resources.requests.back().wasEmpty);
}

INSTANTIATE_TEST_SUITE_P(Is, DisplayNameOfAResource, ::testing::ValuesIn(kResources),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(DisplayName, OfAnUnresolvedResourceIsAFailureWithTheBufferHandedOut)
{
    m_resources.leftOver = L"half";
    Write(Manifest(Named("ms-resource:AppName")));
    ExpectResult(kFail);
    ExpectName(L"half");
}

TEST_F(DisplayName, OfAPackageWithoutAFullNameIsNoResource)
{
    m_store->facts.fullName.clear();
    EXPECT_EQ(Get(Manifest(Named("ms-resource:AppName"))), E_FAIL);
    EXPECT_THAT(m_resources.requests, IsEmpty());
    ExpectName(L"");
}

// What fails around it.

TEST_F(DisplayName, WithoutMemoryForTheBuffer)
{
    Write(Manifest(Named("A")));
    const test::ImportPatch<decltype(&LocalAlloc)> patch("LocalAlloc",
                                                         [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    ExpectResult("0x8007000E");
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayName, AnExceptionOfTheReaderOrTheResourcesIsAFailure)
{
    m_resources.onLoad = [] { throw std::runtime_error("of the platform"); };
    EXPECT_EQ(Get(Manifest(Named("ms-resource:A"))), E_FAIL);
    ExpectName(L""); // it was the caller's already
    test::BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Raise("Read", 1); };
    EXPECT_EQ(GetName(), E_FAIL);
}

// What the platform answered is in the line, the result is the same for all of them.
TEST_F(DisplayName, OfAPackageThatDoesNotAnswer)
{
    constexpr HRESULT failureWithoutAText = static_cast<HRESULT>(0xA0000003); // its message is its number
    struct
    {
        const char* call;
        std::optional<std::wstring> displayName; // an empty one when the buffer was the caller's before
    } const cases[] = {{"InstalledLocation", {}}, {"QueryInterface", {}}, {"Path", {}}, {"Id", L""},
                       {"FullName", L""},         {"Name", L""}};
    Write(Manifest(Named("ms-resource:A")));
    for (const auto& [call, displayName] : cases) {
        SCOPED_TRACE(call);
        m_objects.Fail(call, failureWithoutAText, m_objects.Calls(call));
        const test::LogCapture log;
        EXPECT_EQ(GetName(), E_FAIL);
        ExpectName(displayName);
        EXPECT_THAT(m_resources.requests, IsEmpty());
        EXPECT_EQ(log.Lines().size() == 2, !displayName);
        EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0xA0000003)");
    }
}

TEST_F(DisplayName, ThatIsPlainNeedsNoNamesOfThePackage)
{
    m_objects.Fail("Id", E_ACCESSDENIED);
    EXPECT_EQ(Get(Manifest(Named("A"))), S_OK);
    EXPECT_THAT(m_objects.journal, ElementsAre("InstalledLocation", "QueryInterface", "Path"));
}

TEST_F(DisplayName, RunningOutOfMemoryIsAFailure)
{
    m_objects.isQuiet = true;
    m_resources.isQuiet = true;
    m_resources.texts[L"@{F?ms-resource://N/resources/the long key of the name}"] = L"A longer text";
    Write(Manifest(Named("ms-resource:The long key of the name")));
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        const test::Attempt attempt = test::TryWithFailingAllocation(index, [&] { return GetName(); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_FAIL : S_OK) << index;
        return attempt.failed;
    });
    EXPECT_GT(failures, 3u);
}

} // namespace
