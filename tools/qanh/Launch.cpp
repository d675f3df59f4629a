// The commands that launch by the Start screen's search.

#include "Commands.h"

#include "Catalogue.h"
#include "Driving.h"
#include "Explanation.h"
#include "Foreground.h"
#include "Json.h"
#include "Session.h"
#include "Text.h"
#include "Tile.h"
#include "common/FormatText.h"

#include <functional>
#include <iterator>

namespace {

constexpr wchar_t kBrowserName[] = L"Internet Explorer";

// A launch by search, and what is special about it.
struct Search
{
    std::wstring name;
    std::wstring before; // what else is done, for people; it ends with a comma and a blank
    std::function<HRESULT(const Library&)> start;
    Json json; // of what was asked for
};

// While a launch runs: Ctrl+C would end it with Shift pressed, and with the browser's tile setting as it is
// then. Who presses it has brought the console to the front, which ends the launch as well.
class IgnoredInterrupt
{
public:
    IgnoredInterrupt() { SetConsoleCtrlHandler(nullptr, TRUE); }
    ~IgnoredInterrupt() { SetConsoleCtrlHandler(nullptr, FALSE); }
    IgnoredInterrupt(const IgnoredInterrupt&) = delete;
    IgnoredInterrupt& operator=(const IgnoredInterrupt&) = delete;
};

// Later systems have no search pane: the keys would go to whatever is in front, such as the console of this
// program, and Enter with them. The system's own word: what else tells the version depends on a manifest.
bool HasSearchPane()
{
    using GetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    const auto getVersion = reinterpret_cast<GetVersionFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    return !getVersion || getVersion(&version) != 0 || version.dwMajorVersion < 10;
}

// What a launch puts on the clipboard, as the catalogue file has it.
std::wstring PastedText(const std::wstring& name, const DriveOptions& options)
{
    CQanhAppNameList list;
    if (options.isExcluding) {
        // Without the file there is nothing to exclude; what could be read counts.
        (void)list.Load(OwnFile(kCatalogueFile).c_str());
    }
    const Explanation explanation = ExplainLaunch(list, name);
    const bool isPlain = options.searchMode == QANH_SEARCH_SHOW ||
                         (options.searchMode == QANH_SEARCH_LAUNCH_PLAIN && explanation.isFound);
    return isPlain ? name : explanation.query;
}

std::wstring StartLine(const DriveOptions& options)
{
    return StartText() + (options.isExcluding ? L", and waits for that" : L"");
}

std::wstring KeysLine(const Search& search, const DriveOptions& options, const std::wstring& pasted)
{
    return FormatText(
        L"%spresses Windows, unless the Start screen shows, and Windows+Q, replaces the clipboard by %s, presses %s, "
        L"and empties the clipboard",
        {search.before, pasted,
         options.searchMode == QANH_SEARCH_SHOW ? L"Shift+Insert, which leaves the choice to you"
                                                : L"Shift+Insert and Enter until the search pane is gone"});
}

const wchar_t* ModeName(DWORD mode)
{
    static constexpr const wchar_t* kNames[] = {L"launch", L"show", L"plain"};
    return mode < std::size(kNames) ? kNames[mode] : L"";
}

// What became of it: the result of the call only says that the keys were pressed.
Answer Outcome(const CommandLine& line, Search search, const std::wstring& pasted, HWND before)
{
    const bool isShown = line.drive.searchMode == QANH_SEARCH_SHOW;
    const std::wstring started = isShown ? L"" : WaitForApplication(before);
    const bool isDone = isShown ? IsSearchPaneInFront() : !started.empty();
    Answer answer;
    if (line.isJson) {
        search.json["Mode"] = JsonOf(ModeName(line.drive.searchMode));
        search.json["Pasted"] = JsonOf(pasted);
        search.json[isShown ? "PaneInFront" : "Started"] = isShown ? Json(isDone) : JsonOf(started);
        answer.text = TextOf(search.json);
    } else if (isDone) {
        answer.text = isShown ? L"The search pane is in front\n" : L"In front: " + Shown(started) + L"\n";
    }
    if (!isDone) {
        answer.status = Status::No;
        answer.problem = isShown ? L"the search pane is not in front: it did not come, or was closed"
                                 : L"no application came to the front that was not there before";
    }
    return answer;
}

Answer Run(const CommandLine& line, Search search)
{
    const DriveOptions& options = line.drive;
    if (options.isDryRun) {
        return DryRun(line,
                      {StartLine(options), KeysLine(search, options, PastedText(search.name, options))});
    }
    if (!HasSearchPane()) {
        return {
            L"", Status::No,
            L"this Windows has no search pane: the keys would go to the window in front. \"qanh activate\" "
            L"starts Store applications here, too"};
    }
    const Library library(options.dll);
    Announce(StartLine(options));
    const Session session(library);
    if (options.isExcluding) {
        if (!session.Refreshes()) {
            return {L"", Status::No, AnotherRefreshes()};
        }
        session.WaitForFirstRefresh([] {});
    }
    const std::wstring pasted = PastedText(search.name, options);
    Announce(KeysLine(search, options, pasted));
    const HWND before = GetForegroundWindow();
    HRESULT hr = E_UNEXPECTED;
    {
        const IgnoredInterrupt ignored;
        hr = search.start(library);
    }
    if (FAILED(hr)) {
        throw Failure{hr == E_FAIL ? L"nothing was pressed, since it cannot be told what the screen shows"
                                   : L"nothing was pressed",
                      hr};
    }
    return Outcome(line, std::move(search), pasted, before);
}

} // namespace

Answer Launch(const CommandLine& line)
{
    RefuseOtherHost(line);
    if (line.name.empty()) {
        throw WrongUse{L"the name is empty"};
    }
    const auto start = [&line](const Library& library) {
        return library.launchBySearch(line.name.c_str(), line.drive.searchMode, line.drive.isExcluding);
    };
    return Run(line, {line.name, L"", start, Json{{"Name", JsonOf(line.name)}}});
}

Answer Browser(const CommandLine& line)
{
    RefuseOtherHost(line);
    const auto start = [&line](const Library& library) {
        return library.launchBrowserBySearch(line.drive.tileMode, line.drive.searchMode,
                                             line.drive.isExcluding);
    };
    return Run(line, {kBrowserName, TileText(line.drive.tileMode) + L", ", start,
                      Json{{"Name", JsonOf(kBrowserName)}, {"TileMode", line.drive.tileMode}}});
}
