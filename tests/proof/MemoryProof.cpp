// Every allocation of each operation of the library is made to fail in turn: alone, and with all that come
// after it.
#include "proof/Held.h"
#include "proof/NamesInQuery.h"
#include "proof/Proof.h"
#include "proof/Stage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <cwchar>
#include <set>

namespace {

using namespace proof;
using testing::AnyOf;
using testing::Eq;
using testing::IsEmpty;

// By which the library can ask for memory itself, whichever of them it imports. What the platform's objects
// need is theirs: to the library it is a call that fails.
const std::set<std::string> kAllocators = {"malloc",
                                           "calloc",
                                           "realloc",
                                           "_strdup",
                                           "_wcsdup",
                                           "_aligned_malloc",
                                           "LocalAlloc",
                                           "HeapAlloc",
                                           "GlobalAlloc",
                                           "HeapReAlloc",
                                           "LocalReAlloc",
                                           "GlobalReAlloc",
                                           "CoTaskMemAlloc",
                                           "CoTaskMemRealloc",
                                           "SysAllocString",
                                           "SysAllocStringLen",
                                           "VirtualAlloc",
                                           "WindowsCreateString",
                                           "WindowsDuplicateString",
                                           "WindowsConcatString"};

// How many bytes a call asks for; nothing for functions that are not known here.
std::size_t SizeOf(const GateCall& call, const std::string& function)
{
    if (function == "calloc") {
        return call.arguments[0] * call.arguments[1];
    }
    if (function == "_wcsdup") {
        return (std::wcslen(reinterpret_cast<const wchar_t*>(call.arguments[0])) + 1) * sizeof(wchar_t);
    }
    if (function == "_strdup") {
        return std::strlen(reinterpret_cast<const char*>(call.arguments[0])) + 1;
    }
    return call.arguments[function == "malloc" ? 0 : 1];
}

ULONG_PTR Refuse()
{
    _set_errno(ENOMEM);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}

// One allocation fails.
class OneFails
{
public:
    std::optional<ULONG_PTR> operator()(const GateCall&, const Import&) const { return Refuse(); }
};

// From one allocation on there is no memory but what the library itself has given back since.
class MemoryIsUsedUp
{
public:
    std::optional<ULONG_PTR> operator()(const GateCall& call, const Import& import)
    {
        const std::size_t size = SizeOf(call, import.name);
        if (!m_isUsedUp) {
            m_isUsedUp = true;
            m_taken = Held::FreedBytes();
        } else if (size <= Held::FreedBytes() - m_taken) {
            m_taken += size;
            return std::nullopt;
        }
        return Refuse();
    }

private:
    bool m_isUsedUp = false;
    std::size_t m_taken = 0; // of the bytes given back
};

bool TellsOfFailure(const std::vector<std::string>& log)
{
    return std::any_of(log.begin(), log.end(), [](const std::string& line) {
        return line.find("0x8007000E") != std::string::npos || line.find("0x80004005") != std::string::npos;
    });
}

// Operations that ask for no memory.
bool MakesNone(Operation operation)
{
    return operation == Operation::Stop || operation == Operation::StopOfHung ||
           operation == Operation::IsInstalled || operation == Operation::Activate ||
           operation == Operation::Release;
}

class Memory : public testing::TestWithParam<Operation>
{
protected:
    // What holds whichever allocation failed.
    void ExpectUnharmed(const Outcome& outcome) const
    {
        // A thread that does not end keeps the catalogue.
        EXPECT_EQ(outcome.held, GetParam() == Operation::StopOfHung ? m_whole.held : "") << "is still held";
        EXPECT_TRUE(outcome.isUnloaded) << "the library stays in memory";
        EXPECT_TRUE(outcome.isApartmentKept);
        EXPECT_TRUE(!outcome.hasThrown || GetParam() == Operation::IsInstalledById)
            << "an exception gets out";
        EXPECT_EQ(outcome.namesBefore, m_whole.namesBefore);
    }

