#include "catalog/CatalogXml.h"

#include <algorithm>
#include <cstdint>
#include <cwctype>

namespace {

bool IsDigit(wchar_t character) noexcept
{
    return L'0' <= character && character <= L'9';
}

} // namespace

namespace CatalogXml {

HRESULT Write(IXmlWriter* writer, const wchar_t* name, const wchar_t* value)
{
    return writer->WriteAttributeString(nullptr, name, nullptr, value);
}

HRESULT WriteText(IXmlWriter* writer, const wchar_t* name, const WideString& text)
{
    return text.empty() ? S_OK : Write(writer, name, text.c_str());
}

HRESULT WriteFlag(IXmlWriter* writer, const wchar_t* name, BOOL flag, BOOL defaultValue)
{
    if ((flag != 0) == (defaultValue != 0)) {
        return S_OK;
    }
    return Write(writer, name, flag ? L"1" : L"0");
}

HRESULT WriteTexts(IXmlWriter* writer, std::initializer_list<TextAttribute> attributes)
{
    HRESULT hr = S_OK;
    for (auto attribute = attributes.begin(); SUCCEEDED(hr) && attribute != attributes.end(); ++attribute) {
        hr = WriteText(writer, attribute->name, attribute->text);
    }
    return hr;
}

HRESULT WriteFlags(IXmlWriter* writer, std::initializer_list<FlagAttribute> attributes)
{
    HRESULT hr = S_OK;
    for (auto attribute = attributes.begin(); SUCCEEDED(hr) && attribute != attributes.end(); ++attribute) {
        hr = WriteFlag(writer, attribute->name, attribute->flag, attribute->defaultValue);
    }
    return hr;
}

std::optional<UINT32> TakeNumber(const wchar_t*& text) noexcept
{
    const wchar_t* next = text;
    while (std::iswspace(*next)) {
        ++next;
    }
    const bool isNegative = *next == L'-';
    if (isNegative || *next == L'+') {
        ++next;
    }
    if (!IsDigit(*next)) {
        return std::nullopt;
    }
    UINT64 number = 0;
    for (; IsDigit(*next); ++next) {
        number = std::min<UINT64>(number * 10 + static_cast<UINT64>(*next - L'0'), UINT32_MAX);
    }
    text = next;
    return static_cast<UINT32>(isNegative ? 0 - number : number);
}

BOOL ReadFlag(const wchar_t* text, BOOL unreadable) noexcept
{
    const std::optional<UINT32> number = TakeNumber(text);
    return number ? *number != 0 : unreadable;
}

} // namespace CatalogXml
