// What the operations that walk the XML of a manifest have in common: how they open it, and what becomes of a
// manifest that cannot be opened or read.

#include "support/BrokenReader.h"
#include "support/DocumentedReaderInstead.h"
#include "support/XmlInputs.h"
#include "unit/manifest/ManifestFile.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace {

using namespace manifest_test;

// The parameter is the operation's name.
class ManifestWalk : public StoreManifest, public WithParamInterface<std::string>
{
protected:
    [[nodiscard]] static bool IsParser() { return GetParam() == "GetAppNameUsingXmlParser"; }
    [[nodiscard]] static bool IsCheck() { return GetParam() == "IsCanGetAppNameFromManifest"; }

    HRESULT Walk() { return IsParser() || IsCheck() ? Walk(Path().c_str(), &m_package) : GetName(); }
    // One of the two that walk all applications.
    HRESULT Walk(const wchar_t* path, CQanhPackage* pPackage)
    {
        m_can = 7;
        return IsParser() ? CQanhManifestReader::GetAppNameUsingXmlParser(path, pPackage)
                          : CQanhManifestReader::IsCanGetAppNameFromManifest(path, pPackage, &m_can);
    }

    // Walks, and expects nothing but this failure.
    void ExpectFailure(const std::string& logged)
    {
        const LogCapture log;
        EXPECT_EQ(Walk(), Result(logged));
        EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::" + GetParam(), "(" + logged + ")"));
        ExpectNothing();
    }
    void ExpectNothing() const
    {
        EXPECT_THAT(NamesOf(m_package), IsEmpty());
        EXPECT_EQ(m_can, IsCheck() ? 0 : 7);
        EXPECT_EQ(m_name, nullptr);
    }

    BOOL m_can = 7; // neither true nor false: shows that it was set
};

INSTANTIATE_TEST_SUITE_P(Of, ManifestWalk,
                         Values("GetAppNameUsingXmlParser", "IsCanGetAppNameFromManifest",
                                "GetAppDisplayName"),
                         [](const auto& each) { return each.param; });

TEST_P(ManifestWalk, OpensTheFileForReadingOnly)
{
    Write(Manifest(Application("A", "B")));
    const XmlInputs inputs;
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
    BrokenReader reader;
    reader.createResult = E_NOINTERFACE;
    ExpectFailure("0x80004002"); // and not that the file is missing
    Write(Manifest(Application("A", "B")));
    ExpectFailure("0x80004002");
    EXPECT_THAT(m_objects.journal, IsEmpty()) << "the package is asked for its folder later";
}

TEST_P(ManifestWalk, FailsWhenTheReaderDoesNotTakeTheFile)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](ReaderProbe& probe) { probe.Answer("SetInput", 0, E_ACCESSDENIED); };
    ExpectFailure("0x80070005");
    EXPECT_EQ(reader.Reader().references, 0u);
    EXPECT_TRUE(IsClosed());
}

TEST_P(ManifestWalk, MakesAFailureOfAnException)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](ReaderProbe&) { throw std::runtime_error("of the platform"); };
    ExpectFailure("0x80004005");
}

TEST_P(ManifestWalk, ReturnsAFailureToReadAnAttributeAsItIs)
{
    Write(Manifest(Application("A", "B")));
    BrokenReader reader;
    reader.prepares = [](ReaderProbe& probe) { probe.Answer("MoveToFirstAttribute", 0, E_ABORT); };
    EXPECT_EQ(Walk(), E_ABORT);
    ExpectNothing();
    EXPECT_EQ(reader.Reader().references, 0u);
}

// A manifest that is being written, or was cut off by a crash, must never hang or fill a host.
TEST_P(ManifestWalk, EndsWhereverTheDocumentIsCut)
{
    const std::string text = Manifest("<!-- first -->" + Application("Ab", "a &amp; b") + "\r\n" +
                                      Application("C\xC3\xA9", "ms-resource:D") + "text<![CDATA[x]]>");
    const NameList whole = {{L"ab", L"a & b"}, {L"c\u00e9", L"ms-resource:d"}};
    for (const bool isDocumented : {false, true}) {
        std::optional<DocumentedReaderInstead> reader;
        if (isDocumented) {
            reader.emplace();
        }
        for (std::size_t size = 0; size < text.size(); ++size) {
            const std::string cut = text.substr(0, size);
            SCOPED_TRACE(cut);
            m_package.DeleteAllApp();
            Write(cut);
            const HRESULT hr = Walk();
            EXPECT_EQ(m_can != 7, IsCheck());
            // How many elements have a complete start tag that ends like this.
            const auto complete = [&](const char* end) { return Split(cut, end).size() - 1; };
            NameList names = whole;
            names.resize(IsParser() ? complete("\"allLogos\"/>") : 0);
            EXPECT_EQ(NamesOf(m_package), names);
            const bool hasName = complete("\"logo.png\">") > 0 && complete("Id=\"App\">") < 2;
            EXPECT_EQ(m_name != nullptr, !IsParser() && !IsCheck() && hasName);
            // The reader in use may take the end of the file for the end of the document.
            if (isDocumented && IsParser()) {
                EXPECT_EQ(hr, static_cast<HRESULT>(0xC00CEE01));
            }
            if (isDocumented && IsCheck()) {
                EXPECT_EQ(m_can, 0);
            }
        }
    }
}

