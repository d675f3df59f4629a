#include "Findings.h"

#include "Applications.h"
#include "Failure.h"
#include "Text.h"
#include "catalog/CatalogXml.h"
#include "common/FormatText.h"
#include "common/Xml.h"

#include <shlwapi.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <map>

namespace {

// What stands in front of a name that the system has yet to look up.
constexpr wchar_t kUnresolved[] = L"ms-resource:";

// One element with the record that the library made of it.
class Checker
{
public:
    explicit Checker(bool areShortcutsHere) : m_areShortcutsHere(areShortcutsHere) {}

    void CheckSkipped(const DocumentElement& element)
    {
        Problem(element, FormatText(L"%s is skipped: the library does not look for it here", {element.name}));
    }

    // With the fields that the record has; those are all attributes that the library reads.
    void CheckValues(const DocumentElement& element, const std::vector<Field>& fields)
    {
        for (std::size_t i = 0; i < element.attributes.size(); ++i) {
            const DocumentAttribute& attribute = element.attributes[i];
            const auto isSame = [&](const auto& other) {
                return Xml::NamesEqual(other.name, attribute.name);
            };
            const auto field = std::find_if(fields.begin(), fields.end(), isSame);
            if (field == fields.end()) {
                Problem(element, attribute.name + L" is skipped: the library does not know it");
            } else if (std::any_of(element.attributes.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                   element.attributes.end(), isSame)) {
                Problem(element, attribute.name + L" stands twice");
            } else {
                CheckValue(element, attribute, *field);
            }
        }
    }

    void CheckPackage(const DocumentElement& element, const CQanhPackage& package)
    {
        CheckKey(element, CatalogXml::kPackageFamilyName, std::wstring(package.PackageFamilyName.View()));
    }

    void CheckDesktopApp(const DocumentElement& element, const CQanhDesktopApp& app)
    {
        const std::wstring path(app.LnkFileName.View());
        CheckKey(element, CatalogXml::kLnkFileName, Folded(path));
        if (m_areShortcutsHere && app.IsInstalled && !path.empty() && !PathFileExistsW(path.c_str())) {
            Problem(element, FormatText(L"%s is not there", {path}));
        }
    }

    void CheckName(const DocumentElement& element, const CQanhApp& app)
    {
        if (app.DisplayName.empty()) {
            Problem(element, L"no DisplayName");
        }
    }

    [[nodiscard]] std::vector<Finding> Findings()
    {
        std::stable_sort(m_findings.begin(), m_findings.end(), [](const Finding& left, const Finding& right) {
            return left.place.line != right.place.line ? left.place.line < right.place.line
                                                       : left.place.column < right.place.column;
        });
        return std::move(m_findings);
    }

private:
    void Add(const DocumentElement& element, bool isProblem, std::wstring text)
    {
        m_findings.push_back({element.place, isProblem, std::move(text)});
    }
    void Problem(const DocumentElement& element, std::wstring text) { Add(element, true, std::move(text)); }

    // A word that says one thing and reads as the other is a problem.
    void CheckFlag(const DocumentElement& element, const DocumentAttribute& attribute, bool read)
    {
        if (attribute.value == L"0" || attribute.value == L"1") {
            return;
        }
        const auto says = [&](std::initializer_list<const wchar_t*> words) {
            return std::any_of(words.begin(), words.end(), [&](const wchar_t* word) {
                return EqualsIgnoringCase(attribute.value, word);
            });
        };
        const bool isOtherwise = read ? says({L"false", L"no", L"off"}) : says({L"true", L"yes", L"on"});
        Add(element, isOtherwise,
            FormatText(L"%s=\"%s\" reads as %s", {attribute.name, attribute.value, read ? L"1" : L"0"}));
    }

