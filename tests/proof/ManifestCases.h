// The cases of manifests, as the programs read them that compare the library with the model, and what the
// library comes to.
#pragma once

#include "QanHelper.h"
#include "catalog/MetroApp.h"
#include "catalog/Package.h"
#include "manifest/ManifestReader.h"
#include "proof/Cases.h"

#include <functional>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

namespace proof {

// Of the package whose manifests they are.
inline constexpr wchar_t kModelFullName[] = L"full name";
inline constexpr wchar_t kModelName[] = L"name";

struct ManifestCase
{
    std::string document;
    std::map<std::wstring, std::wstring> texts; // that Windows knows, by source
    std::string results;                        // of what reads the XML
    // The applications as the system's interfaces tell them: what becomes of each, and its name.
    std::vector<std::pair<std::string, std::wstring>> applications;
    std::string namesBySystem;
};

// Each line of a block is two texts with a tab between them.
template <typename Take> void ForEachPair(const std::string& block, Take take)
{
    std::istringstream lines(block);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t tab = line.find('\t');
        take(line.substr(0, tab), standin::FromUtf8(line.substr(tab + 1)));
    }
}

// False behind the last one.
inline bool ReadCase(std::istream& input, ManifestCase& read)
{
    std::string texts;
    std::string applications;
    read = ManifestCase();
    const bool isRead = ReadBlock(input, read.document) && ReadBlock(input, texts) &&
                        ReadBlock(input, read.results) && ReadBlock(input, applications) &&
                        ReadBlock(input, read.namesBySystem);
    ForEachPair(texts, [&](const std::string& source, std::wstring text) {
        read.texts[standin::FromUtf8(source)] = std::move(text);
    });
    ForEachPair(applications, [&](std::string what, std::wstring name) {
        read.applications.emplace_back(std::move(what), std::move(name));
    });
    return isRead;
}

// A line for each source that was asked for; they are dropped.
using TakeSources = std::function<std::vector<std::wstring>()>;

inline std::string TextOfSources(const TakeSources& takeSources)
{
    std::string told;
    for (const std::wstring& source : takeSources()) {
        AppendLine(told, L"asked " + source);
    }
    return told;
}

inline std::string TextOfReading(const wchar_t* path, const TakeSources& takeSources)
{
    CQanhPackage package(L"family", kModelFullName, kModelName, RecordVersion());
    const HRESULT read = CQanhManifestReader::GetAppNameUsingXmlParser(path, &package);
    std::string told = TextOfSources(takeSources);
    for (const auto& app : package.Apps()) {
        AppendLine(told, L"display " + std::wstring(app->DisplayName.View()));
        AppendLine(told, L"short " + std::wstring(static_cast<const CQanhMetroApp&>(*app).ShortName.View()));
    }
    AppendLine(told, read == S_FALSE ? L"read whole" : FAILED(read) ? L"read early" : L"read on the way");
    return told;
}

inline std::string TextOfChecking(const wchar_t* path, const TakeSources& takeSources)
{
    CQanhPackage package(L"family", kModelFullName, kModelName, RecordVersion());
    BOOL can = 7;
    const HRESULT checked = CQanhManifestReader::IsCanGetAppNameFromManifest(path, &package, &can);
    std::string told = TextOfSources(takeSources);
    const wchar_t* const said = can == 0 ? L"0" : can == 1 ? L"1" : L"?";
    const wchar_t* const end = checked == S_FALSE ? L" whole" : FAILED(checked) ? L" early" : L" on the way";
    AppendLine(told, L"checked: " + std::wstring(said) + end);
    return told;
}

inline std::string TextOfDisplayName(platform::IPackage* package, const TakeSources& takeSources)
{
    wchar_t* name = nullptr;
    const HRESULT hr = CQanhManifestReader::GetAppDisplayName(package, &name);
    std::string told = TextOfSources(takeSources);
    AppendLine(told, L"display name: " +
                         std::wstring(hr == S_OK                          ? L"found"
                                      : hr == S_FALSE                     ? L"none"
                                      : hr == QANH_E_SEVERAL_APPLICATIONS ? L"several"
                                      : hr == E_FAIL                      ? L"failed"
                                                                          : L"early") +
                         (name ? std::wstring(L", ") + name : L""));
    LocalFree(name);
    return told;
}

// What reads the XML comes to. The manifest of the package is the file at the path.
inline std::string TextOfResults(const wchar_t* path, platform::IPackage* package,
                                 const TakeSources& takeSources)
{
    return TextOfReading(path, takeSources) + TextOfChecking(path, takeSources) +
           TextOfDisplayName(package, takeSources);
}

} // namespace proof
