// What the operations that walk the XML of a manifest have in common: how they open it, and what becomes of a
// manifest that cannot be opened or read.

#include "support/BrokenReader.h"
#include "support/XmlInputs.h"
#include "unit/manifest/ManifestFile.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace {

using namespace manifest_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The parameter is the operation's name.
class ManifestWalk : public StoreManifest, public ::testing::WithParamInterface<std::string>
{
protected:
    HRESULT Walk()
    {
        if (GetParam() == "GetAppDisplayName") {
            return GetName();
        }
        return GetParam() == "GetAppNameUsingXmlParser"
                   ? Parse()
                   : CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, &m_can);
    }

    // Walks, and expects nothing but this failure.
    void ExpectFailure(const std::string& logged)
    {
        const test::LogCapture log;
        EXPECT_EQ(Walk(), Result(logged));
        EXPECT_EQ(log.Lines(), Step("CQanhManifestReader::" + GetParam(), "OUT(" + logged + ")"));
        ExpectNothing();
    }
    void ExpectNothing() const
    {
        EXPECT_THAT(NamesOf(m_package), IsEmpty());
        EXPECT_EQ(m_can, GetParam() == "IsCanGetAppNameFromManifest" ? 0 : 7);
        EXPECT_EQ(m_name, nullptr);
    }

    BOOL m_can = 7; // neither true nor false: shows that it was set
};

INSTANTIATE_TEST_SUITE_P(Of, ManifestWalk,
                         ::testing::Values("GetAppNameUsingXmlParser", "IsCanGetAppNameFromManifest",
                                           "GetAppDisplayName"),
                         [](const auto& each) { return each.param; });

TEST_P(ManifestWalk, OpensTheFileForReadingOnly)
{
    Write(Manifest(Application("A", "B")));
    const test::XmlInputs inputs;
    EXPECT_TRUE(SUCCEEDED(Walk()));
    EXPECT_THAT(inputs.calls,
                ElementsAre(L"CreateXmlReader(null)", L"SHCreateStreamOnFileW(" + Path() + L", 0)"));
    EXPECT_TRUE(IsClosed());
}

TEST_P(ManifestWalk, FailsWithoutAFile)
{
    ExpectFailure("0x80070002");
}

TEST_P(ManifestWalk, FailsWithoutAReaderAndLooksForNoFileThen)
{
    test::BrokenReader reader;
    reader.createResult = E_NOINTERFACE;
    ExpectFailure("0x80004002"); // and not that the file is missing
    Write(Manifest(Application("A", "B")));
    ExpectFailure("0x80004002");
    EXPECT_THAT(m_objects.journal, IsEmpty()) << "the package is asked for its folder later";
}

TEST_P(ManifestWalk, FailsWhenTheReaderDoesNotTakeTheFile)
{
    Write(Manifest(Application("A", "B")));
    test::BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Answer("SetInput", 0, E_ACCESSDENIED); };
    ExpectFailure("0x80070005");
    EXPECT_EQ(reader.Reader().references, 0u);
    EXPECT_TRUE(IsClosed());
}

TEST_P(ManifestWalk, MakesAFailureOfAnException)
{
    Write(Manifest(Application("A", "B")));
    test::BrokenReader reader;
    reader.prepares = [](test::ReaderProbe&) { throw std::runtime_error("of the platform"); };
    ExpectFailure("0x80004005");
}

TEST_P(ManifestWalk, ReturnsAFailureToReadAnAttributeAsItIs)
{
    Write(Manifest(Application("A", "B")));
    test::BrokenReader reader;
    reader.prepares = [](test::ReaderProbe& probe) { probe.Answer("MoveToFirstAttribute", 0, E_ABORT); };
    EXPECT_EQ(Walk(), E_ABORT);
    ExpectNothing();
    EXPECT_EQ(reader.Reader().references, 0u);
}

// A manifest that is being written, or was cut off by a crash, must never hang or fill a host.
TEST_P(ManifestWalk, EndsWhereverTheDocumentIsCut)
{
    const std::string text = Manifest("<!-- first -->" + Application("Ab", "a &amp; b") + "\r\n" +
                                      Application("C\xC3\xA9", "ms-resource:D") + "text<![CDATA[x]]>");
    Write(text);
    Walk();
    const NameList whole = NamesOf(m_package);
    ASSERT_EQ(whole.size(), GetParam() == "GetAppNameUsingXmlParser" ? 2u : 0u);
    for (std::size_t size = 0; size < text.size(); ++size) {
        SCOPED_TRACE(text.substr(0, size));
        m_package.DeleteAllApp();
        m_can = 7;
        Write(text.substr(0, size));
        Walk();
        EXPECT_EQ(m_can == 7, GetParam() != "IsCanGetAppNameFromManifest");
        // What is read is a beginning of what the whole document holds; the last names may be missing.
        const NameList read = NamesOf(m_package);
        ASSERT_LE(read.size(), whole.size());
        for (std::size_t index = 0; index < read.size(); ++index) {
            const bool isLast = index + 1 == read.size();
            EXPECT_TRUE(read[index].first == whole[index].first || (isLast && read[index].first.empty()));
            EXPECT_TRUE(read[index].second == whole[index].second || (isLast && read[index].second.empty()));
        }
    }
}

} // namespace
