#pragma once

#include "CommandLine.h"
#include "Json.h"
#include "LogSummary.h"

#include <string>

// Which log the command line names. Throws WrongUse when it names none, and Failure.
[[nodiscard]] std::wstring LogPath(const CommandLine& line);
// The code page of its text. Throws WrongUse.
[[nodiscard]] unsigned LogCodePage(const CommandLine& line);

// What a summary has, for a person: sections with a heading each.
[[nodiscard]] std::wstring ExtentText(const LogExtent& extent, const LogSummary& summary);
[[nodiscard]] std::wstring TimesText(const LogSummary& summary);
[[nodiscard]] std::wstring FailuresText(const LogSummary& summary);
[[nodiscard]] std::wstring SlowestText(const LogSummary& summary);

// A failure in words: its result as far as the log has one, and what it means.
[[nodiscard]] std::wstring Described(const LogFailure& failure);

// The same as data.
[[nodiscard]] Json JsonOf(const LogExtent& extent);
[[nodiscard]] Json JsonOfLaunches(const LogSummary& summary);
[[nodiscard]] Json JsonOfPasses(const LogSummary& summary);
[[nodiscard]] Json JsonOfFailures(const LogSummary& summary);
[[nodiscard]] Json JsonOfSlowest(const LogSummary& summary);
