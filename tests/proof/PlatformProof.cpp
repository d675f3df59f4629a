// Every function that the library imports is made to fail in turn, at each of its calls, with each failure
// that its documentation names.
#include "proof/NamesInQuery.h"
#include "proof/PlatformExpectations.h"
#include "proof/PlatformFailures.h"
#include "proof/Proof.h"
#include "proof/Stage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

namespace {

using namespace proof;

bool HasLine(const std::vector<std::string>& log, std::string_view part)
{
    return std::any_of(log.begin(), log.end(),
                       [&](const std::string& line) { return line.find(part) != std::string::npos; });
}

bool IsPass(Operation operation)
{
    return operation == Operation::Pass || operation == Operation::PassOfPlatform;
}

bool IsStart(Operation operation)
{
    return operation == Operation::Start || operation == Operation::StartBeside;
}

bool IsBrowser(Operation operation)
{
    return operation == Operation::Browser || operation == Operation::BrowserWithoutSetting;
}

// Those that lines of the log are written with: one that fails costs a line, or a part of it. When the log's
// setting or path cannot be read, a start writes none, or elsewhere.
bool CostsLines(Operation operation, const std::string& function)
{
    static const std::set<std::string> s_writing = {"CreateFileW", "SetFilePointer", "WideCharToMultiByte",
                                                    "WriteFile", "_sprintf_s_l"};
    static const std::set<std::string> s_switching = {
        "RegOpenKeyExW", "RegQueryValueExW", "GetModuleFileNameW", "GetEnvironmentVariableW", "swprintf_s"};
    return s_writing.contains(function) || (IsStart(operation) && s_switching.contains(function));
}

// Those on which it hangs what a launch pastes.
bool ChangesPaste(const std::string& function)
{
    static const std::set<std::string> s_functions = {"OpenClipboard",    "GlobalAlloc", "GlobalLock",
                                                      "SetClipboardData", "_wcsdup",     "_wcslwr_s"};
    return s_functions.contains(function);
}

// Those whose failure a pass takes for "it is not there any more", until the next pass.
bool ChangesMarks(const std::string& function)
{
    static const std::set<std::string> s_functions = {
        "PathFileExistsW", "RoInitialize", "RoGetActivationFactory", "WindowsCreateStringReference"};
    return s_functions.contains(function);
}

// A setting that cannot be read has its default.
bool ReadsSetting(const std::string& function)
{
    return function == "RegOpenKeyExW" || function == "RegQueryValueExW";
}

std::string ResultText(HRESULT hr)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(hr));
    return text;
}

struct Attempt
{
    std::string function;
    const Failure* failure;
    std::size_t call;
    std::size_t calls; // of the function in the operation
};

