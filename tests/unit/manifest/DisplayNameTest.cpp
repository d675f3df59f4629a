// The one display name of a package.

#include "common/Apartment.h"
#include "support/Allocations.h"
#include "support/FakePackages.h"
#include "unit/manifest/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"
#include "unit/manifest/XmlInputs.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <stdexcept>
#include <string>

namespace {

using namespace manifest_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr HRESULT kSeveral = static_cast<HRESULT>(0xA0000002);
constexpr HRESULT kFailureWithoutAText = static_cast<HRESULT>(0xA0000003); // its message is its number

// An application without a tile: only its display name counts here.
std::string Named(const std::string& displayName)
{
    return "<Application><VisualElements DisplayName=\"" + displayName + "\"/></Application>";
}

class DisplayName : public ManifestFile
{
protected:
    DisplayName() : m_store(m_objects.Make<test::FakePackage>(Facts())) { m_store->AddRef(); }
    ~DisplayName() override
    {
        LocalFree(m_name);
        m_store->Release();
        EXPECT_THAT(m_objects.Leaks(), IsEmpty());
        EXPECT_TRUE(IsClosed() || GetFileAttributesW(Path().c_str()) == INVALID_FILE_ATTRIBUTES);
    }

    HRESULT Get() { return CQanhManifestReader::GetAppDisplayName(m_store, &m_name); }
    HRESULT Get(std::string_view text)
    {
        Write(text);
        return Get();
    }

    const ComApartment m_apartment{CoInitialize(nullptr)}; // the package's
    test::FakeObjects m_objects;
    test::FakePackage* m_store;
    wchar_t* m_name = nullptr;

private:
    test::PackageFacts Facts() const
    {
        test::PackageFacts facts;
        facts.fullName = L"F";
        facts.name = L"N";
        facts.path = m_folder.Path();
        return facts;
    }
};

TEST_F(DisplayName, IsLowered)
{
    EXPECT_EQ(Get(Manifest(Named("Weather"))), S_OK);
    EXPECT_STREQ(m_name, L"weather");
}

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

TEST_F(DisplayName, WholeLog)
{
    Write(Manifest(Named("Weather")));
    const test::LogCapture log;
    Get();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                         "CQanhManifestReader::MoveToElementByName(Applications) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(VisualElements) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::GetAttributeValueByName(DisplayName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAppDisplayName OUT(0x00000000)"));
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

// Texts of the buffer's length.

TEST_F(DisplayName, Of255CharactersFits)
{
    EXPECT_EQ(Get(Manifest(Named(std::string(255, 'A')))), S_OK);
    EXPECT_EQ(std::wstring(m_name), std::wstring(255, L'a'));
}

TEST_F(DisplayName, OfMoreThan255CharactersIsCut)
{
    for (const std::size_t size : {256u, 257u, 5000u}) {
        EXPECT_EQ(Get(Manifest(Named(std::string(size, 'A')))), S_OK);
        EXPECT_EQ(std::wstring(m_name), std::wstring(255, L'a'));
        LocalFree(m_name);
        m_name = nullptr;
    }
}

TEST_F(DisplayName, IsCutBetweenTheHalvesOfASurrogatePairToo)
{
    EXPECT_EQ(Get(Manifest(Named(std::string(254, 'A') + "\xF0\x9F\x98\x80"))), S_OK);
    EXPECT_EQ(std::wstring(m_name), std::wstring(254, L'a') + L'\xD83D');
}

TEST_F(DisplayName, PercentSignsAreNoFormats)
{
    EXPECT_EQ(Get(Manifest(Named("100%s %d %n"))), S_OK);
    EXPECT_STREQ(m_name, L"100%s %d %n");
}

TEST_F(DisplayName, OtherScriptsStay)
{
    EXPECT_EQ(Get(Manifest(Named("\xC3\x89t\xC3\x89 \xF0\x9F\x98\x80"))), S_OK);
    EXPECT_STREQ(m_name, L"\u00c9t\u00c9 \xD83D\xDE00");
}

// Which one is taken.

