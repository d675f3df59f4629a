#pragma once

#include "standin/store/Ini.h"

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

// The files of a package of the store. Any thread.
namespace standin {

inline constexpr wchar_t manifestFileName[] = L"AppxManifest.xml";
inline constexpr wchar_t packageIniName[] = L"package.ini";

// Writes a package into its folder, over an older one; missing folders are made. Both texts are written byte
// for byte, UTF-8 normally; without a manifest there is none afterwards.
[[nodiscard]] HRESULT WritePackage(const std::wstring& folder, std::optional<std::string_view> manifest,
                                   std::string_view ini);

// Copies a package's manifest and package.ini to another folder, over an older package.
[[nodiscard]] HRESULT CopyPackage(const std::wstring& from, const std::wstring& to);

// Deletes a package's manifest and package.ini, and the folder when nothing else is in it.
[[nodiscard]] HRESULT DeletePackage(const std::wstring& folder);

// Reads a whole file, also one that is being replaced, moved or deleted.
[[nodiscard]] HRESULT ReadFileBytes(const std::wstring& path, std::string& bytes);

// False: the package has no package.ini.
[[nodiscard]] bool ReadPackageIni(const std::wstring& folder, Ini& ini);

} // namespace standin
