#include "common/FormatText.h"

#include <cwchar>

std::wstring FormatText(std::wstring_view format, std::initializer_list<std::wstring_view> arguments)
{
    constexpr std::wstring_view kPlace = L"%s";
    std::wstring text;
    for (const std::wstring_view argument : arguments) {
        const std::size_t place = format.find(kPlace);
        text += format.substr(0, place);
        text += argument;
        format.remove_prefix(place + kPlace.size());
    }
    text += format;
    return text;
}

std::wstring ToLowerCase(std::wstring text)
{
    _wcslwr_s(text.data(), text.size() + 1);
    return text;
}