class Platform : public testing::TestWithParam<Operation>
{
protected:
    const Expectation* Expected(const Attempt& attempt) const
    {
        // Who is in an apartment of another kind is in an apartment.
        if (attempt.function == "RoInitialize" && attempt.failure->result == RPC_E_CHANGED_MODE) {
            return nullptr;
        }
        if (attempt.failure->name == "cut off") {
            // What is cut off is the name's end ".exe", which only the preset's path misses: it lies nowhere.
            static constexpr Expectation kNoPreset = {Operation::StartBeside,
                                                      "GetModuleFileNameW",
                                                      3,
                                                      HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND),
                                                      "",
                                                      "QanhInitialize OUT(s_PackageManager.Initialize : hr="};
            return GetParam() == Operation::StartBeside && attempt.call == 3 ? &kNoPreset : nullptr;
        }
        return FindExpectation(GetParam(), attempt.function, attempt.call);
    }

    void ExpectResult(const Attempt& attempt, const Outcome& outcome) const
    {
        const Expectation* const expectation = Expected(attempt);
        HRESULT result = m_whole.result;
        std::string answer = m_whole.answer;
        if (expectation) {
            result = expectation->result.value_or(attempt.failure->result.value_or(result));
            const bool isQuery = GetParam() == Operation::IsInstalled ||
                                 GetParam() == Operation::IsInstalledById ||
                                 GetParam() == Operation::DisplayName;
            answer = isQuery ? std::string(expectation->answer) : answer;
            EXPECT_TRUE(HasLine(outcome.log, expectation->line)) << expectation->line;
        }
        EXPECT_EQ(outcome.result, result) << std::hex << outcome.result;
        if (!ChangesPaste(attempt.function)) {
            EXPECT_EQ(outcome.answer, answer);
        }
    }

    // Only a thread that has not ended in time is forced to end, and its catalogue left to it: when it is not
    // known whether it has, neither.
    static bool IsThreadLeft(const Attempt& attempt)
    {
        return GetParam() == Operation::StopOfHung && attempt.function == "WaitForSingleObject" &&
               attempt.call == 0 && attempt.failure->name == "error 6";
    }

    static bool IsThreadForced(const Attempt& attempt)
    {
        return GetParam() == Operation::Stop && attempt.function == "WaitForSingleObject" &&
               attempt.call == 0 && attempt.failure->name == "error 0"; // the time-out
    }

    // The line of exit tells the result.
    void ExpectExitLine(const Attempt& attempt, const Outcome& outcome) const
    {
        static const std::map<Operation, std::string> s_exits = {
            {Operation::IsInstalled, "QanhIsInstalled OUT("},
            {Operation::IsInstalledById, "QanhIsInstalledByAppUserModeID OUT("},
            {Operation::DisplayName, "QanhGetAppDisplayNameByPFN OUT("},
            {Operation::Search, "QanhLaunchBySearch OUT("},
            {Operation::SearchToShow, "QanhLaunchBySearch OUT("},
            {Operation::Browser, "QanhLaunchIEBySearch OUT("},
            {Operation::BrowserWithoutSetting, "QanhLaunchIEBySearch OUT("}};
        if (CostsLines(GetParam(), attempt.function)) {
            return;
        }
        if (const auto exit = s_exits.find(GetParam()); exit != s_exits.end()) {
            const std::string line = exit->second + ResultText(outcome.result) + ")";
            EXPECT_TRUE(HasLine(outcome.log, line)) << line;
        } else if (IsStart(GetParam())) {
            const std::string end = "QanhInitialize OUT(";
            EXPECT_TRUE(HasLine(outcome.log, SUCCEEDED(outcome.result)
                                                 ? end + std::to_string(outcome.result) + ") : s_nCount(1)"
                                                 : "Initialize : hr=" + std::to_string(outcome.result)));
        } else if (GetParam() == Operation::Stop || GetParam() == Operation::StopOfHung) {
            EXPECT_TRUE(HasLine(outcome.log, "QanhFinalize OUT : s_nCount(0)"));
        }
    }

    void ExpectCatalogue(const Attempt& attempt, const Outcome& outcome) const
    {
        const NameSet before = NamesIn(m_whole.namesBefore);
        const NameSet whole = NamesIn(m_whole.namesAfter);
        NameSet known = Union(before, whole);
        if (GetParam() == Operation::PassOfPlatform && ReadsSetting(attempt.function)) {
            // Short names and references to resources, which only the library's own reader makes out.
            known = Union(known, {"x new short", "x newer short", "x resolved", "x suite short"});
        }
        if (IsPass(GetParam())) {
            const NameSet kept = Intersection(before, whole);
            for (const std::string& names : {outcome.namesAfter, outcome.again, outcome.namesAtNextStart}) {
                EXPECT_TRUE(Includes(known, NamesIn(names))) << names;
            }
            // One question was asked in vain: one name may be gone, and the next pass finds it again.
            EXPECT_LE(Difference(kept, NamesIn(outcome.namesAfter)).size(),
                      ChangesMarks(attempt.function) ? 1u : 0u)
                << outcome.namesAfter;
            EXPECT_TRUE(Includes(NamesIn(outcome.again), kept)) << outcome.again;
            EXPECT_TRUE(Includes(NamesIn(outcome.namesAtNextStart), kept)) << outcome.namesAtNextStart;
            return;
        }
        if (IsThreadLeft(attempt)) {
            EXPECT_EQ(outcome.namesAfter, m_whole.namesBefore);
        } else if (IsThreadForced(attempt)) {
            EXPECT_EQ(outcome.namesAfter, "\"x\"") << "another catalogue has taken the place";
        } else if (IsStart(GetParam())) {
            EXPECT_TRUE(Includes(whole, NamesIn(outcome.namesAfter))) << outcome.namesAfter;
        } else {
            EXPECT_EQ(outcome.namesAfter, m_whole.namesAfter);
            EXPECT_EQ(outcome.again, m_whole.again);
        }
        EXPECT_EQ(outcome.namesAtNextStart, m_whole.namesAtNextStart);
    }

    // Of the browser, as the launch leaves it. It opens the key to read, to force and to put back.
    std::optional<DWORD> ExpectedTileSetting(const Attempt& attempt) const
    {
        const bool isLast = attempt.call + 1 == attempt.calls;
        if (GetParam() == Operation::Browser && attempt.call == 0 && ReadsSetting(attempt.function) &&
            attempt.failure->name == "status 2") {
            return std::nullopt; // it looks as if it had not been there
        }
        const bool isForced =
            (GetParam() == Operation::Browser && attempt.function == "RegSetValueExW") ||
            (GetParam() == Operation::BrowserWithoutSetting && attempt.function == "RegDeleteValueW") ||
            (IsBrowser(GetParam()) && attempt.function == "RegOpenKeyExW");
        return isForced && isLast ? DWORD{QANH_TILE_DESKTOP} : m_whole.tileSetting;
    }

    void ExpectNothingHeld(const Attempt& attempt, const Outcome& outcome) const
    {
        EXPECT_TRUE(outcome.isApartmentKept);
        if (attempt.function == "GetModuleHandleExW" && IsPass(GetParam())) {
            // The thread ends without knowing which library it is to give back.
            EXPECT_EQ(outcome.held, "1 of GetModuleHandleExW");
            return;
        }
        if (IsThreadForced(attempt)) {
            EXPECT_TRUE(outcome.held.ends_with(" of malloc"))
                << "the catalogue is left to it: " << outcome.held;
            return;
        }
        EXPECT_EQ(outcome.held, IsThreadLeft(attempt) ? "" : m_whole.held) << "is still held";
        EXPECT_TRUE(outcome.isUnloaded) << "the library stays in memory";
    }

    void Fail(const Attempt& attempt)
    {
        const std::string text = std::string(NameOf(GetParam())) + ", " + attempt.function + ", call " +
                                 std::to_string(attempt.call) + ", " + attempt.failure->name;
        SCOPED_TRACE(text);
        Stage::Say(text);
        const CallGate::Fault fault{{attempt.function}, attempt.call, false, attempt.failure->refusal};
        const Outcome outcome = m_stage.Run(GetParam(), &fault);
        ASSERT_TRUE(outcome.hasFailed) << "the call did not come";
        EXPECT_FALSE(outcome.hasThrown);
        ExpectResult(attempt, outcome);
        ExpectExitLine(attempt, outcome);
        ExpectCatalogue(attempt, outcome);
        EXPECT_EQ(outcome.tileSetting, ExpectedTileSetting(attempt));
        ExpectNothingHeld(attempt, outcome);
    }

    // The full form takes every failure at every call. Of functions that are called very often, as those that
    // write the log, each call fails in one of the ways, in turn. The short form takes the first call and the
    // last one; of a pass, which takes its time, the last one of functions that it seldom calls.
    static bool IsTaken(std::size_t call, std::size_t calls, std::size_t failure, std::size_t failures)
    {
        constexpr std::size_t kOften = 40;
        if (IsFull()) {
            return calls <= kOften || call % failures == failure;
        }
        if (IsPass(GetParam())) {
            return failure == 0 && call + 1 == calls && calls <= kOften;
        }
        return failure == 0 && (call == 0 || call + 1 == calls);
    }

    Stage m_stage;
    // What is made once and kept comes with the first time: a pass raises exceptions in the stand-in, too.
    const Outcome m_pass = m_stage.Run(Operation::Pass, nullptr);
    const Outcome m_first = m_stage.Run(GetParam(), nullptr);
    const Outcome m_whole = m_stage.Run(GetParam(), nullptr);
};

