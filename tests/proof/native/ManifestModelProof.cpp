// Compares what the library reads out of manifests with what the independent model of tests/proof/model makes
// of them. The cases come from standard input.

#include "Compared.h"
#include "SystemManifest.h"
#include "SystemPackage.h"
#include "proof/ManifestCases.h"
#include "proof/Proof.h"

#include <objbase.h>

#include <algorithm>
#include <iostream>

namespace {

constexpr wchar_t kPath[] = L"folder\\AppxManifest.xml";

// The system knows the texts of the case; the sources that it is asked for are noted.
void SetTexts(const proof::ManifestCase& tried, std::vector<std::wstring>& asked)
{
    native::TheHooks().loadIndirectString = [&](std::wstring_view source, wchar_t* buffer, UINT size) {
        asked.emplace_back(source);
        const auto text = tried.texts.find(asked.back());
        if (text == tried.texts.end()) {
            return E_FAIL;
        }
        buffer[text->second.copy(buffer, size - 1)] = L'\0';
        return S_OK;
    };
}

std::string Results(const proof::ManifestCase& tried)
{
    std::vector<std::wstring> asked;
    SetTexts(tried, asked);
    native::SetFile(kPath, tried.document);
    auto* const package = new native::SystemPackage({L"family", {}, L"folder"});
    std::string results = proof::TextOfResults(kPath, package, [&] { return std::exchange(asked, {}); });
    package->Release();
    return results;
}

std::string NamesBySystem(const proof::ManifestCase& tried)
{
    auto application = tried.applications.begin();
    const auto end = tried.applications.end();
    const auto failsAt = [&](const char* what) { return application != end && application->first == what; };
    native::SystemManifest system;
    system.open = [] { return S_OK; };
    system.getHasCurrent = [&](BOOL* hasCurrent) {
        *hasCurrent = application == end ? FALSE : TRUE;
        return failsAt("list") ? E_FAIL : S_OK;
    };
    system.getCurrent = [&] { return failsAt("application") ? E_FAIL : S_OK; };
    system.getDisplayName = [&](wchar_t** value) {
        if (failsAt("value")) {
            return E_FAIL;
        }
        const std::size_t size = application->second.size() + 1;
        *value = static_cast<wchar_t*>(CoTaskMemAlloc(size * sizeof(wchar_t)));
        std::copy_n(application->second.c_str(), size, *value);
        return S_OK;
    };
    system.moveNext = [&](BOOL* hasNext) {
        const HRESULT hr = failsAt("next") ? E_FAIL : S_OK;
        *hasNext = ++application == end ? FALSE : TRUE;
        return hr;
    };
    native::SetSystemManifest(system);
    CQanhPackage package(L"family", proof::kModelFullName, proof::kModelName, RecordVersion());
    (void)CQanhManifestReader::GetAppNameUsingAPI(kPath, &package);
    std::string told;
    for (const auto& app : package.Apps()) {
        proof::AppendLine(told, L"display " + std::wstring(app->DisplayName.View()));
    }
    return told;
}

} // namespace

int main()
{
    const long long all = proof::Count(2000LL, 100000LL);
    long long files = 0;
    long long names = 0;
    for (proof::ManifestCase tried; proof::ReadCase(std::cin, tried); ++files) {
        bool holds = native::IsSame("what the manifest holds", tried.document, Results(tried), tried.results);
        holds = native::IsSame("the names that the system tells", tried.document, NamesBySystem(tried),
                               tried.namesBySystem) &&
                holds;
        if (!holds) {
            return 1;
        }
        names += std::count(tried.results.begin(), tried.results.end(), '\n');
        proof::Progress(files, all);
    }
    proof::Figure("manifests of which library and model make the same names", static_cast<double>(files),
                  "files");
    proof::Figure("names, sources and results compared", static_cast<double>(names));
    return files >= all ? 0 : 1;
}
