#pragma once

#include "LogLines.h"
#include "LogStatement.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

// Who has written a line. The log does not say; the names of most operations do.
enum class LogThread
{
    Host,    // whoever called the library
    Refresh, // the refresh thread
};
[[nodiscard]] const wchar_t* NameOf(LogThread thread);

// A call of an operation.
struct LogCall
{
    std::size_t number = 0; // of the calls, counted from 1
    std::size_t line = 0;
    std::optional<long long> begin;
    LogThread thread = LogThread::Host;
    bool isGuess = false;  // the thread: the lines of both stand mixed, and this one could be of either
    std::size_t depth = 0; // 0: called by nobody that the log knows of
    std::wstring operation;
    std::wstring arguments;

    // Once it has ended:
    bool hasExit = false; // otherwise it ended unseen
    std::size_t exitLine = 0;
    std::optional<long long> end;
    std::wstring outcome;    // as the log has it; may be empty
    long long innerTime = 0; // of the calls in it, in milliseconds

    // Milliseconds; none where the log does not tell, or where the clock was put back meanwhile.
    [[nodiscard]] std::optional<long long> Duration() const;
};

// A line of a call's own, or of nobody's.
struct LogNote
{
    std::size_t line = 0;
    std::optional<long long> time;
    LogThread thread = LogThread::Host;
    bool isGuess = false;
    std::size_t depth = 0;
    LogStatement statement; // a note, or an exit whose entry is missing
};

// Is told of the calls in the order of the log's lines.
class LogVisitor
{
public:
    LogVisitor() = default;
    virtual ~LogVisitor() = default;
    LogVisitor(const LogVisitor&) = delete;
    LogVisitor& operator=(const LogVisitor&) = delete;

    // The open calls of the thread, the outermost first; the last one has just begun.
    virtual void OnBegin(const std::vector<LogCall>& open) = 0;
    // The last one has just ended; also when its exit is missing.
    virtual void OnEnd(const std::vector<LogCall>& open) = 0;
    virtual void OnNote(const LogNote& note, const std::vector<LogCall>& open) = 0;
};

// What was read, and what could not be made sense of.
struct LogExtent
{
    std::size_t lines = 0;        // messages that were understood
    std::size_t firstForeign = 0; // the file's line; 0 when there is none
    std::size_t foreign = 0;      // broken, or of somebody else
    std::optional<long long> begin;
    std::optional<long long> end;
    bool isCut = false; // the last line has no end
};

// Reads the log and makes calls of its lines. It holds the open calls only. Throws Failure.
[[nodiscard]] LogExtent ReadCalls(LogLines& lines, LogVisitor& visitor);
