#pragma once

#include "standin/store/Ini.h"

#include <optional>
#include <string>
#include <string_view>

// The files of a package of the store. What cannot be written or read is thrown as Failure (Result.h). Any
// thread.
namespace standin {

inline constexpr wchar_t manifestFileName[] = L"AppxManifest.xml";
inline constexpr wchar_t packageIniName[] = L"package.ini";

// Writes a package into its folder, over an older one; missing folders are made. Both texts are written byte
// for byte, UTF-8 normally; without a manifest there is none afterwards.
void WritePackage(const std::wstring& folder, std::optional<std::string_view> manifest, std::string_view ini);

// Copies a package's manifest and package.ini to another folder, over an older package.
void CopyPackage(const std::wstring& from, const std::wstring& to);

// Deletes a package's manifest and package.ini, and the folder when nothing else is in it. False: one of the
// two is there still.
[[nodiscard]] bool DeletePackage(const std::wstring& folder);

// False: the package has no package.ini.
[[nodiscard]] bool ReadPackageIni(const std::wstring& folder, Ini& ini);

} // namespace standin