    void ExpectDocumented(const Outcome& outcome) const
    {
        const NameSet before = NamesIn(m_whole.namesBefore);
        const NameSet whole = NamesIn(m_whole.namesAfter);
        const NameSet after = NamesIn(outcome.namesAfter);
        switch (GetParam()) {
        case Operation::Start:
        case Operation::StartBeside:
            // A record that finds no memory is left out, and the log says so. The owner's start succeeds: its
            // thread finds the catalogue again.
            EXPECT_TRUE(outcome.result == m_whole.result ||
                        (GetParam() == Operation::StartBeside && outcome.result == E_OUTOFMEMORY))
                << outcome.result;
            EXPECT_TRUE(Includes(whole, after)) << outcome.namesAfter;
            EXPECT_TRUE(outcome.namesAfter == m_whole.namesAfter || TellsOfFailure(outcome.log));
            EXPECT_EQ(outcome.namesAtNextStart, m_whole.namesAtNextStart);
            break;
        case Operation::Pass:
        case Operation::PassOfPlatform:
            EXPECT_EQ(outcome.result, 0);
            // Each record is as it was or as it is to be; of the names of a new one some may be missing.
            EXPECT_TRUE(Includes(Union(before, whole), after)) << outcome.namesAfter;
            EXPECT_TRUE(Includes(after, Intersection(before, whole))) << outcome.namesAfter;
            EXPECT_TRUE(Includes(Union(whole, before), NamesIn(outcome.again))) << outcome.again;
            // The save has failed, or the file holds what the list does after the next pass or this one.
            EXPECT_THAT(outcome.namesAtNextStart,
                        AnyOf(m_whole.namesBefore, outcome.namesAfter, outcome.again));
            break;
        case Operation::IsInstalledById:
            if (outcome.hasThrown) {
                EXPECT_EQ(outcome.answer, "7");
            } else {
                ExpectQueryFails(outcome, "7");
            }
            break;
        case Operation::IsInstalled:
            ExpectQueryFails(outcome, "7");
            break;
        case Operation::DisplayName:
            ExpectQueryFails(outcome, "(null)");
            break;
        case Operation::Search:
        case Operation::Browser:
        case Operation::BrowserWithoutSetting:
            // Memory that runs out for a name to exclude costs that name.
            EXPECT_THAT(outcome.result, AnyOf(Eq(S_OK), Eq(E_OUTOFMEMORY)));
            if (outcome.result == S_OK) {
                EXPECT_TRUE(Includes(NamesIn(m_whole.answer), NamesIn(outcome.answer))) << outcome.answer;
                EXPECT_TRUE(outcome.answer == m_whole.answer || TellsOfFailure(outcome.log));
            }
            break;
        default:
            EXPECT_EQ(outcome.result, m_whole.result);
            break;
        }
        ExpectListStays(outcome);
    }

    // The result says so, and the line of exit says the same.
    void ExpectQueryFails(const Outcome& outcome, const std::string& untouched) const
    {
        if (outcome.result == m_whole.result) {
            EXPECT_EQ(outcome.answer, m_whole.answer);
            return;
        }
        EXPECT_THAT(outcome.result, AnyOf(Eq(E_OUTOFMEMORY), Eq(E_FAIL)));
        EXPECT_THAT(outcome.answer, AnyOf(Eq(untouched), Eq("")));
        EXPECT_TRUE(TellsOfFailure(outcome.log));
    }

    // An operation that does not change the catalogue leaves it, and works when memory is there again.
    void ExpectListStays(const Outcome& outcome) const
    {
        const bool changes = GetParam() == Operation::Start || GetParam() == Operation::StartBeside ||
                             GetParam() == Operation::Pass || GetParam() == Operation::PassOfPlatform;
        if (!changes) {
            EXPECT_EQ(outcome.namesAfter, m_whole.namesAfter);
            EXPECT_EQ(outcome.again, m_whole.again);
            EXPECT_EQ(outcome.namesAtNextStart, m_whole.namesAtNextStart);
        }
    }

    void FailInTurn(bool isLasting, Runtime runtime)
    {
        // What the platform makes once and keeps comes with the first time.
        (void)m_stage.Run(GetParam(), nullptr, runtime);
        m_whole = m_stage.Run(GetParam(), nullptr, runtime);
        CallGate::Fault fault{kAllocators, 0, isLasting, OneFails()};
        std::size_t step = 1;
        std::size_t failed = 0;
        std::size_t missing = 0;
        for (;; fault.index += step) {
            const std::string attempt = std::string(NameOf(GetParam())) + ", allocation " +
                                        std::to_string(fault.index) + (isLasting ? " and all after it" : "") +
                                        (runtime == Runtime::Cold ? ", cold" : "");
            SCOPED_TRACE(attempt);
            Stage::Say(attempt);
            if (isLasting) {
                fault.refusal = MemoryIsUsedUp();
            }
            const Outcome outcome = m_stage.Run(GetParam(), &fault, runtime);
            ExpectUnharmed(outcome);
            if (!outcome.hasFailed) {
                break;
            }
            ++failed;
            ExpectDocumented(outcome);
            if (!outcome.again.empty() && NamesIn(outcome.again) != NamesIn(m_whole.again)) {
                ++missing;
            }
            // The short form takes some of many.
            step = failed < 5 ? 1 : Count<std::size_t>(2 * failed, 1);
        }
        // Were the allocators not found among the imports, nothing would fail.
        EXPECT_EQ(failed == 0, MakesNone(GetParam()));
        const std::string name = std::string("allocations of ") + NameOf(GetParam()) + " that failed " +
                                 (isLasting ? "with all after them" : "in turn") +
                                 (runtime == Runtime::Cold ? ", with the C++ runtime cold" : "");
        Figure(name.c_str(), static_cast<double>(failed));
        if (missing != 0) {
            Figure((name + ", after which a name stays missing").c_str(), static_cast<double>(missing));
        }
    }

