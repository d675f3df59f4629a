#include "CommandLine.h"

#include "Choices.h"
#include "DriveCommandLine.h"
#include "Failure.h"
#include "HelpText.h"
#include "QanHelper.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

constexpr char kTool[] = "qanh";
constexpr char kAbout[] =
    "Tells what the library knows of the applications of a machine, and what it makes of it. "
    "Only looks, but for the commands that drive the library.";
constexpr char kEnd[] = "See docs/qanh.md.";
constexpr char kJson[] = "--json asks for JSON. See docs/qanh.md.";
constexpr char kLooking[] =
    "--catalogue FILE, --log FILE or --host NAME says what to look at, --json asks for JSON. See docs/qanh.md.";

// What the parser fills in; it speaks UTF-8.
struct Values
{
    std::string catalogue;
    std::string host;
    std::string log;
    bool isJson = false;
    std::string kind;
    std::string match;
    std::string name;
    std::string file;
    std::string otherFile;
    bool isHere = false;
    std::string action;
    std::string from;
    std::string reserve;
    std::string output;
    bool isTree = false;
    bool isTimes = false;
    bool isErrors = false;
    std::optional<unsigned> slow;
    std::optional<unsigned> codePage;
    DriveValues drive;
    std::string helpCommand;
};

CLI::App* AddCommand(CLI::App& tool, const char* name, const char* description, const std::string& example,
                     const char* end = kLooking)
{
    CLI::App* command = tool.add_subcommand(name, description);
    command->fallthrough(); // so that the options of every command may stand behind it too
    command->group(kLookingGroup);
    command->footer("Example:\n  " + example + "\n\n" + end);
    return command;
}

// For the commands that read a log.
void AddCodePage(CLI::App* command, Values& values)
{
    command
        ->add_option("--code-page", values.codePage,
                     "The code page of the log's text, such as 932, when it comes from another machine")
        ->check(NumberFrom(1, 65535))
        ->type_name("NUMBER");
}

void Describe(CLI::App& tool, Values& values)
{
    tool.allow_windows_style_options(false); // a name may begin with "/"
    tool.require_subcommand(1);
    tool.set_help_flag("-h,--help", "Explain the command");
    tool.footer("qanh help COMMAND explains a command, with an example.\n"
                "Exit status:\n"
                "  0  done\n"
                "  1  the answer is no, or problems were found\n"
                "  2  wrong use\n"
                "  3  failed");
    CLI::Option* catalogue =
        tool.add_option("--catalogue", values.catalogue, "The catalogue file to look at")->type_name("FILE");
    tool.add_option("--host", values.host,
                    "Look at the catalogue and the log of the host of this name, of this user; the path of "
                    "its executable will do as well")
        ->excludes(catalogue)
        ->type_name("NAME");
    tool.add_option("--log", values.log, "The diagnostic log to look at")->type_name("FILE");
    tool.add_flag("--json", values.isJson, "Answer in JSON");
    tool.set_version_flag("--version", std::string(kTool) + " " + QANH_VERSION_STRING + "\n",
                          "Tell the version of the tool");

    CLI::App* list =
        AddCommand(tool, "list",
                   "Lists the applications of the catalogue: kind, name, package or shortcut, and what is "
                   "special, with tabs between.",
                   "qanh list --host Launcher --match mail");
    list->add_option("--kind", values.kind, "Only applications of this kind: store or desktop")
        ->check(OneOf({"store", "desktop"}))
        ->type_name("KIND");
    list->add_option("--match", values.match,
                     "Only applications with this text in a name, reading, package or shortcut")
        ->type_name("TEXT");

    CLI::App* show = AddCommand(tool, "show", "Shows all that the catalogue holds of an application.",
                                "qanh show \"Web mail\" --host Launcher");
    show->add_option("NAME", values.name, "A name of it, its package family name or the path of its shortcut")
        ->required();

    CLI::App* explain =
        AddCommand(tool, "explain",
                   "Explains a launch by search: the query that it pastes, why each name in it is "
                   "excluded, and which names are left in and may be started instead.",
                   "qanh explain Mail --host Launcher");
    explain->add_option("NAME", values.name, "The name as the launcher would give it")->required();
    AddCodePage(explain, values);

    CLI::App* check =
        AddCommand(tool, "check",
                   "Checks a catalogue file: what the library skips, what reads otherwise than it "
                   "looks, what stands twice, and whether it is fit as a preset.",
                   "qanh check PresetAppNameList.xml");
    check->add_option("FILE", values.file, "The file; without one, the catalogue");
    check->add_flag("--here", values.isHere, "Look for the shortcuts on this machine; --host does so too");

    CLI::App* diff = AddCommand(
        tool, "diff", "Compares two catalogue files: what was removed (-), added (+) and changed (~).",
        "qanh diff old.xml new.xml", kJson);
    diff->add_option("A", values.file, "The one from before")->required();
    diff->add_option("B", values.otherFile, "The one from after")->required();

    CLI::App* log = AddCommand(
        tool, "log",
        "Reads the diagnostic log: launches and refresh passes with where their time went, what failed and "
        "what that means, and what took longest.",
        "qanh log --host Launcher --errors");
    CLI::Option* tree =
        log->add_flag("--tree", values.isTree, "All calls as a tree, with how long each took");
    log->add_flag("--times", values.isTimes, "Only the launches and the refresh passes")->excludes(tree);
    log->add_option("--slow", values.slow,
                    "Only that many of the operations that took the most time of their own")
        ->check(NumberFrom(1, 100000))
        ->type_name("N");
    log->add_flag("--errors", values.isErrors, "Only what failed");
    AddCodePage(log, values);

    AddCommand(tool, "doctor",
               "Looks at the system, the settings and, of a host, its catalogue, log, processes and objects: "
               "each is ok, a warning or a problem, with what to do.",
               "qanh doctor --host Launcher");

    CLI::App* preset = AddCommand(
        tool, "preset",
        "Makes a preset of a catalogue, or of this machine's Start menu when none is named. It goes to "
        "standard output, or to a new file.",
        "qanh preset make --host Launcher --reserve \"Mail*\" -o PresetAppNameList.xml");
    preset->add_option("ACTION", values.action, "What is to be done: make")
        ->required()
        ->check(OneOf({"make"}));
    preset->add_option("--from", values.from, "The catalogue file to make it of")->type_name("FILE");
    preset
        ->add_option(
            "--reserve", values.reserve,
            "Keep those with such a name, package or shortcut in the catalogue, installed or not; * and ? "
            "stand for any text and any letter, and a \";\" stands between several")
        ->type_name("PATTERN");
    preset->add_option("-o,--output", values.output, "The file to make")->type_name("FILE");

    CLI::App* report =
        AddCommand(tool, "report",
                   "Puts catalogue, settings, problems and log into one page for a browser, with a "
                   "search field that shows the query of a launch. For a support case.",
                   "qanh report --host Launcher -o report.html");
    report->add_option("-o,--output", values.output, "The file to make; required")
        ->required()
        ->type_name("FILE");
    AddCodePage(report, values);

    DescribeDriving(tool, values.drive, values.name);

    CLI::App* help = AddCommand(tool, "help", "Explains a command.", "qanh help explain", kEnd);
    help->add_option("COMMAND", values.helpCommand, "The command");
}

