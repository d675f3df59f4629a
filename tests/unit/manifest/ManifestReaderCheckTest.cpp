// Whether every name of a manifest can be had now.

#include "support/Allocations.h"
#include "unit/manifest/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"
#include "unit/manifest/XmlInputs.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace {

using namespace manifest_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ManifestCheck : public ManifestFile
{
protected:
    ~ManifestCheck() override
    {
        // Whatever comes of it, no application is added.
        EXPECT_EQ(m_package.Apps().Size(), 0u);
    }

    HRESULT Check()
    {
        return CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, &m_can);
    }
    HRESULT Check(std::string_view text)
    {
        Write(text);
        return Check();
    }

    BOOL m_can = 7; // neither true nor false: shows that it was set
};

TEST_F(ManifestCheck, PlainNamesCanBeHad)
{
    EXPECT_EQ(Check(Manifest(Application("A", "a-tile") + Application("B", "b-tile"))), S_FALSE);
    EXPECT_EQ(m_can, 1);
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestCheck, ResolvedResourcesCanBeHad)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/name}"] = L"My App";
    m_resources.texts[L"@{F?ms-resource://N/short}"] = L"App";
    EXPECT_EQ(Check(Manifest(Application("ms-resource:Name", "ms-resource:///Short"))), S_FALSE);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, NothingToReadCanBeHad)
{
    EXPECT_EQ(Check(Manifest("")), S_FALSE);
    EXPECT_EQ(m_can, 1);
    m_can = 7;
    EXPECT_EQ(Check("<Package/>"), S_FALSE);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, MissingNamesCanBeHad)
{
    EXPECT_EQ(Check(Manifest("<Application/>")), S_FALSE);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, AnUnresolvedDisplayNameEndsTheWalkAtOnce)
{
    Write(Manifest(Application("ms-resource:Name", "ms-resource:Short") + Application("B", "b-tile")));
    const test::LogCapture log;
    EXPECT_EQ(Check(), S_OK);
    EXPECT_EQ(m_can, 0);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhManifestReader::IsCanGetAppNameFromManifest IN",
                    "CQanhManifestReader::MoveToElementByName(Applications) IN",
                    "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                    "CQanhManifestReader::MoveToElementByName(Application) IN",
                    "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                    "CQanhManifestReader::MoveToElementByName(VisualElements) IN",
                    "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                    "CQanhManifestReader::GetAttributeValueByName(DisplayName) IN",
                    "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                    "CQanhManifestReader::ConvertMsResourceToString(ms-resource:name, F, N, , 256) IN",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F?ms-resource://N/resources/name})",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F? ms-resource://N/name})",
                    "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = )",
                    "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x00000000)"));
}

TEST_F(ManifestCheck, AnUnresolvedShortNameEndsTheWalkAtOnce)
{
    EXPECT_EQ(Check(Manifest(Application("A", "ms-resource:Short") + Application("ms-resource:B", "b"))),
              S_OK);
    EXPECT_EQ(m_can, 0);
    EXPECT_THAT(m_resources.Sources(),
                ElementsAre(L"@{F?ms-resource://N/resources/short}", L"@{F? ms-resource://N/short}"));
}

TEST_F(ManifestCheck, AnUnresolvedNameOfALaterApplicationCounts)
{
    EXPECT_EQ(Check(Manifest(Application("A", "a-tile") + Application("B", "ms-resource:Short"))), S_OK);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, ATextThatIsAReferenceItselfIsUnresolvedWhateverItsCase)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/name}"] = L"MS-Resource:Other";
    EXPECT_EQ(Check(Manifest(Application("ms-resource:Name", "B"))), S_OK);
    EXPECT_EQ(m_can, 0);
    EXPECT_EQ(m_resources.requests.size(), 1u);
}

TEST_F(ManifestCheck, ATextWithAReferenceFurtherOnIsResolved)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/name}"] = L"About ms-resource:Other";
    EXPECT_EQ(Check(Manifest(Application("ms-resource:Name", "B"))), S_FALSE);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, APackageWithoutNamesHasNoResources)
{
    CQanhPackage package(L"N", {1, 2, 3, 4}, FALSE, TRUE);
    Write(Manifest(Application("ms-resource:Name", "B")));
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &package, &m_can), S_OK);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, WholeLogOfOneApplication)
{
    Write(Manifest(Application("A", "B")));
    const test::LogCapture log;
    Check();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::IsCanGetAppNameFromManifest IN",
                                         "CQanhManifestReader::MoveToElementByName(Applications) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(VisualElements) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::GetAttributeValueByName(DisplayName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(DefaultTile) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::GetAttributeValueByName(ShortName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x00000001)"));
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
    const std::string in = "CQanhManifestReader::IsCanGetAppNameFromManifest IN";
    const std::string out = "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x80004003)";
    EXPECT_THAT(log.Lines(), ElementsAre(in, out, in, out, in, out, in,
                                         "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x80070057)"));
}

