#include "common/Xml.h"

#include <shlwapi.h>

#include <cwchar>

using Microsoft::WRL::ComPtr;

namespace Xml {

HRESULT OpenReader(const wchar_t* path, ComPtr<IXmlReader>& reader)
{
    HRESULT hr = CreateXmlReader(__uuidof(IXmlReader),
                                 reinterpret_cast<void**>(reader.ReleaseAndGetAddressOf()), nullptr);
    if (FAILED(hr)) {
        return hr;
    }
    ComPtr<IStream> stream;
    hr = SHCreateStreamOnFileW(path, STGM_READ, stream.GetAddressOf());
    if (FAILED(hr)) {
        return hr;
    }
    return reader->SetInput(stream.Get());
}

HRESULT ReadNode(IXmlReader* reader)
{
    UINT oldLine = 0;
    UINT oldPosition = 0;
    reader->GetLineNumber(&oldLine);
    reader->GetLinePosition(&oldPosition);
    const HRESULT hr = reader->Read(nullptr);
    if (hr != S_OK) {
        return hr;
    }
    UINT line = 0;
    UINT position = 0;
    reader->GetLineNumber(&line);
    reader->GetLinePosition(&position);
    return line == oldLine && position == oldPosition ? kInputEnds : S_OK;
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
