// The export that starts an application by the Start screen's search.

#include "QanHelper.h"
#include "api/Modes.h"
#include "api/SearchQuery.h"
#include "api/Statics.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"
#include "common/Reg.h"
#include "launch/Clipboard.h"
#include "launch/KeyEmulate.h"

#include <string>

namespace {

constexpr wchar_t kName[] = L"QanhLaunchBySearch";

constexpr DWORD kPaneSettles = 2000; // milliseconds before a paste that is not repeated
constexpr DWORD kPanePoll = 100;     // milliseconds
constexpr int kPanePolls = 10;
constexpr int kPasteRepeats = 20;

// What the search is asked for.
struct Keyword
{
    std::wstring text;
    BOOL isExactMatch = FALSE; // the wanted application is in the catalogue
};

[[nodiscard]] HRESULT BuildKeyword(const wchar_t* appName, BOOL useExcludeList, Keyword& keyword) noexcept
{
    try {
        ExcludeList excludeList;
        if (useExcludeList) {
            const HRESULT hr =
                s_PackageManager.GetExcludeAppNameList(appName, &excludeList, &keyword.isExactMatch);
            if (FAILED(hr)) {
                return hr;
            }
        }
        keyword.text = BuildSearchQuery(appName, excludeList);
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

void PasteAndEnter() noexcept
{
    CQanhKeyEmulate::SendInput_Shift_Insert();
    CQanhKeyEmulate::SendInput_Enter();
}

void WaitWhilePaneInFront() noexcept
{
    for (int poll = 0; poll < kPanePolls; ++poll) {
        Sleep(kPanePoll);
        if (!CQanhMonitorMode::IsSearchPaneForeground()) {
            return;
        }
    }
}

// Pastes and presses Enter until the pane has left the foreground, that is, until the launch has happened.
void LaunchTopHit() noexcept
{
    PasteAndEnter();
    for (int repeat = 0; repeat < kPasteRepeats; ++repeat) {
        // Deliberate: the count starts anew in every round, so nothing but the pane ends the loop.
        repeat = 0;
        WaitWhilePaneInFront();
        if (!CQanhMonitorMode::IsSearchPaneForeground()) {
            return;
        }
        PasteAndEnter();
    }
}

} // namespace

HRESULT QANH_CALL QanhLaunchBySearch(LPCWSTR appName, DWORD searchMode, BOOL useExcludeList)
{
    DiagnosticLog::WriteLine("%S(%S, %d, %d) IN\r\n", kName, appName, static_cast<int>(searchMode),
                             useExcludeList);
    HRESULT hr = CheckString(appName);
    if (SUCCEEDED(hr)) {
        hr = CheckMode(searchMode);
    }
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    Keyword keyword;
    hr = BuildKeyword(appName, useExcludeList, keyword);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    DiagnosticLog::WriteLine("%S szKeyword = %S \r\n", kName, keyword.text.c_str());

    hr = s_MonitorMode.OpenAppSearchUI();
    if (hr != S_OK) {
        DiagnosticLog::WriteLine("%S OUT(SwitchToStartScreen : ret=0x%08X)\r\n", kName,
                                 static_cast<unsigned>(hr));
        return E_FAIL;
    }
    const bool isPlain =
        searchMode == QANH_SEARCH_SHOW || (searchMode == QANH_SEARCH_LAUNCH_PLAIN && keyword.isExactMatch);
    // A text that the clipboard did not take is logged there; the launch goes on with what the clipboard
    // holds.
    (void)CQanhClipboard::SetClipboardData(isPlain ? appName : keyword.text.c_str());
    if (searchMode == QANH_SEARCH_SHOW) {
        Sleep(kPaneSettles);
        CQanhKeyEmulate::SendInput_Shift_Insert();
        Sleep(CQanhReg::GetClearClipboardWaitTime());
    } else {
        LaunchTopHit();
    }
    CQanhClipboard::Clear();
    CQanhKeyEmulate::SendInput_ShiftUp();
    return LogOut(kName, S_OK);
}
