// What the threads of a Launcher share: the waiting launches, the one at hand, and who is told. Part of
// QanHelper.hpp; not for hosts.
#ifndef QANHELPER_LAUNCHQUEUE_HPP
#define QANHELPER_LAUNCHQUEUE_HPP

#include "Event.hpp"
#include "Foreground.hpp"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace qanh {

// Is told the outcome.
using Callback = std::function<void(const Outcome&)>;

// Names a launch of one launcher; never used again, never 0.
using Ticket = std::uint64_t;

namespace detail {

// An outcome and who is to be told. Of the window there is the handle only until it is completed.
struct Answer
{
    Callback callback;
    Outcome outcome;
    ULONGLONG begin = 0; // of the launch, as DescribeWindow takes it

    // May throw std::bad_alloc.
    void Complete()
    {
        if (outcome.window.handle) {
            outcome.window = DescribeWindow(outcome.window.handle, begin);
        }
    }
};

// Any thread. While the lock is held nobody is called, no window is sent a message, and nothing of the host's
// is destroyed: a thread of the host's that waits for the lock could not answer. Answers are collected, and
// given by whoever takes them.
class LaunchQueue
{
public:
    static constexpr DWORD kLook = 15; // milliseconds between two looks at the window in front

    Ticket Add(Request request, Callback callback)
    {
        if (!callback) {
            throw Error(ToResult(0x80004003), "Launcher::Launch"); // E_POINTER
        }
        // Made outside of the lock, so that a failure destroys the callback outside of it, too.
        Entry entry{0, std::move(request), std::move(callback), Clock::now()};
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isStopped) {
            throw Error(ToResult(0x800704C7), "Launcher::Launch"); // ERROR_CANCELLED
        }
        entry.ticket = ++m_lastTicket;
        m_waiting.push_back(std::move(entry));
        m_work.Set();
        m_watch.Set();
        return m_lastTicket;
    }

    bool Cancel(Ticket ticket)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto place = std::find_if(m_waiting.begin(), m_waiting.end(),
                                        [ticket](const Entry& entry) { return entry.ticket == ticket; });
        if (place == m_waiting.end()) {
            return false;
        }
        AnswerUnbegun(*place, OutcomeKind::Cancelled);
        m_waiting.erase(place);
        m_watch.Set();
        return true;
    }

    void Stop() noexcept
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isStopped = true;
        m_work.Set();
        m_watch.Set();
    }

    // Something is waiting or at hand.
    bool IsBusy() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_current.has_value() || !m_waiting.empty();
    }

    // Launching thread, in this order.

    // The next launch, which is the one at hand from now on; none: nothing is waiting.
    std::optional<Request> Begin()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isStopped || m_waiting.empty()) {
            return std::nullopt;
        }
        const bool isSearch = m_waiting.front().request.kind != Request::Kind::Activation;
        Request request = m_waiting.front().request;
        m_current.emplace(std::move(m_waiting.front()), isSearch);
        m_waiting.pop_front();
        m_watch.Set();
        return request;
    }

    // The library has returned.
    void Return(HRESULT result, ClipboardState clipboard) noexcept
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_current->outcome.result = result;
        m_current->outcome.clipboard = clipboard;
        m_current->returned = Clock::now();
        m_watch.Set();
    }

    // False: the outcome is not known yet.
    bool End() noexcept
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_current->isAnswered && !m_isStopped) {
            return false;
        }
        if (m_current->isAnswered) {
            m_current.reset();
        } else {
            m_current->isOver = true; // whoever answers it forgets it
        }
        return true;
    }

    bool IsStopped() const noexcept
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_isStopped;
    }
    const Event& Work() const noexcept { return m_work; }

    // Watching thread.

    // Looks at everything once. Gives the answers to hand out, and the milliseconds until the next look;
    // nothing: it is stopped, and these were the last answers.
    std::optional<DWORD> Tick(std::vector<Answer>& answers)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const Clock::time_point now = Clock::now();
        for (auto entry = m_waiting.begin(); entry != m_waiting.end();) {
            if (m_isStopped || now >= entry->Deadline()) {
                AnswerUnbegun(*entry, m_isStopped ? OutcomeKind::Cancelled : OutcomeKind::TimedOut);
                entry = m_waiting.erase(entry);
            } else {
                ++entry;
            }
        }
        const bool isWatching = m_current && !m_current->isAnswered;
        if (isWatching) {
            m_current->watch.Look();
            if (const std::optional<OutcomeKind> kind = Judge(now)) {
                AnswerCurrent(*kind);
                m_work.Set();
                if (m_current->isOver) {
                    m_current.reset();
                }
            }
        }
        answers.swap(m_answers);
        if (m_isStopped) {
            return std::nullopt;
        }
        return isWatching ? kLook : UntilDeadline(now);
    }

    const Event& Watch() const noexcept { return m_watch; }

