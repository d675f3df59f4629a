// A small launcher in C++ with the wrapper: one launch after the other, and what came of each.
//
//     ExampleHostCpp [--wait] NAME...    launches each application by search
//     ExampleHostCpp --activate ID...    launches Store applications by their application user model IDs
//     ExampleHostCpp --browser           launches the browser
//
// The exit code is 0 when everything was started.
#include "QanHelper.hpp"

#include <clocale>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

// Text for the console, in its own encoding.
void Print(const std::wstring& line)
{
    std::wprintf(L"%ls\n", line.c_str());
    std::fflush(stdout);
}

std::wstring Tell(const qanh::Outcome& outcome)
{
    switch (outcome.kind) {
    case qanh::OutcomeKind::Started:
        return L"started: " + outcome.window.title + L", process " +
               std::to_wstring(outcome.window.processId);
    case qanh::OutcomeKind::NothingStarted:
        return L"nothing was started";
    case qanh::OutcomeKind::PaneNeverCame:
        return L"the search pane did not come";
    case qanh::OutcomeKind::FocusTaken:
        return L"another program came in between: " + outcome.window.title;
    case qanh::OutcomeKind::TimedOut:
        return outcome.isBegun ? L"it takes too long; close the search pane" : L"it did not get its turn";
    case qanh::OutcomeKind::Failed: {
        const std::string sentence =
            qanh::Describe(outcome.result); // in ASCII, but for sentences of the system
        return std::wstring(sentence.begin(), sentence.end());
    }
    case qanh::OutcomeKind::Shown:
    case qanh::OutcomeKind::Cancelled:
        break;
    }
    return L"left alone";
}

std::vector<qanh::Request> RequestsOf(const std::vector<std::wstring>& arguments)
{
    std::vector<qanh::Request> requests;
    bool isActivation = false;
    for (const std::wstring& argument : arguments) {
        if (argument == L"--activate") {
            isActivation = true;
        } else if (argument == L"--browser") {
            requests.push_back(qanh::Request::Browser(qanh::TileMode::Desktop));
        } else if (isActivation) {
            requests.push_back(qanh::Request::Activation(argument));
        } else {
            requests.push_back(qanh::Request::Search(argument));
        }
    }
    return requests;
}

int LaunchAll(std::vector<std::wstring> arguments)
{
    qanh::Launcher launcher(qanh::Source::Linked());
    if (!arguments.empty() && arguments.front() == L"--wait") {
        arguments.erase(arguments.begin());
        qanh::WaitForFirstRefresh(30000); // after the very first start the catalogue is empty
    }
    int failures = 0;
    for (const qanh::Request& request : RequestsOf(arguments)) {
        const qanh::Outcome outcome = launcher.Launch(request).Get();
        Print(request.text + L": " + Tell(outcome));
        failures += outcome.kind == qanh::OutcomeKind::Started ? 0 : 1;
        if (outcome.kind == qanh::OutcomeKind::TimedOut && outcome.isBegun) {
            // The library cannot be stopped in the middle of a launch: leave the rest to the end of the
            // process.
            launcher.Detach();
            break;
        }
    }
    return failures == 0 ? 0 : 1;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    std::setlocale(LC_CTYPE, ""); // names may have any letters; those that the console lacks are lost
    try {
        return LaunchAll(std::vector<std::wstring>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 1;
    }
}
