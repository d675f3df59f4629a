#include "Document.h"

#include "Failure.h"
#include "catalog/CatalogXml.h"
#include "common/Xml.h"

#include <algorithm>
#include <iterator>

namespace {

bool IsNamed(const std::wstring& name, const wchar_t* expected)
{
    return Xml::NamesEqual(name, expected);
}

// Which elements the library makes something of depends on what they stand in: the outermost package or list
// of desktop applications takes all that is below it.
class Nesting
{
public:
    // To be called for each element, with its depth. Returns whether the library passes it over.
    bool IsSkipped(const std::wstring& name, UINT depth)
    {
        if (m_hasOwner && depth <= m_ownerDepth) {
            m_hasOwner = false;
        }
        const bool isPackage = IsNamed(name, CatalogXml::kPackage);
        if (isPackage || IsNamed(name, CatalogXml::kDesktopApps)) {
            if (m_hasOwner) {
                return true;
            }
            m_hasOwner = true;
            m_ownerDepth = depth;
            m_isOwnerPackage = isPackage;
            return false;
        }
        if (IsNamed(name, CatalogXml::kMetroApp)) {
            return !m_hasOwner || !m_isOwnerPackage;
        }
        if (IsNamed(name, CatalogXml::kDesktopApp)) {
            return !m_hasOwner || m_isOwnerPackage;
        }
        return !IsNamed(name, CatalogXml::kApplications) && !IsNamed(name, CatalogXml::kMetroApps);
    }

private:
    bool m_hasOwner = false;
    bool m_isOwnerPackage = false;
    UINT m_ownerDepth = 0;
};

Place PlaceOf(IXmlReader* reader)
{
    const Xml::NodePlace place = Xml::PlaceOf(reader);
    return {place.line, place.position};
}

DocumentElement ElementAt(IXmlReader* reader)
{
    DocumentElement element;
    const wchar_t* name = nullptr;
    UINT length = 0;
    if (SUCCEEDED(reader->GetLocalName(&name, &length))) {
        element.name.assign(name, length);
    }
    element.place = PlaceOf(reader);
    // A failure shows again when the reading goes on.
    (void)Xml::ForEachAttribute(reader, [&](std::wstring_view attribute, Xml::Value value) {
        element.attributes.push_back({std::wstring(attribute), std::wstring(value)});
        return false;
    });
    return element;
}

} // namespace

const std::wstring* DocumentElement::Find(const wchar_t* attribute) const
{
    const auto found =
        std::find_if(attributes.rbegin(), attributes.rend(),
                     [attribute](const DocumentAttribute& entry) { return IsNamed(entry.name, attribute); });
    return found == attributes.rend() ? nullptr : &found->value;
}

std::vector<const DocumentElement*> Document::Read(const wchar_t* element) const
{
    std::vector<const DocumentElement*> read;
    for (const DocumentElement& entry : elements) {
        if (!entry.isSkipped && IsNamed(entry.name, element)) {
            read.push_back(&entry);
        }
    }
    return read;
}

HRESULT Document::CutOff() const
{
    const bool isEnd = SUCCEEDED(ended) || ended == Xml::kInputEnds;
    if (isEnd && (isWhole || open == 1)) {
        return S_OK;
    }
    return isEnd ? Xml::kInputEnds : ended;
}

Document ReadDocument(const std::wstring& path)
{
    Microsoft::WRL::ComPtr<IXmlReader> reader;
    const HRESULT hr = Xml::OpenReader(path.c_str(), reader);
    if (FAILED(hr)) {
        throw Failure{L"cannot read " + path, hr};
    }
    Document document;
    Nesting nesting;
    std::vector<Place> open;
    Xml::NodePlace place = Xml::PlaceOf(reader.Get());
    while ((document.ended = Xml::ReadNode(reader.Get(), place)) == S_OK) {
        if (place.IsElement()) {
            UINT depth = 0;
            (void)reader->GetDepth(&depth);
            const bool isEmpty = reader->IsEmptyElement();
            DocumentElement& element = document.elements.emplace_back(ElementAt(reader.Get()));
            element.isSkipped = nesting.IsSkipped(element.name, depth);
            if (!isEmpty) {
                open.push_back(element.place);
            }
        } else if (place.type == XmlNodeType_EndElement && !open.empty() &&
                   std::find(open.begin(), open.end(), Place{place.line, place.position}) == open.end()) {
            // Some readers close by themselves what the end of the file leaves open: there, where it was
            // opened.
            open.pop_back();
        }
    }
    document.open = open.size();
    document.isWhole = !document.elements.empty() && open.empty();
    document.end = PlaceOf(reader.Get());
    // Of a file with nothing in it the reader tells no place.
    document.end = {std::max(document.end.line, 1u), std::max(document.end.column, 1u)};
    return document;
}
