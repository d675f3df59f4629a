#include "common/Xml.h"

#include "support/DocumentedReaderInstead.h"
#include "support/Test.h"
#include "support/XmlText.h"

#include <shlwapi.h>

#include <cwchar>

namespace {

using namespace test;

using Microsoft::WRL::ComPtr;
using Names = std::vector<std::string>;
using Found = std::pair<Names, HRESULT>; // by a walk, and the result that ended it

// The names of the elements whose start tags are complete, in order.
Names CompleteElements(std::string_view text)
{
    Names names;
    for (const std::string& tag : Split(text, "<")) {
        const bool isStart = !tag.empty() && 'a' <= tag.front() && tag.front() <= 'z';
        if (isStart && tag.find('>') != std::string::npos) {
            names.push_back(tag.substr(0, tag.find_first_of(" />")));
        }
    }
    return names;
}

// A reader over a document.
class Xml : public ::testing::Test
{
protected:
    HRESULT OpenFile(std::string_view document)
    {
        const std::wstring path = m_folder / L"document.xml";
        WriteFileBytes(path, document);
        return ::Xml::OpenReader(path.c_str(), m_reader);
    }

    void Open(std::string_view document)
    {
        m_source.emplace(document);
        m_reader = m_source->Reader();
    }
    // Opens the document and moves to its first element of this name.
    void OpenAt(std::string_view document, std::wstring_view name)
    {
        m_source.emplace(document, name);
        m_reader = m_source->Reader();
    }

    // Walks over what is left of the document when it ends at each byte from `first` on: expected(text) are
    // the names that the walk finds. The reader in use may take the end of a file behind an end tag for the
    // end of the document; the documented one does not.
    template <typename Walk, typename Expected>
    void CutEverywhere(const std::string& document, std::size_t first, Walk walk, Expected expected)
    {
        for (const bool isDocumented : {false, true}) {
            std::optional<DocumentedReaderInstead> reader;
            if (isDocumented) {
                reader.emplace();
            }
            for (std::size_t length = first; length < document.size(); ++length) {
                const std::string text = document.substr(0, length);
                SCOPED_TRACE(text);
                const auto [names, hr] = walk(text);
                EXPECT_EQ(names, expected(text));
                const bool behindEndTag =
                    !text.empty() && text.back() == '>' && text[text.rfind('<') + 1] == '/';
                EXPECT_TRUE(isDocumented ? hr == static_cast<HRESULT>(0xC00CEE01)
                                         : FAILED(hr) || behindEndTag)
                    << std::hex << hr;
            }
        }
    }

    std::string Name()
    {
        const wchar_t* name = nullptr;
        m_reader->GetLocalName(&name, nullptr);
        return ToUtf8(name);
    }

    // The names of all elements, in order.
    Found Elements()
    {
        Names names;
        HRESULT hr = S_OK;
        // A walk that does not end is cut off: that is what the test is about then.
        int nodes = 0;
        for (; nodes < 10000 && (hr = ::Xml::ReadNode(m_reader.Get())) == S_OK; ++nodes) {
            if (::Xml::PlaceOf(m_reader.Get()).IsElement()) {
                names.push_back(Name());
            }
        }
        EXPECT_LT(nodes, 10000);
        return {names, hr};
    }

    Found Attributes(int stopAfter = 1000)
    {
        Names attributes;
        const HRESULT hr =
            ::Xml::ForEachAttribute(m_reader.Get(), [&](std::wstring_view name, ::Xml::Value value) {
                EXPECT_EQ(name.data()[name.size()], L'\0');
                attributes.push_back(ToUtf8(name) + "=" + ToUtf8(value));
                return static_cast<int>(attributes.size()) == stopAfter;
            });
        return {attributes, hr};
    }

    // The first attribute of each element that the walk visits.
    Found Below(std::wstring_view name)
    {
        Names visited;
        const HRESULT hr =
            ::Xml::ForEachElementBelow(m_reader.Get(), ::Xml::ElementPlaceOf(m_reader.Get()), name, [&] {
                std::string text = Name();
                for (const std::string& attribute : Attributes().first) {
                    text += " " + attribute;
                }
                visited.push_back(text);
            });
        return {visited, hr};
    }

