// What a stage asks of the library, and what it sees of it.
#include "proof/FakeDesk.h"
#include "proof/Held.h"
#include "proof/Stage.h"
#include "support/LogCapture.h"
#include "support/Text.h"

#include <atomic>
#include <new>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

using test::ToUtf8;

// Every name of the stage's catalogue holds this, so that a launch for it excludes them all.
constexpr wchar_t kWanted[] = L"x";

} // namespace

namespace proof {

const char* NameOf(Operation operation)
{
    constexpr const char* kNames[] = {"Start",
                                      "StartBeside",
                                      "Stop",
                                      "StopOfHung",
                                      "IsInstalled",
                                      "IsInstalledById",
                                      "DisplayName",
                                      "Search",
                                      "SearchToShow",
                                      "Browser",
                                      "BrowserWithoutSetting",
                                      "Activate",
                                      "Release",
                                      "Pass",
                                      "PassOfPlatform",
                                      "PassBesideLaunches"};
    return kNames[static_cast<std::size_t>(operation)];
}

HRESULT Stage::Carry(Operation operation, const CallGate::Fault* fault, Outcome& outcome)
{
    constexpr wchar_t kKept[] = L"Vel.Kept_0standin00000";
    BOOL isInstalled = 7;
    wchar_t* name = nullptr;
    HRESULT hr = S_OK;
    if (operation == Operation::Pass || operation == Operation::PassOfPlatform) {
        const DWORD code = RunPass(fault);
        outcome.hasFailed = CallGate::HasRefused();
        return static_cast<HRESULT>(code);
    }
    if (operation == Operation::PassBesideLaunches) {
        const DWORD code = RunPassBesideLaunches(fault, outcome);
        outcome.hasFailed = CallGate::HasRefused();
        return static_cast<HRESULT>(code);
    }
    if (operation == Operation::Release) {
        (void)m_library.getDisplayName(kKept, &name);
    }
    FakeDesk::pasted.clear();
    CallGate::Watch(fault);
    try {
        switch (operation) {
        case Operation::Start:
        case Operation::StartBeside:
            hr = m_library.initialize();
            break;
        case Operation::Stop:
        case Operation::StopOfHung:
            m_library.finalize();
            m_isUp = false;
            break;
        case Operation::IsInstalled:
            hr = m_library.isInstalled(kKept, &isInstalled);
            break;
        case Operation::IsInstalledById:
            hr = m_library.isInstalledById(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!vel.mail", &isInstalled);
            break;
        case Operation::DisplayName:
            hr = m_library.getDisplayName(L"Vel.Fresh_0standin00000", &name);
            break;
        case Operation::Search:
            hr = m_library.launchBySearch(kWanted, QANH_SEARCH_LAUNCH, TRUE);
            break;
        case Operation::SearchToShow:
            hr = m_library.launchBySearch(kWanted, QANH_SEARCH_SHOW, FALSE);
            break;
        case Operation::Browser:
        case Operation::BrowserWithoutSetting:
            hr = m_library.launchBrowser(QANH_TILE_DESKTOP, QANH_SEARCH_LAUNCH, TRUE);
            break;
        case Operation::Activate:
            hr = m_library.launchByManager(L"Vel.None_0standin00000!App", nullptr);
            break;
        default:
            m_library.releaseString(name);
            break;
        }
    } catch (const std::bad_alloc&) {
        outcome.hasThrown = true;
    }
    CallGate::Ignore();
    outcome.hasFailed = CallGate::HasRefused();
    if (operation == Operation::DisplayName) {
        outcome.answer = name ? ToUtf8(name) : "(null)";
        m_library.releaseString(name);
    } else if (operation == Operation::IsInstalled || operation == Operation::IsInstalledById) {
        outcome.answer = std::to_string(isInstalled);
    } else {
        outcome.answer = ToUtf8(FakeDesk::pasted);
    }
    return hr;
}

namespace {

struct PassStart
{
    const CallGate::Fault* fault;
    LPTHREAD_START_ROUTINE procedure;
    void* argument;
};

DWORD WINAPI BeginPass(void* parameter)
{
    const PassStart start = *static_cast<PassStart*>(parameter);
    FakeDesk::refreshThreadId = GetCurrentThreadId();
    if (!start.fault || !start.fault->isForEveryThread) {
        CallGate::Watch(start.fault);
    }
    return start.procedure(start.argument);
}

} // namespace

// Gives the thread what it gets when the library makes it: a reference to the module, which the first one has
// already.
DWORD Stage::RunPass(const CallGate::Fault* fault)
{
    PassStart start{fault, FakeDesk::refreshThread, FakeDesk::refreshArgument};
    if (!start.procedure) {
        throw std::runtime_error("the library has made no refresh thread");
    }
    if (FakeDesk::waitingThreads > 0) {
        --FakeDesk::waitingThreads;
    } else {
        HMODULE module = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<const wchar_t*>(start.procedure), &module);
        Held::Take(Held::Kind::Module, module, "GetModuleHandleExW");
    }
    const HANDLE thread = CreateThread(nullptr, 0, BeginPass, &start, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CallGate::Ignore();
    DWORD code = STILL_ACTIVE;
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    return code;
}

DWORD Stage::RunPassBesideLaunches(const CallGate::Fault* fault, Outcome& outcome)
{
    const auto launch = [&] {
        const HRESULT hr = m_library.launchBySearch(kWanted, QANH_SEARCH_LAUNCH, TRUE);
        outcome.hasLaunchFailed = outcome.hasLaunchFailed || (hr != S_OK && hr != E_OUTOFMEMORY);
    };
    DWORD code = STILL_ACTIVE;
    std::atomic<bool> isOver = false;
    CallGate::Watch(fault);
    std::thread pass([&] {
        code = RunPass(fault);
        isOver = true;
    });
    while (!isOver) {
        launch();
    }
    pass.join();
    CallGate::Ignore();
    launch();
    return code;
}

// Asks for the names by a launch, and takes them from its query.
std::string Stage::Names()
{
    FakeDesk::pasted.clear();
    const std::size_t begin = LogBytes().size();
    (void)m_library.launchBySearch(kWanted, QANH_SEARCH_LAUNCH, TRUE);
    if (!FakeDesk::pasted.empty()) {
        return ToUtf8(FakeDesk::pasted);
    }
    // The library is down: the query stands in the log.
    constexpr std::string_view kStart = "QanhLaunchBySearch szKeyword = ";
    for (const std::string& line : Log(begin)) {
        if (line.starts_with(kStart)) {
            return line.substr(kStart.size(), line.size() - kStart.size() - 1); // a blank ends it
        }
    }
    return "no names";
}

std::string Stage::LogBytes() const
{
    const std::wstring file = m_folder / L"local\\Vel\\QanHelper\\Proof\\QanHelperLog.txt";
    return test::Exists(file) ? test::ReadFileBytes(file) : std::string();
}

std::vector<std::string> Stage::Log(std::size_t begin) const
{
    // As "[2014/03/01 09:05:07.042]".
    constexpr std::size_t kStampLength = 25;
    std::string text = LogBytes().substr(begin);
    for (std::size_t at = 0; (at = text.find('[', at)) != std::string::npos; ++at) {
        if (at + kStampLength <= text.size() && text[at + 5] == '/' && text[at + kStampLength - 1] == ']') {
            text.erase(at, kStampLength);
            --at;
        }
    }
    return test::LogLines(text);
}

} // namespace proof
