// The manifest reader that walks the XML: what becomes of bad arguments, files and documents.

#include "support/Allocations.h"
#include "unit/manifest/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

using namespace manifest_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class ManifestReaderFailures : public ManifestFile
{
protected:
    HRESULT Parse(std::string_view text) { return ManifestFile::Parse(text); }
    HRESULT Parse() { return CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package); }

    // What is read is a beginning of what the whole document holds; the last names may be missing.
    void ExpectPartOf(const std::vector<Names>& whole, const std::string& text) const
    {
        const std::vector<Names> read = NamesOf(m_package);
        ASSERT_LE(read.size(), whole.size()) << text;
        for (std::size_t index = 0; index < read.size(); ++index) {
            const bool isLast = index + 1 == read.size();
            EXPECT_TRUE(read[index].first == whole[index].first || (isLast && read[index].first.empty()))
                << text;
            EXPECT_TRUE(read[index].second == whole[index].second || (isLast && read[index].second.empty()))
                << text;
        }
    }
};

TEST_F(ManifestReaderFailures, NullAndEmptyArguments)
{
    Write(Manifest(Application("A", "B")));
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(nullptr, &m_package), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), nullptr), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(L"", nullptr), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(L"", &m_package), E_INVALIDARG);
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
    const std::string in = "CQanhManifestReader::GetAppNameUsingXmlParser IN";
    const std::string out = "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80004003)";
    EXPECT_THAT(log.Lines(), ElementsAre(in, out, in, out, in, out, in,
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80070057)"));
}

TEST_F(ManifestReaderFailures, AFileThatIsNotThere)
{
    const test::LogCapture log;
    EXPECT_EQ(Parse(), kNotFound);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80070002)"));
}

TEST_F(ManifestReaderFailures, AFolderThatIsNotThere)
{
    const std::wstring path = m_folder / L"none\\AppxManifest.xml";
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(path.c_str(), &m_package),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
}

TEST_F(ManifestReaderFailures, AFileThatSomebodyElseKeepsClosed)
{
    Write(Manifest(Application("A", "B")));
    const HANDLE file =
        CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(Parse(), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    CloseHandle(file);
}

TEST_F(ManifestReaderFailures, AFileThatMayOnlyBeRead)
{
    Write(Manifest(Application("A", "B")));
    SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Parse(), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReaderFailures, NoReader)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.createResult = E_NOINTERFACE;
    const test::LogCapture log;
    EXPECT_EQ(Parse(), E_NOINTERFACE);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80004002)"));
}

TEST_F(ManifestReaderFailures, TheReaderComesBeforeTheFile)
{
    BrokenReader reader;
    reader.createResult = E_NOINTERFACE;
    EXPECT_EQ(Parse(), E_NOINTERFACE); // and not that the file is missing
}

TEST_F(ManifestReaderFailures, AReaderThatDoesNotTakeTheFile)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Answer("SetInput", 0, E_ACCESSDENIED); };
    const test::LogCapture log;
    EXPECT_EQ(Parse(), E_ACCESSDENIED);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80070005)"));
    EXPECT_EQ(reader.Reader().references, 0u);
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestReaderFailures, AReaderThatFailsAtAnyNode)
{
    Write(Manifest(Application("A", "a-tile") + Application("B", "b-tile")));
    const std::vector<Names> whole = {{L"a", L"a-tile"}, {L"b", L"b-tile"}};
    int nodes = 0;
    do {
        CQanhPackage package(L"N", L"F", L"N", {});
        BrokenReader reader;
        reader.prepares = [&](test::ReaderProbe& probe) { probe.Answer("Read", nodes, E_ABORT); };
        const HRESULT hr = CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &package);
        const std::vector<Names> names = NamesOf(package);
        EXPECT_TRUE(std::equal(names.begin(), names.end(), whole.begin())) << nodes;
        EXPECT_EQ(reader.Reader().references, 0u);
        if (reader.Reader().Calls("Read") <= nodes) {
            EXPECT_EQ(hr, S_FALSE);
            EXPECT_EQ(names, whole);
            break;
        }
        EXPECT_EQ(hr, E_ABORT) << nodes;
    } while (++nodes < 100);
    EXPECT_GT(nodes, 15);
}

TEST_F(ManifestReaderFailures, AReaderThatFailsAtAnyAttribute)
{
    // Both elements have an attribute before the one that is wanted.
    const std::string element = "<Application><VisualElements x=\"\" DisplayName=\"A\"/><DefaultTile x=\"\" "
                                "ShortName=\"B\"/></Application>";
    Write(Manifest(element + element));
    for (int index = 0; index < 4; ++index) {
        for (const char* method : {"MoveToFirstAttribute", "MoveToNextAttribute"}) {
            CQanhPackage package(L"N", L"F", L"N", {});
            BrokenReader reader;
            reader.prepares = [&](test::ReaderProbe& probe) { probe.Answer(method, index, E_ABORT); };
            EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &package), E_ABORT);
            EXPECT_EQ(package.Apps().Size(), static_cast<std::size_t>(index / 2)) << method << index;
            EXPECT_EQ(reader.Reader().references, 0u);
        }
    }
}

