#include "support/DocumentedReader.h"

#include "support/Text.h"

#include <wrl/client.h>

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace test {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlank(std::string_view text)
{
    return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

// What a name means without its prefix.
std::wstring LocalName(const std::string& name)
{
    const std::size_t colon = name.find(':');
    return FromUtf8(colon == std::string::npos ? name : name.substr(colon + 1));
}

// Whether XML knows it. Halves of surrogate pairs are none.
bool IsCharacter(unsigned long code)
{
    return code < 0x20
               ? code == '\t' || code == '\n' || code == '\r'
               : code < 0xD800 || (code > 0xDFFF && code < 0xFFFE) || (code > 0xFFFF && code < 0x110000);
}

void CheckCharacters(std::string_view text)
{
    for (const char character : text) {
        if (!IsCharacter(static_cast<unsigned char>(character))) {
            throw DocumentedReader::kNoXml;
        }
    }
}

std::wstring NumberedCharacter(std::string_view digits, int base)
{
    unsigned long code = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result read = std::from_chars(digits.data(), end, code, base);
    if (read.ec != std::errc() || read.ptr != end || !IsCharacter(code)) {
        throw DocumentedReader::kNoXml;
    }
    return code < 0x10000 ? std::wstring(1, static_cast<wchar_t>(code))
                          : std::wstring{static_cast<wchar_t>(0xD7C0 + (code >> 10)),
                                         static_cast<wchar_t>(0xDC00 + (code & 0x3FF))};
}

std::wstring Character(std::string_view reference)
{
    if (reference.starts_with("#x")) {
        return NumberedCharacter(reference.substr(2), 16);
    }
    if (reference.starts_with("#")) {
        return NumberedCharacter(reference.substr(1), 10);
    }
    constexpr std::pair<std::string_view, const wchar_t*> names[] = {
        {"amp", L"&"}, {"lt", L"<"}, {"gt", L">"}, {"quot", L"\""}, {"apos", L"'"}};
    for (const auto& [name, character] : names) {
        if (reference == name) {
            return character;
        }
    }
    throw DocumentedReader::kNoXml;
}

std::wstring Decoded(std::string_view text)
{
    std::wstring decoded;
    while (!text.empty()) {
        const std::size_t ampersand = std::min(text.find('&'), text.size());
        decoded += FromUtf8(text.substr(0, ampersand));
        text.remove_prefix(ampersand);
        if (!text.empty()) {
            const std::size_t end = text.find(';');
            if (end == std::string_view::npos) {
                throw DocumentedReader::kNoXml;
            }
            decoded += Character(text.substr(1, end - 1));
            text.remove_prefix(end + 1);
        }
    }
    return decoded;
}

} // namespace

HRESULT DocumentedReader::SetInput(IUnknown* input)
{
    Microsoft::WRL::ComPtr<IStream> stream;
    const HRESULT hr = input->QueryInterface(IID_PPV_ARGS(stream.GetAddressOf()));
    if (FAILED(hr)) {
        return hr;
    }
    char buffer[4096];
    ULONG size = 0;
    while (SUCCEEDED(stream->Read(buffer, sizeof buffer, &size)) && size > 0) {
        m_text.append(buffer, size);
    }
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (m_text.starts_with(byteOrderMark)) {
        m_position = byteOrderMark.size();
    }
    return S_OK;
}

HRESULT DocumentedReader::Read(XmlNodeType* type)
{
    if (m_result == S_OK) {
        m_type = XmlNodeType_None;
        m_name.clear();
        m_value.clear();
        m_isEmptyElement = false;
        m_attributes.clear();
        m_attribute = 0;
        try {
            const std::size_t begin = m_position;
            m_result = ReadNode() ? S_OK : S_FALSE;
            CheckCharacters(std::string_view(m_text).substr(begin, m_position - begin));
        } catch (HRESULT failure) {
            m_type = XmlNodeType_None;
            m_attributes.clear();
            m_result = failure;
        }
    }
    if (type) {
        *type = m_type;
    }
    return m_result;
}

bool DocumentedReader::ReadNode()
{
    NotePlace();
    m_depth = static_cast<UINT>(m_open.size());
    const std::string text = m_text.substr(m_position, m_text.find('<', m_position) - m_position);
    m_position += text.size();
    if (m_position == m_text.size()) {
        if (m_hasRoot && m_open.empty() && IsBlank(text)) {
            return false;
        }
        throw kInputEnds;
    }
    if (!text.empty()) {
        m_type = IsBlank(text) ? XmlNodeType_Whitespace : XmlNodeType_Text;
        m_value = Decoded(text);
    } else if (TakeIf("<!--")) {
        m_type = XmlNodeType_Comment;
        m_value = FromUtf8(TakeUpTo("-->"));
    } else if (TakeIf("<![CDATA[")) {
        m_type = XmlNodeType_CDATA;
        m_value = FromUtf8(TakeUpTo("]]>"));
    } else if (TakeIf("<?")) {
        const std::string instruction = TakeUpTo("?>");
        const std::string target = instruction.substr(0, instruction.find_first_of(kBlanks));
        m_type = target == "xml" ? XmlNodeType_XmlDeclaration : XmlNodeType_ProcessingInstruction;
        m_name = FromUtf8(target);
    } else if (TakeIf("</")) {
        ReadEndTag();
    } else {
        ReadStartTag();
    }
    return true;
}

void DocumentedReader::ReadStartTag()
{
    (void)Take();
    m_type = XmlNodeType_Element;
    m_name = LocalName(TakeName());
    for (PassOverBlanks(); !TakeIf(">"); PassOverBlanks()) {
        m_isEmptyElement = TakeIf("/>");
        if (m_isEmptyElement) {
            break;
        }
        m_attributes.push_back(ReadAttribute());
    }
    m_hasRoot = true;
    if (!m_isEmptyElement) {
        m_open.push_back(m_name);
    }
}

void DocumentedReader::ReadEndTag()
{
    m_type = XmlNodeType_EndElement;
    m_name = LocalName(TakeName());
    PassOverBlanks();
    if (Take() != '>' || m_open.empty() || m_open.back() != m_name) {
        throw kNoXml;
    }
    m_open.pop_back();
}

DocumentedReader::Attribute DocumentedReader::ReadAttribute()
{
    Attribute attribute;
    attribute.name = LocalName(TakeName());
    PassOverBlanks();
    if (attribute.name.empty() || Take() != '=') {
        throw kNoXml;
    }
    PassOverBlanks();
    attribute.value = Decoded(TakeUpTo(std::string(1, Take())));
    return attribute;
}

char DocumentedReader::Take()
{
    if (m_position == m_text.size()) {
        throw kInputEnds;
    }
    return m_text[m_position++];
}

bool DocumentedReader::TakeIf(std::string_view expected)
{
    const std::string_view rest = std::string_view(m_text).substr(m_position);
    if (rest.starts_with(expected)) {
        m_position += expected.size();
        return true;
    }
    // What begins like it may still become it.
    if (!rest.empty() && expected.starts_with(rest)) {
        throw kInputEnds;
    }
    return false;
}

std::string DocumentedReader::TakeUpTo(std::string_view terminator)
{
    const std::size_t end = m_text.find(terminator, m_position);
    if (end == std::string::npos) {
        throw kInputEnds;
    }
    const std::string text = m_text.substr(m_position, end - m_position);
    m_position = end + terminator.size();
    return text;
}

std::string DocumentedReader::TakeName()
{
    const std::size_t end = m_text.find_first_of(" \t\r\n=/>", m_position);
    if (end == std::string::npos) {
        throw kInputEnds;
    }
    const std::string name = m_text.substr(m_position, end - m_position);
    m_position = end;
    return name;
}

void DocumentedReader::PassOverBlanks()
{
    m_position = m_text.find_first_not_of(kBlanks, m_position);
    if (m_position == std::string::npos) {
        m_position = m_text.size();
        throw kInputEnds;
    }
}

void DocumentedReader::NotePlace()
{
    const std::string_view text(m_text);
    const std::string_view passed = text.substr(m_noted, m_position - m_noted);
    m_line += static_cast<UINT>(std::count(passed.begin(), passed.end(), '\n'));
    if (const std::size_t lineEnd = passed.rfind('\n'); lineEnd != std::string_view::npos) {
        m_lineStart = m_noted + lineEnd + 1;
    }
    m_noted = m_position;
    m_linePosition = static_cast<UINT>(m_position - m_lineStart + 1);
}

HRESULT DocumentedReader::GetNodeType(XmlNodeType* type)
{
    *type = m_attribute > 0 ? XmlNodeType_Attribute : m_type;
    return m_type == XmlNodeType_None ? S_FALSE : S_OK;
}

HRESULT DocumentedReader::MoveToFirstAttribute()
{
    if (m_attributes.empty()) {
        return S_FALSE;
    }
    m_attribute = 1;
    return S_OK;
}

HRESULT DocumentedReader::MoveToNextAttribute()
{
    if (m_attribute == m_attributes.size()) {
        return S_FALSE;
    }
    ++m_attribute;
    return S_OK;
}

HRESULT DocumentedReader::MoveToElement()
{
    const bool hasMoved = m_attribute > 0;
    m_attribute = 0;
    return hasMoved ? S_OK : S_FALSE;
}

HRESULT DocumentedReader::GetLocalName(LPCWSTR* name, UINT* length)
{
    return Give(m_attribute > 0 ? m_attributes[m_attribute - 1].name : m_name, name, length);
}

HRESULT DocumentedReader::GetValue(LPCWSTR* value, UINT* length)
{
    return Give(m_attribute > 0 ? m_attributes[m_attribute - 1].value : m_value, value, length);
}

HRESULT DocumentedReader::Give(const std::wstring& text, LPCWSTR* given, UINT* length)
{
    *given = text.c_str();
    if (length) {
        *length = static_cast<UINT>(text.size());
    }
    return S_OK;
}

HRESULT DocumentedReader::GetDepth(UINT* depth)
{
    *depth = m_depth + (m_attribute > 0 ? 1 : 0);
    return S_OK;
}

HRESULT DocumentedReader::GetLineNumber(UINT* line)
{
    *line = m_line;
    return S_OK;
}

HRESULT DocumentedReader::GetLinePosition(UINT* position)
{
    *position = m_linePosition;
    return S_OK;
}

} // namespace test
