// Any file can be read as a manifest by the library's own reader, with readers that fail or stand still at
// any call too, and with resources that are there or not. What the check of the names says is what the
// reading finds.

#include "FaultyReader.h"
#include "Fuzzing.h"
#include "Platform.h"
#include "SystemPackage.h"
#include "catalog/Package.h"
#include "manifest/ManifestReader.h"

#include <algorithm>

const char fuzz::kName[] = "the manifest reader";

namespace {

using fuzz::Check;

// Every other resource is there; a text may be as long as the buffer allows.
void SetResources(unsigned which)
{
    native::TheHooks().loadIndirectString = [which](std::wstring_view source, wchar_t* buffer, UINT size) {
        Check(source.starts_with(L"@{full name?"), "a resource is that of the package");
        if ((source.size() + which) % 2 == 0) {
            return static_cast<HRESULT>(0x80073B17);
        }
        const std::wstring text = which % 3 == 0 ? std::wstring(size - 1, L'r') : L"Resolved";
        buffer[text.copy(buffer, size - 1)] = L'\0';
        return S_OK;
    };
}

bool IsLower(std::wstring_view text)
{
    return std::none_of(text.begin(), text.end(),
                        [](wchar_t character) { return L'A' <= character && character <= L'Z'; });
}

void CheckNames(const CQanhPackage& package)
{
    for (const auto& app : package.Apps()) {
        for (const WideString* name :
             {&app->DisplayName, &static_cast<const CQanhMetroApp&>(*app).ShortName}) {
            const bool isResolved =
                name->View() == L"Resolved" || name->View().find_first_not_of(L'r') == std::wstring::npos;
            Check(isResolved || IsLower(name->View()), "names are in lower case, or resolved");
        }
    }
}

} // namespace

void fuzz::Run(proof::Bytes bytes)
{
    const unsigned kind = bytes.Take();
    native::Fault fault;
    if (kind % 4 == 0) {
        fault = {1 + bytes.TakeNumber() % 1000, bytes.Pick(4) == 0 ? S_OK : E_FAIL};
    }
    SetResources(bytes.Take());
    native::SetFile(L"folder\\AppxManifest.xml",
                    kind % 16 == 1 ? std::string(bytes.Rest()) : proof::DocumentMaker(bytes).Manifest());
    native::SetReaderFault(fault);

    const wchar_t* const path = L"folder\\AppxManifest.xml";
    CQanhPackage package(L"family", L"full name", L"name", RecordVersion(),
                         kind % 32 == 2 ? 2 : kListSizeLimit);
    const HRESULT read = CQanhManifestReader::GetAppNameUsingXmlParser(path, &package);
    Check(read == S_FALSE || FAILED(read), "a manifest's reading comes to an end");
    CheckNames(package);

    BOOL can = 2;
    const HRESULT checked = CQanhManifestReader::IsCanGetAppNameFromManifest(path, &package, &can);
    Check(can == 0 || (can == 1 && checked == S_FALSE), "names can be had only of a whole manifest");
    if (fault.call == 0 && kind % 32 != 2) {
        Check(can == 0 || read == S_FALSE, "what is said to be readable is");
        for (const auto& app : package.Apps()) {
            const std::wstring_view name = app->DisplayName.View();
            Check(can == 0 || !name.starts_with(CQanhManifestReader::kResourcePrefix),
                  "no name stays unresolved then");
        }
    }

    auto* const system = new native::SystemPackage({L"family", {}, L"folder"});
    wchar_t* name = nullptr;
    const HRESULT shown = CQanhManifestReader::GetAppDisplayName(system, &name);
    Check(name || FAILED(shown), "there is a display name, or a failure");
    Check(!name || wcsnlen(name, CQanhManifestReader::kTextSize) < CQanhManifestReader::kTextSize,
          "a display name ends");
    LocalFree(name);
    system->Release();
    native::SetReaderFault({});
}
