#include "LogSummary.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr std::wstring_view kLaunch = L"QanhLaunchBySearch";
constexpr std::wstring_view kOpenPane = L"CQanhMonitorMode::OpenAppSearchUI";
constexpr std::wstring_view kRefreshThread = L"CQanhPackageManager::RefreshThread";
constexpr std::wstring_view kMode = L"dwMode = ";
constexpr std::wstring_view kKeyword = L"szKeyword = ";
constexpr int kStartScreenMode = 1;
// 200 looks at the pane, one every 100 ms, and 200 ms behind them.
constexpr long long kPaneIsMissing = 20200;

bool IsOpen(const std::vector<LogCall>& open, std::wstring_view operation)
{
    return std::any_of(open.begin(), open.end(),
                       [operation](const LogCall& call) { return call.operation == operation; });
}

std::optional<long long> Between(std::optional<long long> begin, std::optional<long long> end)
{
    return begin && end && *begin <= *end ? std::optional(*end - *begin) : std::nullopt;
}

void Add(std::optional<long long>& sum, std::optional<long long> time)
{
    if (time) {
        sum = sum.value_or(0) + *time;
    }
}

bool IsSlower(const LogCall& left, const LogCall& right)
{
    return OwnTime(left).value_or(-1) > OwnTime(right).value_or(-1);
}

} // namespace

std::wstring CallText(const LogCall& call)
{
    return call.arguments.empty() ? call.operation : call.operation + L"(" + call.arguments + L")";
}

std::optional<long long> OwnTime(const LogCall& call)
{
    const std::optional<long long> duration = call.Duration();
    return duration ? std::optional(std::max(*duration - call.innerTime, 0LL)) : std::nullopt;
}

void LogSummary::OnBegin(const std::vector<LogCall>& open)
{
    const LogCall& call = open.back();
    ++calls;
    Frames(call.thread).resize(open.size() - 1);
    Frames(call.thread).emplace_back();
    if (call.operation == kLaunch) {
        m_launch = {};
        m_pasteBegin.reset();
    } else if (call.operation == L"CQanhKeyEmulate::SendInput_Shift_Insert") {
        ++m_launch.pastes;
    } else if (call.operation == L"CQanhKeyEmulate::Sendinput_Key" && open.size() >= 2 &&
               open[open.size() - 2].operation == kLaunch) {
        // The last key of a launch: Shift is released.
        m_launch.pasteAndStart = Between(m_pasteBegin, call.begin);
    } else if (call.operation == kSwitchToStartScreen) {
        m_mode.reset();
    } else if (call.operation == kRefreshMetroApps && !passes.empty()) {
        passes.back().marking = Between(passes.back().begin, call.begin);
    }
}

void LogSummary::OnEnd(const std::vector<LogCall>& open)
{
    const LogCall& call = open.back();
    if (IsOpen(open, kLaunch)) {
        TakeLaunch(call);
    }
    if (call.thread == LogThread::Refresh && !passes.empty() &&
        (call.operation != kRefreshDesktopApps ||
         std::count_if(open.begin(), open.end(),
                       [](const LogCall& entry) { return entry.operation == kRefreshDesktopApps; }) == 1)) {
        TakePass(call);
    }
    if (call.operation != kRefreshThread) {
        TakeSlow(call);
    }
    if (call.hasExit) {
        if (const auto failure = FailureOf({LogStatement::Kind::Exit, call.operation, call.outcome})) {
            FailCall(open, *failure);
        }
        if (call.operation == kSwitchToStartScreen && m_mode && *m_mode != kStartScreenMode) {
            FailUnseen(open, L"the Start screen did not come up within 2 s; the launch went on");
        }
        if (call.operation == L"CQanhKeyEmulate::SendInput_Win_Q") {
            m_paneIsAwaited = call.end;
        }
        if (call.operation == kOpenPane && Between(m_paneIsAwaited, call.end).value_or(0) >= kPaneIsMissing) {
            FailUnseen(open,
                       L"the search pane did not come to the front within 20 s: the text was pasted into "
                       L"the window that was there");
        }
        if (call.operation == kOpenPane) {
            m_paneIsAwaited.reset();
        }
    }
    Frames(call.thread).resize(open.size() - 1);
}

