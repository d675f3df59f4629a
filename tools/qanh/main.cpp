// The companion tool: tells what the library knows of the applications of a machine, and what it makes of it.
// It only looks: it presses no key, and changes no file, no setting and nothing of a host that runs. A few
// commands drive the library as a host does, and say so before.

#include "CommandLine.h"
#include "Commands.h"
#include "Driving.h"
#include "Failure.h"
#include "Json.h"
#include "Output.h"
#include "Text.h"
#include "common/FormatText.h"

#include <windows.h>

#include <shellapi.h>

#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

// The system's own copy: the C runtime's has come through the code page.
std::vector<std::wstring> Arguments()
{
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> all(CommandLineToArgvW(GetCommandLineW(), &count),
                                                              &LocalFree);
    if (!all) {
        throw Failure{L"cannot read the command line", HRESULT_FROM_WIN32(GetLastError())};
    }
    return std::vector<std::wstring>(all.get() + 1, all.get() + count);
}

Answer Run(const CommandLine& line)
{
    static constexpr std::pair<const wchar_t*, Answer (*)(const CommandLine&)> kCommands[] = {
        {L"check", Check},
        {L"diff", Diff},
        {L"doctor", Doctor},
        {L"explain", Explain},
        {L"list", List},
        {L"log", Log},
        {L"preset", Preset},
        {L"report", Report},
        {L"show", Show},
        // Those that drive the library.
        {L"activate", Activate},
        {L"browser", Browser},
        {L"installed", Installed},
        {L"launch", Launch},
        {L"name", DisplayName},
        {L"refresh", Refresh},
    };
    if (!line.help.empty()) {
        return {line.help};
    }
    for (const auto& [name, command] : kCommands) {
        if (line.command == name) {
            return command(line);
        }
    }
    throw WrongUse{L"no command was given"};
}

void Tell(std::wstring_view problem)
{
    WriteText(STD_ERROR_HANDLE, FormatText(L"qanh: %s\n", {Shown(problem)}));
}

void TellWhereHelpIs(const std::wstring& command)
{
    WriteText(STD_ERROR_HANDLE, command.empty()
                                    ? L"\"qanh help\" tells what there is.\n"
                                    : FormatText(L"\"qanh help %s\" tells how it is used.\n", {command}));
}

// The sentence goes to standard error; who reads JSON finds it in the place of the answer, too.
void TellFailure(const Failure& failure, bool isJson)
{
    Tell(failure.what + L": " + Described(failure.result));
    if (isJson) {
        WriteText(STD_OUTPUT_HANDLE, TextOf(Json{{"Error",
                                                  {{"Text", JsonOf(failure.what)},
                                                   {"Result", JsonOf(Hexadecimal(failure.result))},
                                                   {"Meaning", JsonOf(Described(failure.result))}}}}));
    }
}

Status AnswerCommandLine()
{
    std::wstring command;
    bool isJson = false;
    try {
        const CommandLine line = ParseCommandLine(Arguments());
        command = line.command;
        isJson = line.isJson;
        const Answer answer = Run(line);
        WriteText(STD_OUTPUT_HANDLE, answer.text);
        if (!answer.problem.empty()) {
            Tell(answer.problem);
        }
        return answer.status;
    } catch (const WrongUse& error) {
        Tell(error.what);
        TellWhereHelpIs(error.command.empty() ? command : error.command);
        return Status::WrongUse;
    } catch (const Failure& failure) {
        TellFailure(failure, isJson);
    } catch (const std::exception&) {
        // Of the C++ library's own, those for memory that runs out alone can come here.
        TellFailure({L"cannot go on", E_OUTOFMEMORY}, isJson);
    }
    return Status::Failed;
}

} // namespace

int main()
{
    try {
        return static_cast<int>(AnswerCommandLine());
    } catch (...) {
        // Not even standard error can be written.
        return static_cast<int>(Status::Failed);
    }
}
