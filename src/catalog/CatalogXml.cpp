#include "catalog/CatalogXml.h"

#include <cstdio>
#include <cwchar>

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

BOOL ReadFlag(const wchar_t* text, BOOL unreadable) noexcept
{
    int number = unreadable;
    if (std::swscanf(text, L"%d", &number) != 1) {
        return unreadable;
    }
    return number != 0;
}

} // namespace CatalogXml
