// The two steps that every walk over a manifest is made of.

#include "support/ReaderProbe.h"
#include "unit/manifest/ManifestFile.h"

#include <shlwapi.h>

#include <wrl/client.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <string>

namespace {

using Microsoft::WRL::ComPtr;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Until the end of the scope a reader does not tell the name of the node at the call of this index (0 is the
// first). One at a time.
class NamelessNode
{
public:
    NamelessNode(IXmlReader* reader, int index)
        : m_reader(reinterpret_cast<void***>(reader)), m_original(*m_reader)
    {
        s_original = reinterpret_cast<Function>(m_original[kGetLocalName]);
        s_left = index;
        std::copy_n(m_original, kMethods, m_methods.begin());
        m_methods[kGetLocalName] = reinterpret_cast<void*>(GetLocalName);
        *m_reader = m_methods.data();
    }
    ~NamelessNode() { *m_reader = m_original; }
    NamelessNode(const NamelessNode&) = delete;
    NamelessNode& operator=(const NamelessNode&) = delete;

private:
    using Function = HRESULT(STDMETHODCALLTYPE*)(IXmlReader*, const wchar_t**, UINT*);

    // In the reader's table of functions.
    static constexpr std::size_t kMethods = 26;
    static constexpr std::size_t kGetLocalName = 14;

    static HRESULT STDMETHODCALLTYPE GetLocalName(IXmlReader* reader, const wchar_t** name, UINT* length)
    {
        const HRESULT hr = s_original(reader, name, length);
        return s_left-- == 0 ? E_ABORT : hr;
    }

    static inline Function s_original = nullptr;
    static inline int s_left = 0;

    void*** m_reader;
    void** m_original;
    std::array<void*, kMethods> m_methods{};
};

// A reader over a text.
class ManifestSteps : public ::testing::Test
{
protected:
    void Read(std::string_view text)
    {
        CreateXmlReader(__uuidof(IXmlReader), reinterpret_cast<void**>(m_reader.ReleaseAndGetAddressOf()),
                        nullptr);
        ComPtr<IStream> stream;
        stream.Attach(
            SHCreateMemStream(reinterpret_cast<const BYTE*>(text.data()), static_cast<UINT>(text.size())));
        m_reader->SetInput(stream.Get());
    }
    HRESULT MoveTo(const wchar_t* name)
    {
        return CQanhManifestReader::MoveToElementByName(m_reader.Get(), name);
    }
    HRESULT Attribute(const wchar_t* name)
    {
        return CQanhManifestReader::GetAttributeValueByName(m_reader.Get(), name, m_value);
    }
    // What tells the node at hand from the others of the document.
    [[nodiscard]] std::wstring Id() const
    {
        const wchar_t* id = L"";
        if (m_reader->MoveToAttributeByName(L"id", nullptr) == S_OK) {
            m_reader->GetValue(&id, nullptr);
        }
        const std::wstring copy = id;
        m_reader->MoveToElement();
        return copy;
    }
    [[nodiscard]] XmlNodeType NodeType() const
    {
        XmlNodeType type = XmlNodeType_None;
        m_reader->GetNodeType(&type);
        return type;
    }

    ComPtr<IXmlReader> m_reader;
    std::wstring m_value = L"before";
};

TEST_F(ManifestSteps, MoveStopsAtTheNextElementOfTheName)
{
    Read("<r><a id='1'/><b id='2'><a id='3'/></b><a id='4'/></r>");
    EXPECT_EQ(MoveTo(L"a"), S_OK);
    EXPECT_EQ(Id(), L"1");
    EXPECT_EQ(MoveTo(L"a"), S_OK);
    EXPECT_EQ(Id(), L"3");
    EXPECT_EQ(MoveTo(L"a"), S_OK);
    EXPECT_EQ(Id(), L"4");
    EXPECT_EQ(NodeType(), XmlNodeType_Element);
    EXPECT_EQ(MoveTo(L"a"), S_FALSE);
    EXPECT_EQ(MoveTo(L"a"), S_FALSE);
}

TEST_F(ManifestSteps, MoveGoesForwardOnly)
{
    Read("<r><a id='1'/><b id='2'/></r>");
    EXPECT_EQ(MoveTo(L"b"), S_OK);
    EXPECT_EQ(MoveTo(L"a"), S_FALSE);
}

TEST_F(ManifestSteps, MoveStartsBehindTheElementAtHand)
{
    Read("<a id='1'><a id='2'/></a>");
    MoveTo(L"a");
    EXPECT_EQ(MoveTo(L"a"), S_OK);
    EXPECT_EQ(Id(), L"2");
}

TEST_F(ManifestSteps, MovePassesTheEndsOfElements)
{
    Read("<r><x><y></y></x><z><a id='1'></a></z></r>");
    EXPECT_EQ(MoveTo(L"y"), S_OK);
    EXPECT_EQ(MoveTo(L"a"), S_OK);
    EXPECT_EQ(Id(), L"1");
    // The end tag of the same name is no element.
    EXPECT_EQ(MoveTo(L"a"), S_FALSE);
}

TEST_F(ManifestSteps, MoveLooksAtElementsOnly)
{
    Read("<r a='a'><!--a--><?a a?>a<![CDATA[a]]><A id='1'/></r>");
    EXPECT_EQ(MoveTo(L"a"), S_OK);
    EXPECT_EQ(Id(), L"1");
}

TEST_F(ManifestSteps, MoveComparesWholeLocalNamesIgnoringCase)
{
    Read("<r xmlns:p='u' xmlns:Tile='v'><TileX/><XTile/><Til/><p:X/><Tile:X/><p:tILE id='1'/></r>");
    EXPECT_EQ(MoveTo(L"Tile"), S_OK);
    EXPECT_EQ(Id(), L"1");
}

TEST_F(ManifestSteps, MoveSkipsAnElementWhoseNameCannotBeHad)
{
    Read("<r><a id='1'/><a id='2'/></r>");
    {
        const NamelessNode node(m_reader.Get(), 1); // behind the root
        EXPECT_EQ(MoveTo(L"a"), S_OK);
    }
    EXPECT_EQ(Id(), L"2");
}

TEST_F(ManifestSteps, MoveReturnsTheReadersFailure)
{
    Read("<r><b></c></r>");
    EXPECT_EQ(MoveTo(L"a"), static_cast<HRESULT>(0xC00CEE3B));
}

TEST_F(ManifestSteps, MoveEndsWithEveryResultOfTheReaderButSuccess)
{
    for (const HRESULT result : {S_FALSE, E_PENDING, E_OUTOFMEMORY, HRESULT(2)}) {
        Read("<r><b/><a/></r>");
        test::ReaderProbe probe(m_reader.Get());
        probe.Answer("Read", 1, result);
        EXPECT_EQ(CQanhManifestReader::MoveToElementByName(&probe, L"a"), result);
        EXPECT_EQ(probe.Calls("Read"), 2);
    }
}

TEST_F(ManifestSteps, MoveWithoutAReader)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::MoveToElementByName(nullptr, L"a"), E_POINTER);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::MoveToElementByName(a) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x80004003)"));
}