TEST_F(DisplayName, MissingIsAnEmptyTextAndNoFailure)
{
    Write(Manifest("<Application><VisualElements/></Application>"));
    const test::LogCapture log;
    EXPECT_EQ(Get(), S_FALSE);
    ASSERT_NE(m_name, nullptr);
    EXPECT_STREQ(m_name, L"");
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0x00000001)");
}

TEST_F(DisplayName, ThatIsEmptyIsAnEmptyTextToo)
{
    EXPECT_EQ(Get(Manifest(Named(""))), S_OK);
    ASSERT_NE(m_name, nullptr);
    EXPECT_STREQ(m_name, L"");
}

TEST_F(DisplayName, OfTwoApplicationsIsNone)
{
    Write(Manifest(Named("A") + Named("B")));
    const test::LogCapture log;
    EXPECT_EQ(Get(), kSeveral);
    EXPECT_EQ(m_name, nullptr);
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 12u);
    EXPECT_THAT(std::vector<std::string>(lines.end() - 3, lines.end()),
                ElementsAre("CQanhManifestReader::MoveToElementByName(Application) IN",
                            "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                            "CQanhManifestReader::GetAppDisplayName OUT(0xA0000002)"));
}

TEST_F(DisplayName, ASecondApplicationCountsWhereverItStands)
{
    EXPECT_EQ(Get("<Package><Applications>" + Named("A") +
                  "</Applications><Extras><APPLICATION/></Extras></Package>"),
              kSeveral);
}

TEST_F(DisplayName, ASecondApplicationCountsAlsoWhenTheFirstHasNoName)
{
    EXPECT_EQ(Get(Manifest("<Application><VisualElements/></Application><Application/>")), kSeveral);
}

TEST_F(DisplayName, AnotherElementIsNoSecondApplication)
{
    EXPECT_EQ(Get(Manifest(Named("A") + "<ApplicationX/><Applications/>")), S_OK);
}

TEST_F(DisplayName, WithoutVisualElementsOfItsOwnIsTheNextOne)
{
    EXPECT_EQ(Get(Manifest("<Application/>" + Named("B"))), S_OK);
    EXPECT_STREQ(m_name, L"b");
}

class NoDisplayName : public DisplayName, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(NoDisplayName, IsAFailure)
{
    EXPECT_EQ(Get(GetParam()), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
}

INSTANTIATE_TEST_SUITE_P(In, NoDisplayName,
                         ::testing::Values("<Package/>", "<Package><Application/></Package>",
                                           "<Package><Applications/></Package>",
                                           "<Applications><Application/></Applications>",
                                           // The reader's own failure does not show between these elements.
                                           "<Applications></X>", "<Applications><Application></X>"));

TEST_F(DisplayName, WholeLogOfADocumentWithoutTheList)
{
    // The application is looked for all the same, and nothing behind it.
    Write("<Package/>");
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_FAIL);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                         "CQanhManifestReader::MoveToElementByName(Applications) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAppDisplayName OUT(0x80004005)"));
}

TEST_F(DisplayName, AFaultBeforeTheListIsReturnedAsItIs)
{
    const test::LogCapture log;
    EXPECT_EQ(Get("<Package></X>"), kMismatchedTag);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0xC00CEE3B)");
}

TEST_F(DisplayName, AFaultBehindTheFirstApplicationDoesNotCount)
{
    EXPECT_EQ(Get("<Package><Applications>" + Named("A") + "</X>"), S_OK);
    EXPECT_STREQ(m_name, L"a");
}

