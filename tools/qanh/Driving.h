#pragma once

#include "CommandLine.h"
#include "Commands.h"

#include <string>
#include <vector>

// What the commands that drive the library have in common.

// The library keeps its files for the executable that it runs in, which is this one: throws WrongUse when the
// command line names a catalogue, a log or a host.
void RefuseOtherHost(const CommandLine& line);

// Says on standard error what is about to be done.
void Announce(const std::wstring& what);

// What would be announced, in order, as the answer.
[[nodiscard]] Answer DryRun(const CommandLine& line, const std::vector<std::wstring>& announced);

// A result in hexadecimal alone.
[[nodiscard]] std::wstring Hexadecimal(HRESULT result);
