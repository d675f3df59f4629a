#include "support/host/Commands.h"

#include "support/Apartments.h"
#include "support/Text.h"
#include "support/host/ClipboardOwner.h"
#include "support/host/FileWatch.h"
#include "support/host/Library.h"
#include "support/host/LogGate.h"
#include "support/host/Measures.h"
#include "support/host/ProofCommands.h"
#include "support/host/Trouble.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <latch>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

using host::Number;
using test::Hexadecimal;

using Fields = std::vector<std::string>;

host::Library g_library;

BOOL Flag(const Fields& command, std::size_t index)
{
    return static_cast<BOOL>(Number(command, index));
}

bool HasNull(const Fields& command, std::size_t index)
{
    return index < command.size() && command[index] == "null";
}

// A text field as the pointer that the library is given.
class Text
{
public:
    Text(const Fields& command, std::size_t index)
    {
        if (command.at(index) != "(null)") {
            m_text = test::FromUtf8(command[index]);
            Replace(L"(long)", std::wstring(70000, L'x'));
            Replace(L"(high)", L"\xD83D");
            Replace(L"(low)", L"\xDE00");
        }
    }
    [[nodiscard]] const wchar_t* Get() const { return m_text ? m_text->c_str() : nullptr; }

private:
    void Replace(std::wstring_view notation, const std::wstring& meaning)
    {
        for (std::size_t at = 0; (at = m_text->find(notation, at)) != std::wstring::npos;
             at += meaning.size()) {
            m_text->replace(at, notation.size(), meaning);
        }
    }

    std::optional<std::wstring> m_text;
};

// The commands that stand one after the other, separated by "and".
std::vector<Fields> CommandsOf(Fields::const_iterator begin, Fields::const_iterator end)
{
    std::vector<Fields> commands(1);
    for (auto field = begin; field != end; ++field) {
        if (*field == "and") {
            commands.emplace_back();
        } else {
            commands.back().push_back(*field);
        }
    }
    return commands;
}

std::string AskWhetherInstalled(decltype(&QanhIsInstalled) ask, const Fields& command)
{
    BOOL isInstalled = 7;
    const HRESULT hr = ask(Text(command, 1).Get(), HasNull(command, 2) ? nullptr : &isInstalled);
    return Hexadecimal(hr) + "\t" + std::to_string(isInstalled);
}

std::string AskForDisplayName(const Fields& command)
{
    wchar_t* name = nullptr;
    const HRESULT hr =
        g_library.getDisplayName(Text(command, 1).Get(), HasNull(command, 2) ? nullptr : &name);
    const std::string text = name ? test::ToUtf8(name) : "(null)";
    g_library.releaseString(name);
    return Hexadecimal(hr) + "\t" + text;
}

std::string Release(const Fields& command)
{
    const Text text(command, 1);
    wchar_t* copy = nullptr;
    if (text.Get()) {
        const std::size_t size = (std::wcslen(text.Get()) + 1) * sizeof(wchar_t);
        copy = static_cast<wchar_t*>(LocalAlloc(LPTR, size));
        std::memcpy(copy, text.Get(), size);
    }
    g_library.releaseString(copy);
    return "ok";
}

HRESULT RunCycles(DWORD count)
{
    for (DWORD cycle = 0; cycle < count; ++cycle) {
        const HRESULT hr = g_library.initialize();
        if (FAILED(hr)) {
            return hr;
        }
        g_library.finalize();
    }
    return S_OK;
}

HRESULT RunSearches(DWORD count, const wchar_t* name)
{
    HRESULT hr = S_OK;
    for (DWORD search = 0; search < count; ++search) {
        hr = g_library.launchBySearch(name, QANH_SEARCH_LAUNCH, TRUE);
    }
    return hr;
}

} // namespace

