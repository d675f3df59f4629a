#include "LogTexts.h"

#include "Catalogue.h"
#include "Failure.h"
#include "LogTree.h"
#include "Text.h"
#include "common/FormatText.h"

#include <utility>

namespace {

using Phase = std::pair<const wchar_t*, std::optional<long long>>;

std::wstring Milliseconds(const std::optional<long long>& time)
{
    return time ? std::to_wstring(*time) + L" ms" : L"? ms";
}

std::wstring TimeOrBlank(const std::optional<long long>& time)
{
    return time ? TimeText(*time) : L"?";
}

std::wstring Number(std::size_t count, const wchar_t* one, const wchar_t* several)
{
    return std::to_wstring(count) + L" " + (count == 1 ? one : several);
}

std::vector<Phase> PhasesOf(const LoggedLaunch& launch)
{
    return {{L"exclusions", launch.exclusions},
            {L"Start screen", launch.startScreen},
            {L"search pane", launch.searchPane},
            {L"clipboard", launch.clipboard},
            {L"paste and start", launch.pasteAndStart}};
}

std::vector<Phase> PhasesOf(const LoggedPass& pass)
{
    return {{L"what is installed", pass.marking},
            {L"Store", pass.store},
            {L"Start menu", pass.startMenu},
            {L"saving", pass.save}};
}

std::wstring PhasesText(const std::vector<Phase>& phases)
{
    std::wstring text;
    for (const auto& [name, time] : phases) {
        if (time) {
            text += text.empty() ? L"" : L", ";
            text += name;
            text += L" " + Milliseconds(time);
        }
    }
    return text.empty() ? L"no phase is in the log" : text;
}

std::optional<long long> DurationOf(const LoggedPass& pass)
{
    return pass.begin && pass.end && *pass.begin <= *pass.end ? std::optional(*pass.end - *pass.begin)
                                                              : std::nullopt;
}

std::wstring Heading(const wchar_t* heading, bool isEmpty)
{
    return std::wstring(heading) + (isEmpty ? L": none\n" : L":\n");
}

std::wstring ThreadText(LogThread thread, bool isGuess)
{
    return std::wstring(NameOf(thread)) + (isGuess ? L"?" : L"");
}

} // namespace

std::wstring LogPath(const CommandLine& line)
{
    if (!line.log.empty()) {
        return line.log;
    }
    if (line.host.empty()) {
        throw WrongUse{L"which log? Give --log FILE or --host NAME"};
    }
    return FileOfHost(line.host, L"QanHelperLog.txt");
}

unsigned LogCodePage(const CommandLine& line)
{
    const unsigned codePage = line.codePage.value_or(CP_ACP);
    if (codePage != CP_ACP && !IsValidCodePage(codePage)) {
        throw WrongUse{L"this system has no code page " + std::to_wstring(codePage)};
    }
    return codePage;
}

std::wstring Described(const LogFailure& failure)
{
    std::wstring text = failure.result ? Described(*failure.result) : std::wstring();
    if (!text.empty() && !failure.sentence.empty()) {
        text += L": ";
    }
    return text + failure.sentence;
}

std::wstring ExtentText(const LogExtent& extent, const LogSummary& summary)
{
    return FormatText(L"From %s to %s: %s, %s, %s, %s, %s\n",
                      {TimeOrBlank(extent.begin), TimeOrBlank(extent.end),
                       Number(extent.lines, L"line", L"lines"), Number(summary.calls, L"call", L"calls"),
                       Number(summary.launches.size(), L"launch", L"launches"),
                       Number(summary.passes.size(), L"refresh pass", L"refresh passes"),
                       Number(summary.failures.size(), L"failure", L"failures")});
}

std::wstring TimesText(const LogSummary& summary)
{
    std::wstring text = Heading(L"Launches", summary.launches.empty());
    for (const LoggedLaunch& launch : summary.launches) {
        const LogCall& call = launch.call;
        text += FormatText(L"  %s\t%s\t%s\t%s\n",
                           {TimeOrBlank(call.begin), Shown(CallText(call)), Milliseconds(call.Duration()),
                            call.hasExit ? Shown(call.outcome) : std::wstring(L"no exit in the log")});
        if (!launch.query.empty()) {
            text += L"    query: " + Shown(launch.query) + L"\n";
        }
        text += L"    " + PhasesText(PhasesOf(launch));
        text += launch.pastes > 1 ? L" (pasted " + std::to_wstring(launch.pastes) + L" times)\n" : L"\n";
    }
    text += Heading(L"Refresh passes", summary.passes.empty());
    for (const LoggedPass& pass : summary.passes) {
        text += FormatText(L"  %s\t%s\n    %s\n", {TimeOrBlank(pass.begin), Milliseconds(DurationOf(pass)),
                                                   PhasesText(PhasesOf(pass))});
    }
    return text;
}

