// The manifest reader that walks the XML: what becomes of bad arguments, files and documents.

#include "support/Allocations.h"
#include "unit/manifest/ManifestFile.h"

namespace {

using namespace manifest_test;

using ManifestReaderFailures = ManifestFile;

TEST_F(ManifestReaderFailures, WhatWasAddedBeforeAFaultStays)
{
    const std::string text = "<Package><Applications>" + Application("A", "a-tile") +
                             Application("B", "b-tile") +
                             "<Application></Applicatio></Applications></Package>";
    const LogCapture log;
    EXPECT_EQ(Parse(text), kMismatchedTag);
    EXPECT_EQ(NamesOf(m_package), (NameList{{L"a", L"a-tile"}, {L"b", L"b-tile"}}));
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0xC00CEE3B)");
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestReaderFailures, FilesThatAreNoXml)
{
    EXPECT_TRUE(FAILED(Parse("")));
    for (const char* text : {"garbage", " <Package/>", "\0", "<", "<>", "MZ\x90\x03\x04\xFF\xFF"}) {
        Parse(text); // ends
        EXPECT_THAT(NamesOf(m_package), IsEmpty()) << text;
    }
}

TEST_F(ManifestReaderFailures, ADocumentTypeIsRefused)
{
    EXPECT_TRUE(FAILED(Parse("<!DOCTYPE r [<!ENTITY e 'x'>]>" + Manifest(Application("&e;", "B")))));
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
}

TEST_F(ManifestReaderFailures, ADocumentOfOpenElementsEnds)
{
    std::string text = "<Package><Applications>";
    for (int depth = 0; depth < 400; ++depth) {
        text += "<Application><VisualElements DisplayName='A'><DefaultTile ShortName='B'>";
    }
    EXPECT_TRUE(FAILED(Parse(text)));
}

TEST_F(ManifestReaderFailures, AListOfApplicationsThatIsFullDoesNotEndTheWalk)
{
    CQanhPackage package(L"N", L"F", L"N", {}, 1);
    Write(Manifest(Application("A", "a-tile") + Application("B", "b-tile")));
    const LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &package), S_FALSE);
    EXPECT_EQ(NamesOf(package), (NameList{{L"a", L"a-tile"}}));
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 4u);
    EXPECT_EQ(Lines(lines.end() - 5, lines.end()),
              Call("CQanhPackage::AddApplication(b, b-tile)", "(0x8007000E)") + NotFound("Application") +
                  Lines{"CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)"});
}

TEST_F(ManifestReaderFailures, RunningOutOfMemoryIsAFailureOrCostsAnApplication)
{
    m_resources.isQuiet = true;
    m_resources.texts[L"@{F?ms-resource://N/resources/the long key of the name}"] = L"A longer text";
    Write(Manifest(Application("ms-resource:The long key of the name", "A short name that is long") +
                   Application("A plain name of some length", "Another one of some length")));
    std::size_t raised = 0;
    const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
        m_package.DeleteAllApp();
        const std::wstring path = Path();
        const Attempt attempt = TryWithFailingAllocation(
            index, [&] { return CQanhManifestReader::GetAppNameUsingXmlParser(path.c_str(), &m_package); });
        if (attempt.failed && attempt.result == E_FAIL) {
            ++raised;
        } else {
            // Otherwise only the record of an application could not be made.
            EXPECT_EQ(attempt.result, S_FALSE);
            EXPECT_EQ(m_package.Apps().Size(), attempt.failed ? 1u : 2u);
        }
        return attempt.failed;
    });
    EXPECT_GT(failures, 5u);
    EXPECT_GT(raised, 3u);
    EXPECT_TRUE(IsClosed());
}

} // namespace