    Stage m_stage;
    Outcome m_whole; // with nothing in its way
};

TEST_P(Memory, EachFails)
{
    FailInTurn(false, Runtime::Warm);
}

TEST_P(Memory, EachFailsInAColdRuntime)
{
    FailInTurn(false, Runtime::Cold);
}

TEST_P(Memory, EachFailsWithAllAfterIt)
{
    FailInTurn(true, Runtime::Warm);
}

TEST_P(Memory, EachFailsWithAllAfterItInAColdRuntime)
{
    FailInTurn(true, Runtime::Cold);
}

INSTANTIATE_TEST_SUITE_P(Of, Memory, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return NameOf(operation.param); });

// Two threads that find no memory: the first one that does waits for the other, so that both raise their
// first exception in the same moment, or as nearly as the library's locks allow.
class Meeting
{
public:
    ULONG_PTR Fail()
    {
        const DWORD self = GetCurrentThreadId();
        DWORD nobody = 0;
        if (m_first.compare_exchange_strong(nobody, self)) {
            const ULONGLONG end = GetTickCount64() + kLongestWait;
            while (!HasBeen() && GetTickCount64() < end) {
                SwitchToThread();
            }
        } else if (m_first != self) {
            m_second = self;
        }
        return Refuse();
    }
    [[nodiscard]] bool HasBeen() const { return m_second != 0; }

private:
    static constexpr ULONGLONG kLongestWait = 200; // milliseconds

    std::atomic<DWORD> m_first = 0;
    std::atomic<DWORD> m_second = 0;
};

void ExpectEnoughFor(int threads, Stage::Exceptions exceptions, const std::string& what)
{
    Stage stage;
    Stage::Say(what);
    const int rounds = Count(30, 300);
    EXPECT_EQ(stage.RaiseOnThreads(threads, rounds, exceptions), threads * rounds);
    Figure(("times that " + what + " raised their first exceptions, without memory").c_str(), rounds);
}

// The library's reserve lets so many threads raise their first exception at the same time, the first of all
// among them. What it gave to threads that have ended is there for others.
TEST(MemoryOfThreads, RunsOutForSevenAtOnce)
{
    ExpectEnoughFor(7, Stage::Exceptions::Keep, "seven threads at once");
}

// What it gave to a thread for its first exception stays with that while it lives, but for the exception
// itself: so many can live that raised theirs one after the other.
TEST(MemoryOfThreads, RunsOutForElevenInTurnThatStay)
{
    ExpectEnoughFor(11, Stage::Exceptions::LetGo, "eleven threads in turn that stay");
}

// From some allocation on neither the refresh thread in its pass nor the host's in a launch gets any memory,
// and neither has raised an exception before.
TEST(MemoryOfThreads, RunsOutForTwoAtOnce)
{
    Stage stage;
    const Outcome whole = stage.Run(Operation::PassBesideLaunches, nullptr, Runtime::Cold);
    int meetings = 0;
    const std::size_t rounds = Count<std::size_t>(5, 120);
    for (std::size_t index = 0; index < rounds; ++index) {
        const std::string attempt = "two threads, allocation " + std::to_string(index) + " and all after it";
        SCOPED_TRACE(attempt);
        Stage::Say(attempt);
        Meeting meeting;
        const CallGate::Fault fault{kAllocators, index, true,
                                    [&](const GateCall&, const Import&) { return meeting.Fail(); }, true};
        const Outcome outcome = stage.Run(Operation::PassBesideLaunches, &fault, Runtime::Cold);
        meetings += meeting.HasBeen() ? 1 : 0;
        EXPECT_TRUE(outcome.hasFailed);
        EXPECT_FALSE(outcome.hasLaunchFailed) << "other than for want of memory";
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.held, "") << "is still held";
        EXPECT_TRUE(outcome.isUnloaded);
        EXPECT_TRUE(outcome.isApartmentKept);
        EXPECT_TRUE(Includes(Union(NamesIn(whole.namesBefore), NamesIn(whole.namesAfter)),
                             NamesIn(outcome.namesAfter)))
            << outcome.namesAfter;
        Progress(static_cast<long long>(index) + 1, static_cast<long long>(rounds));
    }
    EXPECT_GT(meetings, 0);
    Figure("times that two threads ran out of memory", static_cast<double>(rounds));
    Figure("of them, with both out of it before either had raised an exception", meetings);
}

} // namespace
