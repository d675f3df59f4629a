// How desktop applications enter the catalogue: by the shortcuts in the Start menu's folders.

#include "common/DiagnosticLog.h"
#include "common/UniqueHandle.h"
#include "discovery/PackageManager.h"

#include <cwchar>
#include <string_view>

namespace {

constexpr wchar_t kShortcuts[] = L"\\*.lnk";
constexpr wchar_t kInternetShortcuts[] = L"\\*.url";
constexpr std::wstring_view kEverything = L"\\*";
constexpr std::size_t kExtensionLength = 4; // ".lnk", ".url"

// A path in a fixed buffer of 260 characters. What does not fit is left out, and Fits() is false from then
// on, so that the caller can skip the entry: a cut path would be that of another file.
class PathBuffer
{
public:
    explicit PathBuffer(const wchar_t* path) noexcept { Append(path); }

    void Append(std::wstring_view text) noexcept
    {
        m_fits = m_fits && text.size() < MAX_PATH - m_length;
        if (m_fits) {
            std::wmemcpy(m_path + m_length, text.data(), text.size());
            m_length += text.size();
            m_path[m_length] = L'\0';
        }
    }

    [[nodiscard]] bool Fits() const noexcept { return m_fits; }
    [[nodiscard]] const wchar_t* Get() const noexcept { return m_path; }

private:
    wchar_t m_path[MAX_PATH] = {};
    std::size_t m_length = 0;
    bool m_fits = true;
};

[[nodiscard]] PathBuffer Join(const wchar_t* folder, const wchar_t* name) noexcept
{
    PathBuffer path(folder);
    path.Append(L"\\");
    path.Append(name);
    return path;
}

[[nodiscard]] UniqueFind FindFirst(const PathBuffer& pattern, WIN32_FIND_DATAW& found) noexcept
{
    if (!pattern.Fits()) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return UniqueFind();
    }
    return UniqueFind(FindFirstFileW(pattern.Get(), &found));
}

[[nodiscard]] bool IsSubfolder(const WIN32_FIND_DATAW& entry) noexcept
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
           _wcsnicmp(entry.cFileName, L".", MAX_PATH) != 0 &&
           _wcsnicmp(entry.cFileName, L"..", MAX_PATH) != 0;
}

} // namespace

HRESULT CQanhPackageManager::RefreshDesktopApps(const wchar_t* folder) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::RefreshDesktopApps";
    LogIn(kName, folder);
    if (!folder) {
        return LogOut(kName, E_POINTER);
    }
    if (*folder == L'\0') {
        return LogOut(kName, E_INVALIDARG);
    }
    if (PollExitEvent() == WAIT_OBJECT_0) {
        return S_OK;
    }
    AddLinkFileToList(folder, kShortcuts);
    AddLinkFileToList(folder, kInternetShortcuts);

    PathBuffer pattern(folder);
    pattern.Append(kEverything);
    WIN32_FIND_DATAW entry{};
    UniqueFind find = FindFirst(pattern, entry);
    if (!find) {
        DiagnosticLog::WriteLine("Errcode = %d \r\n", static_cast<int>(GetLastError()));
        return E_FAIL;
    }
    do {
        if (PollExitEvent() == WAIT_OBJECT_0) {
            break;
        }
        if (IsSubfolder(entry)) {
            const PathBuffer subfolder = Join(folder, entry.cFileName);
            if (subfolder.Fits()) {
                (void)RefreshDesktopApps(subfolder.Get()); // fails for itself alone, and logs it
            }
        }
    } while (FindNextFileW(find.Get(), &entry));
    find.Reset();
    return LogOut(kName, S_OK);
}

void CQanhPackageManager::AddLinkFileToList(const wchar_t* folder, const wchar_t* pattern) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackageManager::AddLinkFileToList";
    LogIn(kName, folder);
    PathBuffer searchPath(folder);
    searchPath.Append(pattern);
    WIN32_FIND_DATAW found{};
    UniqueFind find = FindFirst(searchPath, found);
    if (!find) {
        DiagnosticLog::WriteLine("%S Errcode = %d \r\n", searchPath.Get(), static_cast<int>(GetLastError()));
        return;
    }
    do {
        const PathBuffer path = Join(folder, found.cFileName);
        if (path.Fits()) {
            // The extension is cut by its length, so a file named ".lnk" has an empty name, which the list
            // refuses.
            const std::size_t length = std::wcslen(found.cFileName);
            found.cFileName[length < kExtensionLength ? 0 : length - kExtensionLength] = L'\0';
            // Known already, or refused: the log tells.
            (void)m_AppNameList.AddDesktopApp(found.cFileName, path.Get());
        }
    } while (FindNextFileW(find.Get(), &found));
    find.Reset();
    LogOut(kName);
}
