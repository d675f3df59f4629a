#pragma once

#include "DriveOptions.h"

#include <string>

namespace CLI {
class App;
}

// What the parser fills in for the commands that drive the library; it speaks UTF-8.
struct DriveValues
{
    std::string dll;
    std::string arguments;
    DriveOptions options; // all that is no text
};

// Adds those commands to the parser; what they work on goes to the name.
void DescribeDriving(CLI::App& tool, DriveValues& values, std::string& name);

// What was parsed.
[[nodiscard]] DriveOptions OptionsOf(const DriveValues& values);
