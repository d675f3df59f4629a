// The cases of catalogues, as the programs read them that compare the library with the model.
#pragma once

#include "catalog/AppNameList.h"
#include "proof/Cases.h"

#include <string>
#include <vector>

namespace proof {

struct CatalogueCase
{
    std::string document;
    bool isWhole = false; // it is read to its end
    std::string calls;    // of its saving: a line each
    std::string allCalls; // of that with every record marked as installed
};

// False behind the last one.
inline bool ReadCase(std::istream& input, CatalogueCase& read)
{
    std::string isWhole;
    const bool isRead = ReadBlock(input, read.document) && ReadBlock(input, isWhole) &&
                        ReadBlock(input, read.calls) && ReadBlock(input, read.allCalls);
    read.isWhole = isWhole == "1";
    return isRead;
}

// The calls of a writer as a case tells them: those that say what is written.
inline std::string TextOfCalls(const std::vector<std::wstring>& calls)
{
    std::string text;
    for (const std::wstring& call : calls) {
        if (call != L"end" && !call.starts_with(L"start ") && call.find(L'=') == std::wstring::npos) {
            continue;
        }
        if (call.starts_with(L"start document") || call.starts_with(L"property ")) {
            continue;
        }
        AppendLine(text, call);
    }
    return text;
}

inline void MarkAllInstalled(CQanhAppNameList& list)
{
    list.SetPackagesInstalled(std::vector<BOOL>(list.PackageFamilyNames().size(), TRUE));
    list.SetDesktopAppsInstalled(std::vector<BOOL>(list.DesktopShortcuts().size(), TRUE));
}

} // namespace proof
