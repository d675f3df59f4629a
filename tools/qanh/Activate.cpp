#include "Commands.h"

#include "Driving.h"
#include "Json.h"
#include "Library.h"
#include "common/FormatText.h"

// The library need not be up for it, and is not.
Answer Activate(const CommandLine& line)
{
    RefuseOtherHost(line);
    if (line.name.empty()) {
        throw WrongUse{L"the ID is empty"};
    }
    const std::wstring& arguments = line.drive.arguments;
    std::wstring what = FormatText(L"has the system's activation manager start \"%s\"", {line.name});
    if (!arguments.empty()) {
        what += FormatText(L" with the arguments \"%s\"", {arguments});
    }
    what += L"; presses no key";
    if (line.drive.isDryRun) {
        return DryRun(line, {what});
    }
    const Library library(line.drive.dll);
    Announce(what);
    const HRESULT hr =
        library.launchByManager(line.name.c_str(), arguments.empty() ? nullptr : arguments.c_str());
    if (FAILED(hr)) {
        throw Failure{FormatText(L"\"%s\" was not started", {line.name}), hr};
    }
    Answer answer;
    // That manager has success codes that are no launch.
    if (hr != S_OK) {
        answer.status = Status::No;
        answer.problem = FormatText(L"\"%s\" was not started: %s", {line.name, Described(hr)});
    }
    if (line.isJson) {
        answer.text = TextOf(
            Json{{"ID", JsonOf(line.name)}, {"Result", JsonOf(Hexadecimal(hr))}, {"IsStarted", hr == S_OK}});
    } else if (hr == S_OK) {
        answer.text = L"Started\n";
    }
    return answer;
}
