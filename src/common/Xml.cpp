#include "common/Xml.h"

#include <shlwapi.h>

#include <cwchar>

using Microsoft::WRL::ComPtr;

namespace {

// Where a reader stands. Two nodes of one document may share a line and position (a declaration and the
// blanks behind it do with some readers), but then they are of different types.
struct NodePlace
{
    UINT line = 0;
    UINT position = 0;
    XmlNodeType type = XmlNodeType_None;

    friend bool operator==(const NodePlace&, const NodePlace&) = default;
};

NodePlace PlaceOf(IXmlReader* reader)
{
    NodePlace place;
    reader->GetLineNumber(&place.line);
    reader->GetLinePosition(&place.position);
    reader->GetNodeType(&place.type);
    return place;
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

HRESULT ReadNode(IXmlReader* reader)
{
    const NodePlace before = PlaceOf(reader);
    const HRESULT hr = reader->Read(nullptr);
    if (hr != S_OK) {
        return hr;
    }
    return PlaceOf(reader) == before ? kInputEnds : S_OK;
}

bool IsElement(IXmlReader* reader)
{
    XmlNodeType type = XmlNodeType_None;
    return reader->GetNodeType(&type) == S_OK && type == XmlNodeType_Element;
}

bool NamesEqual(std::wstring_view name, std::wstring_view expected)
{
    return name.size() == expected.size() && _wcsnicmp(name.data(), expected.data(), expected.size()) == 0;
}

bool HasLocalName(IXmlReader* reader, std::wstring_view expected)
{
    const wchar_t* name = nullptr;
    UINT length = 0;
    return SUCCEEDED(reader->GetLocalName(&name, &length)) &&
           NamesEqual(std::wstring_view(name, length), expected);
}

} // namespace Xml
