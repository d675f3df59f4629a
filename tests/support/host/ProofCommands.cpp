#include "support/host/ProofCommands.h"

#include "support/Text.h"
#include "support/host/Measures.h"
#include "support/host/OwnPane.h"
#include "support/host/Pace.h"
#include "support/host/Trouble.h"

#include <map>
#include <random>
#include <stdexcept>

namespace {

using host::Number;
using test::Hexadecimal;

using Fields = std::vector<std::string>;

const host::Library* g_library = nullptr;
bool g_hasPane = false;

std::string Query(const std::wstring& name)
{
    const host::NoPauses noPauses;
    const HRESULT hr = g_library->launchBySearch(name.c_str(), QANH_SEARCH_LAUNCH, TRUE);
    return hr == S_OK ? test::ToUtf8(host::OwnPane::Query()) : Hexadecimal(hr);
}

// QanhIsInstalled's answer and the display name.
std::string AboutPackage(const std::wstring& family)
{
    BOOL isInstalled = 7;
    wchar_t* name = nullptr;
    std::string text = Hexadecimal(g_library->isInstalled(family.c_str(), &isInstalled));
    text += isInstalled == 7 ? " 7" : isInstalled ? " 1" : " 0";
    text += '\t';
    text += Hexadecimal(g_library->getDisplayName(family.c_str(), &name));
    if (name) {
        text += ' ';
        text += test::ToUtf8(name);
    }
    g_library->releaseString(name);
    return text;
}

std::string Queries(const Fields& command)
{
    const std::wstring name = test::FromUtf8(command.at(2));
    const std::wstring family = command.size() > 4 ? test::FromUtf8(command[4]) : L"";
    std::string lines;
    for (DWORD index = 0; index < Number(command, 1); ++index) {
        lines += Query(name);
        if (!family.empty() && index % 10 == 0) {
            lines += '\t';
            lines += AboutPackage(family);
        }
        lines += '\n';
    }
    test::WriteFileBytes(test::FromUtf8(command.at(3)), lines);
    return "ok";
}

std::string Launches(const Fields& command)
{
    const std::wstring name = test::FromUtf8(command.at(2));
    const host::NoPauses noPauses;
    for (DWORD index = 0; index < Number(command, 1); ++index) {
        const DWORD mode = index % 4;
        const HRESULT hr = mode < 3 ? g_library->launchBySearch(name.c_str(), mode, TRUE)
                                    : g_library->launchBrowser(QANH_TILE_DESKTOP, QANH_SEARCH_LAUNCH, TRUE);
        if (hr != S_OK) {
            return Hexadecimal(hr);
        }
    }
    return Hexadecimal(S_OK);
}

std::string LaunchIntoStubbornPane(const Fields& command)
{
    const host::NoPauses noPauses;
    host::OwnPane::Stay(Number(command, 1));
    const std::wstring name = test::FromUtf8(command.at(2));
    const HRESULT hr = g_library->launchBySearch(name.c_str(), QANH_SEARCH_LAUNCH, TRUE);
    return Hexadecimal(hr) + "\t" + std::to_string(host::NoPauses::Total());
}

std::string InitializeAt(const Fields& command)
{
    const HANDLE start = OpenEventW(SYNCHRONIZE, FALSE, test::FromUtf8(command.at(1)).c_str());
    if (!start || WaitForSingleObject(start, 60000) != WAIT_OBJECT_0) {
        throw std::runtime_error("the start does not come");
    }
    CloseHandle(start);
    const ULONGLONG begin = GetTickCount64();
    const HRESULT hr = g_library->initialize();
    return Hexadecimal(hr) + "\t" + std::to_string(GetTickCount64() - begin);
}

std::string ComeAndGo(const Fields& command)
{
    constexpr unsigned longestPause = 100; // milliseconds
    std::mt19937 random(Number(command, 2));
    const std::wstring name = test::FromUtf8(command.at(3));
    const auto pause = [&random] { Sleep(random() % longestPause); };
    std::string lines;
    for (DWORD count = Number(command, 1); count > 0; --count) {
        const HRESULT hr = g_library->initialize();
        lines += Hexadecimal(hr);
        if (SUCCEEDED(hr)) {
            lines += "\t";
            lines += Query(name);
            pause();
            g_library->finalize();
        }
        lines += "\n";
        pause();
    }
    test::WriteFileBytes(test::FromUtf8(command.at(4)), lines);
    return "ok";
}

std::string LoadRepeatedly(host::Library& library, const Fields& command)
{
    for (DWORD count = Number(command, 1); count > 0; --count) {
        if (!host::Unload(library) || host::IsInMemory()) {
            throw std::runtime_error("the library stays in memory");
        }
        host::Load(library);
        host::Pace::Install(library.module);
        if (g_hasPane) {
            host::OwnPane::Install(library.module);
        }
        if (Number(command, 2) != 0) {
            if (const HRESULT hr = library.initialize(); hr != S_OK) {
                return Hexadecimal(hr);
            }
            library.finalize();
        }
    }
    return Hexadecimal(S_OK);
}

} // namespace

