#include "HelpText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kWidth = 79; // a console's 80 columns begin a line anew by themselves

// What is explained, and how.
using Entry = std::pair<std::string, std::string>;

// Breaks a text, which begins in this column, at its blanks; what follows is indented to there.
std::string Wrapped(std::string_view text, std::size_t indent)
{
    std::string wrapped;
    std::size_t column = indent;
    std::istringstream words{std::string(text)};
    for (std::string word; words >> word;) {
        if (column > indent) {
            const bool isRoom = column + 1 + word.size() <= kWidth;
            wrapped += isRoom ? " " : "\n" + std::string(indent, ' ');
            column = isRoom ? column + 1 : indent;
        }
        wrapped += word;
        column += word.size();
    }
    return wrapped + "\n";
}

// A heading and its entries, the explanations below one another.
std::string Section(const std::string& heading, const std::vector<Entry>& entries)
{
    std::size_t width = 0;
    for (const Entry& entry : entries) {
        width = std::max(width, entry.first.size());
    }
    std::string text = "\n" + heading + ":\n";
    for (const auto& [name, explanation] : entries) {
        text += "  " + name + std::string(width - name.size() + 2, ' ') + Wrapped(explanation, width + 4);
    }
    return text;
}

std::string Usage(const CLI::App& app, const std::string& called)
{
    std::string usage = "Usage: " + called;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            const std::string name = option->get_name(true);
            usage += " " + (option->get_required() ? name : "[" + name + "]");
        }
    }
    const bool hasCommands = !app.get_subcommands([](const CLI::App*) { return true; }).empty();
    return usage + (hasCommands ? " COMMAND" : "") + " [options]\n";
}

// The positional ones or the others.
std::vector<Entry> OptionsOf(const CLI::App& app, bool isPositional)
{
    std::vector<Entry> entries;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional() == isPositional) {
            const std::string type = option->get_type_name();
            const std::string value = type.empty() ? "" : " " + type;
            entries.emplace_back(isPositional ? option->get_name(true)
                                              : option->get_name(false, true) + value,
                                 option->get_description());
        }
    }
    return entries;
}

std::vector<Entry> CommandsOf(const CLI::App& app, const std::string& group)
{
    std::vector<Entry> entries;
    for (const CLI::App* command :
         app.get_subcommands([&group](const CLI::App* each) { return each->get_group() == group; })) {
        entries.emplace_back(command->get_name(), command->get_description());
    }
    return entries;
}

} // namespace

std::string HelpOf(const CLI::App& app, const std::string& called)
{
    std::string text = Usage(app, called) + "\n" + Wrapped(app.get_description(), 0);
    for (const char* group : {kLookingGroup, kDrivingGroup}) {
        if (const std::vector<Entry> commands = CommandsOf(app, group); !commands.empty()) {
            text += Section(group, commands);
        }
    }
    if (const std::vector<Entry> arguments = OptionsOf(app, true); !arguments.empty()) {
        text += Section("Arguments", arguments);
    }
    text += Section("Options", OptionsOf(app, false)) + "\n";
    // Its lines are paragraphs of their own; examples are indented, and stay as they are.
    std::istringstream footer(app.get_footer());
    for (std::string line; std::getline(footer, line);) {
        text += line.rfind(' ', 0) == 0 ? line + "\n" : Wrapped(line, 0);
    }
    return text;
}
