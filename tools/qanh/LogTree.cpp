#include "LogTree.h"

#include "LogSummary.h"
#include "Output.h"
#include "Text.h"

namespace {

constexpr std::size_t kPiece = 32768; // characters that are printed at once

std::wstring EndText(const LogCall& call)
{
    if (!call.hasExit) {
        return L"no exit in the log";
    }
    const std::optional<long long> duration = call.Duration();
    const std::wstring time = duration ? std::to_wstring(*duration) + L" ms" : L"? ms";
    // Some exits have a colon of their own.
    const std::wstring outcome = call.outcome.starts_with(L": ") ? call.outcome.substr(2) : call.outcome;
    return outcome.empty() ? time : outcome + L", " + time;
}

Json EntryOf(std::size_t line, std::optional<long long> time, LogThread thread, bool isGuess,
             std::size_t depth)
{
    return {{"Line", line},
            {"Time", JsonOfTime(time)},
            {"Thread", JsonOf(NameOf(thread))},
            {"IsGuess", isGuess},
            {"Depth", depth}};
}

} // namespace

Json JsonOf(const std::optional<long long>& number)
{
    return number ? Json(*number) : Json(nullptr);
}

Json JsonOfTime(const std::optional<long long>& time)
{
    return time ? JsonOf(TimeText(*time)) : Json(nullptr);
}

void LogTreePrinter::OnBegin(const std::vector<LogCall>& open)
{
    TellHeld();
    m_held = open.back();
}

void LogTreePrinter::OnEnd(const std::vector<LogCall>& open)
{
    const LogCall& call = open.back();
    if (m_held && m_held->number == call.number) {
        m_held.reset();
        Tell(call.begin, call.thread, call.isGuess, call.depth, CallText(call) + L": " + EndText(call));
        return;
    }
    TellHeld();
    Tell(call.hasExit ? call.end : std::nullopt, call.thread, call.isGuess, call.depth,
         L"end of " + call.operation + L": " + EndText(call));
}

void LogTreePrinter::OnNote(const LogNote& note, const std::vector<LogCall>& open)
{
    TellHeld();
    const LogStatement& statement = note.statement;
    const bool isOfCaller = !open.empty() && open.back().operation == statement.operation;
    std::wstring text = isOfCaller || statement.operation.empty() ? L"" : statement.operation + L" ";
    if (statement.kind == LogStatement::Kind::Exit) {
        text = L"end of " + text + L"without its beginning: ";
    }
    Tell(note.time, note.thread, note.isGuess, note.depth, text + statement.text);
}

void LogTreePrinter::Finish()
{
    TellHeld();
    WriteText(STD_OUTPUT_HANDLE, m_text);
    m_text.clear();
}

void LogTreePrinter::TellHeld()
{
    if (m_held) {
        Tell(m_held->begin, m_held->thread, m_held->isGuess, m_held->depth, CallText(*m_held));
        m_held.reset();
    }
}

void LogTreePrinter::Tell(std::optional<long long> time, LogThread thread, bool isGuess, std::size_t depth,
                          const std::wstring& text)
{
    m_text += time ? TimeText(*time) : std::wstring(23, L' ');
    m_text += L"\t";
    m_text += NameOf(thread);
    m_text += isGuess ? L"?\t" : L"\t";
    m_text.append(depth * 2, L' ');
    m_text += Shown(text);
    m_text += L"\n";
    if (m_text.size() >= kPiece) {
        WriteText(STD_OUTPUT_HANDLE, m_text);
        m_text.clear();
    }
}

void LogTreeJson::OnBegin(const std::vector<LogCall>& open)
{
    const LogCall& call = open.back();
    Json entry = EntryOf(call.line, call.begin, call.thread, call.isGuess, call.depth);
    entry["Operation"] = JsonOf(call.operation);
    entry["Arguments"] = JsonOf(call.arguments);
    m_open[call.number] = entries.size();
    entries.push_back(std::move(entry));
}

void LogTreeJson::OnEnd(const std::vector<LogCall>& open)
{
    const LogCall& call = open.back();
    const auto place = m_open.find(call.number);
    Json& entry = entries[place->second];
    entry["ExitLine"] = call.hasExit ? Json(call.exitLine) : Json(nullptr);
    entry["Outcome"] = JsonOf(call.outcome);
    entry["Milliseconds"] = JsonOf(call.Duration());
    m_open.erase(place);
}

void LogTreeJson::OnNote(const LogNote& note, const std::vector<LogCall>&)
{
    Json entry = EntryOf(note.line, note.time, note.thread, note.isGuess, note.depth);
    entry["Operation"] = JsonOf(note.statement.operation);
    entry["Note"] = JsonOf(note.statement.text);
    entries.push_back(std::move(entry));
}
