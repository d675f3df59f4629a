#pragma once

#include <windows.h>

#include <objidl.h>

#include <string>
#include <string_view>
#include <vector>

// What the stand-in reads of a package's AppxManifest.xml, in every dialect: namespaces and prefixes are not
// looked at, and letter case of element and attribute names does not count. Any thread.
namespace standin {

struct ManifestApplication
{
    struct Value
    {
        std::wstring name;
        std::wstring text;
    };

    // Attributes of the application, its visual elements, its tile and its lock screen, as they stand.
    std::vector<Value> values;

    // Null: the manifest does not say. Names as the platform's manifest interfaces call them: "Id",
    // "DisplayName", "ShortName". Valid as long as the object.
    [[nodiscard]] const std::wstring* Find(std::wstring_view name) const noexcept;
};

struct Manifest
{
    std::wstring name; // of the identity, like the following
    std::wstring version;
    std::wstring architecture;
    std::wstring resourceId;
    bool isFramework = false;
    std::vector<ManifestApplication> applications;
};

// Reads the document to its end. A failure is the XML reader's, or APPX_E_INVALID_MANIFEST for a document
// that is not a package's or does not say whose; manifest holds then what stood before the fault.
[[nodiscard]] HRESULT ReadManifest(IStream* stream, Manifest& manifest);
[[nodiscard]] HRESULT ReadManifestFile(const std::wstring& path, Manifest& manifest);

} // namespace standin
