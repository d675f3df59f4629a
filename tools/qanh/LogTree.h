#pragma once

#include "Json.h"
#include "LogCalls.h"

#include <unordered_map>

// Prints the calls as a tree, line by line as they come, to standard output.
class LogTreePrinter : public LogVisitor
{
public:
    void OnBegin(const std::vector<LogCall>& open) override;
    void OnEnd(const std::vector<LogCall>& open) override;
    void OnNote(const LogNote& note, const std::vector<LogCall>& open) override;

    // Prints what is left.
    void Finish();

private:
    void TellHeld();
    void Tell(std::optional<long long> time, LogThread thread, bool isGuess, std::size_t depth,
              const std::wstring& text);

    std::optional<LogCall> m_held; // that has just begun: it takes one line when it ends at once
    std::wstring m_text;
};

// Makes a list of the calls and of what is told on the way.
class LogTreeJson : public LogVisitor
{
public:
    void OnBegin(const std::vector<LogCall>& open) override;
    void OnEnd(const std::vector<LogCall>& open) override;
    void OnNote(const LogNote& note, const std::vector<LogCall>& open) override;

    Json entries = Json::array();

private:
    std::unordered_map<std::size_t, std::size_t> m_open; // a call's number: its place in the list
};

// A number or null.
[[nodiscard]] Json JsonOf(const std::optional<long long>& number);
[[nodiscard]] Json JsonOfTime(const std::optional<long long>& time);
