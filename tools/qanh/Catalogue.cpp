#include "Catalogue.h"

#include "Document.h"
#include "Failure.h"
#include "Output.h"
#include "Text.h"
#include "common/FormatText.h"
#include "common/HostEnvironment.h"

#include <xmllite.h>

namespace {

constexpr wchar_t kFileFormat[] = L"%s\\Vel\\QanHelper%s\\%s";

bool IsXmlError(HRESULT hr) noexcept
{
    return static_cast<unsigned>(hr) >> 8 == static_cast<unsigned>(MX_E_MX) >> 8;
}

} // namespace

// The library itself makes the folder when it asks for the path.
std::wstring FileOfHost(const std::wstring& host, const wchar_t* file)
{
    wchar_t localAppData[MAX_PATH];
    if (!ReadEnvironmentVariable(L"LOCALAPPDATA", localAppData)) {
        throw Failure{L"cannot tell where the catalogues are: LOCALAPPDATA is not set", E_FAIL};
    }
    std::wstring_view folder(localAppData);
    if (!folder.empty() && folder.back() == L'\\') {
        folder.remove_suffix(1);
    }
    // "Launcher", "Launcher.exe" and the executable's path name the same host.
    std::wstring executable = L"\\" + host;
    return FormatText(kFileFormat, {folder, CutHostName(executable.data()), file});
}

std::wstring CataloguePath(const CommandLine& line)
{
    if (!line.host.empty()) {
        return FileOfHost(line.host, kCatalogueFile);
    }
    if (line.catalogue.empty()) {
        throw WrongUse{L"which catalogue? Give --catalogue FILE or --host NAME"};
    }
    return line.catalogue;
}

void RefuseCatalogue(const CommandLine& line, const wchar_t* given)
{
    if (!line.catalogue.empty() || !line.host.empty()) {
        throw WrongUse{std::wstring(given) + L" was given, and --catalogue or --host as well"};
    }
}

bool LoadCatalogue(const std::wstring& path, CQanhAppNameList& list)
{
    const HRESULT hr = list.Load(path.c_str());
    if (FAILED(hr) && !IsXmlError(hr)) {
        throw Failure{L"cannot read " + path, hr};
    }
    const HRESULT cutOff = ReadDocument(path).CutOff();
    if (SUCCEEDED(cutOff)) {
        return true;
    }
    WriteText(STD_ERROR_HANDLE,
              FormatText(L"qanh: %s is read in part only: %s\n", {Shown(path), Described(cutOff)}));
    return false;
}