namespace host {

std::optional<std::string> CarryOutForProof(Library& library, const Fields& command)
{
    using Answer = std::string (*)(Library&, const Fields&);
    static const std::map<std::string, Answer> s_answers = {
        {"pace",
         [](Library& l, const Fields& c) {
             Pace::Set(Number(c, 1));
             return Pace::Install(l.module), std::string("ok");
         }},
        {"stretch",
         [](Library& l, const Fields& c) {
             Pace::Stretch(Number(c, 1));
             return Pace::Install(l.module), std::string("ok");
         }},
        {"hold",
         [](Library& l, const Fields&) {
             Pace::Install(l.module);
             return Pace::Hold(), std::string("ok");
         }},
        {"go", [](Library&, const Fields&) { return Pace::Go(), std::string("ok"); }},
        {"pane",
         [](Library& l, const Fields&) {
             g_hasPane = true;
             Pace::Install(l.module);
             return OwnPane::Install(l.module), std::string("ok");
         }},
        {"own-desktop",
         [](Library& l, const Fields&) {
             Pace::Install(l.module);
             return OwnPane::Install(l.module, true), std::string("ok");
         }},
        {"come-and-go", [](Library&, const Fields& c) { return ComeAndGo(c); }},
        {"query", [](Library&, const Fields& c) { return Query(test::FromUtf8(c.at(1))); }},
        {"queries", [](Library&, const Fields& c) { return Queries(c); }},
        {"launches", [](Library&, const Fields& c) { return Launches(c); }},
        {"stubborn", [](Library&, const Fields& c) { return LaunchIntoStubbornPane(c); }},
        {"init-at", [](Library&, const Fields& c) { return InitializeAt(c); }},
        {"loads", LoadRepeatedly},
        {"disk", [](Library&, const Fields& c) { return FillDisk(std::stoll(c.at(1))), std::string("ok"); }},
        {"quick-disk", [](Library& l, const Fields&) { return QuickenDisk(l.module), std::string("ok"); }},
        {"dead-share",
         [](Library& l, const Fields& c) { return HangShare(l.module, Number(c, 1)), std::string("ok"); }},
        {"finalize-in-pass",
         [](Library& l, const Fields&) {
             return CallInPass(l.module, [] { g_library->finalize(); }), std::string("ok");
         }},
        {"crash", [](Library&, const Fields&) { return CrashElsewhere(), std::string(); }},
        {"gdi", [](Library&, const Fields&) { return std::to_string(CountGdiObjects()); }},
        {"windows", [](Library&, const Fields&) { return std::to_string(CountWindows()); }},
    };
    g_library = &library;
    const auto answer = s_answers.find(command.at(0));
    return answer == s_answers.end() ? std::nullopt : std::optional(answer->second(library, command));
}

} // namespace host