namespace host {

std::string Commands::CarryOut(const Fields& command)
{
    static const std::map<std::string, test::Apartment> s_threads = {
        {"thread", test::Apartment::kNone},
        {"sta", test::Apartment::kSingleThreaded},
        {"mta", test::Apartment::kMultithreaded}};
    if (command.at(0) == "at-once") {
        return CarryOutAtOnce(command);
    }
    if (command.at(0) == "re-enter") {
        return CarryOutFromWithin(command);
    }
    const auto thread = s_threads.find(command.at(0));
    if (thread == s_threads.end()) {
        return CarryOutHere(command);
    }
    std::string answer;
    const bool isKept = test::KeepsApartment(
        thread->second, [&] { answer = CarryOutHere(Fields(command.begin() + 1, command.end())); });
    return isKept ? answer : "apartment changed\t" + answer;
}

std::string Commands::CarryOutAtOnce(const Fields& command)
{
    const DWORD count = Number(command, 1);
    const std::vector<Fields> commands = CommandsOf(command.begin() + 2, command.end());
    const Fields kinds = {"thread", "sta", "mta"};
    // Each thread's own answers.
    std::vector<Fields> answers(commands.size() * kinds.size(), Fields(count));
    std::latch start(static_cast<std::ptrdiff_t>(answers.size()));
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < answers.size(); ++index) {
        threads.emplace_back([&, index] {
            Fields onThread = {kinds[index % kinds.size()]};
            const Fields& own = commands[index / kinds.size()];
            onThread.insert(onThread.end(), own.begin(), own.end());
            start.arrive_and_wait();
            for (std::string& answer : answers[index]) {
                answer = CarryOut(onThread);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::string all;
    for (std::size_t index = 0; index < commands.size(); ++index) {
        std::string common = answers[index * kinds.size()].front();
        for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
            for (const std::string& answer : answers[index * kinds.size() + kind]) {
                if (answer != common && !common.starts_with("differs")) {
                    common = "differs\t" + common + "\t" + answer;
                }
            }
        }
        all += (index == 0 ? "" : " and ") + common;
    }
    return all;
}

std::string Commands::CarryOutFromWithin(const Fields& command)
{
    const auto into = std::find(command.begin(), command.end(), "into");
    const std::vector<Fields> inner = CommandsOf(command.begin() + 1, into);
    std::string answers;
    const ClipboardOwner owner([&] {
        for (const Fields& each : inner) {
            answers += CarryOut(each) + " and ";
        }
    });
    return answers += CarryOut(Fields(into + 1, command.end()));
}

std::string Commands::CarryOutHere(const Fields& command)
{
    std::string answer;
    try {
        answer = Manage(command);
    } catch (const std::exception& error) {
        return std::string("error\t") + error.what();
    }
    if (!answer.empty()) {
        return answer;
    }
    if (!g_library.initialize) {
        return "error\tthe library is not loaded";
    }
    try {
        return Call(command);
    } catch (...) {
        return "exception";
    }
}

std::string Commands::Call(const Fields& command)
{
    using Answer = std::string (*)(const Fields&);
    static const std::map<std::string, Answer> s_answers = {
        {"init", [](const Fields&) { return Hexadecimal(g_library.initialize()); }},
        {"finalize", [](const Fields&) { return g_library.finalize(), std::string("ok"); }},
        {"search",
         [](const Fields& c) {
             return Hexadecimal(g_library.launchBySearch(Text(c, 3).Get(), Number(c, 1), Flag(c, 2)));
         }},
        {"browser",
         [](const Fields& c) {
             return Hexadecimal(g_library.launchBrowser(Number(c, 1), Number(c, 2), Flag(c, 3)));
         }},
        {"activate",
         [](const Fields& c) {
             return Hexadecimal(g_library.launchByManager(Text(c, 1).Get(), Text(c, 2).Get()));
         }},
        {"installed", [](const Fields& c) { return AskWhetherInstalled(g_library.isInstalled, c); }},
        {"installed-by-id",
         [](const Fields& c) { return AskWhetherInstalled(g_library.isInstalledById, c); }},
        {"display-name", AskForDisplayName},
        {"release", Release},
        {"cycles", [](const Fields& c) { return Hexadecimal(RunCycles(Number(c, 1))); }},
        {"searches",
         [](const Fields& c) { return Hexadecimal(RunSearches(Number(c, 1), Text(c, 2).Get())); }},
    };
    const auto answer = s_answers.find(command[0]);
    return answer == s_answers.end() ? "error\tunknown command" : answer->second(command);
}

// The commands that need no library; an empty answer: it is none of them.
std::string Commands::Manage(const Fields& command)
{
    const std::string& name = command[0];
    if (name == "load") {
        Load(g_library);
    } else if (name == "load-strictly") {
        Load(g_library, LOAD_LIBRARY_SEARCH_SYSTEM32);
    } else if (name == "unload") {
        return Unload(g_library) ? "1" : "0";
    } else if (name == "in-memory") {
        return IsInMemory() ? "1" : "0";
    } else if (name == "handles") {
        return std::to_string(CountHandles());
    } else if (name == "threads") {
        return std::to_string(CountThreads());
    } else if (name == "heap") {
        return std::to_string(HeapBytes());
    } else if (name == "look-up") {
        for (DWORD count = Number(command, 1); count > 0; --count) {
            LookUpPackageManagerClass();
        }
    } else if (name == "line-up") {
        LogGate::Install(g_library.module);
    } else if (name == "open") {
        LogGate::Open();
    } else if (name == "slow-disk") {
        SlowDownSaves(g_library.module, Number(command, 1));
    } else if (name == "watch-files") {
        WatchFiles();
    } else if (name == "opened") {
        return std::to_string(CountOpenings(test::FromUtf8(command.at(1))));
    } else if (name == "exit") {
        m_exitCode = static_cast<int>(Number(command, 1));
        m_isOver = true;
    } else {
        return CarryOutForProof(g_library, command).value_or("");
    }
    return "ok";
}

} // namespace host
