// How resource references of a manifest become text.

#include "common/DiagnosticLog.h"
#include "common/FormatText.h"
#include "manifest/ManifestReader.h"

#include <shlwapi.h>

#include <string_view>

namespace {

constexpr wchar_t kName[] = L"CQanhManifestReader::ConvertMsResourceToString";
constexpr std::wstring_view kRootedPrefix = L"ms-resource:///";

// Each takes the package's full name, its name and the key.
constexpr std::wstring_view kRootedSource = L"@{%s?ms-resource://%s/%s}";
constexpr std::wstring_view kFirstSource = L"@{%s?ms-resource://%s/resources/%s}";
// Deliberate: the blank belongs to the second try.
constexpr std::wstring_view kSecondSource = L"@{%s? ms-resource://%s/%s}";

void TrimSlashes(std::wstring& key)
{
    key.erase(key.find_last_not_of(L'/') + 1);
    key.erase(0, key.find_first_not_of(L'/'));
}

bool Load(const std::wstring& source, wchar_t* buffer)
{
    DiagnosticLog::WriteLine("%S ms-resource = %S)\r\n", kName, source.c_str());
    return SUCCEEDED(SHLoadIndirectString(source.c_str(), buffer, CQanhManifestReader::kTextSize, nullptr));
}

} // namespace

BOOL CQanhManifestReader::ConvertMsResourceToString(std::wstring resource, const wchar_t* packageFullName,
                                                    const wchar_t* packageName, wchar_t* buffer)
{
    DiagnosticLog::WriteLine("%S(%S, %S, %S, %S, %d) IN\r\n", kName, resource.c_str(), packageFullName,
                             packageName, buffer, kTextSize);
    if (!packageFullName || !packageName || !buffer || *packageFullName == L'\0' || *packageName == L'\0') {
        return FALSE;
    }
    std::wstring key = ToLowerCase(std::move(resource));
    if (!key.starts_with(kResourcePrefix)) {
        return FALSE;
    }
    bool isLoaded = false;
    if (key.starts_with(kRootedPrefix)) {
        key.erase(0, kRootedPrefix.size());
        isLoaded = Load(FormatText(kRootedSource, {packageFullName, packageName, key}), buffer);
    } else {
        key.erase(0, kResourcePrefix.size());
        TrimSlashes(key);
        isLoaded = Load(FormatText(kFirstSource, {packageFullName, packageName, key}), buffer) ||
                   Load(FormatText(kSecondSource, {packageFullName, packageName, key}), buffer);
    }
    DiagnosticLog::WriteLine("%S OUT(pStr = %S)\r\n", kName, buffer);
    return isLoaded ? TRUE : FALSE;
}
