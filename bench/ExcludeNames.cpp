// The names that a launch must exclude, looked up in a catalogue.

#include "BareXml.h"
#include "Catalogs.h"
#include "Measures.h"
#include "catalog/ExcludeList.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <unordered_set>

namespace bench {

namespace {

constexpr wchar_t kWantedName[] = L"Mail";
constexpr std::wstring_view kLowerWantedName = L"mail";
constexpr std::size_t kFewHits = 5;

wchar_t ToLower(wchar_t character)
{
    return L'A' <= character && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
}

bool ContainsIgnoringCase(std::wstring_view text, std::wstring_view lowerPart)
{
    return std::search(text.begin(), text.end(), lowerPart.begin(), lowerPart.end(),
                       [](wchar_t left, wchar_t right) { return ToLower(left) == right; }) != text.end();
}

// Each name that holds the wanted one, once.
std::vector<const std::wstring*> Scan(const std::vector<std::wstring>& names)
{
    std::vector<const std::wstring*> hits;
    std::unordered_set<std::wstring> known;
    for (const std::wstring& name : names) {
        if (ContainsIgnoringCase(name, kLowerWantedName)) {
            std::wstring lowerName = name;
            std::transform(name.begin(), name.end(), lowerName.begin(), ToLower);
            if (known.insert(std::move(lowerName)).second) {
                hits.push_back(&name);
            }
        }
    }
    return hits;
}

// Returns what Compare() returns.
bool Measure(Session& session, const std::string& measure, std::size_t shownSize, std::size_t size,
             std::size_t hits)
{
    const test::TemporaryFolder folder;
    const std::wstring file = folder / L"catalogue.xml";
    const Catalog catalog = MakeCatalog(size, hits);
    WriteXml(catalog, file);
    const std::unique_ptr<CQanhAppNameList> list = LoadList(file);
    const std::vector<std::wstring> names = catalog.SearchedNames();
    const auto expect = [&](std::size_t found) {
        if (found != hits) {
            throw std::runtime_error("other names are excluded than were meant");
        }
    };
    return session.Compare(
        measure, shownSize,
        {{kOurs,
          [&] {
              ExcludeList excluded;
              BOOL isFound = FALSE;
              if (list->GetExcludeAppNameList(kWantedName, &excluded, &isFound) != S_OK) {
                  throw std::runtime_error("the names to exclude cannot be had");
              }
              expect(static_cast<std::size_t>(std::distance(excluded.begin(), excluded.end())));
          }},
         {"scan", [&] { expect(Scan(names).size()); }}});
}

} // namespace

void MeasureExcludeNames(Session& session)
{
    const Sizes sizes =
        session.isShort ? Sizes{1000, 3000, 10000, 30000} : Sizes{1000, 3000, 10000, 30000, 100000};
    for (const std::size_t size : sizes) {
        if (!Measure(session, "exclude", size, size, kFewHits)) {
            break;
        }
    }
}

void MeasureExcludeManyNames(Session& session)
{
    for (const std::size_t hits : Sizes{100, 400, 1600, 6400}) {
        if (!Measure(session, "exclude-hits", hits, 10000, hits)) {
            break;
        }
    }
}

} // namespace bench