std::wstring FailuresText(const LogSummary& summary)
{
    std::wstring text = Heading(L"Failures", summary.failures.empty());
    for (const LoggedFailure& entry : summary.failures) {
        text += FormatText(
            L"  line %s\t%s\t%s\t%s\n",
            {std::to_wstring(entry.line), TimeOrBlank(entry.time), ThreadText(entry.thread, entry.isGuess),
             Shown(entry.operation.empty() ? entry.text : entry.operation + L" " + entry.text)});
        if (!entry.inside.empty()) {
            text += L"    in " + Shown(entry.inside) + L"\n";
        }
        text += L"    " + Described(entry.failure) + L"\n";
    }
    return text;
}

std::wstring SlowestText(const LogSummary& summary)
{
    const std::vector<LogCall> slowest = summary.Slowest();
    std::wstring text = Heading(L"Slowest operations", slowest.empty());
    for (const LogCall& call : slowest) {
        text += FormatText(L"  line %s\t%s\t%s\t%s of its own, %s in all\t%s\n",
                           {std::to_wstring(call.line), TimeOrBlank(call.begin),
                            ThreadText(call.thread, call.isGuess), Milliseconds(OwnTime(call)),
                            Milliseconds(call.Duration()), Shown(CallText(call))});
    }
    return text;
}

Json JsonOf(const LogExtent& extent)
{
    return {{"Begin", JsonOfTime(extent.begin)},
            {"End", JsonOfTime(extent.end)},
            {"Lines", extent.lines},
            {"ForeignLines", extent.foreign},
            {"FirstForeignLine", extent.foreign == 0 ? Json(nullptr) : Json(extent.firstForeign)},
            {"IsCut", extent.isCut}};
}

Json JsonOfLaunches(const LogSummary& summary)
{
    Json launches = Json::array();
    for (const LoggedLaunch& launch : summary.launches) {
        launches.push_back({{"Line", launch.call.line},
                            {"Time", JsonOfTime(launch.call.begin)},
                            {"Arguments", JsonOf(launch.call.arguments)},
                            {"Query", JsonOf(launch.query)},
                            {"Milliseconds", JsonOf(launch.call.Duration())},
                            {"Outcome", JsonOf(launch.call.outcome)},
                            {"Exclusions", JsonOf(launch.exclusions)},
                            {"StartScreen", JsonOf(launch.startScreen)},
                            {"SearchPane", JsonOf(launch.searchPane)},
                            {"Clipboard", JsonOf(launch.clipboard)},
                            {"PasteAndStart", JsonOf(launch.pasteAndStart)},
                            {"Pastes", launch.pastes}});
    }
    return launches;
}

Json JsonOfPasses(const LogSummary& summary)
{
    Json passes = Json::array();
    for (const LoggedPass& pass : summary.passes) {
        passes.push_back({{"Line", pass.line},
                          {"Time", JsonOfTime(pass.begin)},
                          {"Milliseconds", JsonOf(DurationOf(pass))},
                          {"WhatIsInstalled", JsonOf(pass.marking)},
                          {"Store", JsonOf(pass.store)},
                          {"StartMenu", JsonOf(pass.startMenu)},
                          {"Saving", JsonOf(pass.save)}});
    }
    return passes;
}

Json JsonOfFailures(const LogSummary& summary)
{
    Json failures = Json::array();
    for (const LoggedFailure& entry : summary.failures) {
        failures.push_back({{"Line", entry.line},
                            {"Time", JsonOfTime(entry.time)},
                            {"Thread", JsonOf(NameOf(entry.thread))},
                            {"IsGuess", entry.isGuess},
                            {"Operation", JsonOf(entry.operation)},
                            {"Text", JsonOf(entry.text)},
                            {"Inside", JsonOf(entry.inside)},
                            {"Meaning", JsonOf(Described(entry.failure))}});
    }
    return failures;
}

Json JsonOfSlowest(const LogSummary& summary)
{
    Json slowest = Json::array();
    for (const LogCall& call : summary.Slowest()) {
        slowest.push_back({{"Line", call.line},
                           {"Time", JsonOfTime(call.begin)},
                           {"Thread", JsonOf(NameOf(call.thread))},
                           {"IsGuess", call.isGuess},
                           {"Operation", JsonOf(call.operation)},
                           {"Arguments", JsonOf(call.arguments)},
                           {"OwnMilliseconds", JsonOf(OwnTime(call))},
                           {"Milliseconds", JsonOf(call.Duration())}});
    }
    return slowest;
}