TEST_F(ManifestReaderFailures, WhatWasAddedBeforeAFaultStays)
{
    const std::string text = "<Package><Applications>" + Application("A", "a-tile") +
                             Application("B", "b-tile") +
                             "<Application></Applicatio></Applications></Package>";
    const test::LogCapture log;
    EXPECT_EQ(Parse(text), kMismatchedTag);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a-tile"), Pair(L"b", L"b-tile")));
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0xC00CEE3B)");
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestReaderFailures, AFaultBeforeTheTileLosesItsApplication)
{
    EXPECT_EQ(Parse("<Package><Applications>" + Application("A", "a-tile") +
                    "<Application><VisualElements DisplayName=\"B\"></X></VisualElements>"),
              kMismatchedTag);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a-tile")));
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
    EXPECT_TRUE(FAILED(Parse("<!DOCTYPE r [<!ENTITY e \"x\">]>" + Manifest(Application("&e;", "B")))));
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
}

// A manifest that is being written, or was cut off by a crash, must never hang or fill a host.

TEST_F(ManifestReaderFailures, ADocumentCutAnywhereEnds)
{
    const std::string text = Manifest("<!-- first -->" + Application("Ab", "a &amp; b") + "\r\n" +
                                      Application("C\xC3\xA9", "ms-resource:D") + "text<![CDATA[x]]>");
    Parse(text);
    const std::vector<Names> whole = NamesOf(m_package);
    ASSERT_EQ(whole.size(), 2u);
    for (std::size_t size = 0; size < text.size(); ++size) {
        m_package.DeleteAllApp();
        Parse(std::string_view(text).substr(0, size));
        ExpectPartOf(whole, text.substr(0, size));
    }
}

TEST_F(ManifestReaderFailures, ADocumentOfOpenElementsEnds)
{
    std::string text = "<Package><Applications>";
    for (int depth = 0; depth < 400; ++depth) {
        text += "<Application><VisualElements DisplayName=\"A\"><DefaultTile ShortName=\"B\">";
    }
    EXPECT_TRUE(FAILED(Parse(text)));
}

TEST_F(ManifestReaderFailures, AListOfApplicationsThatIsFullDoesNotEndTheWalk)
{
    CQanhPackage package(L"N", L"F", L"N", {}, 1);
    Write(Manifest(Application("A", "a-tile") + Application("B", "b-tile")));
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &package), S_FALSE);
    EXPECT_THAT(NamesOf(package), ElementsAre(Pair(L"a", L"a-tile")));
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 4u);
    EXPECT_THAT(std::vector<std::string>(lines.end() - 5, lines.end()),
                ElementsAre("CQanhPackage::AddApplication(b, b-tile) IN",
                            "CQanhPackage::AddApplication OUT(0x8007000E)",
                            "CQanhManifestReader::MoveToElementByName(Application) IN",
                            "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                            "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)"));
}

TEST_F(ManifestReaderFailures, AnExceptionIsAFailure)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe&) { throw std::runtime_error("of the platform"); };
    const test::LogCapture log;
    EXPECT_EQ(Parse(), E_FAIL);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80004005)"));
}

TEST_F(ManifestReaderFailures, AnExceptionInTheMiddleKeepsWhatWasRead)
{
    Write(Manifest(Application("A", "B") + Application("ms-resource:C", "D")));
    BOOL can = TRUE;
    m_resources.onLoad = [] { throw std::runtime_error("of the platform"); };
    EXPECT_EQ(Parse(), E_FAIL);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, &can), E_FAIL);
    EXPECT_EQ(can, FALSE);
    m_resources.onLoad = nullptr;
    BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Raise("Read", 1); };
    EXPECT_EQ(Parse(), E_FAIL);
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, &can), E_FAIL);
}

TEST_F(ManifestReaderFailures, RunningOutOfMemoryIsAFailureOrCostsAnApplication)
{
    m_resources.isQuiet = true;
    m_resources.texts[L"@{F?ms-resource://N/resources/the long key of the name}"] = L"A longer text";
    Write(Manifest(Application("ms-resource:The long key of the name", "A short name that is long") +
                   Application("A plain name of some length", "Another one of some length")));
    const std::wstring path = Path();
    std::size_t raised = 0;
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        CQanhPackage package(L"N", L"F", L"N", {});
        HRESULT hr = S_OK;
        bool failed = false;
        {
            const test::AllocationWatch watch(index);
            hr = CQanhManifestReader::GetAppNameUsingXmlParser(path.c_str(), &package);
            failed = watch.Failed();
        }
        if (!failed) {
            EXPECT_EQ(hr, S_FALSE);
            EXPECT_EQ(package.Apps().Size(), 2u);
        } else if (hr == E_FAIL) {
            ++raised;
        } else {
            // The record of an application could not be made.
            EXPECT_EQ(hr, S_FALSE);
            EXPECT_EQ(package.Apps().Size(), 1u);
        }
        return failed;
    });
    EXPECT_GT(failures, 5u);
    EXPECT_GT(raised, 3u);
    EXPECT_TRUE(IsClosed());
}

} // namespace
