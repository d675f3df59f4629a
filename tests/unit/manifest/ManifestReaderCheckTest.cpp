// Whether every name of a manifest can be had now.

#include "support/Allocations.h"
#include "support/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

namespace {

using namespace manifest_test;

class ManifestCheck : public ManifestFile
{
protected:
    ~ManifestCheck() override
    {
        // Whatever comes of it, no application is added.
        EXPECT_EQ(m_package.Apps().Size(), 0u);
        EXPECT_TRUE(IsClosed());
    }

    HRESULT Check()
    {
        m_can = 7;
        return CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, &m_can);
    }
    HRESULT Check(std::string_view text)
    {
        Write(text);
        return Check();
    }

    BOOL m_can = 7; // neither true nor false: shows that it was set
};

struct CheckCase
{
    const char* name;
    std::string manifest;
    HRESULT result;
    BOOL can;
    std::vector<std::wstring> sources = {}; // of resources that are asked for
};

const CheckCase kCases[] = {
    {"PlainNames", Manifest(Application("A", "a-tile") + Application("B", "b-tile")), S_FALSE, 1},
    {"ResolvedResources",
     Manifest(Application("ms-resource:Name", "ms-resource:///Short")),
     S_FALSE,
     1,
     {L"@{F?ms-resource://N/resources/name}", L"@{F?ms-resource://N/short}"}},
    {"AnEmptyList", Manifest(""), S_FALSE, 1},
    {"NoList", "<Package/>", S_FALSE, 1},
    {"MissingNames", Manifest("<Application/>"), S_FALSE, 1},
    {"AnUnresolvedDisplayNameThatEndsTheWalkAtOnce",
     Manifest(Application("ms-resource:None", "ms-resource:Short") + Application("B", "b-tile")),
     S_OK,
     0,
     {L"@{F?ms-resource://N/resources/none}", L"@{F? ms-resource://N/none}"}},
    {"AnUnresolvedShortNameThatEndsTheWalkAtOnce",
     Manifest(Application("A", "ms-resource:None") + Application("ms-resource:B", "b")),
     S_OK,
     0,
     {L"@{F?ms-resource://N/resources/none}", L"@{F? ms-resource://N/none}"}},
    {"AnUnresolvedNameOfALaterApplication",
     Manifest(Application("A", "a-tile") + Application("B", "ms-resource:None")),
     S_OK,
     0,
     {L"@{F?ms-resource://N/resources/none}", L"@{F? ms-resource://N/none}"}},
    {"ATextThatIsAReferenceItselfWhateverItsCase",
     Manifest(Application("ms-resource:Reference", "B")),
     S_OK,
     0,
     {L"@{F?ms-resource://N/resources/reference}"}},
    {"ATextWithAReferenceFurtherOn",
     Manifest(Application("ms-resource:About", "B")),
     S_FALSE,
     1,
     {L"@{F?ms-resource://N/resources/about}"}},
    {"AFaultInTheDocument", "<Package><Applications>" + Application("A", "B") + "</X>",
     static_cast<HRESULT>(0xC00CEE3B), 0},
};

class ManifestCheckOf : public ManifestCheck, public ::testing::WithParamInterface<CheckCase>
{
};

TEST_P(ManifestCheckOf, TellsWhetherEveryNameCanBeHad)
{
    m_resources.texts = {{L"@{F?ms-resource://N/resources/name}", L"My App"},
                         {L"@{F?ms-resource://N/short}", L"App"},
                         {L"@{F?ms-resource://N/resources/reference}", L"MS-Resource:Other"},
                         {L"@{F?ms-resource://N/resources/about}", L"About ms-resource:Other"}};
    // A reference stays unresolved whatever is left in its buffer.
    for (const auto& leftOver :
         {std::optional<std::wstring>(), std::optional<std::wstring>(L"half a text")}) {
        m_resources.leftOver = leftOver;
        m_resources.requests.clear();
        EXPECT_EQ(Check(GetParam().manifest), GetParam().result);
        EXPECT_EQ(m_can, GetParam().can);
        EXPECT_EQ(m_resources.Sources(), GetParam().sources);
        EXPECT_TRUE(IsClosed());
    }
}

