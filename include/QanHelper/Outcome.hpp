// What a Launcher is asked for, and what it tells. Part of QanHelper.hpp; plain values, any thread.
#ifndef QANHELPER_OUTCOME_HPP
#define QANHELPER_OUTCOME_HPP

#include "Library.hpp"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

namespace qanh {

// What is to be launched, made by one of the three functions.
struct Request
{
    enum class Kind
    {
        Search,
        Browser,
        Activation
    };

    // An application, by the name that the Start screen's search shows.
    static Request Search(std::wstring name, SearchMode mode = SearchMode::Launch, bool excludeOthers = true)
    {
        Request request;
        request.text = std::move(name);
        request.mode = mode;
        request.excludeOthers = excludeOthers;
        return request;
    }

    // The browser, by search.
    static Request Browser(TileMode tile, SearchMode mode = SearchMode::Launch, bool excludeOthers = true)
    {
        Request request = Search(L"Internet Explorer", mode, excludeOthers);
        request.kind = Kind::Browser;
        request.tile = tile;
        return request;
    }

    // A Store application, by its application user model ID.
    static Request Activation(std::wstring appUserModelId,
                              std::optional<std::wstring> arguments = std::nullopt)
    {
        Request request;
        request.kind = Kind::Activation;
        request.text = std::move(appUserModelId);
        request.arguments = std::move(arguments);
        return request;
    }

    Kind kind = Kind::Search;
    std::wstring text; // the name or the ID
    std::optional<std::wstring> arguments;
    SearchMode mode = SearchMode::Launch;
    TileMode tile = TileMode::Unchanged;
    bool excludeOthers = true;
    // From the moment it is queued to the answer; 0: no limit. A launch takes 2 to 24 s, and a search without
    // a hit ends when the user closes the pane.
    std::chrono::milliseconds limit{60000};
    // How long an application may take to show its window once the library is done.
    std::chrono::milliseconds windowLimit{5000};
};

enum class OutcomeKind
{
    // A window of another program came to the front: Outcome::window. It is taken for what was started.
    Started,
    // The library is done, and no window came to the front in time that was not there before.
    NothingStarted,
    // The search pane did not come to the front: the keys went to whatever was there.
    PaneNeverCame,
    // Something else came to the front before Enter was pressed, so that the keys went there: it is
    // Outcome::window.
    FocusTaken,
    // SearchMode::Show: the pane is open, and the choice is the user's.
    Shown,
    // The library or the activation manager gave another result than S_OK: Outcome::result.
    Failed,
    // The limit was over first. When the launch was begun it goes on, and may still start something; the
    // launcher is busy until it ends. Otherwise nothing was done.
    TimedOut,
    // It was taken back before it was begun, or the launcher was stopped: a launch that was begun goes on,
    // without anybody looking.
    Cancelled,
};

// What became of what was on the clipboard before. Texts, HTML, RTF, file lists and pictures (CF_DIB) are put
// back; other formats are lost.
enum class ClipboardState
{
    Untouched, // the launch did not change it
    PutBack,   // it is as it was, as far as the formats go
    Replaced,  // somebody else put something there meanwhile, which was left there
    Lost,      // it could not be read before, held other formats only, or cannot be written
    Pending,   // the launch goes on; it is put back at its end
};

// The window that came to the front.
struct StartedWindow
{
    // Another process's, which may close it at any moment, or what is in front, perhaps of the host's own;
    // null: there is none.
    HWND handle = nullptr;
    DWORD processId = 0;
    // The process is younger than the launch. An application that ran already shows a window of its old
    // process.
    bool isNewProcess = false;
    std::wstring title;   // "" for a window of the host's own
    std::wstring program; // full path; "" when the system does not tell
};

struct Outcome
{
    OutcomeKind kind = OutcomeKind::Cancelled;
    bool isBegun = false;     // the library was called: keys were pressed
    HRESULT result = S_OK;    // of the library's function, once it has returned
    bool hasPaneCome = false; // the search pane was in front
    StartedWindow window;     // with Started and FocusTaken; with TimedOut what is in front
    ClipboardState clipboard = ClipboardState::Untouched;
    std::chrono::milliseconds duration{0}; // from the moment it was queued

    // The result as an error code: not set when it is S_OK.
    std::error_code Code() const noexcept { return ToErrorCode(result); }
};

} // namespace qanh

#endif
