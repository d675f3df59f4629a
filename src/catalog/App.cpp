#include "catalog/App.h"

#include "catalog/ExcludeList.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <string_view>

namespace {

struct CharacterRange
{
    wchar_t first;
    wchar_t last;
};

constexpr CharacterRange kWordRanges[] = {
    // Deliberate: "/" stands right before the digits and belongs to them.
    {L'/', L'9'},
    {L'A', L'Z'},
    {L'_', L'_'},
    {L'a', L'z'},
};

// Scripts written without blanks between words, so that each character is looked up alone.
constexpr CharacterRange kSingleRanges[] = {
    {L'\\', L'\\'},   {0x3041, 0x30FF},                                     // Hiragana, Katakana
    {0x3400, 0x4DB5},                                                       // CJK ideographs
    {0x4E00, 0x9FC3}, {0xF900, 0xFA2D}, {0xFA30, 0xFA6A}, {0xFF10, 0xFF19}, // full-width digits and letters
    {0xFF21, 0xFF3A}, {0xFF41, 0xFF5A}, {0xFF66, 0xFF9F},                   // half-width Katakana
};

template <std::size_t count>
bool IsInRanges(wchar_t character, const CharacterRange (&ranges)[count]) noexcept
{
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const CharacterRange& range) {
        return range.first <= character && character <= range.last;
    });
}

bool ContainsEveryToken(std::wstring_view part, std::wstring_view whole) noexcept
{
    std::size_t position = 0;
    while (position < part.size()) {
        if (IsInRanges(part[position], kWordRanges)) {
            const std::size_t start = position;
            while (position < part.size() && IsInRanges(part[position], kWordRanges)) {
                ++position;
            }
            if (whole.find(part.substr(start, position - start)) == std::wstring_view::npos) {
                return false;
            }
            continue;
        }
        if (IsInRanges(part[position], kSingleRanges) &&
            whole.find(part[position]) == std::wstring_view::npos) {
            return false;
        }
        ++position;
    }
    return true;
}

} // namespace

CQanhApp::CQanhApp(const wchar_t* displayName, const wchar_t* rubyDisplayName)
    : DisplayName(displayName), RubyDisplayName(rubyDisplayName)
{
}

BOOL CQanhApp::IsSubStrNoOrder(const wchar_t* part, const wchar_t* whole) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhApp::IsSubStrNoOrder";
    LogIn(kName, part, whole);
    return LogOutNumber(kName, part && whole && ContainsEveryToken(part, whole) ? 1 : 0);
}

std::optional<HRESULT> CQanhApp::ExcludeName(const AppName& name, const ExcludeSearch& search) const noexcept
{
    std::optional<HRESULT> added;
    // Deliberate: only the wanted name is in lower case, and the comparison is exact, so a name in capitals
    // is hit by the search but not by this test.
    if (IsSubStrNoOrder(search.lowerWantedName, name.text.c_str())) {
        if (IsSubStrNoOrder(name.text.c_str(), search.lowerWantedName)) {
            *search.pFound = 1;
        } else {
            added = search.pExcludeList->AddUnique(name.text.c_str());
            if (FAILED(*added)) {
                return added;
            }
        }
    }
    if (!name.reading.empty() && IsSubStrNoOrder(search.lowerWantedName, name.reading.c_str())) {
        added = search.pExcludeList->AddUnique(name.text.c_str());
    }
    return added;
}

void AskApp(const CQanhApp& app, const wchar_t* wantedName, ExcludeList* pExcludeList, BOOL* pFound)
{
    BOOL found = FALSE;
    // A failure costs the names of this application only; it is in the log.
    (void)app.AddToExcludeAppNameList(wantedName, pExcludeList, &found);
    if (found) {
        *pFound = 1;
    }
}

void CrtMemoryDeleter::operator()(wchar_t* text) const noexcept
{
    std::free(text);
}

HRESULT CheckExcludeArguments(const wchar_t* wantedName, const ExcludeList* pExcludeList,
                              const BOOL* pFound) noexcept
{
    return pExcludeList ? CheckStringAndPointer(wantedName, pFound) : E_POINTER;
}

HRESULT LowerWantedName(const wchar_t* wantedName, CrtText& lowerWantedName) noexcept
{
    lowerWantedName.reset(_wcsdup(wantedName));
    if (!lowerWantedName) {
        return E_OUTOFMEMORY;
    }
    return _wcslwr_s(lowerWantedName.get(), std::wcslen(lowerWantedName.get()) + 1) == 0 ? S_OK : E_FAIL;
}
