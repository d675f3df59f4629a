#pragma once

#include "LogCalls.h"

// A launch by search, and where its time went; in milliseconds, none where the log does not tell.
struct LoggedLaunch
{
    LogCall call;
    std::wstring query;
    std::optional<long long> exclusions;    // the catalogue is asked what to exclude
    std::optional<long long> startScreen;   // it is brought up
    std::optional<long long> searchPane;    // it is opened
    std::optional<long long> clipboard;     // the text is put there
    std::optional<long long> pasteAndStart; // until the pane is gone, or for the set time
    std::size_t pastes = 0;
};

// A pass of the refresh thread.
struct LoggedPass
{
    std::size_t line = 0;
    std::optional<long long> begin;
    std::optional<long long> end;       // of its last step that the log has
    std::optional<long long> marking;   // what is installed of what is known
    std::optional<long long> store;     // packages
    std::optional<long long> startMenu; // shortcuts
    std::optional<long long> save;
};

struct LoggedFailure
{
    std::size_t line = 0;
    std::optional<long long> time;
    LogThread thread = LogThread::Host;
    bool isGuess = false;
    std::wstring operation;
    std::wstring text;   // as the log has it
    std::wstring inside; // the outermost call that it happened in; empty when that is the operation itself
    LogFailure failure;
};

// A call with its arguments as the log shows it.
[[nodiscard]] std::wstring CallText(const LogCall& call);

// What the call spent outside of the calls in it, in milliseconds.
[[nodiscard]] std::optional<long long> OwnTime(const LogCall& call);

// Collects what a person wants to know of a log.
class LogSummary : public LogVisitor
{
public:
    // Keeps that many of the slowest calls.
    explicit LogSummary(std::size_t slowest) : m_slowestCount(slowest) {}

    void OnBegin(const std::vector<LogCall>& open) override;
    void OnEnd(const std::vector<LogCall>& open) override;
    void OnNote(const LogNote& note, const std::vector<LogCall>& open) override;

    std::vector<LoggedLaunch> launches;
    std::vector<LoggedPass> passes;
    std::vector<LoggedFailure> failures;
    std::size_t calls = 0;
    // Those that took the most time of their own, the slowest first, and took any that the log can show.
    [[nodiscard]] std::vector<LogCall> Slowest() const;

private:
    // The failure of a call that the calls around it hand on.
    struct Frame
    {
        bool hasFailure = false;
        std::optional<HRESULT> result;
    };

    void TakeLaunch(const LogCall& call);
    void TakePass(const LogCall& call);
    void TakeSlow(const LogCall& call);
    void Fail(const LogFailure& failure, LoggedFailure place, Frame& inner, Frame* outer);
    void FailCall(const std::vector<LogCall>& open, const LogFailure& failure);
    void FailUnseen(const std::vector<LogCall>& open, const wchar_t* sentence);
    [[nodiscard]] std::vector<Frame>& Frames(LogThread thread)
    {
        return m_frames[static_cast<std::size_t>(thread)];
    }

    const std::size_t m_slowestCount;
    std::vector<LogCall> m_slowest; // a heap, the fastest of them on top
    std::array<std::vector<Frame>, 2> m_frames;
    LoggedLaunch m_launch;                    // that is open, if one is
    std::optional<long long> m_pasteBegin;    // of that launch
    std::optional<long long> m_paneIsAwaited; // since the keys that open it
    std::optional<int> m_mode; // what the screen showed last while the Start screen was awaited
};
