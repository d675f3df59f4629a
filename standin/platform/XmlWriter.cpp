#include "standin/platform/XmlWriter.h"

#include "standin/platform/ComObject.h"
#include "standin/platform/ImportPatch.h"

#include <xmllite.h>

#include <exception>
#include <string>

namespace standin {

namespace {

// Appends what stands for the character in an attribute's value.
void AppendEscaped(std::wstring& escaped, wchar_t character)
{
    switch (character) {
    case L'&':
        escaped += L"&amp;";
        break;
    case L'<':
        escaped += L"&lt;";
        break;
    case L'>':
        escaped += L"&gt;";
        break;
    case L'"':
        escaped += L"&quot;";
        break;
    case L'\t':
        escaped += L"&#x9;";
        break;
    case L'\n':
        escaped += L"&#xA;";
        break;
    case L'\r':
        escaped += L"&#xD;";
        break;
    default:
        escaped += character;
    }
}

// S_OK when XML can hold the text, surrogates only in pairs.
HRESULT CheckCharacters(const wchar_t* text) noexcept
{
    for (; *text != L'\0'; ++text) {
        if (IS_HIGH_SURROGATE(*text)) {
            if (!IS_LOW_SURROGATE(text[1])) {
                return static_cast<HRESULT>(WR_E_INVALIDSURROGATEPAIR);
            }
            ++text;
        } else if (IS_LOW_SURROGATE(*text)) {
            return static_cast<HRESULT>(WR_E_INVALIDSURROGATEPAIR);
        } else if (*text == 0xFFFE || *text == 0xFFFF ||
                   (*text < L' ' && *text != L'\t' && *text != L'\n' && *text != L'\r')) {
            return static_cast<HRESULT>(WC_E_XMLCHARACTER);
        }
    }
    return S_OK;
}

// Hands everything on to the platform's own writer, attribute values escaped.
class EscapingXmlWriter final : public ComObject<IXmlWriter>
{
public:
    explicit EscapingXmlWriter(IXmlWriter* writer) noexcept : m_writer(writer) { m_writer->AddRef(); }

    HRESULT STDMETHODCALLTYPE WriteAttributeString(LPCWSTR prefix, LPCWSTR name, LPCWSTR uri,
                                                   LPCWSTR value) override
    {
        if (!value) {
            return m_writer->WriteAttributeString(prefix, name, uri, value);
        }
        const HRESULT hr = CheckCharacters(value);
        if (FAILED(hr)) {
            return hr;
        }
        try {
            std::wstring escaped;
            for (const wchar_t* character = value; *character != L'\0'; ++character) {
                AppendEscaped(escaped, *character);
            }
            return m_writer->WriteAttributeString(prefix, name, uri, escaped.c_str());
        } catch (const std::exception&) {
            return E_OUTOFMEMORY;
        }
    }