INSTANTIATE_TEST_SUITE_P(That, ManifestCheckOf, ::testing::ValuesIn(kCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(ManifestCheck, APackageWithoutNamesHasNoResources)
{
    CQanhPackage package(L"N", {1, 2, 3, 4}, FALSE, TRUE);
    Write(Manifest(Application("ms-resource:Name", "B")));
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &package, &m_can), S_OK);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, WholeLogs)
{
    test::LogCapture log;
    Check(Manifest(Application("A", "B")));
    EXPECT_EQ(log.Lines(), Step("CQanhManifestReader::IsCanGetAppNameFromManifest", "OUT(0x00000001)",
                                {Found("Applications"), Found("Application"), Found("VisualElements"),
                                 Value("DisplayName"), Found("DefaultTile"), Value("ShortName"),
                                 NotFound("Application")}));
    log.Clear();
    Check(Manifest(Application("ms-resource:Name", "ms-resource:Short") + Application("B", "b-tile")));
    EXPECT_EQ(
        log.Lines(),
        Step("CQanhManifestReader::IsCanGetAppNameFromManifest", "OUT(0x00000000)",
             {Found("Applications"), Found("Application"), Found("VisualElements"), Value("DisplayName"),
              Converted("ms-resource:name",
                        {"@{F?ms-resource://N/resources/name}", "@{F? ms-resource://N/name}"}, "")}));
}

TEST_F(ManifestCheck, NullAndEmptyArguments)
{
    Write(Manifest(""));
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(nullptr, &m_package, &m_can), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), nullptr, &m_can), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, nullptr),
              E_POINTER);
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(L"", &m_package, &m_can), E_INVALIDARG);
    EXPECT_NE(m_can, 1);
    const auto refused = Step("CQanhManifestReader::IsCanGetAppNameFromManifest", "OUT(0x80004003)");
    EXPECT_EQ(log.Lines(),
              test::Log({refused, refused, refused,
                         Step("CQanhManifestReader::IsCanGetAppNameFromManifest", "OUT(0x80070057)")}));
}

TEST_F(ManifestCheck, TheAnswerIsNoUntilTheWalkIsOver)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/name}"] = L"My App";
    m_resources.onLoad = [&] { EXPECT_EQ(m_can, 0); };
    test::BrokenReader reader;
    reader.prepares = [&](test::ReaderProbe&) { EXPECT_EQ(m_can, 0); };
    EXPECT_EQ(Check(Manifest(Application("A", "B") + Application("C", "ms-resource:Name"))), S_FALSE);
    EXPECT_EQ(m_resources.requests.size(), 1u);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, AReaderThatFailsAtAnyAttribute)
{
    Write(Manifest("<Application><VisualElements x=\"\" DisplayName=\"A\"/><DefaultTile x=\"\" "
                   "ShortName=\"B\"/></Application>"));
    for (int index = 0; index < 2; ++index) {
        for (const char* method : {"MoveToFirstAttribute", "MoveToNextAttribute"}) {
            test::BrokenReader reader;
            reader.prepares = [&](test::ReaderProbe& probe) { probe.Answer(method, index, E_ABORT); };
            EXPECT_EQ(Check(), E_ABORT) << method << index;
            EXPECT_EQ(m_can, 0) << method << index;
        }
    }
}

TEST_F(ManifestCheck, AReaderThatFailsAtAnyNode)
{
    Write(Manifest(Application("A", "B")));
    int nodes = 0;
    do {
        test::BrokenReader reader;
        reader.prepares = [&](test::ReaderProbe& probe) { probe.Answer("Read", nodes, E_ABORT); };
        const HRESULT hr = Check();
        EXPECT_EQ(reader.Reader().references, 0u);
        if (reader.Reader().Calls("Read") <= nodes) {
            EXPECT_EQ(hr, S_FALSE);
            EXPECT_EQ(m_can, 1);
            break;
        }
        EXPECT_EQ(hr, E_ABORT) << nodes;
        EXPECT_EQ(m_can, 0) << nodes;
    } while (++nodes < 100);
    EXPECT_GT(nodes, 10);
}

TEST_F(ManifestCheck, RunningOutOfMemoryIsAFailure)
{
    m_resources.isQuiet = true;
    m_resources.texts[L"@{F?ms-resource://N/resources/the long key of the name}"] = L"A longer text";
    Write(Manifest(Application("ms-resource:The long key of the name", "A short name that is long")));
    const std::wstring path = Path();
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        const test::Attempt attempt = test::TryWithFailingAllocation(index, [&] {
            return CQanhManifestReader::IsCanGetAppNameFromManifest(path.c_str(), &m_package, &m_can);
        });
        EXPECT_EQ(attempt.result, attempt.failed ? E_FAIL : S_FALSE) << index;
        EXPECT_EQ(m_can, attempt.failed ? 0 : 1) << index;
        return attempt.failed;
    });
    EXPECT_GT(failures, 3u);
}

} // namespace
