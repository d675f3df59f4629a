#include "api/SearchQuery.h"

#include <cstdio>
#include <cwchar>
#include <string_view>

namespace {

// Puts the text in the place of the format's one "%s", however long it is.
std::wstring Format(std::wstring_view format, std::wstring_view text)
{
    constexpr std::wstring_view kPlace = L"%s";
    const std::size_t place = format.find(kPlace);
    std::wstring formatted(format.substr(0, place));
    formatted += text;
    formatted += format.substr(place + kPlace.size());
    return formatted;
}

} // namespace

std::wstring BuildSearchQuery(const wchar_t* appName, const ExcludeList& excludeList)
{
    std::wstring query = Format(L"\"%s\"", appName);
    std::wstring excluded;
    for (const WideString& name : excludeList) {
        excluded += excluded.empty() ? Format(L"\"%s\"", name.c_str()) : Format(L" OR \"%s\"", name.c_str());
    }
    if (!excluded.empty()) {
        query += Format(L" NOT(%s)", excluded);
    }
    return query;
}