// Of a parser that has parsed nothing: another one would speak of the command that it has met.
std::wstring HelpText(const std::string& command)
{
    CLI::App tool(kAbout, kTool);
    Values values;
    Describe(tool, values);
    if (command.empty()) {
        return FromUtf8(HelpOf(tool, kTool));
    }
    try {
        return FromUtf8(HelpOf(*tool.get_subcommand(command), std::string(kTool) + " " + command));
    } catch (const CLI::OptionNotFound&) {
        throw WrongUse{L"there is no command \"" + FromUtf8(command) + L"\""};
    }
}

// The command that was given; empty without one.
std::wstring CommandOf(const CLI::App& tool)
{
    const std::vector<CLI::App*> given = tool.get_subcommands();
    return given.empty() ? std::wstring() : FromUtf8(given.front()->get_name());
}

// The parser itself only says that it misses a command. Throws WrongUse when there was none that it knows.
void ThrowForNoCommand(const CLI::App& tool, const CLI::ParseError& error)
{
    if (!tool.get_subcommands().empty()) {
        return;
    }
    const std::vector<std::string> unknown = tool.remaining();
    const auto isOption = [](const std::string& argument) { return argument.rfind('-', 0) == 0; };
    const auto word = std::find_if_not(unknown.begin(), unknown.end(), isOption);
    if (word != unknown.end()) {
        throw WrongUse{L"there is no command \"" + FromUtf8(*word) + L"\""};
    }
    if (!unknown.empty()) {
        throw WrongUse{L"there is no option \"" + FromUtf8(unknown.front()) + L"\""};
    }
    if (error.get_name() == "RequiredError") {
        throw WrongUse{L"no command was given"};
    }
}

} // namespace

CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments)
{
    CLI::App tool(
        "Looks at what the library knows of the applications and at what it makes of it; changes nothing.",
        "qanh");
    Values values;
    Describe(tool, values);
    std::vector<std::string> reversed;
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed), ToUtf8);
    CommandLine line;
    try {
        tool.parse(reversed);
    } catch (const CLI::CallForHelp&) {
        line.help = HelpText(ToUtf8(CommandOf(tool)));
        return line;
    } catch (const CLI::CallForVersion& version) {
        line.help = FromUtf8(version.what());
        return line;
    } catch (const CLI::ExtrasError& error) {
        ThrowForNoCommand(tool, error);
        const std::vector<std::string> extra = tool.remaining(true);
        throw WrongUse{L"\"" + FromUtf8(extra.empty() ? error.what() : extra.front()) +
                           L"\" is more than the command takes",
                       CommandOf(tool)};
    } catch (const CLI::ParseError& error) {
        ThrowForNoCommand(tool, error);
        throw WrongUse{FromUtf8(error.what()), CommandOf(tool)};
    }
    line.command = CommandOf(tool);
    if (line.command == L"help") {
        line.help = HelpText(values.helpCommand);
    }
    line.catalogue = FromUtf8(values.catalogue);
    line.host = FromUtf8(values.host);
    // No name of an executable has a slash in it: it is a path as other shells write it.
    std::replace(line.host.begin(), line.host.end(), L'/', L'\\');
    line.isJson = values.isJson;
    line.kind = FromUtf8(values.kind);
    line.match = FromUtf8(values.match);
    line.name = FromUtf8(values.name);
    line.file = FromUtf8(values.file);
    line.otherFile = FromUtf8(values.otherFile);
    line.isHere = values.isHere;
    line.log = FromUtf8(values.log);
    line.from = FromUtf8(values.from);
    line.reserve = FromUtf8(values.reserve);
    line.output = FromUtf8(values.output);
    line.isTree = values.isTree;
    line.isTimes = values.isTimes;
    line.isErrors = values.isErrors;
    line.slow = values.slow;
    line.codePage = values.codePage;
    line.drive = OptionsOf(values.drive);
    return line;
}
