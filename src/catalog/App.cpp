#include "catalog/App.h"

#include "catalog/ExcludeList.h"
#include "catalog/SearchTokens.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"

namespace {

constexpr wchar_t kIsSubStrNoOrderName[] = L"CQanhApp::IsSubStrNoOrder";

bool ContainsEveryToken(std::wstring_view part, std::wstring_view whole) noexcept
{
    return SearchTokens::ForEach(
        part, [whole](std::wstring_view token) { return SearchTokens::IsIn(token, whole); });
}

} // namespace

CQanhApp::CQanhApp(const wchar_t* displayName, const wchar_t* rubyDisplayName)
    : DisplayName(displayName), RubyDisplayName(rubyDisplayName)
{
}

BOOL CQanhApp::IsSubStrNoOrder(const wchar_t* part, const wchar_t* whole) const noexcept
{
    LogIn(kIsSubStrNoOrderName, part, whole);
    return LogOutNumber(kIsSubStrNoOrderName, part && whole && ContainsEveryToken(part, whole) ? 1 : 0);
}

BOOL CQanhApp::IsWantedNameIn(const WantedName& wantedName, const WideString& whole) noexcept
{
    LogIn(kIsSubStrNoOrderName, wantedName.Lower().data(), whole.c_str());
    return LogOutNumber(kIsSubStrNoOrderName, wantedName.IsIn(whole.View()) ? 1 : 0);
}

std::optional<HRESULT> CQanhApp::ExcludeName(const AppName& name, const ExcludeSearch& search) const noexcept
{
    std::optional<HRESULT> added;
    // Deliberate: only the wanted name is in lower case, and the comparison is exact, so a name in capitals
    // is hit by the search but not by this test.
    if (IsWantedNameIn(search.wantedName, name.text)) {
        if (IsSubStrNoOrder(name.text.c_str(), search.wantedName.Lower().data())) {
            *search.pFound = 1;
        } else {
            added = search.pExcludeList->AddUnique(name.text.c_str());
            if (FAILED(*added)) {
                return added;
            }
        }
    }
    if (!name.reading.empty() && IsWantedNameIn(search.wantedName, name.reading)) {
        added = search.pExcludeList->AddUnique(name.text.c_str());
    }
    return added;
}

void AskApp(const CQanhApp& app, const WantedName& wantedName, ExcludeList* pExcludeList, BOOL* pFound)
{
    BOOL found = FALSE;
    // A failure costs the names of this application only; it is in the log.
    (void)app.AddToExcludeAppNameList(wantedName, pExcludeList, &found);
    if (found) {
        *pFound = 1;
    }
}

HRESULT CheckExcludeArguments(const WantedName& wantedName, const ExcludeList* pExcludeList,
                              const BOOL* pFound) noexcept
{
    return pExcludeList ? CheckStringAndPointer(wantedName.Text(), pFound) : E_POINTER;
}