TEST_P(Platform, EveryCallFails)
{
    if (GetParam() != Operation::StopOfHung) {
        EXPECT_EQ(m_whole.held, "");
    }
    std::vector<Attempt> attempts;
    std::size_t functions = 0;
    for (const Import& import : m_whole.imports) {
        const PlatformFunction* const function = FindPlatformFunction(import.name);
        ASSERT_TRUE(function) << import.name << " is not in the list of failures";
        const std::size_t failures = function->failures.size();
        functions += import.calls > 0 && failures > 0 ? 1 : 0;
        for (std::size_t call = 0; call < import.calls; ++call) {
            for (std::size_t failure = 0; failure < failures; ++failure) {
                if (IsTaken(call, import.calls, failure, failures)) {
                    attempts.push_back({import.name, &function->failures[failure], call, import.calls});
                }
            }
        }
    }
    EXPECT_GT(attempts.size(), 0u);
    // Functions that are seldom called come first: they tell the most in the least time.
    std::stable_sort(attempts.begin(), attempts.end(),
                     [](const Attempt& one, const Attempt& other) { return one.calls < other.calls; });
    for (std::size_t attempt = 0; attempt < attempts.size(); ++attempt) {
        Fail(attempts[attempt]);
        Progress(static_cast<long long>(attempt + 1), static_cast<long long>(attempts.size()));
    }
    const std::string name = NameOf(GetParam());
    Figure(("handles left by the C++ runtime's first exceptions in " + name).c_str(),
           static_cast<double>(m_whole.handles));
    Figure(("functions of the platform that failed in " + name).c_str(), static_cast<double>(functions));
    Figure(("calls times failures in " + name).c_str(), static_cast<double>(attempts.size()));
}

