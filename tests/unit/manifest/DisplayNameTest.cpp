// The one display name of a package.

#include "support/Allocations.h"
#include "support/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"

#include <optional>
#include <stdexcept>

namespace {

using namespace manifest_test;

constexpr char kOk[] = "0x00000000";
constexpr char kSeveral[] = "0xA0000002";
constexpr char kFail[] = "0x80004005";

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
        const LogCapture log;
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
    // A manifest like this, without resources, gives this result and name; none when nothing is handed out.
    void ExpectOf(const char* what, const std::string& manifest, const char* result,
                  const std::optional<std::wstring>& name)
    {
        SCOPED_TRACE(what);
        Write(manifest);
        ExpectResult(result);
        ExpectName(name);
        EXPECT_THAT(m_resources.requests, IsEmpty());
    }
};

TEST_F(DisplayName, IsLoweredAndNoFormat)
{
    ExpectOf("is lowered", Manifest(Named("Weather")), kOk, L"weather");
    ExpectOf("with percent signs is no format", Manifest(Named("100%s %d %n")), kOk, L"100%s %d %n");
    ExpectOf("of other scripts stays", Manifest(Named("\xC3\x89t\xC3\x89 \xF0\x9F\x98\x80")), kOk,
             L"\u00c9t\u00c9 \xD83D\xDE00");
    ExpectOf("with a reference further on is no resource", Manifest(Named("About ms-resource:A")), kOk,
             L"about ms-resource:a");
}

TEST_F(DisplayName, IsCutToTheBuffer)
{
    ExpectOf("of 255 characters fits", Manifest(Named(std::string(255, 'A'))), kOk, std::wstring(255, L'a'));
    for (const std::size_t size : {256u, 257u, 5000u}) {
        const std::string what = "of " + std::to_string(size) + " characters is cut";
        ExpectOf(what.c_str(), Manifest(Named(std::string(size, 'A'))), kOk, std::wstring(255, L'a'));
    }
    ExpectOf("is cut between the halves of a surrogate pair too",
             Manifest(Named(std::string(254, 'A') + "\xF0\x9F\x98\x80")), kOk,
             std::wstring(254, L'a') + L'\xD83D');
}

TEST_F(DisplayName, IsThatOfTheOneApplication)
{
    ExpectOf("missing is an empty text and no failure",
             Manifest("<Application><VisualElements/></Application>"), "0x00000001", L"");
    ExpectOf("that is empty is an empty text too", Manifest(Named("")), kOk, L"");
    ExpectOf("of two applications is none", Manifest(Named("A") + Named("B")), kSeveral, {});
    ExpectOf("of two applications asks for no resource", Manifest(Named("ms-resource:A") + Named("B")),
             kSeveral, {});
    ExpectOf("a second application counts wherever it stands",
             "<Package><Applications>" + Named("A") +
                 "</Applications><Extras><APPLICATION/></Extras></Package>",
             kSeveral, {});
    ExpectOf("a second application counts also when the first has no name",
             Manifest("<Application><VisualElements/></Application><Application/>"), kSeveral, {});
    ExpectOf("another element is no second application",
             Manifest(Named("A") + "<ApplicationX/><Applications/>"), kOk, L"a");
    ExpectOf("without visual elements of its own is the next one", Manifest("<Application/>" + Named("B")),
             kOk, L"b");
}

TEST_F(DisplayName, OfADocumentWithoutAnApplicationOrWithAFault)
{
    ExpectOf("of a document without applications", "<Package/>", kFail, {});
    ExpectOf("of a document without the list", "<Package><Application/></Package>", kFail, {});
    ExpectOf("of an empty list", "<Package><Applications/></Package>", kFail, {});
    ExpectOf("of an application with nothing", "<Applications><Application/></Applications>", kFail, {});
    // The reader's own failure does not show between these elements.
    ExpectOf("of a fault in the list", "<Applications></X>", kFail, {});
    ExpectOf("of a fault in the application", "<Applications><Application></X>", kFail, {});
    ExpectOf("a fault before the list is returned as it is", "<Package></X>", "0xC00CEE3B", {});
    ExpectOf("a fault behind the first application does not count",
             "<Package><Applications>" + Named("A") + "</X>", kOk, L"a");
}

