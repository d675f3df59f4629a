#include "DriveCommandLine.h"

#include "QanHelper.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <map>

namespace {

constexpr char kEnd[] =
    "It says on standard error what it does, before it does it; --dry-run tells what it would do, and --json asks "
    "for JSON. See docs/qanh.md.";

CLI::App* AddCommand(CLI::App& tool, DriveValues& values, const char* name, const char* description,
                     const std::string& example)
{
    CLI::App* command = tool.add_subcommand(name, description);
    command->fallthrough(); // so that the options of every command may stand behind it too
    command->add_option("--dll", values.dll, "The library's file, when it is not beside qanh.exe");
    command->add_flag("--dry-run", values.options.isDryRun, "Only tell what would be done");
    command->footer("Example:\n  " + example + "\n\n" + kEnd);
    return command;
}

} // namespace

void DescribeDriving(CLI::App& tool, DriveValues& values, std::string& name)
{
    CLI::App* installed = AddCommand(tool, values, "installed",
                                     "Asks whether a Store package is installed for the current user.",
                                     "qanh installed Vel.Calendar_0a1b2c3d4e5f6");
    installed->add_option("ID", name, "Its package family name, or the application user model ID")
        ->required();

    CLI::App* displayName = AddCommand(tool, values, "name", "Asks for the display name of a Store package.",
                                       "qanh name Vel.Calendar_0a1b2c3d4e5f6");
    displayName->add_option("FAMILY", name, "Its package family name")->required();
}

DriveOptions OptionsOf(const DriveValues& values)
{
    DriveOptions options = values.options;
    options.dll = FromUtf8(values.dll);
    options.arguments = FromUtf8(values.arguments);
    return options;
}