TEST_F(ManifestCheck, AFileThatIsNotThere)
{
    const test::LogCapture log;
    EXPECT_EQ(Check(), kNotFound);
    EXPECT_EQ(m_can, 0);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::IsCanGetAppNameFromManifest IN",
                                         "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x80070002)"));
}

TEST_F(ManifestCheck, NoReader)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.createResult = E_NOINTERFACE;
    EXPECT_EQ(Check(), E_NOINTERFACE);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, AReaderThatDoesNotTakeTheFile)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Answer("SetInput", 0, E_ACCESSDENIED); };
    EXPECT_EQ(Check(), E_ACCESSDENIED);
    EXPECT_EQ(m_can, 0);
    EXPECT_EQ(reader.Reader().references, 0u);
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestCheck, OpensTheFileForReadingOnly)
{
    Write(Manifest(Application("A", "B")));
    const XmlInputs inputs;
    EXPECT_EQ(Check(), S_FALSE);
    EXPECT_THAT(inputs.calls,
                ElementsAre(L"CreateXmlReader(null)", L"SHCreateStreamOnFileW(" + Path() + L", 0)"));
}

TEST_F(ManifestCheck, TheAnswerIsNoUntilTheWalkIsOver)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/name}"] = L"My App";
    m_resources.onLoad = [&] { EXPECT_EQ(m_can, 0); };
    BrokenReader reader;
    reader.prepares = [&](test::ReaderProbe&) { EXPECT_EQ(m_can, 0); };
    EXPECT_EQ(Check(Manifest(Application("A", "B") + Application("C", "ms-resource:Name"))), S_FALSE);
    EXPECT_EQ(m_resources.requests.size(), 1u);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, AnUnresolvedNameLeavesNothingOpen)
{
    EXPECT_EQ(Check(Manifest(Application("ms-resource:Name", "B"))), S_OK);
    EXPECT_TRUE(IsClosed());
    EXPECT_EQ(Check(Manifest(Application("A", "ms-resource:Short"))), S_OK);
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestCheck, AReferenceStaysUnresolvedWhateverIsLeftInItsBuffer)
{
    m_resources.leftOver = L"half a text";
    EXPECT_EQ(Check(Manifest(Application("ms-resource:Name", "B"))), S_OK);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, AReaderThatFailsAtAnyAttribute)
{
    Write(Manifest("<Application><VisualElements x=\"\" DisplayName=\"A\"/><DefaultTile x=\"\" "
                   "ShortName=\"B\"/></Application>"));
    for (int index = 0; index < 2; ++index) {
        for (const char* method : {"MoveToFirstAttribute", "MoveToNextAttribute"}) {
            m_can = 7;
            BrokenReader reader;
            reader.prepares = [&](test::ReaderProbe& probe) { probe.Answer(method, index, E_ABORT); };
            EXPECT_EQ(Check(), E_ABORT) << method << index;
            EXPECT_EQ(m_can, 0) << method << index;
        }
    }
}

TEST_F(ManifestCheck, AnExceptionIsAFailure)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe&) { throw std::runtime_error("of the platform"); };
    const test::LogCapture log;
    EXPECT_EQ(Check(), E_FAIL);
    EXPECT_EQ(m_can, 0);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::IsCanGetAppNameFromManifest IN",
                                         "CQanhManifestReader::IsCanGetAppNameFromManifest OUT(0x80004005)"));
}

TEST_F(ManifestCheck, AFaultInTheDocument)
{
    EXPECT_EQ(Check("<Package><Applications>" + Application("A", "B") + "</X>"), kMismatchedTag);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, AReaderThatFailsAtAnyNode)
{
    Write(Manifest(Application("A", "B")));
    int nodes = 0;
    do {
        m_can = 7;
        BrokenReader reader;
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

TEST_F(ManifestCheck, ADocumentCutAnywhereEnds)
{
    const std::string text = Manifest(Application("A", "B") + "text" + Application("C", "D"));
    for (std::size_t size = 0; size < text.size(); ++size) {
        m_can = 7;
        Check(std::string_view(text).substr(0, size));
        EXPECT_NE(m_can, 7) << text.substr(0, size);
    }
}

TEST_F(ManifestCheck, RunningOutOfMemoryIsAFailure)
{
    m_resources.isQuiet = true;
    m_resources.texts[L"@{F?ms-resource://N/resources/the long key of the name}"] = L"A longer text";
    Write(Manifest(Application("ms-resource:The long key of the name", "A short name that is long")));
    const std::wstring path = Path();
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        HRESULT hr = S_OK;
        bool failed = false;
        {
            const test::AllocationWatch watch(index);
            hr = CQanhManifestReader::IsCanGetAppNameFromManifest(path.c_str(), &m_package, &m_can);
            failed = watch.Failed();
        }
        EXPECT_EQ(hr, failed ? E_FAIL : S_FALSE) << index;
        EXPECT_EQ(m_can, failed ? 0 : 1) << index;
        return failed;
    });
    EXPECT_GT(failures, 3u);
    EXPECT_TRUE(IsClosed());
}

} // namespace
