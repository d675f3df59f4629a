#include "DriveCommandLine.h"

#include "Choices.h"
#include "HelpText.h"
#include "QanHelper.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <string>

namespace {

constexpr char kEnd[] =
    "It says on standard error what it does, before it does it; --dry-run tells what it would do, and --json asks "
    "for JSON. See docs/qanh.md.";

CLI::App* AddCommand(CLI::App& tool, DriveValues& values, const char* name, const char* description,
                     const std::string& example)
{
    CLI::App* command = tool.add_subcommand(name, description);
    command->fallthrough(); // so that the options of every command may stand behind it too
    command->group(kDrivingGroup);
    command->add_option("--dll", values.dll, "The library's file, when it is not beside qanh.exe")
        ->type_name("FILE");
    command->add_flag("--dry-run", values.options.isDryRun, "Only tell what would be done");
    command->footer("Example:\n  " + example + "\n\n" + kEnd);
    return command;
}

// For the launches by search: the names of the modes, or their numbers.
void AddSearch(CLI::App* command, DriveValues& values)
{
    command
        ->add_option(
            "--mode", values.options.searchMode,
            "launch, as without this option: the query, and Enter; show: the plain name, and the choice is "
            "yours; plain: as launch, but the plain name when the catalogue knows it; or the number of the "
            "mode")
        ->transform(NumberOf({{"launch", QANH_SEARCH_LAUNCH},
                              {"show", QANH_SEARCH_SHOW},
                              {"plain", QANH_SEARCH_LAUNCH_PLAIN}}))
        ->type_name("MODE");
    command->add_flag(
        "--exclude", values.options.isExcluding,
        "Exclude the other applications of the catalogue that the search would hit, too; without it, "
        "the search may start another one");
}

} // namespace

void DescribeDriving(CLI::App& tool, DriveValues& values, std::string& name)
{
    CLI::App* launch = AddCommand(
        tool, values, "launch",
        "Launches an application by the Start screen's search, as a launcher would, and tells what came "
        "to the front.",
        "qanh launch Mail --exclude");
    launch->add_option("NAME", name, "The name that the search shows")->required();
    AddSearch(launch, values);

    CLI::App* browser =
        AddCommand(tool, values, "browser",
                   "Launches Internet Explorer by the Start screen's search, and tells what came to "
                   "the front.",
                   "qanh browser --tile desktop");
    browser
        ->add_option(
            "--tile", values.options.tileMode,
            "What its tile setting is during the launch: desktop, immersive, or unchanged, as without this "
            "option; or the number of the mode")
        ->transform(NumberOf({{"desktop", QANH_TILE_DESKTOP},
                              {"immersive", QANH_TILE_IMMERSIVE},
                              {"unchanged", QANH_TILE_UNCHANGED}}))
        ->type_name("TILE");
    AddSearch(browser, values);

    CLI::App* activate =
        AddCommand(tool, values, "activate", "Starts a Store application by its ID, without the search.",
                   "qanh activate Vel.Calendar_0a1b2c3d4e5f6!App");
    activate->add_option("ID", name, "Its application user model ID")->required();
    activate->add_option("--arguments", values.arguments, "What is handed to the application")
        ->type_name("TEXT");

    CLI::App* installed = AddCommand(tool, values, "installed",
                                     "Asks whether a Store package is installed for the current user.",
                                     "qanh installed Vel.Calendar_0a1b2c3d4e5f6");
    installed->add_option("ID", name, "Its package family name, or the application user model ID")
        ->required();

    CLI::App* displayName = AddCommand(tool, values, "name", "Asks for the display name of a Store package.",
                                       "qanh name Vel.Calendar_0a1b2c3d4e5f6");
    displayName->add_option("FAMILY", name, "Its package family name")->required();

    CLI::App* refresh =
        AddCommand(tool, values, "refresh",
                   "Starts the library, lets it refresh the catalogue of this program once, stops it, "
                   "and tells what changed.",
                   "qanh refresh --watch");
    refresh->add_flag(
        "--watch", values.options.isWatching,
        "Show progress, and tell how long the pass took and, when the diagnostic log is on, each of its "
        "sources");
}

DriveOptions OptionsOf(const DriveValues& values)
{
    DriveOptions options = values.options;
    options.dll = FromUtf8(values.dll);
    options.arguments = FromUtf8(values.arguments);
    return options;
}
