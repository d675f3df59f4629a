#include "api/SearchQuery.h"

#include "common/FormatText.h"

std::wstring BuildSearchQuery(const wchar_t* appName, const ExcludeList& excludeList)
{
    std::wstring query = FormatText(L"\"%s\"", {appName});
    std::wstring excluded;
    for (const WideString& name : excludeList) {
        excluded += FormatText(excluded.empty() ? L"\"%s\"" : L" OR \"%s\"", {name.c_str()});
    }
    if (!excluded.empty()) {
        query += FormatText(L" NOT(%s)", {excluded});
    }
    return query;
}
