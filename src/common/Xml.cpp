#include "common/Xml.h"

#include <shlwapi.h>

#include <cwchar>
#include <utility>

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t kCaseBit = 0x20;

[[nodiscard]] constexpr bool IsAsciiLetter(wchar_t character) noexcept
{
    const int letter = character | kCaseBit;
    return L'a' <= letter && letter <= L'z';
}

} // namespace

namespace Xml {

HRESULT MakeReader(ComPtr<IXmlReader>& reader)
{
    return CreateXmlReader(IID_PPV_ARGS(reader.ReleaseAndGetAddressOf()), nullptr);
}

HRESULT OpenFile(IXmlReader* reader, const wchar_t* path)
{
    ComPtr<IStream> stream;
    const HRESULT hr = SHCreateStreamOnFileW(path, STGM_READ, stream.GetAddressOf());
    return FAILED(hr) ? hr : reader->SetInput(stream.Get());
}

HRESULT OpenReader(const wchar_t* path, ComPtr<IXmlReader>& reader)
{
    const HRESULT hr = MakeReader(reader);
    return FAILED(hr) ? hr : OpenFile(reader.Get(), path);
}

NodePlace PlaceOf(IXmlReader* reader)
{
    NodePlace place;
    reader->GetLineNumber(&place.line);
    reader->GetLinePosition(&place.position);
    place.typed = reader->GetNodeType(&place.type);
    return place;
}

ElementPlace ElementPlaceOf(IXmlReader* reader)
{
    ElementPlace element{PlaceOf(reader)};
    element.measured = reader->GetDepth(&element.depth);
    return element;
}

HRESULT ReadNode(IXmlReader* reader, NodePlace& place)
{
    const HRESULT hr = reader->Read(nullptr);
    if (hr != S_OK) {
        return hr;
    }
    const NodePlace before = std::exchange(place, PlaceOf(reader));
    return place == before ? kInputEnds : S_OK;
}

HRESULT ReadNode(IXmlReader* reader)
{
    NodePlace place = PlaceOf(reader);
    return ReadNode(reader, place);
}

bool NamesOfOneLengthEqual(std::wstring_view name, std::wstring_view expected)
{
    // Nearly all names are as expected to the letter, or begin otherwise: that takes no look at the locale.
    if (name == expected) {
        return true;
    }
    if (IsAsciiLetter(name.front()) && ((name.front() ^ expected.front()) & ~kCaseBit) != 0) {
        return false;
    }
    return _wcsnicmp(name.data(), expected.data(), expected.size()) == 0;
}

bool HasLocalName(IXmlReader* reader, std::wstring_view expected)
{
    const wchar_t* name = nullptr;
    UINT length = 0;
    return SUCCEEDED(reader->GetLocalName(&name, &length)) &&
           NamesEqual(std::wstring_view(name, length), expected);
}

} // namespace Xml
