// Where the package manager finds its files.

#include "common/DiagnosticLog.h"
#include "common/HostEnvironment.h"
#include "discovery/PackageManager.h"

#include <shlobj.h>

#include <cstdio>
#include <cwchar>

namespace {

constexpr wchar_t kFolderFormat[] = L"%s\\Vel\\QanHelper%s";
constexpr wchar_t kCatalogFile[] = L"AppNameList.xml";
constexpr wchar_t kPresetFile[] = L"PresetAppNameList.xml";

// Deliberate: the exit lines print their wide path with the narrow "%s", which shows what stands before the
// first zero byte: one letter of a Latin path.
void LogPath(const wchar_t* operation, const wchar_t* path) noexcept
{
    DiagnosticLog::WriteLine("%S OUT(%s)\r\n", operation, reinterpret_cast<const char*>(path));
}

} // namespace

HRESULT CQanhPackageManager::GetModuleName(wchar_t (*pModuleName)[MAX_PATH]) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::GetModuleName";
    LogIn(kName);
    if (!pModuleName) {
        return LogOut(kName, E_POINTER);
    }
    wchar_t executable[MAX_PATH];
    if (!GetHostExecutablePath(executable)) {
        LogOutNumber(kName, 0);
        return E_FAIL;
    }
    const wchar_t* name = CutHostName(executable);
    if (*name == L'\\') {
        ++name;
    }
    wcsncpy_s(*pModuleName, MAX_PATH, name, _TRUNCATE);
    LogPath(kName, *pModuleName);
    return S_OK;
}

HRESULT CQanhPackageManager::CreateAppNameListFolder(wchar_t (&folder)[MAX_PATH]) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::CreateAppNameListFolder";
    LogIn(kName);
    folder[0] = L'\0';
    wchar_t localAppData[MAX_PATH];
    wchar_t executable[MAX_PATH];
    if (!ReadEnvironmentVariable(L"LOCALAPPDATA", localAppData) || !GetHostExecutablePath(executable)) {
        LogOutNumber(kName, 0);
        return E_FAIL;
    }
    const std::size_t length = std::wcslen(localAppData);
    if (length > 0 && localAppData[length - 1] == L'\\') {
        localAppData[length - 1] = L'\0';
    }
    _snwprintf_s(folder, MAX_PATH, _TRUNCATE, kFolderFormat, localAppData, CutHostName(executable));
    const int error = SHCreateDirectoryExW(nullptr, folder, nullptr);
    if (error != ERROR_SUCCESS) {
        // Not a failure: as a rule the folder is there already.
        DiagnosticLog::WriteLine("%S SHCreateDirectoryEx failed. ErrCode = (%d)\r\n", kName, error);
    }
    LogPath(kName, folder);
    return S_OK;
}

BOOL CQanhPackageManager::GetPresetAppNameFullPath(wchar_t (&path)[MAX_PATH]) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::GetPresetAppNameFullPath";
    LogIn(kName);
    wchar_t executable[MAX_PATH];
    if (!GetHostExecutablePath(executable)) {
        return LogOutNumber(kName, 0);
    }
    if (wchar_t* backslash = std::wcsrchr(executable, L'\\')) {
        *backslash = L'\0';
    }
    _snwprintf_s(path, MAX_PATH, _TRUNCATE, L"%s\\%s", executable, kPresetFile);
    LogPath(kName, path);
    return TRUE;
}

void CQanhPackageManager::ComposeCatalogPath(wchar_t (&path)[MAX_PATH]) noexcept
{
    wchar_t folder[MAX_PATH];
    (void)CreateAppNameListFolder(folder); // what it leaves is used: opening the file fails then
    _snwprintf_s(path, MAX_PATH, _TRUNCATE, L"%s\\%s", folder, kCatalogFile);
}
