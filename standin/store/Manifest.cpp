#include "standin/store/Manifest.h"

#include "standin/Files.h"
#include "standin/Result.h"
#include "standin/Text.h"

#include <shlwapi.h>
#include <xmllite.h>

#include <wrl/client.h>

#include <algorithm>
#include <utility>

using Microsoft::WRL::ComPtr;

namespace standin {

namespace {

constexpr auto invalidManifest = static_cast<HRESULT>(0x80080204); // APPX_E_INVALID_MANIFEST
constexpr auto inputEnds = static_cast<HRESULT>(0xC00CEE01); // the XML reader's "unexpected end of input"

using Value = ManifestApplication::Value;

// What a method of the reader gives of the place where it stands.
std::wstring TextAt(IXmlReader* reader, HRESULT (STDMETHODCALLTYPE IXmlReader::*get)(const wchar_t**, UINT*))
{
    const wchar_t* text = nullptr;
    UINT length = 0;
    return SUCCEEDED((reader->*get)(&text, &length)) && text ? std::wstring(text, length) : std::wstring();
}

std::wstring LocalName(IXmlReader* reader)
{
    return TextAt(reader, &IXmlReader::GetLocalName);
}

std::wstring NodeText(IXmlReader* reader)
{
    return TextAt(reader, &IXmlReader::GetValue);
}

std::vector<Value> Attributes(IXmlReader* reader)
{
    std::vector<Value> attributes;
    for (HRESULT hr = reader->MoveToFirstAttribute(); hr == S_OK; hr = reader->MoveToNextAttribute()) {
        attributes.push_back({LocalName(reader), NodeText(reader)});
    }
    reader->MoveToElement();
    return attributes;
}

// One walk through a manifest.
class Walk
{
public:
    Walk(IXmlReader* reader, Manifest& manifest) noexcept : m_reader(reader), m_manifest(manifest) {}

    HRESULT Run()
    {
        XmlNodeType type = XmlNodeType_None;
        HRESULT hr = ReadNode(type);
        for (; hr == S_OK; hr = ReadNode(type)) {
            if (type == XmlNodeType_Element) {
                OnElement();
            } else if (type == XmlNodeType_EndElement && !m_open.empty()) {
                // Wine's reader closes what a cut-off document left open, at the places of the start tags.
                if (m_open.back().line == m_line && m_open.back().position == m_position) {
                    return inputEnds;
                }
                m_open.pop_back();
            } else if (type == XmlNodeType_Text && IsAt({L"Package", L"Properties", L"Framework"})) {
                m_manifest.isFramework = EqualIgnoringCase(Trimmed(NodeText(m_reader)), L"true");
            }
        }
        if (FAILED(hr)) {
            return hr;
        }
        if (!m_open.empty()) {
            return inputEnds;
        }
        return m_manifest.name.empty() ? invalidManifest : S_OK;
    }

private:
    // Wine's reader goes on for ever in a document that was cut off. In a sound one it stands still for one
    // step at most, behind the XML declaration, so that a second one is the end.
    HRESULT ReadNode(XmlNodeType& type)
    {
        const HRESULT hr = m_reader->Read(&type);
        if (hr != S_OK) {
            return hr;
        }
        UINT line = 0;
        UINT position = 0;
        m_reader->GetLineNumber(&line);
        m_reader->GetLinePosition(&position);
        const bool hasMoved = line != m_line || position != m_position;
        m_line = line;
        m_position = position;
        m_stills = hasMoved ? 0 : m_stills + 1;
        return m_stills > 1 ? inputEnds : S_OK;
    }

    // True when the reader's place is in exactly these elements, from the root on.
    [[nodiscard]] bool IsAt(std::initializer_list<std::wstring_view> path) const noexcept
    {
        return std::equal(m_open.begin(), m_open.end(), path.begin(), path.end(),
                          [](const OpenElement& element, std::wstring_view name) {
                              return EqualIgnoringCase(element.name, name);
                          });
    }

    void OnElement()
    {
        const bool isEmpty = m_reader->IsEmptyElement() != FALSE;
        m_open.push_back({LocalName(m_reader), m_line, m_position});
        if (IsAt({L"Package", L"Identity"})) {
            ReadIdentity();
        } else if (IsAt({L"Package", L"Applications", L"Application"})) {
            m_manifest.applications.push_back({Attributes(m_reader)});
        } else if (IsAt({L"Package", L"Applications", L"Application", L"VisualElements"}) ||
                   IsAt({L"Package", L"Applications", L"Application", L"VisualElements", L"DefaultTile"})) {
            AddValues(L"");
        } else if (IsAt({L"Package", L"Applications", L"Application", L"VisualElements", L"LockScreen"})) {
            AddValues(L"LockScreen");
        }
        if (isEmpty) {
            m_open.pop_back();
        }
    }

    void ReadIdentity()
    {
        const std::pair<const wchar_t*, std::wstring*> places[] = {
            {L"Name", &m_manifest.name},
            {L"Version", &m_manifest.version},
            {L"ProcessorArchitecture", &m_manifest.architecture},
            {L"ResourceId", &m_manifest.resourceId},
        };
        for (Value& attribute : Attributes(m_reader)) {
            for (const auto& [name, text] : places) {
                if (EqualIgnoringCase(attribute.name, name)) {
                    *text = std::move(attribute.text);
                }
            }
        }
    }

    // An application's values have names that are theirs alone; those of the lock screen get a prefix.
    void AddValues(const std::wstring& prefix)
    {
        std::vector<Value>& values = m_manifest.applications.back().values;
        for (Value& attribute : Attributes(m_reader)) {
            const std::wstring name =
                EqualIgnoringCase(attribute.name, L"BadgeLogo") ? L"Logo" : attribute.name;
            values.push_back({prefix + name, std::move(attribute.text)});
        }
    }

    struct OpenElement
    {
        std::wstring name;
        UINT line;
        UINT position;
    };

    IXmlReader* m_reader;
    Manifest& m_manifest;
    std::vector<OpenElement> m_open; // around the reader's place, from the root on
    UINT m_line = 0;
    UINT m_position = 0;
    int m_stills = 0; // steps in a row that did not move
};

} // namespace

const std::wstring* ManifestApplication::Find(std::wstring_view name) const noexcept
{
    for (const Value& value : values) {
        if (EqualIgnoringCase(value.name, name)) {
            return &value.text;
        }
    }
    return nullptr;
}

HRESULT ReadManifest(IStream* stream, Manifest& manifest)
{
    manifest = {};
    return ResultOf([&] {
        ComPtr<IXmlReader> reader;
        Check(
            CreateXmlReader(__uuidof(IXmlReader), reinterpret_cast<void**>(reader.GetAddressOf()), nullptr));
        Check(reader->SetInput(stream));
        return Walk(reader.Get(), manifest).Run();
    });
}

HRESULT ReadManifestFile(const std::wstring& path, Manifest& manifest)
{
    return ResultOf([&] {
        const std::string bytes = ReadFileBytes(path);
        ComPtr<IStream> stream;
        stream.Attach(
            SHCreateMemStream(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<UINT>(bytes.size())));
        return stream ? ReadManifest(stream.Get(), manifest) : E_OUTOFMEMORY;
    });
}

} // namespace standin