TEST_F(DisplayName, AFailureToReadTheAttributeIsReturnedAsItIs)
{
    Write(Manifest(Named("A")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Answer("MoveToFirstAttribute", 0, E_ABORT); };
    EXPECT_EQ(Get(), E_ABORT);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(reader.Reader().references, 0u);
}

TEST_F(DisplayName, ADocumentCutAnywhereEnds)
{
    const std::string text = Manifest(Named("A") + "<!-- x -->text");
    for (std::size_t size = 0; size < text.size(); ++size) {
        Get(std::string_view(text).substr(0, size));
        LocalFree(m_name);
        m_name = nullptr;
    }
}

// The file.

TEST_F(DisplayName, StandsInTheManifestOfThePackagesFolder)
{
    Write(Manifest(Named("A")));
    const XmlInputs inputs;
    EXPECT_EQ(Get(), S_OK);
    EXPECT_THAT(inputs.calls,
                ElementsAre(L"CreateXmlReader(null)",
                            L"SHCreateStreamOnFileW(" + m_store->facts.path + L"\\AppxManifest.xml, 0)"));
}

TEST_F(DisplayName, WithoutAManifest)
{
    const test::LogCapture log;
    EXPECT_EQ(Get(), kNotFound);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                         "CQanhManifestReader::GetAppDisplayName OUT(0x80070002)"));
}

TEST_F(DisplayName, WithoutAReader)
{
    Write(Manifest(Named("A")));
    BrokenReader reader;
    reader.createResult = E_NOINTERFACE;
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_NOINTERFACE);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0x80004002)");
    EXPECT_THAT(m_objects.journal, IsEmpty()) << "the package is asked for its folder later";
}

TEST_F(DisplayName, OfAReaderThatDoesNotTakeTheFile)
{
    Write(Manifest(Named("A")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Answer("SetInput", 0, E_ACCESSDENIED); };
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_ACCESSDENIED);
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0x80070005)");
}

TEST_F(DisplayName, OfAPackageWhosePathIsTooLong)
{
    Write(Manifest(Named("A")));
    m_store->facts.path = L"C:\\" + std::wstring(400, L'x');
    EXPECT_TRUE(FAILED(Get()));
    EXPECT_EQ(m_name, nullptr);
}

// Names that are resources.

TEST_F(DisplayName, OfAResourceIsItsTextAsItIs)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    EXPECT_EQ(Get(Manifest(Named("MS-Resource:AppName"))), S_OK);
    EXPECT_STREQ(m_name, L"My App");
    ASSERT_EQ(m_resources.requests.size(), 1u);
    EXPECT_EQ(m_resources.requests[0].buffer, m_name);
    EXPECT_TRUE(m_resources.requests[0].wasEmpty);
}

TEST_F(DisplayName, OfAResourceMayComeFromTheSecondSource)
{
    m_resources.texts[L"@{F? ms-resource://N/appname}"] = L"My App";
    EXPECT_EQ(Get(Manifest(Named("ms-resource:/AppName/"))), S_OK);
    EXPECT_STREQ(m_name, L"My App");
}

TEST_F(DisplayName, OfAResourceIsCutToTheBuffer)
{
    for (const std::size_t size : {255u, 256u, 257u}) {
        m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = std::wstring(size, L'X');
        EXPECT_EQ(Get(Manifest(Named("ms-resource:A"))), S_OK);
        EXPECT_EQ(std::wstring(m_name), std::wstring(255, L'X'));
        LocalFree(m_name);
        m_name = nullptr;
    }
}

TEST_F(DisplayName, OfAResourceWhoseTextIsAReferenceIsNotResolvedAgain)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = L"MS-Resource:B";
    EXPECT_EQ(Get(Manifest(Named("ms-resource:A"))), S_OK);
    EXPECT_STREQ(m_name, L"MS-Resource:B");
    EXPECT_EQ(m_resources.requests.size(), 1u);
}

TEST_F(DisplayName, WithAReferenceFurtherOnIsNoResource)
{
    EXPECT_EQ(Get(Manifest(Named("About ms-resource:A"))), S_OK);
    EXPECT_STREQ(m_name, L"about ms-resource:a");
    EXPECT_THAT(m_resources.requests, IsEmpty());
}

TEST_F(DisplayName, OfSeveralApplicationsAsksForNoResource)
{
    EXPECT_EQ(Get(Manifest(Named("ms-resource:A") + Named("B"))), kSeveral);
    EXPECT_THAT(m_resources.requests, IsEmpty());
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayName, LogOfAResource)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    Write(Manifest(Named("ms-resource:AppName")));
    const test::LogCapture log;
    Get();
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 15u);
    // The reference is lowered, and the buffer empty, when the resolution begins.
    EXPECT_THAT(
        std::vector<std::string>(lines.begin() + 9, lines.end()),
        ElementsAre("CQanhManifestReader::MoveToElementByName(Application) IN",
                    "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                    "CQanhManifestReader::ConvertMsResourceToString(ms-resource:appname, F, N, , 256) IN",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F?ms-resource://N/resources/appname})",
                    "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = My App)",
                    "CQanhManifestReader::GetAppDisplayName OUT(0x00000000)"));
}