// Those that walk all applications.
class ManifestWholeWalk : public ManifestWalk
{
protected:
    // What was added, of applications that only the one of the two adds.
    void ExpectAdded(const NameList& names) const
    {
        EXPECT_EQ(NamesOf(m_package), IsParser() ? names : NameList());
    }
};

INSTANTIATE_TEST_SUITE_P(Of, ManifestWholeWalk,
                         Values("GetAppNameUsingXmlParser", "IsCanGetAppNameFromManifest"),
                         [](const auto& each) { return each.param; });

TEST_P(ManifestWholeWalk, ChecksItsArguments)
{
    Write(Manifest(Application("A", "B")));
    const LogCapture log;
    EXPECT_EQ(Walk(nullptr, &m_package), E_POINTER);
    EXPECT_EQ(Walk(Path().c_str(), nullptr), E_POINTER);
    EXPECT_EQ(Walk(L"", nullptr), E_POINTER);
    EXPECT_EQ(Walk(L"", &m_package), E_INVALIDARG);
    EXPECT_NE(m_can, 1);
    ExpectAdded({});
    const auto refused = Call("CQanhManifestReader::" + GetParam(), "(0x80004003)");
    EXPECT_EQ(log.Lines(),
              refused + refused + refused + Call("CQanhManifestReader::" + GetParam(), "(0x80070057)"));
}

TEST_P(ManifestWholeWalk, EndsWithTheReadersFailureAtAnyNode)
{
    Write(Manifest(Application("A", "a-tile") + Application("B", "b-tile")));
    const NameList whole = {{L"a", L"a-tile"}, {L"b", L"b-tile"}};
    HRESULT hr = E_ABORT;
    int nodes = 0;
    for (; hr == E_ABORT && nodes < 100; ++nodes) {
        SCOPED_TRACE(nodes);
        m_package.DeleteAllApp();
        BrokenReader reader;
        reader.prepares = [&](ReaderProbe& probe) { probe.Answer("Read", nodes, E_ABORT); };
        hr = Walk();
        EXPECT_EQ(hr, reader.Reader().Calls("Read") <= nodes ? S_FALSE : E_ABORT);
        EXPECT_EQ(m_can, !IsCheck() ? 7 : hr == S_FALSE ? 1 : 0);
        const NameList names = NamesOf(m_package);
        EXPECT_TRUE(std::equal(names.begin(), names.end(), whole.begin()));
        EXPECT_EQ(reader.Reader().references, 0u);
    }
    ExpectAdded(whole);
    EXPECT_GT(nodes, 15);
}

TEST_P(ManifestWholeWalk, EndsWithTheReadersFailureAtAnyAttribute)
{
    // Both elements have an attribute before the one that is wanted.
    const std::string element = "<Application><VisualElements x='' DisplayName='A'/><DefaultTile x='' "
                                "ShortName='B'/></Application>";
    Write(Manifest(element + element));
    for (int index = 0; index < 4; ++index) {
        for (const char* method : {"MoveToFirstAttribute", "MoveToNextAttribute"}) {
            SCOPED_TRACE(method + std::to_string(index));
            m_package.DeleteAllApp();
            BrokenReader reader;
            reader.prepares = [&](ReaderProbe& probe) { probe.Answer(method, index, E_ABORT); };
            EXPECT_EQ(Walk(), E_ABORT);
            ExpectAdded(index < 2 ? NameList() : NameList{{L"a", L"b"}});
            EXPECT_EQ(m_can, IsCheck() ? 0 : 7);
            EXPECT_EQ(reader.Reader().references, 0u);
        }
    }
}

TEST_P(ManifestWholeWalk, KeepsWhatWasReadBeforeAnException)
{
    Write(Manifest(Application("A", "B") + Application("ms-resource:C", "D")));
    m_resources.onLoad = [] { throw std::runtime_error("of the platform"); };
    EXPECT_EQ(Walk(), E_FAIL);
    ExpectAdded({{L"a", L"b"}});
    EXPECT_EQ(m_can, IsCheck() ? 0 : 7);
}

} // namespace