// A thread that cannot be made gives back the reference to the library, whatever that says.
TEST(PlatformTwice, ThreadAndLibrary)
{
    Stage stage;
    CallGate::Fault fault{{"CreateThread", "FreeLibrary"}, 0, true, nullptr};
    fault.refusal = [](const GateCall& call, const Import& import) {
        return FindPlatformFunction(import.name)->failures[0].refusal(call, import);
    };
    const Outcome outcome = stage.Run(Operation::Start, &fault);
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_EQ(outcome.held, "");
    EXPECT_TRUE(outcome.isUnloaded);
}

// What the proof takes for the library's calls is right: none that can fail goes without a failure, and none
// of those that are said to be the C++ runtime's comes from an operation.
TEST(PlatformCalls, ListIsThatOfTheImports)
{
    Stage stage;
    std::map<std::string, std::size_t> calls;
    for (const Operation operation : kOperations) {
        for (const Import& import : stage.Run(operation, nullptr).imports) {
            calls[import.name] += import.calls;
            // In a pass one package's version cannot be had, which raises an exception.
            const PlatformFunction* const function = FindPlatformFunction(import.name);
            if (function && function->reason == kRuntimes && !IsPass(operation)) {
                EXPECT_EQ(import.calls, 0u) << import.name << " is called by " << NameOf(operation);
            }
        }
    }
    std::size_t failing = 0;
    for (const auto& [name, count] : calls) {
        const PlatformFunction* const function = FindPlatformFunction(name);
        ASSERT_TRUE(function) << name << " is imported, and not in the list";
        failing += function->failures.empty() ? 0 : 1;
        if (!function->failures.empty() && name != "FreeLibrary") {
            EXPECT_GT(count, 0u) << name << " is called by no operation";
        }
    }
    for (const PlatformFunction& function : PlatformFunctions()) {
        EXPECT_EQ(function.failures.empty(), !function.reason.empty()) << function.name;
        if (!function.failures.empty()) {
            EXPECT_TRUE(calls.contains(std::string(function.name))) << function.name << " is not imported";
        }
    }
    Figure("functions that the library imports", static_cast<double>(calls.size()));
    Figure("functions of these that can fail", static_cast<double>(failing));
}

// What the other tests compare with is what is to be.
TEST(PlatformCalls, WithoutFailuresEverythingIsAsItShouldBe)
{
    Stage stage;
    const std::string before =
        "\"x\" NOT(\"x kept\" OR \"x old\" OR \"x gone\" OR \"x old menu\" OR \"x lost\")";
    const Outcome start = stage.Run(Operation::Start, nullptr);
    EXPECT_EQ(start.result, S_OK);
    EXPECT_EQ(start.namesAfter, before);
    const Outcome beside = stage.Run(Operation::StartBeside, nullptr);
    EXPECT_EQ(beside.result, S_FALSE);
    EXPECT_EQ(beside.namesAfter, before);
    EXPECT_EQ(stage.Run(Operation::IsInstalled, nullptr).answer, "1");
    EXPECT_EQ(stage.Run(Operation::IsInstalledById, nullptr).answer, "1");
    const Outcome name = stage.Run(Operation::DisplayName, nullptr);
    EXPECT_EQ(name.result, S_OK);
    EXPECT_EQ(name.answer, "x resolved");
    const Outcome search = stage.Run(Operation::Search, nullptr);
    EXPECT_EQ(search.result, S_OK);
    EXPECT_EQ(search.answer, before);
    EXPECT_EQ(stage.Run(Operation::SearchToShow, nullptr).answer, "x");
    EXPECT_EQ(stage.Run(Operation::Browser, nullptr).tileSetting, 1u);
    EXPECT_EQ(stage.Run(Operation::BrowserWithoutSetting, nullptr).tileSetting, std::nullopt);
    const Outcome pass = stage.Run(Operation::Pass, nullptr);
    EXPECT_EQ(pass.result, 0);
    const NameSet after = {"x kept",        "x new",      "x new short", "x newer",
                           "x newer short", "x resolved", "x suite",     "x suite short",
                           "x old menu",    "x web",      "x new menu"};
    EXPECT_EQ(NamesIn(pass.namesAfter), after) << pass.namesAfter;
    EXPECT_EQ(NamesIn(pass.namesAtNextStart), after) << pass.namesAtNextStart;
}

INSTANTIATE_TEST_SUITE_P(Of, Platform, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return NameOf(operation.param); });

} // namespace
