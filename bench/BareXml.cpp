#include "BareXml.h"

#include "support/Text.h"

#include <windows.h>

#include <objidl.h>
#include <shlwapi.h>
#include <xmllite.h>

#include <wrl/client.h>

#include <rapidxml/rapidxml.hpp>

#include <memory>
#include <stdexcept>

using Microsoft::WRL::ComPtr;

namespace bench {

namespace {

void Check(HRESULT hr, const char* what)
{
    if (FAILED(hr)) {
        throw std::runtime_error(what);
    }
}

std::size_t WalkAttributes(IXmlReader* reader)
{
    std::size_t characters = 0;
    for (HRESULT hr = reader->MoveToFirstAttribute(); hr == S_OK; hr = reader->MoveToNextAttribute()) {
        const wchar_t* text = nullptr;
        UINT length = 0;
        Check(reader->GetLocalName(&text, &length), "an attribute without a name");
        characters += length;
        Check(reader->GetValue(&text, &length), "an attribute without a value");
        characters += length;
    }
    return characters;
}

std::size_t WalkParsed(const rapidxml::xml_node<>* node)
{
    std::size_t characters = node->name_size() + node->value_size();
    for (auto* attribute = node->first_attribute(); attribute; attribute = attribute->next_attribute()) {
        characters += attribute->name_size() + attribute->value_size();
    }
    for (auto* child = node->first_node(); child; child = child->next_sibling()) {
        characters += WalkParsed(child);
    }
    return characters;
}

void WriteAttribute(IXmlWriter* writer, const wchar_t* name, const std::wstring& value)
{
    if (!value.empty()) {
        writer->WriteAttributeString(nullptr, name, nullptr, value.c_str());
    }
}

} // namespace

std::size_t WalkXml(const std::wstring& file)
{
    ComPtr<IStream> stream;
    Check(SHCreateStreamOnFileEx(file.c_str(), STGM_READ | STGM_SHARE_DENY_WRITE, 0, FALSE, nullptr,
                                 stream.GetAddressOf()),
          "a file cannot be opened");
    ComPtr<IXmlReader> reader;
    Check(CreateXmlReader(IID_PPV_ARGS(reader.GetAddressOf()), nullptr), "no reader");
    Check(reader->SetInput(stream.Get()), "no input");
    std::size_t characters = 0;
    XmlNodeType type = XmlNodeType_None;
    HRESULT hr = S_OK;
    while ((hr = reader->Read(&type)) == S_OK) {
        if (type == XmlNodeType_Element) {
            const wchar_t* name = nullptr;
            UINT length = 0;
            Check(reader->GetLocalName(&name, &length), "an element without a name");
            characters += length + WalkAttributes(reader.Get());
        }
    }
    Check(hr, "a file cannot be read");
    return characters;
}

std::size_t ParseInMemory(const std::wstring& file)
{
    // The library's files leave the root open, which this parser does not forgive.
    std::string text = test::ReadFileBytes(file) + "</Applications>";
    // Its first nodes are a part of it: too large for the stack.
    const auto document = std::make_unique<rapidxml::xml_document<>>();
    document->parse<0>(text.data());
    return WalkParsed(document.get());
}

void WriteXml(const Catalog& catalog, const std::wstring& file)
{
    ComPtr<IStream> stream;
    Check(SHCreateStreamOnFileEx(file.c_str(), STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE,
                                 FILE_ATTRIBUTE_NORMAL, TRUE, nullptr, stream.GetAddressOf()),
          "a file cannot be made");
    ComPtr<IXmlWriter> writer;
    Check(CreateXmlWriter(IID_PPV_ARGS(writer.GetAddressOf()), nullptr), "no writer");
    Check(writer->SetOutput(stream.Get()), "no output");
    writer->SetProperty(XmlWriterProperty_Indent, TRUE);
    writer->WriteStartDocument(XmlStandalone_Omit);
    writer->WriteStartElement(nullptr, L"Applications", nullptr);
    writer->WriteStartElement(nullptr, L"MetroApps", nullptr);
    for (const StorePackage& package : catalog.packages) {
        writer->WriteStartElement(nullptr, L"Package", nullptr);
        WriteAttribute(writer.Get(), L"PackageFamilyName", package.familyName);
        WriteAttribute(writer.Get(), L"Version", package.version);
        for (const StoreApp& app : package.apps) {
            writer->WriteStartElement(nullptr, L"MetroApp", nullptr);
            WriteAttribute(writer.Get(), L"DisplayName", app.displayName);
            WriteAttribute(writer.Get(), L"ShortName", app.shortName);
            WriteAttribute(writer.Get(), L"RubyDisplayName", app.reading);
            writer->WriteEndElement();
        }
        writer->WriteEndElement();
    }
    writer->WriteEndElement();
    writer->WriteStartElement(nullptr, L"DesktopApps", nullptr);
    for (const DesktopApp& app : catalog.desktopApps) {
        writer->WriteStartElement(nullptr, L"DesktopApp", nullptr);
        WriteAttribute(writer.Get(), L"DisplayName", app.displayName);
        WriteAttribute(writer.Get(), L"LnkFileName", app.shortcut);
        WriteAttribute(writer.Get(), L"RubyDisplayName", app.reading);
        writer->WriteEndElement();
    }
    writer->WriteEndElement();
    // The root stays open, as in the library's files.
    Check(writer->Flush(), "a file cannot be written");
}

} // namespace bench