TEST_F(DisplayName, OfAnUnresolvedResourceIsAFailureWithTheBufferHandedOut)
{
    m_resources.leftOver = L"half";
    Write(Manifest(Named("ms-resource:AppName")));
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_FAIL);
    ASSERT_NE(m_name, nullptr);
    EXPECT_STREQ(m_name, L"half");
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0x80004005)");
}

TEST_F(DisplayName, OfAPackageWithoutAFullNameIsNoResource)
{
    m_store->facts.fullName.clear();
    EXPECT_EQ(Get(Manifest(Named("ms-resource:AppName"))), E_FAIL);
    EXPECT_THAT(m_resources.requests, IsEmpty());
    ASSERT_NE(m_name, nullptr);
    EXPECT_STREQ(m_name, L"");
}

// What fails around it.

TEST_F(DisplayName, WithoutMemoryForTheBuffer)
{
    Write(Manifest(Named("A")));
    const test::ImportPatch<decltype(&LocalAlloc)> patch("LocalAlloc",
                                                         [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_OUTOFMEMORY);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0x8007000E)");
}

TEST_F(DisplayName, AnExceptionIsAFailure)
{
    Write(Manifest(Named("A")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe&) { throw std::runtime_error("of the platform"); };
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                         "CQanhManifestReader::GetAppDisplayName OUT(0x80004005)"));
}

TEST_F(DisplayName, AnExceptionOfTheReaderOrTheResourcesIsAFailure)
{
    Write(Manifest(Named("ms-resource:A")));
    m_resources.onLoad = [] { throw std::runtime_error("of the platform"); };
    EXPECT_EQ(Get(), E_FAIL);
    ASSERT_NE(m_name, nullptr) << "it was the caller's already";
    EXPECT_STREQ(m_name, L"");
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Raise("Read", 1); };
    EXPECT_EQ(Get(), E_FAIL);
}

// What the platform answered is in the line, the result is the same for all of them.
TEST_F(DisplayName, OfAPackageThatDoesNotTellItsFolder)
{
    Write(Manifest(Named("A")));
    for (const char* call : {"InstalledLocation", "QueryInterface", "Path"}) {
        m_objects.Fail(call, kFailureWithoutAText, m_objects.Calls(call));
        const test::LogCapture log;
        EXPECT_EQ(Get(), E_FAIL) << call;
        EXPECT_EQ(m_name, nullptr);
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppDisplayName IN",
                                             "CQanhManifestReader::GetAppDisplayName OUT(0xA0000003)"));
    }
}

TEST_F(DisplayName, OfAResourceOfAPackageThatDoesNotTellItsNames)
{
    Write(Manifest(Named("ms-resource:A")));
    for (const char* call : {"Id", "FullName", "Name"}) {
        m_objects.Fail(call, kFailureWithoutAText, m_objects.Calls(call));
        const test::LogCapture log;
        EXPECT_EQ(Get(), E_FAIL) << call;
        EXPECT_THAT(m_resources.requests, IsEmpty());
        EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppDisplayName OUT(0xA0000003)");
        // The buffer was the caller's before.
        ASSERT_NE(m_name, nullptr);
        EXPECT_STREQ(m_name, L"");
        LocalFree(m_name);
        m_name = nullptr;
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
        HRESULT hr = S_OK;
        bool failed = false;
        {
            const test::AllocationWatch watch(index);
            hr = Get();
            failed = watch.Failed();
        }
        EXPECT_EQ(hr, failed ? E_FAIL : S_OK) << index;
        LocalFree(m_name);
        m_name = nullptr;
        return failed;
    });
    EXPECT_GT(failures, 3u);
}

} // namespace
