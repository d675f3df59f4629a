#include "standin/store/PackageFiles.h"

namespace standin {

namespace {

HRESULT LastError() noexcept
{
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

HRESULT MakeFolder(const std::wstring& folder)
{
    if (CreateDirectoryW(folder.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) {
        return S_OK;
    }
    const size_t end = folder.find_last_of(L"\\/");
    if (GetLastError() != ERROR_PATH_NOT_FOUND || end == std::wstring::npos) {
        return LastError();
    }
    const HRESULT hr = MakeFolder(folder.substr(0, end));
    if (FAILED(hr)) {
        return hr;
    }
    return CreateDirectoryW(folder.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS ? S_OK
                                                                                               : LastError();
}

HRESULT WriteBytes(const std::wstring& path, std::string_view bytes)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    DWORD written = 0;
    const bool isWritten =
        WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != FALSE;
    const HRESULT hr = isWritten ? S_OK : LastError();
    CloseHandle(file);
    return hr;
}

HRESULT DeleteIfThere(const std::wstring& path) noexcept
{
    if (DeleteFileW(path.c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND ||
        GetLastError() == ERROR_PATH_NOT_FOUND) {
        return S_OK;
    }
    return LastError();
}

std::wstring ManifestPath(const std::wstring& folder)
{
    return folder + L"\\" + manifestFileName;
}

std::wstring IniPath(const std::wstring& folder)
{
    return folder + L"\\" + packageIniName;
}

} // namespace

HRESULT ReadFileBytes(const std::wstring& path, std::string& bytes)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    bytes.assign(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    const bool isRead =
        ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) != FALSE;
    const HRESULT hr = isRead ? S_OK : LastError();
    bytes.resize(read);
    CloseHandle(file);
    return hr;
}

HRESULT WritePackage(const std::wstring& folder, std::optional<std::string_view> manifest,
                     std::string_view ini)
{
    HRESULT hr = MakeFolder(folder);
    if (SUCCEEDED(hr)) {
        hr = manifest ? WriteBytes(ManifestPath(folder), *manifest) : DeleteIfThere(ManifestPath(folder));
    }
    return SUCCEEDED(hr) ? WriteBytes(IniPath(folder), ini) : hr;
}

HRESULT CopyPackage(const std::wstring& from, const std::wstring& to)
{
    std::string manifest;
    std::string ini;
    const HRESULT manifestResult = ReadFileBytes(ManifestPath(from), manifest);
    const HRESULT iniResult = ReadFileBytes(IniPath(from), ini);
    if (FAILED(manifestResult) && FAILED(iniResult)) {
        return iniResult; // there is no package
    }
    return WritePackage(
        to, SUCCEEDED(manifestResult) ? std::optional<std::string_view>(manifest) : std::nullopt, ini);
}

HRESULT DeletePackage(const std::wstring& folder)
{
    HRESULT hr = DeleteIfThere(ManifestPath(folder));
    if (SUCCEEDED(hr)) {
        hr = DeleteIfThere(IniPath(folder));
    }
    RemoveDirectoryW(folder.c_str());
    return hr;
}

bool ReadPackageIni(const std::wstring& folder, Ini& ini)
{
    std::string bytes;
    if (FAILED(ReadFileBytes(IniPath(folder), bytes))) {
        return false;
    }
    ini = Ini(bytes);
    return true;
}

} // namespace standin