TEST_F(DisplayName, IsATextOf256UnitsForLocalFree)
{
    static UINT s_flags;
    static SIZE_T s_size;
    static decltype(&LocalAlloc) s_original;
    {
        const ImportPatch<decltype(&LocalAlloc)> patch("LocalAlloc", [](UINT flags, SIZE_T size) {
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
    LogCapture log;
    Get(Manifest(Named("Weather")));
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppDisplayName", "(0x00000000)",
                                Found("Applications") + Found("Application") + Found("VisualElements") +
                                    Value("DisplayName") + NotFound("Application")));
    log.Clear();
    Get(Manifest(Named("A") + Named("B")));
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppDisplayName", "(0xA0000002)",
                                Found("Applications") + Found("Application") + Found("VisualElements") +
                                    Value("DisplayName") + Found("Application")));
    log.Clear();
    // The application is looked for all the same, and nothing behind it.
    Get("<Package/>");
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppDisplayName", "(0x80004005)",
                                NotFound("Applications") + NotFound("Application")));
    log.Clear();
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    Get(Manifest(Named("ms-resource:AppName")));
    // The reference is lowered, and the buffer empty, when the resolution begins.
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppDisplayName", "(0x00000000)",
                                Found("Applications") + Found("Application") + Found("VisualElements") +
                                    Value("DisplayName") + NotFound("Application") +
                                    Converted("ms-resource:appname",
                                              {"@{F?ms-resource://N/resources/appname}"}, "My App")));
}

TEST_F(DisplayName, NullArgumentsLeaveWithoutALine)
{
    Write(Manifest(Named("Weather")));
    const LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppDisplayName(nullptr, &m_name), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppDisplayName(m_store, nullptr), E_POINTER);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_THAT(m_objects.journal, IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                         "CQanhManifestReader::GetAppDisplayName IN"));
}

// Names that are resources.

TEST_F(DisplayName, OfAResourceIsTheTextThatTheUserSees)
{
    const auto expectText = [&](const char* what, const char* reference, const std::wstring& lastSource,
                                const std::wstring& text, const std::wstring& displayName) {
        SCOPED_TRACE(what);
        m_resources.texts = {{lastSource, text}};
        EXPECT_EQ(Get(Manifest(Named(reference))), S_OK);
        ExpectName(displayName);
        ASSERT_FALSE(m_resources.requests.empty());
        EXPECT_EQ(m_resources.requests.back().source, lastSource);
        EXPECT_EQ(m_resources.requests.back().buffer, m_name);
        EXPECT_TRUE(m_resources.requests.back().wasEmpty);
    };
    expectText("its text as it is", "MS-Resource:AppName", L"@{F?ms-resource://N/resources/appname}",
               L"My App", L"My App");
    expectText("the text of the second source", "ms-resource:/AppName/", L"@{F? ms-resource://N/appname}",
               L"My App", L"My App");
    expectText("a text that just fits", "ms-resource:A", L"@{F?ms-resource://N/resources/a}",
               std::wstring(255, L'X'), std::wstring(255, L'X'));
    expectText("a reference that is not resolved again", "ms-resource:A", L"@{F?ms-resource://N/resources/a}",
               L"MS-Resource:B", L"MS-Resource:B");
}

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
    const ImportPatch<decltype(&LocalAlloc)> patch("LocalAlloc",
                                                   [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    ExpectResult("0x8007000E");
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayName, AnExceptionOfTheReaderOrTheResourcesIsAFailure)
{
    m_resources.onLoad = [] { throw std::runtime_error("of the platform"); };
    EXPECT_EQ(Get(Manifest(Named("ms-resource:A"))), E_FAIL);
    ExpectName(L""); // it was the caller's already
    BrokenReader reader;
    reader.prepares = [](ReaderProbe& probe) { probe.Raise("Read", 1); };
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
        const LogCapture log;
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
    const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
        const Attempt attempt = TryWithFailingAllocation(index, [&] { return GetName(); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_FAIL : S_OK) << index;
        return attempt.failed;
    });
    EXPECT_GT(failures, 3u);
}

} // namespace
