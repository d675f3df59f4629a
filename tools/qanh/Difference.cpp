#include "Difference.h"

#include "Lines.h"
#include "Text.h"
#include "catalog/CatalogXml.h"
#include "common/FormatText.h"

#include <algorithm>
#include <cwchar>
#include <map>

namespace {

// What an application is known by: package and name, or the shortcut; and which of several of that it is.
using Key = std::pair<std::wstring, int>;

std::map<Key, Application> ByKey(const std::vector<Application>& applications)
{
    std::map<Key, Application> byKey;
    for (const Application& application : applications) {
        const std::wstring known = application.package ? PlaceOf(application) + L"\n" + NameOf(application)
                                                       : L"\n" + Folded(PlaceOf(application));
        int number = 0;
        while (!byKey.emplace(Key{known, number}, application).second) {
            ++number;
        }
    }
    return byKey;
}

std::wstring ValueText(const Field& field)
{
    const auto* text = std::get_if<std::wstring>(&field.value);
    return text ? *text : std::get<bool>(field.value) ? L"1" : L"0";
}

// The third and the fourth number trade places each time that the library reads a version and writes it.
bool IsSameVersion(const RecordVersion& left, RecordVersion right)
{
    if (left == right) {
        return true;
    }
    std::swap(right.Revision, right.Build);
    return left == right;
}

std::vector<Change> ChangesOf(const Application& before, const Application& after)
{
    std::vector<Change> changes;
    const std::vector<Field> first = FieldsOf(before);
    const std::vector<Field> second = FieldsOf(after);
    for (std::size_t i = 0; i < first.size() && i < second.size(); ++i) {
        const bool isVersion = std::wcscmp(first[i].name, CatalogXml::kVersion) == 0;
        if (first[i].value != second[i].value &&
            !(isVersion && IsSameVersion(before.package->Version, after.package->Version))) {
            changes.push_back({first[i].name, ValueText(first[i]), ValueText(second[i])});
        }
    }
    return changes;
}

} // namespace

Difference Compare(const CQanhAppNameList& before, const CQanhAppNameList& after)
{
    const std::map<Key, Application> first = ByKey(ApplicationsOf(before));
    const std::map<Key, Application> second = ByKey(ApplicationsOf(after));
    Difference difference;
    for (const auto& [key, application] : first) {
        const auto found = second.find(key);
        if (found == second.end()) {
            difference.removed.push_back(application);
        } else if (std::vector<Change> changes = ChangesOf(application, found->second); !changes.empty()) {
            difference.changed.push_back({found->second, std::move(changes)});
        }
    }
    for (const auto& [key, application] : second) {
        if (first.find(key) == first.end()) {
            difference.added.push_back(application);
        }
    }
    return difference;
}

Json JsonOf(const Difference& difference)
{
    Json changed = Json::array();
    for (const Changed& entry : difference.changed) {
        Json changes = Json::array();
        for (const Change& change : entry.changes) {
            changes.push_back({{"Field", JsonOf(change.field)},
                               {"Before", JsonOf(change.before)},
                               {"After", JsonOf(change.after)}});
        }
        changed.push_back({{"Application", JsonOf(entry.application)}, {"Changes", std::move(changes)}});
    }
    return Json{{"Removed", JsonOf(difference.removed)},
                {"Added", JsonOf(difference.added)},
                {"Changed", std::move(changed)}};
}

std::wstring TextOf(const Difference& difference)
{
    std::wstring text;
    for (const Application& application : difference.removed) {
        text += L"- " + LineOf(application) + L"\n";
    }
    for (const Application& application : difference.added) {
        text += L"+ " + LineOf(application) + L"\n";
    }
    for (const Changed& entry : difference.changed) {
        text += L"~ " + LineOf(entry.application) + L"\n";
        for (const Change& change : entry.changes) {
            text += FormatText(L"    %s: \"%s\" became \"%s\"\n",
                               {change.field, Shown(change.before), Shown(change.after)});
        }
    }
    return text;
}
