#include "standin/store/PackageFiles.h"

#include "standin/Files.h"
#include "standin/Result.h"

#include <windows.h>

namespace standin {

namespace {

std::wstring ManifestPath(const std::wstring& folder)
{
    return folder + L"\\" + manifestFileName;
}

std::wstring IniPath(const std::wstring& folder)
{
    return folder + L"\\" + packageIniName;
}

bool DeleteIfThere(const std::wstring& path) noexcept
{
    return DeleteFileW(path.c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND ||
           GetLastError() == ERROR_PATH_NOT_FOUND;
}

std::optional<std::string> ReadIfThere(const std::wstring& path)
{
    try {
        return ReadFileBytes(path);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

} // namespace

void WritePackage(const std::wstring& folder, std::optional<std::string_view> manifest, std::string_view ini)
{
    MakeFolder(folder);
    if (manifest) {
        WriteFileBytes(ManifestPath(folder), *manifest);
    } else if (!DeleteIfThere(ManifestPath(folder))) {
        throw Failure(LastError());
    }
    WriteFileBytes(IniPath(folder), ini);
}

void CopyPackage(const std::wstring& from, const std::wstring& to)
{
    const std::optional<std::string> manifest = ReadIfThere(ManifestPath(from));
    // One of the two is enough.
    WritePackage(to, manifest,
                 manifest ? ReadIfThere(IniPath(from)).value_or("") : ReadFileBytes(IniPath(from)));
}

bool DeletePackage(const std::wstring& folder)
{
    const bool isDeleted = DeleteIfThere(ManifestPath(folder)) && DeleteIfThere(IniPath(folder));
    RemoveDirectoryW(folder.c_str());
    return isDeleted;
}

bool ReadPackageIni(const std::wstring& folder, Ini& ini)
{
    const std::optional<std::string> bytes = ReadIfThere(IniPath(folder));
    ini = Ini(bytes.value_or(""));
    return bytes.has_value();
}

} // namespace standin
