#pragma once

#include "standin/store/PackageStore.h"

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

// The texts that packages keep in their resources, one for each language. They stand in the package.ini, in a
// section for each language. Any thread.
namespace standin {

// ERROR_MRM_NAMED_RESOURCE_NOT_FOUND
inline constexpr auto resourceNotFound = static_cast<HRESULT>(0x80073B17);

// What an indirect string "@{full name?ms-resource://name/key}" names. The key may have several parts
// ("resources/appname"); it and the name may be empty.
struct ResourceSource
{
    std::wstring fullName;
    std::wstring name;
    std::wstring key;
};

// Nothing: the text is no reference into a package. Blanks behind "?" do not count.
[[nodiscard]] std::optional<ResourceSource> ParseResourceSource(std::wstring_view source);

// The text of a key in the package, in the chosen language, else in en-US. Null: there is none.
[[nodiscard]] const std::wstring* FindResource(const StorePackage& package, std::wstring_view key);

// Looks for the source's package among the installed ones and for the key in it. text is left untouched by a
// failure, which is resourceNotFound whatever is missing.
[[nodiscard]] HRESULT LoadResource(const ResourceSource& source, std::wstring& text);

// What the user sees of a value of the package's manifest: a reference ("ms-resource:name",
// "ms-resource:/path", "ms-resource:///path", "ms-resource://name/path") gives its text; the value itself is
// the result when it is no reference, or one that leads nowhere.
[[nodiscard]] std::wstring ResolveText(const StorePackage& package, const std::wstring& value);

// The application's display name for the user; its ID when the manifest has none.
[[nodiscard]] std::wstring DisplayName(const StorePackage& package, const ManifestApplication& application);

} // namespace standin
