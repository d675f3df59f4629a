#pragma once

#include "CommandLine.h"
#include "Failure.h"

#include <string>

// What a command answers.
struct Answer
{
    std::wstring text; // for standard output
    Status status = Status::Done;
    std::wstring problem = L""; // for standard error, one line without its end
};

// The commands, each in a file of its own. They throw WrongUse and Failure.
[[nodiscard]] Answer Check(const CommandLine& line);
[[nodiscard]] Answer Diff(const CommandLine& line);
[[nodiscard]] Answer Doctor(const CommandLine& line);
[[nodiscard]] Answer Explain(const CommandLine& line);
[[nodiscard]] Answer List(const CommandLine& line);
[[nodiscard]] Answer Log(const CommandLine& line);
[[nodiscard]] Answer Preset(const CommandLine& line);
[[nodiscard]] Answer Report(const CommandLine& line);
[[nodiscard]] Answer Show(const CommandLine& line);

// Those that drive the library.
[[nodiscard]] Answer Activate(const CommandLine& line);
[[nodiscard]] Answer Browser(const CommandLine& line);
[[nodiscard]] Answer Installed(const CommandLine& line);
[[nodiscard]] Answer DisplayName(const CommandLine& line);
[[nodiscard]] Answer Launch(const CommandLine& line);
[[nodiscard]] Answer Refresh(const CommandLine& line);
