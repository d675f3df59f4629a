#include "StartMenu.h"

#include "Failure.h"
#include "FolderEntries.h"
#include "common/HostEnvironment.h"

#include <string>

namespace {

constexpr wchar_t kPrograms[] = L"\\Microsoft\\Windows\\Start Menu\\Programs";
constexpr std::size_t kExtensionLength = 4; // ".lnk", ".url"

void AddFolder(CQanhAppNameList& list, const std::wstring& folder)
{
    for (const wchar_t* pattern : {L"\\*.lnk", L"\\*.url"}) {
        ForEachEntry(folder + pattern, [&](const WIN32_FIND_DATAW& entry) {
            const std::wstring file = entry.cFileName;
            if (file.size() > kExtensionLength) {
                // One that is there twice counts once.
                (void)list.AddDesktopApp(file.substr(0, file.size() - kExtensionLength).c_str(),
                                         (folder + L"\\" + file).c_str());
            }
        });
    }
    ForEachEntry(folder + L"\\*", [&](const WIN32_FIND_DATAW& entry) {
        const std::wstring name = entry.cFileName;
        const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                              (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
        if (isFolder && name != L"." && name != L"..") {
            AddFolder(list, folder + L"\\" + name);
        }
    });
}

} // namespace

void AddStartMenu(CQanhAppNameList& list)
{
    for (const wchar_t* variable : {L"ALLUSERSPROFILE", L"APPDATA"}) {
        wchar_t folder[MAX_PATH];
        if (!ReadEnvironmentVariable(variable, folder)) {
            throw Failure{std::wstring(L"cannot tell where the Start menu is: ") + variable + L" is not set",
                          E_FAIL};
        }
        AddFolder(list, std::wstring(folder) + kPrograms);
    }
}
