// The two steps that every walk over a manifest is made of.

#include "support/ReaderProbe.h"
#include "support/XmlText.h"
#include "unit/manifest/ManifestFile.h"

#include <optional>

namespace {

using namespace manifest_test;

// A reader over a text.
class ManifestSteps : public Test
{
protected:
    void Read(std::string_view text)
    {
        m_source.emplace(text);
        m_reader = m_source->Reader();
    }
    HRESULT MoveTo(const wchar_t* name) { return CQanhManifestReader::MoveToElementByName(m_reader, name); }
    HRESULT Attribute(const wchar_t* name)
    {
        return CQanhManifestReader::GetAttributeValueByName(m_reader, name, m_value);
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

    std::optional<XmlSource> m_source;
    IXmlReader* m_reader = nullptr;
    std::wstring m_value = L"before";
};

struct Move
{
    const wchar_t* name;
    const wchar_t* id; // of the element there; null: there is none
};

TEST_F(ManifestSteps, MoveGoesToTheNextElementOfTheName)
{
    const auto expectMoves = [&](const char* what, const char* document, const std::vector<Move>& moves) {
        SCOPED_TRACE(what);
        Read(document);
        for (const Move& move : moves) {
            EXPECT_EQ(MoveTo(move.name), move.id ? S_OK : S_FALSE);
            if (move.id) {
                EXPECT_EQ(Id(), move.id);
                EXPECT_EQ(NodeType(), XmlNodeType_Element);
            }
        }
    };
    expectMoves("stops at the next element of the name",
                "<r><a id='1'/><b id='2'><a id='3'/></b><a id='4'/></r>",
                {{L"a", L"1"}, {L"a", L"3"}, {L"a", L"4"}, {L"a", nullptr}, {L"a", nullptr}});
    expectMoves("goes forward only", "<r><a id='1'/><b id='2'/></r>", {{L"b", L"2"}, {L"a", nullptr}});
    expectMoves("starts behind the element at hand", "<a id='1'><a id='2'/></a>",
                {{L"a", L"1"}, {L"a", L"2"}});
    // The end tag of the same name is no element.
    expectMoves("passes the ends of elements", "<r><x><y></y></x><z><a id='1'></a></z></r>",
                {{L"y", L""}, {L"a", L"1"}, {L"a", nullptr}});
}

TEST_F(ManifestSteps, MoveSkipsAnElementWhoseNameCannotBeHad)
{
    Read("<r><a id='1'/><a id='2'/></r>");
    ReaderProbe probe(m_reader);
    probe.Answer("GetLocalName", 1, E_ABORT); // behind the root
    EXPECT_EQ(CQanhManifestReader::MoveToElementByName(&probe, L"a"), S_OK);
    EXPECT_EQ(Id(), L"2");
}

TEST_F(ManifestSteps, MoveEndsWithEveryResultOfTheReaderButSuccess)
{
    for (const HRESULT result : {S_FALSE, E_PENDING, E_OUTOFMEMORY, HRESULT(2)}) {
        Read("<r><b/><a/></r>");
        ReaderProbe probe(m_reader);
        probe.Answer("Read", 1, result);
        EXPECT_EQ(CQanhManifestReader::MoveToElementByName(&probe, L"a"), result);
        EXPECT_EQ(probe.Calls("Read"), 2);
    }
}

TEST_F(ManifestSteps, LogOfMoves)
{
    Read("<r><b></c></r>");
    const LogCapture log;
    EXPECT_EQ(MoveTo(L"b"), S_OK);
    EXPECT_EQ(MoveTo(L"b"), static_cast<HRESULT>(0xC00CEE3B));
    EXPECT_EQ(CQanhManifestReader::MoveToElementByName(nullptr, L"a"), E_POINTER);
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::MoveToElementByName(b)", "(0x00000000)") +
                               Call("CQanhManifestReader::MoveToElementByName(b)", "(0xC00CEE3B)") +
                               Call("CQanhManifestReader::MoveToElementByName(a)", "(0x80004003)"));
}

TEST_F(ManifestSteps, AttributeIsTakenOfTheElementAtHand)
{
    const auto expectAttribute = [&](const char* what, const char* document, const wchar_t* element,
                                     const std::string& attribute, HRESULT result, const wchar_t* value) {
        SCOPED_TRACE(what);
        Read(document);
        const HRESULT moved = MoveTo(element);
        const XmlNodeType nodeType = NodeType();
        m_value = L"before";
        const LogCapture log;
        EXPECT_EQ(Attribute(FromUtf8(attribute).c_str()), result);
        EXPECT_EQ(m_value, value);
        EXPECT_EQ(log.Lines(), result == S_OK ? Value(attribute) : NoValue(attribute));
        // The reader is on the element again.
        EXPECT_EQ(NodeType(), nodeType);
        EXPECT_EQ(MoveTo(L"a"), moved);
    };
    expectAttribute("is copied", "<r first='1' Second='2' third='3'><a/></r>", L"r", "sECOND", S_OK, L"2");
    expectAttribute("that is missing leaves the value alone", "<r first='1' second='2'><a/></r>", L"r",
                    "third", S_FALSE, L"before");
    expectAttribute("of an element without any is missing", "<r><b/><a/></r>", L"b", "first", S_FALSE,
                    L"before");
    expectAttribute("after the end of the document is missing", "<r first='1'/>", L"no", "first", S_FALSE,
                    L"before");
    expectAttribute("that is empty empties the value", "<r first=''><a/></r>", L"r", "first", S_OK, L"");
}

TEST_F(ManifestSteps, AttributeReturnsTheReadersFailure)
{
    Read("<r first='1' second='2'/>");
    MoveTo(L"r");
    ReaderProbe probe(m_reader);
    probe.Answer("MoveToFirstAttribute", 0, E_ABORT);
    EXPECT_EQ(CQanhManifestReader::GetAttributeValueByName(&probe, L"second", m_value), E_ABORT);
    probe.Answer("MoveToNextAttribute", 0, E_ACCESSDENIED);
    EXPECT_EQ(CQanhManifestReader::GetAttributeValueByName(&probe, L"second", m_value), E_ACCESSDENIED);
    EXPECT_EQ(m_value, L"before");
}

TEST_F(ManifestSteps, AttributeWithoutAReader)
{
    const LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAttributeValueByName(nullptr, L"first", m_value), E_POINTER);
    EXPECT_EQ(m_value, L"before");
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAttributeValueByName(first)", "(0x80004003)"));
}

} // namespace
