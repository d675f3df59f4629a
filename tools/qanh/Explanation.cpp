#include "Explanation.h"

#include "Failure.h"
#include "LogLine.h"
#include "OneName.h"
#include "Text.h"
#include "api/SearchQuery.h"
#include "catalog/ExcludeList.h"
#include "catalog/SearchTokens.h"

#include <algorithm>
#include <optional>

namespace {

bool HasName(const std::vector<std::wstring>& names, std::wstring_view name)
{
    return std::any_of(names.begin(), names.end(),
                       [name](const std::wstring& entry) { return EqualsIgnoringCase(entry, name); });
}

// Where the Start screen lists its hits, in the order of the user's language.
bool ComesBefore(const std::wstring& name, const std::wstring& other)
{
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, NORM_IGNORECASE, name.c_str(), -1, other.c_str(), -1,
                           nullptr, nullptr, 0) == CSTR_LESS_THAN;
}

// The words of the wanted name that the name lacks, when it has half of them at least.
std::optional<std::wstring> MissingWords(const std::wstring& wantedName, const std::wstring& name)
{
    const std::wstring folded = Folded(name);
    const std::wstring wanted = Folded(wantedName);
    std::wstring missing;
    int present = 0;
    int absent = 0;
    SearchTokens::ForEach(wanted, [&](std::wstring_view word) {
        if (SearchTokens::IsIn(word, folded)) {
            ++present;
        } else {
            missing += (absent++ > 0 ? L", \"" : L"\"") + std::wstring(word) + L"\"";
        }
        return true;
    });
    return present > 0 && present >= absent ? std::optional(missing) : std::nullopt;
}

// One search over a catalogue, taken apart.
class Search
{
public:
    Search(const CQanhAppNameList& list, const std::wstring& wantedName)
        : m_text(wantedName), m_wanted(wantedName.c_str())
    {
        for (const Application& application : ApplicationsOf(list)) {
            const CQanhApp* app = AppOf(application);
            if (app && IsInstalled(application)) {
                m_asked.push_back({application, Ask(*app, m_wanted), OneName::Of(application)});
            }
        }
    }

    [[nodiscard]] std::vector<Application> Called() const
    {
        std::vector<Application> called;
        for (const Asked& asked : m_asked) {
            if (IsCalled(asked)) {
                called.push_back(asked.application);
            }
        }
        return called;
    }

    void AddExcluded(std::wstring_view excluded, std::vector<ExcludedName>& names) const
    {
        for (const Asked& asked : m_asked) {
            for (const OneName& name : asked.names) {
                if (EqualsIgnoringCase(name.Text(), excluded) && HasName(asked.verdict.excluded, excluded)) {
                    names.push_back({name.Text(),
                                     name.IsExcludedByText(m_wanted) ? name.Kind() : name.KindOfReading(),
                                     asked.application});
                }
            }
        }
    }

    // True when a search that excludes this name excludes an application that is called as wanted.
    [[nodiscard]] bool IsOfCalled(std::wstring_view excluded) const
    {
        return std::any_of(m_asked.begin(), m_asked.end(), [&](const Asked& asked) {
            return IsCalled(asked) &&
                   std::any_of(asked.names.begin(), asked.names.end(), [&](const OneName& name) {
                       return EqualsIgnoringCase(name.Text(), excluded);
                   });
        });
    }

    [[nodiscard]] std::vector<LeftInName> LeftIn() const
    {
        std::vector<LeftInName> names;
        for (const Asked& asked : m_asked) {
            if (IsCalled(asked)) {
                continue; // whatever else it is called: it is not started instead
            }
            for (const OneName& name : asked.names) {
                if (HasName(asked.verdict.excluded, name.Text())) {
                    continue;
                }
                if (const std::optional<Reason> reason = ReasonOfHit(name)) {
                    names.push_back(
                        {name.Text(), *reason, ComesBefore(name.Text(), m_text), asked.application});
                } else if (const std::optional<std::wstring> missing = MissingWords(m_text, name.Text())) {
                    names.push_back(
                        {name.Text(), {L"other word", L"lacks " + *missing}, false, asked.application});
                }
            }
        }
        return names;
    }

private:
    struct Asked
    {
        Application application;
        Verdict verdict;
        std::vector<OneName> names;
    };

    // True when one of its names is the wanted one.
    [[nodiscard]] bool IsCalled(const Asked& asked) const
    {
        return std::any_of(asked.names.begin(), asked.names.end(),
                           [this](const OneName& name) { return m_wanted.Equals(name.Text().c_str()); });
    }

    // Why a name that the search hits is left in; none when it does not hit it.
    [[nodiscard]] std::optional<Reason> ReasonOfHit(const OneName& name) const
    {
        if (name.IsFound(m_wanted)) {
            return Reason{L"same words", L"taken for the wanted one"};
        }
        if (name.IsExcludedByText(m_wanted)) {
            return Reason{L"not asked", L"its application has no display name"};
        }
        if (name.IsHitInSmallLetters(m_text)) {
            return Reason{L"capital letters", L""};
        }
        return std::nullopt;
    }

    const std::wstring& m_text;
    const WantedName m_wanted;
    std::vector<Asked> m_asked; // those that are installed
};

} // namespace

Explanation ExplainLaunch(const CQanhAppNameList& list, const std::wstring& wantedName, unsigned codePage)
{
    ExcludeList excluded;
    BOOL isFound = FALSE;
    const HRESULT hr = list.GetExcludeAppNameList(wantedName.c_str(), &excluded, &isFound);
    if (FAILED(hr)) {
        throw Failure{L"cannot search for \"" + wantedName + L"\"", hr};
    }
    const Search search(list, wantedName);
    Explanation explanation;
    explanation.query = BuildSearchQuery(wantedName.c_str(), excluded);
    explanation.isFound = isFound != FALSE;
    explanation.logLineBytes = LogLineBytes(explanation.query, codePage);
    explanation.called = search.Called();
    for (const WideString& name : excluded) {
        search.AddExcluded(name.View(), explanation.excluded);
        if (explanation.ownName.empty() && search.IsOfCalled(name.View())) {
            explanation.ownName = name.View();
        }
    }
    explanation.leftIn = search.LeftIn();
    return explanation;
}