private:
    struct Entry
    {
        Ticket ticket;
        Request request;
        Callback callback;
        Clock::time_point queued;

        Clock::time_point Deadline() const noexcept
        {
            // A longer one would not fit the clock.
            const std::chrono::milliseconds limit =
                (std::min)(request.limit, std::chrono::milliseconds(std::chrono::hours(24 * 365)));
            return limit.count() > 0 ? queued + limit : (Clock::time_point::max)();
        }
    };

    // The launch at hand.
    struct Current
    {
        Current(Entry taken, bool isSearch) : entry(std::move(taken)), watch(isSearch)
        {
            outcome.isBegun = true;
            outcome.clipboard = ClipboardState::Pending;
        }

        Entry entry;
        ForegroundWatch watch;
        Outcome outcome;
        std::optional<Clock::time_point> returned;
        bool isAnswered = false;
        bool isOver = false; // the launching thread is done with it
    };

    static std::chrono::milliseconds Since(Clock::time_point begin) noexcept
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    }

    void AnswerUnbegun(Entry& entry, OutcomeKind kind)
    {
        Answer& answer = m_answers.emplace_back(); // without memory for it the entry stays as it is
        answer.outcome.kind = kind;
        answer.outcome.duration = Since(entry.queued);
        answer.callback.swap(entry.callback);
    }

    void AnswerCurrent(OutcomeKind kind)
    {
        Outcome& outcome = m_current->outcome;
        outcome.kind = kind;
        outcome.hasPaneCome = m_current->watch.HasPaneCome();
        outcome.duration = Since(m_current->entry.queued);
        if (kind == OutcomeKind::Started || kind == OutcomeKind::FocusTaken) {
            outcome.window.handle = m_current->watch.Found();
        } else if (kind == OutcomeKind::TimedOut) {
            outcome.window.handle = GetForegroundWindow();
        }
        Answer& answer = m_answers.emplace_back();
        answer.callback.swap(m_current->entry.callback);
        answer.outcome = outcome;
        answer.begin = m_current->watch.Begin();
        m_current->isAnswered = true;
    }

    // What came of the launch at hand; nothing: that is not known yet.
    std::optional<OutcomeKind> Judge(Clock::time_point now) const noexcept
    {
        const Request& request = m_current->entry.request;
        const ForegroundWatch& watch = m_current->watch;
        if (m_isStopped) {
            return OutcomeKind::Cancelled;
        }
        if (m_current->returned) {
            if (m_current->outcome.result != S_OK) {
                return OutcomeKind::Failed;
            }
            if (request.kind != Request::Kind::Activation) {
                if (!watch.HasPaneCome()) {
                    return OutcomeKind::PaneNeverCame;
                }
                if (request.mode == SearchMode::Show) {
                    return OutcomeKind::Shown;
                }
            }
            if (watch.Found()) {
                return watch.IsFocusTaken() ? OutcomeKind::FocusTaken : OutcomeKind::Started;
            }
            if (now - *m_current->returned >= request.windowLimit) {
                return OutcomeKind::NothingStarted;
            }
        }
        if (now >= m_current->entry.Deadline()) {
            return OutcomeKind::TimedOut;
        }
        return std::nullopt;
    }

    // Milliseconds until the first of the waiting launches is too old.
    DWORD UntilDeadline(Clock::time_point now) const noexcept
    {
        Clock::time_point first = (Clock::time_point::max)();
        for (const Entry& entry : m_waiting) {
            first = (std::min)(first, entry.Deadline());
        }
        if (first == (Clock::time_point::max)()) {
            return INFINITE;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(first - now).count() + 1;
        return static_cast<DWORD>((std::min)(left, decltype(left){60000}));
    }

    mutable std::mutex m_mutex;
    Event m_work{false};  // the launching thread has something to look at
    Event m_watch{false}; // the watching thread has
    std::deque<Entry> m_waiting;
    std::optional<Current> m_current;
    std::vector<Answer> m_answers;
    Ticket m_lastTicket = 0;
    bool m_isStopped = false;
};

} // namespace detail
} // namespace qanh

#endif
