#pragma once

#include <windows.h>

#include <objidl.h>
#include <xmllite.h>

#include <wrl/client.h>

#include <string_view>

// The few ways in which the library reads XML, over the platform's forward-only reader. They keep no state; a
// reader belongs to the thread that opened it.
namespace Xml {

// The reader's own result for a document that ends too early (XmlLite's "input ends").
constexpr HRESULT kInputEnds = static_cast<HRESULT>(0xC00CEE01);

// Makes a reader over a file opened for reading. Returns the first failure of making the reader, opening the
// file and joining the two. The first step and the rest may be done apart, where the file's path takes asking
// for.
[[nodiscard]] HRESULT MakeReader(Microsoft::WRL::ComPtr<IXmlReader>& reader);
[[nodiscard]] HRESULT OpenFile(IXmlReader* reader, const wchar_t* path);
[[nodiscard]] HRESULT OpenReader(const wchar_t* path, Microsoft::WRL::ComPtr<IXmlReader>& reader);

// Where a reader stands. Two nodes of one document may share a line and position (a declaration and the
// blanks behind it do with some readers), but then they are of different types.
struct NodePlace
{
    UINT line = 0;
    UINT position = 0;
    XmlNodeType type = XmlNodeType_None;
    HRESULT typed = E_FAIL; // what the reader said when it was asked for the type

    [[nodiscard]] bool IsElement() const noexcept { return typed == S_OK && type == XmlNodeType_Element; }
    friend bool operator==(const NodePlace&, const NodePlace&) = default;
};
[[nodiscard]] NodePlace PlaceOf(IXmlReader* reader);

// The same of an element, for what is read below it.
struct ElementPlace
{
    NodePlace place;
    UINT depth = 0;
    HRESULT measured = E_FAIL; // what the reader said when it was asked for the depth
};
[[nodiscard]] ElementPlace ElementPlaceOf(IXmlReader* reader);

// Moves from the node at hand, whose place the caller knows, to the next one, and gives its place back. S_OK;
// S_FALSE at the end of the document; a failure of the reader; or kInputEnds when the reader reports success
// without having moved, as some readers do for ever at the end of a truncated document.
[[nodiscard]] HRESULT ReadNode(IXmlReader* reader, NodePlace& place);
// The same for a caller that does not know the place.
[[nodiscard]] HRESULT ReadNode(IXmlReader* reader);

// What is left to NamesEqual() when the lengths, which must be the same here, have been looked at.
[[nodiscard]] bool NamesOfOneLengthEqual(std::wstring_view name, std::wstring_view expected);
// Names match as a whole, ignoring the case of letters.
[[nodiscard]] inline bool NamesEqual(std::wstring_view name, std::wstring_view expected)
{
    return name.size() == expected.size() && NamesOfOneLengthEqual(name, expected);
}

// True when the local name of the node at hand (prefixes do not count) is the expected one.
[[nodiscard]] bool HasLocalName(IXmlReader* reader, std::wstring_view expected);

// A text of the reader, behind which stands a null character.
class Value : public std::wstring_view
{
public:
    Value(const wchar_t* text, std::size_t length) noexcept : std::wstring_view(text, length) {}
    [[nodiscard]] const wchar_t* c_str() const noexcept { return data(); }
};

// Calls visit(name, value) for each attribute of the element at hand, in document order, until there are no
// more or visit returns true. Both texts end with a null character and live until visit returns. Result: S_OK
// when visit ended the walk, otherwise that of the last move: S_FALSE after the last attribute, or the
// reader's failure. The reader is left at the attribute where visit ended the walk, at the last one, on the
// element when there is none, or wherever its failure left it; from there it can read on.
template <typename Visit> [[nodiscard]] HRESULT WalkAttributes(IXmlReader* reader, Visit visit)
{
    HRESULT hr = reader->MoveToFirstAttribute();
    while (hr == S_OK) {
        const wchar_t* value = nullptr;
        const wchar_t* name = nullptr;
        UINT valueLength = 0;
        UINT nameLength = 0;
        if (SUCCEEDED(reader->GetValue(&value, &valueLength)) &&
            SUCCEEDED(reader->GetLocalName(&name, &nameLength)) &&
            visit(std::wstring_view(name, nameLength), Value(value, valueLength))) {
            break;
        }
        hr = reader->MoveToNextAttribute();
    }
    return hr;
}

// The same, and then the reader stands on the element again.
template <typename Visit> [[nodiscard]] HRESULT ForEachAttribute(IXmlReader* reader, Visit visit)
{
    const HRESULT hr = WalkAttributes(reader, visit);
    reader->MoveToElement();
    return hr;
}

// Reads on from an element, or one of its attributes, and calls visit() at each element of the given name
// that stands deeper. The walk ends at the end tag of an element that is not deeper than the one it began at,
// or at an element that is not deeper (the caller may look at that one next): both give S_OK; at the end of
// the document with S_FALSE; or with the reader's failure, or that to measure the depth.
template <typename Visit>
[[nodiscard]] HRESULT ForEachElementBelow(IXmlReader* reader, const ElementPlace& top, std::wstring_view name,
                                          Visit visit)
{
    HRESULT hr = top.measured;
    if (FAILED(hr)) {
        return hr;
    }
    NodePlace place = top.place;
    while ((hr = ReadNode(reader, place)) == S_OK) {
        const bool isEnd = place.typed == S_OK && place.type == XmlNodeType_EndElement;
        UINT depth = 0;
        if (!(place.IsElement() || isEnd) || FAILED(reader->GetDepth(&depth))) {
            continue;
        }
        if (!isEnd) {
            if (depth <= top.depth) {
                return S_OK;
            }
            if (HasLocalName(reader, name)) {
                visit();
            }
        } else if (depth <= top.depth + 1) {
            // An end tag counts as one deeper than its element.
            return S_OK;
        }
    }
    return hr;
}

} // namespace Xml