    HRESULT STDMETHODCALLTYPE SetOutput(IUnknown* output) override { return m_writer->SetOutput(output); }
    HRESULT STDMETHODCALLTYPE GetProperty(UINT property, LONG_PTR* value) override
    {
        return m_writer->GetProperty(property, value);
    }
    HRESULT STDMETHODCALLTYPE SetProperty(UINT property, LONG_PTR value) override
    {
        return m_writer->SetProperty(property, value);
    }
    HRESULT STDMETHODCALLTYPE WriteAttributes(IXmlReader* reader, BOOL writeDefaults) override
    {
        return m_writer->WriteAttributes(reader, writeDefaults);
    }
    HRESULT STDMETHODCALLTYPE WriteCData(LPCWSTR text) override { return m_writer->WriteCData(text); }
    HRESULT STDMETHODCALLTYPE WriteCharEntity(WCHAR character) override
    {
        return m_writer->WriteCharEntity(character);
    }
    HRESULT STDMETHODCALLTYPE WriteChars(const WCHAR* text, UINT length) override
    {
        return m_writer->WriteChars(text, length);
    }
    HRESULT STDMETHODCALLTYPE WriteComment(LPCWSTR text) override { return m_writer->WriteComment(text); }
    HRESULT STDMETHODCALLTYPE WriteDocType(LPCWSTR name, LPCWSTR publicId, LPCWSTR systemId,
                                           LPCWSTR subset) override
    {
        return m_writer->WriteDocType(name, publicId, systemId, subset);
    }
    HRESULT STDMETHODCALLTYPE WriteElementString(LPCWSTR prefix, LPCWSTR name, LPCWSTR uri,
                                                 LPCWSTR value) override
    {
        return m_writer->WriteElementString(prefix, name, uri, value);
    }
    HRESULT STDMETHODCALLTYPE WriteEndDocument() override { return m_writer->WriteEndDocument(); }
    HRESULT STDMETHODCALLTYPE WriteEndElement() override { return m_writer->WriteEndElement(); }
    HRESULT STDMETHODCALLTYPE WriteEntityRef(LPCWSTR name) override { return m_writer->WriteEntityRef(name); }
    HRESULT STDMETHODCALLTYPE WriteFullEndElement() override { return m_writer->WriteFullEndElement(); }
    HRESULT STDMETHODCALLTYPE WriteName(LPCWSTR name) override { return m_writer->WriteName(name); }
    HRESULT STDMETHODCALLTYPE WriteNmToken(LPCWSTR token) override { return m_writer->WriteNmToken(token); }
    HRESULT STDMETHODCALLTYPE WriteNode(IXmlReader* reader, BOOL writeDefaults) override
    {
        return m_writer->WriteNode(reader, writeDefaults);
    }
    HRESULT STDMETHODCALLTYPE WriteNodeShallow(IXmlReader* reader, BOOL writeDefaults) override
    {
        return m_writer->WriteNodeShallow(reader, writeDefaults);
    }
    HRESULT STDMETHODCALLTYPE WriteProcessingInstruction(LPCWSTR name, LPCWSTR text) override
    {
        return m_writer->WriteProcessingInstruction(name, text);
    }
    HRESULT STDMETHODCALLTYPE WriteQualifiedName(LPCWSTR name, LPCWSTR uri) override
    {
        return m_writer->WriteQualifiedName(name, uri);
    }
    HRESULT STDMETHODCALLTYPE WriteRaw(LPCWSTR text) override { return m_writer->WriteRaw(text); }
    HRESULT STDMETHODCALLTYPE WriteRawChars(const WCHAR* text, UINT length) override
    {
        return m_writer->WriteRawChars(text, length);
    }
    HRESULT STDMETHODCALLTYPE WriteStartDocument(XmlStandalone standalone) override
    {
        return m_writer->WriteStartDocument(standalone);
    }
    HRESULT STDMETHODCALLTYPE WriteStartElement(LPCWSTR prefix, LPCWSTR name, LPCWSTR uri) override
    {
        return m_writer->WriteStartElement(prefix, name, uri);
    }
    HRESULT STDMETHODCALLTYPE WriteString(LPCWSTR text) override { return m_writer->WriteString(text); }
    HRESULT STDMETHODCALLTYPE WriteSurrogateCharEntity(WCHAR low, WCHAR high) override
    {
        return m_writer->WriteSurrogateCharEntity(low, high);
    }
    HRESULT STDMETHODCALLTYPE WriteWhitespace(LPCWSTR text) override
    {
        return m_writer->WriteWhitespace(text);
    }
    HRESULT STDMETHODCALLTYPE Flush() override { return m_writer->Flush(); }

private:
    ~EscapingXmlWriter() override { m_writer->Release(); }

    IXmlWriter* m_writer;
};

using CreateFunction = HRESULT(STDMETHODCALLTYPE*)(REFIID, void**, IMalloc*);

// Asked for by name, so that this module has no import of its own that could lead back here.
CreateFunction PlatformCreateXmlWriter() noexcept
{
    const HMODULE library = LoadLibraryW(L"xmllite.dll");
    return library ? reinterpret_cast<CreateFunction>(
                         reinterpret_cast<void*>(GetProcAddress(library, "CreateXmlWriter")))
                   : nullptr;
}

HRESULT STDMETHODCALLTYPE CreateEscapingXmlWriter(REFIID interfaceId, void** object, IMalloc* allocator)
{
    static const CreateFunction create = PlatformCreateXmlWriter();
    if (!create) {
        return E_UNEXPECTED;
    }
    IXmlWriter* writer = nullptr;
    HRESULT hr = create(__uuidof(IXmlWriter), reinterpret_cast<void**>(&writer), allocator);
    if (SUCCEEDED(hr)) {
        hr = CreateComObject<EscapingXmlWriter>(interfaceId, object, writer);
        writer->Release();
    }
    return hr;
}

} // namespace

void PatchXmlWriter(HMODULE own) noexcept
{
    PatchImports({"xmllite.dll", "CreateXmlWriter", reinterpret_cast<void*>(&CreateEscapingXmlWriter)}, own);
}

} // namespace standin