TEST_F(ManifestSteps, LogOfMoves)
{
    Read("<r><b></c></r>");
    const test::LogCapture log;
    MoveTo(L"b");
    MoveTo(L"b");
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::MoveToElementByName(b) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(b) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0xC00CEE3B)"));
}

TEST_F(ManifestSteps, AttributeCopiesTheValueAndComesBackToTheElement)
{
    Read("<r first='1' Second='2' third='3'><a/></r>");
    MoveTo(L"r");
    const test::LogCapture log;
    EXPECT_EQ(Attribute(L"sECOND"), S_OK);
    EXPECT_EQ(m_value, L"2");
    EXPECT_EQ(NodeType(), XmlNodeType_Element);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAttributeValueByName(sECOND) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)"));
    EXPECT_EQ(MoveTo(L"a"), S_OK);
}

TEST_F(ManifestSteps, AttributeThatIsMissingLeavesTheValueAlone)
{
    Read("<r first='1' second='2'><a/></r>");
    MoveTo(L"r");
    const test::LogCapture log;
    EXPECT_EQ(Attribute(L"third"), S_FALSE);
    EXPECT_EQ(m_value, L"before");
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAttributeValueByName(third) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000001)"));
    EXPECT_EQ(MoveTo(L"a"), S_OK);
}

TEST_F(ManifestSteps, AttributeOfAnElementWithoutAny)
{
    Read("<r><a/></r>");
    MoveTo(L"a");
    EXPECT_EQ(Attribute(L"first"), S_FALSE);
    EXPECT_EQ(m_value, L"before");
}

TEST_F(ManifestSteps, AttributeAfterTheEndOfTheDocument)
{
    Read("<r first='1'/>");
    EXPECT_EQ(MoveTo(L"no"), S_FALSE);
    EXPECT_EQ(Attribute(L"first"), S_FALSE);
    EXPECT_EQ(m_value, L"before");
}

TEST_F(ManifestSteps, AttributeIsTheFirstOfItsLocalName)
{
    Read("<r xmlns:p='u' firsts='no' p:FIRST='1' first='2'/>");
    MoveTo(L"r");
    EXPECT_EQ(Attribute(L"first"), S_OK);
    EXPECT_EQ(m_value, L"1");
}

TEST_F(ManifestSteps, AttributeThatIsEmptyEmptiesTheValue)
{
    Read("<r first=''/>");
    MoveTo(L"r");
    EXPECT_EQ(Attribute(L"first"), S_OK);
    EXPECT_THAT(m_value, IsEmpty());
}

TEST_F(ManifestSteps, AttributeReturnsTheReadersFailure)
{
    Read("<r first='1' second='2'/>");
    MoveTo(L"r");
    test::ReaderProbe probe(m_reader.Get());
    probe.Answer("MoveToFirstAttribute", 0, E_ABORT);
    EXPECT_EQ(CQanhManifestReader::GetAttributeValueByName(&probe, L"second", m_value), E_ABORT);
    probe.Answer("MoveToNextAttribute", 0, E_ACCESSDENIED);
    EXPECT_EQ(CQanhManifestReader::GetAttributeValueByName(&probe, L"second", m_value), E_ACCESSDENIED);
    EXPECT_EQ(m_value, L"before");
}

TEST_F(ManifestSteps, AttributeWithoutAReader)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAttributeValueByName(nullptr, L"first", m_value), E_POINTER);
    EXPECT_EQ(m_value, L"before");
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAttributeValueByName(first) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x80004003)"));
}

} // namespace