    TemporaryFolder m_folder;
    std::optional<XmlSource> m_source;
    ComPtr<IXmlReader> m_reader;
};

TEST_F(Xml, DocumentIsReadToItsEnd)
{
    ASSERT_EQ(OpenFile("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<a><b/>text<!-- c --><c><d/></c></a>"),
              S_OK);
    EXPECT_EQ(Elements(), Found({"a", "b", "c", "d"}, S_FALSE));
}

TEST_F(Xml, OpeningIsReadOnly)
{
    static DWORD s_mode = 0;
    const ImportPatch<decltype(&SHCreateStreamOnFileW)> patch(
        "SHCreateStreamOnFileW", [](const wchar_t*, DWORD mode, IStream**) -> HRESULT {
            s_mode = mode;
            return E_ACCESSDENIED;
        });
    s_mode = 77;
    EXPECT_EQ(OpenFile("<a/>"), E_ACCESSDENIED);
    EXPECT_EQ(s_mode, 0u);
}

TEST_F(Xml, MissingFileFails)
{
    EXPECT_EQ(::Xml::OpenReader((m_folder / L"none.xml").c_str(), m_reader),
              HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

TEST_F(Xml, ReaderThatCannotBeMadeFails)
{
    using Function = HRESULT(STDAPICALLTYPE*)(REFIID, void**, IMalloc*);
    const ImportPatch<Function> patch("CreateXmlReader",
                                      [](REFIID, void**, IMalloc*) -> HRESULT { return E_OUTOFMEMORY; });
    EXPECT_EQ(OpenFile("<a/>"), E_OUTOFMEMORY);
}

// A file that was cut off by a crash must never hold a host: reading ends, wherever the cut is.
TEST_F(Xml, ReadingEndsWhereverTheDocumentIsCut)
{
    const std::string document = "<a x=\"1\"><b><c y=\"2\"/>text</b><!-- note --><b></b></a>";
    CutEverywhere(
        document, 0,
        [&](const std::string& text) {
            Open(text);
            return Elements();
        },
        CompleteElements);
    Open(document);
    EXPECT_EQ(Elements(), Found({"a", "b", "c", "b"}, S_FALSE));
}

TEST_F(Xml, MismatchedTagFails)
{
    Open("<a><b></a>");
    const auto [names, hr] = Elements();
    EXPECT_THAT(names, ElementsAre("a", "b"));
    EXPECT_TRUE(FAILED(hr));
}

TEST_F(Xml, PlacesDifferWhenAnyPartOfThemDoes)
{
    using ::Xml::NodePlace;
    const NodePlace place{2, 3, XmlNodeType_Element, S_OK};
    EXPECT_EQ(place, (NodePlace{2, 3, XmlNodeType_Element, S_OK}));
    EXPECT_NE(place, (NodePlace{1, 3, XmlNodeType_Element, S_OK}));
    EXPECT_NE(place, (NodePlace{2, 4, XmlNodeType_Element, S_OK}));
    EXPECT_NE(place, (NodePlace{2, 3, XmlNodeType_Text, S_OK}));
    EXPECT_NE(place, (NodePlace{2, 3, XmlNodeType_Element, S_FALSE}));
}

TEST_F(Xml, OnlyElementsAreElements)
{
    Open("<a>text<!-- c --></a>");
    EXPECT_FALSE(::Xml::PlaceOf(m_reader.Get()).IsElement()); // before the first node
    std::string elements;
    while (::Xml::ReadNode(m_reader.Get()) == S_OK) {
        elements += ::Xml::PlaceOf(m_reader.Get()).IsElement() ? "e" : "-";
    }
    EXPECT_EQ(elements, "e---"); // the text, the comment and the end tag are none
}

TEST_F(Xml, NamesAreWholeAndIgnoreTheCaseOfLatinLetters)
{
    for (const wchar_t* name : {L"Package", L"pACKAGE"}) {
        EXPECT_TRUE(::Xml::NamesEqual(name, L"Package"));
    }
    EXPECT_TRUE(::Xml::NamesEqual(L"", L""));
    for (const wchar_t* name : {L"Packages", L"Pack", L"Packag", L"", L"Packagf"}) {
        EXPECT_FALSE(::Xml::NamesEqual(name, L"Package"));
    }
    EXPECT_FALSE(::Xml::NamesEqual(L"Package", L""));
    EXPECT_FALSE(::Xml::NamesEqual(L"\u00e9", L"\u00c9"));
}

// A name that begins otherwise is refused without asking the C runtime: that must never be what it would not
// say.
TEST_F(Xml, NamesAreEqualAsTheCRuntimeComparesThem)
{
    const std::wstring expected = L"kKaZ@[_{-é";
    const std::wstring firsts = L"azAZ@[`{_-09kK\u212AéÉıİ\x0001\xD800Ａ";
    int equal = 0;
    for (const wchar_t first : firsts) {
        for (std::size_t at = 0; at < expected.size(); ++at) {
            const std::wstring name = first + std::wstring(L"aMe");
            const std::wstring other = expected[at] + std::wstring(L"AmE");
            const bool same = _wcsnicmp(name.c_str(), other.c_str(), name.size()) == 0;
            EXPECT_EQ(::Xml::NamesEqual(name, other), same) << ToUtf8(name) << " " << ToUtf8(other);
            equal += same;
        }
    }
    EXPECT_GT(equal, 10);
}

TEST_F(Xml, PrefixOfANameDoesNotCount)
{
    OpenAt("<p:Root xmlns:p=\"urn:x\"/>", L"Root");
    EXPECT_TRUE(::Xml::HasLocalName(m_reader.Get(), L"rOOT"));
    EXPECT_FALSE(::Xml::HasLocalName(m_reader.Get(), L"p:Root"));
    EXPECT_FALSE(::Xml::HasLocalName(m_reader.Get(), L"Roo"));
}

TEST_F(Xml, AttributesComeInOrderAndTheReaderReturnsToTheElement)
{
    OpenAt("<a/>", L"a");
    EXPECT_EQ(Attributes(), Found({}, S_FALSE));
    OpenAt("<a z=\"1\" y=\"\" x=\"&lt;&#x30e1;\"/>", L"a");
    EXPECT_EQ(Attributes(), Found({"z=1", "y=", "x=<\u30e1"}, S_FALSE));
    EXPECT_TRUE(::Xml::PlaceOf(m_reader.Get()).IsElement());
    EXPECT_EQ(Name(), "a");
}

TEST_F(Xml, WalkOverAttributesEndsWhenItIsTold)
{
    OpenAt("<a z=\"1\" y=\"2\" x=\"3\"/>", L"a");
    EXPECT_EQ(Attributes(2), Found({"z=1", "y=2"}, S_OK));
    EXPECT_EQ(Name(), "a");
}

TEST_F(Xml, ElementsBelowAreVisitedWhereverTheyStand)
{
    OpenAt("<r><top><x n=\"1\"/><y><X n=\"2\"><x n=\"3\"/></X></y><xx n=\"4\"/>text</top><x n=\"5\"/></r>",
           L"top");
    EXPECT_EQ(Below(L"x"), Found({"x n=1", "X n=2", "x n=3"}, S_OK));
    // The walk stands on the end of "top": what follows is not lost.
    EXPECT_EQ(::Xml::ReadNode(m_reader.Get()), S_OK);
    EXPECT_TRUE(::Xml::HasLocalName(m_reader.Get(), L"x"));
}

TEST_F(Xml, EmptyElementHasNothingBelowAndTheNextOneIsAtHand)
{
    OpenAt("<r><top/><x n=\"1\"/><x n=\"2\"/></r>", L"top");
    EXPECT_EQ(Below(L"x"), Found({}, S_OK));
    EXPECT_TRUE(::Xml::PlaceOf(m_reader.Get()).IsElement());
    EXPECT_THAT(Attributes().first, ElementsAre("n=1"));
}

TEST_F(Xml, LastEmptyElementEndsAtItsParentsEnd)
{
    OpenAt("<r><s><top/></s><x n=\"1\"/></r>", L"top");
    EXPECT_EQ(Below(L"x"), Found({}, S_OK));
    EXPECT_FALSE(::Xml::PlaceOf(m_reader.Get()).IsElement());
    EXPECT_EQ(Name(), "s");
}

TEST_F(Xml, WalkBelowTheRootEndsWithTheRoot)
{
    OpenAt("<top><x/><y><x/></y></top>", L"top");
    EXPECT_EQ(Below(L"x"), Found({"x", "x"}, S_OK));
    EXPECT_EQ(::Xml::ReadNode(m_reader.Get()), S_FALSE);
}

TEST_F(Xml, EmptyRootEndsWithTheDocument)
{
    OpenAt("<top/>", L"top");
    EXPECT_EQ(Below(L"x"), Found({}, S_FALSE));
}

TEST_F(Xml, BrokenDocumentEndsTheWalkWithTheReadersFailure)
{
    OpenAt("<top><x/><y></top>", L"top");
    const auto [visited, hr] = Below(L"x");
    EXPECT_THAT(visited, ElementsAre("x"));
    EXPECT_TRUE(FAILED(hr));
}

TEST_F(Xml, WalkEndsWhereverTheDocumentIsCut)
{
    const std::string document = "<top><x n=\"1\"><y/></x>text<!-- note --><x n=\"2\"></x></top>";
    CutEverywhere(
        document, std::string("<top>").size(),
        [&](const std::string& text) {
            OpenAt(text, L"top");
            return Below(L"x");
        },
        [](const std::string& text) {
            const Names complete = CompleteElements(text);
            Names visited = {"x n=1", "x n=2"};
            visited.resize(static_cast<std::size_t>(std::count(complete.begin(), complete.end(), "x")));
            return visited;
        });
}

} // namespace