void LogSummary::OnNote(const LogNote& note, const std::vector<LogCall>& open)
{
    const LogStatement& statement = note.statement;
    if (statement.operation == kLaunch && statement.text.starts_with(kKeyword)) {
        m_launch.query = statement.text.substr(kKeyword.size());
    } else if (statement.operation.empty() && statement.text.starts_with(kMode)) {
        m_mode = static_cast<int>(std::wcstol(statement.text.c_str() + kMode.size(), nullptr, 10));
    } else if (statement.operation == kRefreshThread && statement.text.starts_with(L"Refresh app")) {
        passes.push_back({note.line, note.time, note.time, {}, {}, {}, {}});
    }
    if (const auto failure = FailureOf(statement)) {
        Frames(note.thread).resize(open.size());
        Frame none;
        std::vector<Frame>& frames = Frames(note.thread);
        Fail(*failure,
             {note.line,
              note.time,
              note.thread,
              note.isGuess,
              statement.operation,
              statement.text,
              open.empty() ? L"" : CallText(open.front()),
              {}},
             frames.empty() ? none : frames.back(), frames.empty() ? nullptr : &frames.back());
    }
}

void LogSummary::FailCall(const std::vector<LogCall>& open, const LogFailure& failure)
{
    const LogCall& call = open.back();
    std::vector<Frame>& frames = Frames(call.thread);
    Fail(failure,
         {call.exitLine,
          call.end,
          call.thread,
          call.isGuess,
          call.operation,
          call.outcome,
          open.size() < 2 ? L"" : CallText(open.front()),
          {}},
         frames.back(), frames.size() < 2 ? nullptr : &frames[frames.size() - 2]);
}

// A failure that the call itself does not see.
void LogSummary::FailUnseen(const std::vector<LogCall>& open, const wchar_t* sentence)
{
    Frames(open.back().thread).back() = {};
    FailCall(open, {std::nullopt, sentence});
}

// What a call only hands on was told of already; the functions that the host calls are told of all the same.
void LogSummary::Fail(const LogFailure& failure, LoggedFailure place, Frame& inner, Frame* outer)
{
    const bool isHandedOn =
        inner.hasFailure && !place.operation.starts_with(L"Qanh") &&
        (!inner.result || !failure.result || *failure.result == E_FAIL || *inner.result == *failure.result);
    if (!isHandedOn) {
        place.failure = failure;
        failures.push_back(std::move(place));
    }
    if (outer) {
        *outer = {true, failure.result};
    }
}

void LogSummary::TakeLaunch(const LogCall& call)
{
    if (call.operation == L"CQanhPackageManager::GetExcludeAppNameList") {
        m_launch.exclusions = call.Duration();
    } else if (call.operation == kSwitchToStartScreen) {
        m_launch.startScreen = call.Duration();
    } else if (call.operation == kOpenPane) {
        if (const std::optional<long long> duration = call.Duration()) {
            m_launch.searchPane = *duration - m_launch.startScreen.value_or(0);
        }
    } else if (call.operation == L"CQanhClipboard::SetClipboardData") {
        m_launch.clipboard = call.Duration();
        m_pasteBegin = call.end;
    } else if (call.operation == kLaunch) {
        m_launch.call = call;
        launches.push_back(std::exchange(m_launch, {}));
    }
}

void LogSummary::TakePass(const LogCall& call)
{
    LoggedPass& pass = passes.back();
    if (call.operation == kRefreshMetroApps) {
        pass.store = call.Duration();
    } else if (call.operation == kRefreshDesktopApps) {
        Add(pass.startMenu, call.Duration());
    } else if (call.operation == L"CQanhAppNameList::Save") {
        pass.save = call.Duration();
    } else {
        return;
    }
    pass.end = call.end ? call.end : pass.end;
}

void LogSummary::TakeSlow(const LogCall& call)
{
    if (m_slowestCount == 0 || OwnTime(call).value_or(0) == 0) {
        return;
    }
    if (m_slowest.size() == m_slowestCount) {
        if (!IsSlower(call, m_slowest.front())) {
            return;
        }
        std::pop_heap(m_slowest.begin(), m_slowest.end(), IsSlower);
        m_slowest.pop_back();
    }
    m_slowest.push_back(call);
    std::push_heap(m_slowest.begin(), m_slowest.end(), IsSlower);
}

std::vector<LogCall> LogSummary::Slowest() const
{
    std::vector<LogCall> slowest = m_slowest;
    std::sort(slowest.begin(), slowest.end(), [](const LogCall& left, const LogCall& right) {
        const auto leftTime = OwnTime(left);
        const auto rightTime = OwnTime(right);
        return leftTime != rightTime ? leftTime > rightTime : left.line < right.line;
    });
    return slowest;
}