    void CheckValue(const DocumentElement& element, const DocumentAttribute& attribute, const Field& field)
    {
        if (const auto* flag = std::get_if<bool>(&field.value)) {
            CheckFlag(element, attribute, *flag);
            return;
        }
        const auto& read = std::get<std::wstring>(field.value);
        const bool isPath = Xml::NamesEqual(field.name, CatalogXml::kLnkFileName);
        if (read != attribute.value) {
            // A path is expanded, and what is missing of a version is 0: that is meant.
            const bool isMeant = isPath || StartsWith(read, attribute.value + L".");
            Add(element, !isMeant,
                FormatText(L"%s=\"%s\" reads as %s", {attribute.name, attribute.value, read}));
        } else if (isPath && read.find(L'%') != std::wstring::npos) {
            Problem(element,
                    FormatText(L"%s=\"%s\" is not expanded: an unknown variable, or too long for a path",
                               {attribute.name, attribute.value}));
        }
        if (StartsWith(read, kUnresolved)) {
            Problem(element, FormatText(L"%s=\"%s\" is not resolved", {attribute.name, read}));
        }
    }

    static bool StartsWith(const std::wstring& text, const std::wstring& start)
    {
        return EqualsIgnoringCase(std::wstring_view(text).substr(0, start.size()), start);
    }

    // What identifies a record must be there, and once.
    void CheckKey(const DocumentElement& element, const wchar_t* attribute, const std::wstring& key)
    {
        if (key.empty()) {
            Problem(element, FormatText(L"no %s: it is never found", {attribute}));
            return;
        }
        const auto [first, isNew] = m_keys.emplace(attribute + (L"\n" + key), element.place.line);
        if (!isNew) {
            Problem(element,
                    FormatText(L"%s is that of line %s again", {attribute, std::to_wstring(first->second)}));
        }
    }

    bool m_areShortcutsHere;
    std::vector<Finding> m_findings;
    std::map<std::wstring, unsigned> m_keys; // with the line where each stands first
};

// The elements that became records, and the records, in the same order.
template <typename Check>
void ForEachPair(const std::vector<const DocumentElement*>& elements, const std::vector<Application>& records,
                 Check check)
{
    for (std::size_t i = 0; i < elements.size() && i < records.size(); ++i) {
        check(*elements[i], records[i]);
    }
}

} // namespace

std::vector<Finding> FindingsOf(const Document& document, const CQanhAppNameList& list, bool areShortcutsHere)
{
    std::vector<Application> packages;
    std::vector<Application> storeApps;
    std::vector<Application> desktopApps;
    for (const Application& application : ApplicationsOf(list)) {
        if (application.storeApp) {
            storeApps.push_back(application);
        } else if (application.desktopApp) {
            desktopApps.push_back(application);
        }
    }
    list.ForEachRecord(
        [&](const CQanhPackage& package) {
            packages.push_back({&package, nullptr, nullptr});
        },
        [](const CQanhDesktopApp&) {});

    Checker checker(areShortcutsHere);
    for (const DocumentElement& element : document.elements) {
        if (element.isSkipped) {
            checker.CheckSkipped(element);
        }
    }
    ForEachPair(document.Read(CatalogXml::kPackage), packages,
                [&](const DocumentElement& element, const Application& record) {
                    checker.CheckValues(element, FieldsOf(record));
                    checker.CheckPackage(element, *record.package);
                });
    ForEachPair(document.Read(CatalogXml::kMetroApp), storeApps,
                [&](const DocumentElement& element, const Application& record) {
                    checker.CheckValues(element, FieldsOf({nullptr, record.storeApp, nullptr}));
                    checker.CheckName(element, *record.storeApp);
                });
    ForEachPair(document.Read(CatalogXml::kDesktopApp), desktopApps,
                [&](const DocumentElement& element, const Application& record) {
                    checker.CheckValues(element, FieldsOf(record));
                    checker.CheckDesktopApp(element, *record.desktopApp);
                    checker.CheckName(element, *record.desktopApp);
                });
    std::vector<Finding> findings = checker.Findings();
    if (const HRESULT cutOff = document.CutOff(); FAILED(cutOff)) {
        findings.push_back({document.end, true, L"the reading ends here: " + Described(cutOff)});
    } else if (!document.isWhole) {
        findings.push_back(
            {document.end, false, L"the root is not closed: as the library writes it, and no preset"});
    }
    return findings;
}
