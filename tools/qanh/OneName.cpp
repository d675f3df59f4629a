#include "OneName.h"

#include "Text.h"
#include "catalog/ExcludeList.h"

#include <algorithm>

namespace {

constexpr wchar_t kReading[] = L"reading";

} // namespace

Verdict Ask(const CQanhApp& app, const WantedName& wanted)
{
    ExcludeList excluded;
    BOOL isFound = FALSE;
    AskApp(app, wanted, &excluded, &isFound);
    Verdict verdict;
    verdict.isFound = isFound != FALSE;
    for (const WideString& name : excluded) {
        verdict.excluded.emplace_back(name.View());
    }
    return verdict;
}

OneName::OneName(const WideString& text, const WideString& reading, const wchar_t* kind,
                 const wchar_t* kindOfReading)
    : m_text(text.View()), m_reading(reading.View()), m_kind(kind), m_kindOfReading(kindOfReading)
{
}

std::vector<OneName> OneName::Of(const Application& application)
{
    std::vector<OneName> names;
    if (const CQanhDesktopApp* app = application.desktopApp) {
        if (app->LocalizeName.empty()) {
            names.push_back(OneName(app->DisplayName, app->RubyDisplayName, L"display name", kReading));
        } else {
            names.push_back(OneName(app->LocalizeName, app->RubyDisplayName, L"localised name", kReading));
        }
    } else if (const CQanhMetroApp* storeApp = application.storeApp) {
        names.push_back(OneName(storeApp->DisplayName, storeApp->RubyDisplayName, L"display name", kReading));
        names.push_back(OneName(storeApp->ShortName, storeApp->RubyShortName, L"short name",
                                L"reading of the short name"));
        names.back().m_isShortName = true;
    }
    names.erase(
        std::remove_if(names.begin(), names.end(), [](const OneName& name) { return name.m_text.empty(); }),
        names.end());
    return names;
}

bool OneName::IsExcludedByText(const WantedName& wanted) const
{
    if (!m_isShortName) {
        return !Ask(CQanhDesktopApp(m_text.c_str()), wanted).excluded.empty();
    }
    // An application without a display name, or with the wanted one, is not asked about its short name.
    // Another display name that is no word is excluded by no search.
    const wchar_t* displayName = wanted.Equals(L"?") ? L"!" : L"?";
    return !Ask(CQanhMetroApp(displayName, m_text.c_str()), wanted).excluded.empty();
}

bool OneName::IsFound(const WantedName& wanted) const
{
    return Ask(CQanhDesktopApp(m_text.c_str()), wanted).isFound;
}

bool OneName::IsHitInSmallLetters(const std::wstring& wanted) const
{
    const std::wstring text = Folded(m_text);
    const std::wstring reading = Folded(m_reading);
    const std::wstring folded = Folded(wanted);
    const Verdict verdict =
        Ask(CQanhDesktopApp(text.c_str(), nullptr, nullptr, reading.c_str()), WantedName(folded.c_str()));
    return verdict.isFound || !verdict.excluded.empty();
}
