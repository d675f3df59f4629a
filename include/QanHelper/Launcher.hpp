// Launches one after the other on a thread of its own, and tells what came of each. Part of QanHelper.hpp.
#ifndef QANHELPER_LAUNCHER_HPP
#define QANHELPER_LAUNCHER_HPP

#include "Clipboard.hpp"
#include "LaunchQueue.hpp"

#include <chrono>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace qanh {

namespace detail {

// What outlives a launcher that was detached.
struct LauncherState
{
    LaunchQueue queue;
    Event started{true}; // the next two are there
    const Library* library = nullptr;
    std::exception_ptr failure; // null: the library is up
    Event ended{true};          // the launching thread has taken the library down
};

// Where an outcome is laid down.
struct OutcomeSlot
{
    Event known{true};
    Outcome outcome;
};

// A window that nobody sees, to own the clipboard by. Belongs to the thread that made it.
class OwnerWindow
{
public:
    OwnerWindow()
        : m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
    {
        ThrowIfFailed(m_window ? S_OK : HRESULT_FROM_WIN32(GetLastError()), "CreateWindowExW");
    }
    ~OwnerWindow() { DestroyWindow(m_window); }
    OwnerWindow(const OwnerWindow&) = delete;
    OwnerWindow& operator=(const OwnerWindow&) = delete;

    HWND Handle() const noexcept { return m_window; }

private:
    HWND m_window;
};

// Processes the thread's messages until the event is set, as a single-threaded apartment has to.
inline void WaitWithMessages(const Event& event) noexcept
{
    const HANDLE handle = event.Handle();
    while (MsgWaitForMultipleObjects(1, &handle, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }
}

inline HRESULT CallLibrary(Library& library, const Request& request) noexcept
{
    switch (request.kind) {
    case Request::Kind::Activation:
        return library.Activate(request.text.c_str(),
                                request.arguments ? request.arguments->c_str() : nullptr);
    case Request::Kind::Browser:
        return library.LaunchBrowser(request.tile, request.mode, request.excludeOthers);
    case Request::Kind::Search:
        break;
    }
    return library.LaunchBySearch(request.text.c_str(), request.mode, request.excludeOthers);
}

// One launch, from the clipboard to the answer.
inline void RunLaunch(LaunchQueue& queue, Library& library, HWND owner, const Request& request)
{
    HRESULT result = ToResult(0x8007000E); // E_OUTOFMEMORY, unless it goes well
    ClipboardState clipboard = ClipboardState::Untouched;
    try {
        if (request.kind == Request::Kind::Activation) {
            result = CallLibrary(library, request);
        } else {
            const SavedClipboard saved(owner);
            result = CallLibrary(library, request);
            clipboard = ClipboardState::Lost;
            clipboard = saved.PutBack(request.text);
        }
    } catch (const std::bad_alloc&) {
        // What the library has done stays its result.
    }
    queue.Return(result, clipboard);
    while (!queue.End()) {
        WaitWithMessages(queue.Work());
    }
}

// The launching thread.
inline void RunLaunches(const std::shared_ptr<LauncherState>& state, const Source& source)
{
    try {
        Library library(source);
        const OwnerWindow owner;
        state->library = &library;
        state->started.Set();
        // Memory that runs out from here on ends the process: there is nobody to tell.
        [&]() noexcept {
            while (!state->queue.IsStopped()) {
                if (const std::optional<Request> request = state->queue.Begin()) {
                    RunLaunch(state->queue, library, owner.Handle(), *request);
                } else {
                    WaitWithMessages(state->queue.Work());
                }
            }
        }();
    } catch (...) {
        state->failure = std::current_exception();
        state->started.Set();
    }
    state->ended.Set();
}

// The watching thread, which also calls the callbacks.
inline void WatchLaunches(const std::shared_ptr<LauncherState>& state)
{
    for (std::optional<DWORD> pause = 0; pause;) {
        state->queue.Watch().Wait(*pause);
        std::vector<Answer> answers;
        pause = state->queue.Tick(answers);
        // All of them first: callbacks take their time, and windows change.
        for (Answer& answer : answers) {
            answer.Complete();
        }
        for (const Answer& answer : answers) {
            answer.callback(answer.outcome);
        }
    }
}

} // namespace detail

// A launch that was queued. May outlive the launcher; copies are the same launch. Any thread.
class Pending
{
public:
    Pending(std::shared_ptr<const detail::OutcomeSlot> slot, Ticket ticket) noexcept
        : m_slot(std::move(slot)), m_ticket(ticket)
    {
    }

    // Waits until the outcome is known, in milliseconds, INFINITE for as long as it takes; false: the time is
    // over. Messages are not processed meanwhile.
    bool Wait(DWORD limit) const noexcept { return m_slot->known.Wait(limit); }

    // Waits as long as it takes. The reference is good while a copy of this lives.
    const Outcome& Get() const noexcept
    {
        m_slot->known.Wait(INFINITE);
        return m_slot->outcome;
    }

    // An event that is set, and stays so, when the outcome is known, for hosts that wait for several things.
    // Belongs to this: do not close it.
    HANDLE KnownEvent() const noexcept { return m_slot->known.Handle(); }

    // For Launcher::Cancel.
    Ticket GetTicket() const noexcept { return m_ticket; }

private:
    std::shared_ptr<const detail::OutcomeSlot> m_slot;
    Ticket m_ticket;
};

// Brings the library up on a single-threaded apartment thread of its own, launches what it is given one after
// the other, puts back what was on the clipboard, and tells the outcome of each launch. A second thread looks
// which windows come to the front meanwhile, and tells the outcomes.
//
// Thread: all functions may be called on any thread, also by callbacks. Make one for each process: keyboard
// and clipboard belong to the whole desktop.
//
// An outcome is what can be seen from outside. A window of another program that comes to the front behind the
// pane, after Enter can have been pressed, counts as started, whoever brought it there; windows of the host
// and of the shell do not count (folders of the file manager do), and neither does the window that was in
// front when the launch began.
//
// Do not wait for an outcome on a thread that owns what is on the clipboard, such as the host's own windows'
// thread: the launch asks the owner for it, and neither would go on until the limit is over. (The launch
// waits further; the limit ends the waiting for the outcome.)
class Launcher
{
public:
    // Brings the library up and starts the threads; may take up to 5 s. Throws Error as Library does,
    // std::system_error when there is no thread to be had, std::bad_alloc.
    explicit Launcher(const Source& source) : m_state(new detail::LauncherState)
    {
        m_watching = std::thread([state = m_state] { detail::WatchLaunches(state); });
        try {
            m_launching = std::thread([state = m_state, source] { detail::RunLaunches(state, source); });
            m_state->started.Wait(INFINITE);
            if (m_state->failure) {
                std::rethrow_exception(m_state->failure);
            }
        } catch (...) {
            Shutdown();
            throw;
        }
    }

    // Stops as Stop does, and waits however long it takes: the library's own waits cannot be cut short. A
    // launch whose search finds nothing lasts until the user closes the pane; taking the library down may
    // take up to 43 s. A host that cannot wait calls Stop and Detach before. May run in a callback.
    ~Launcher() { Shutdown(); }

    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    // Queues a launch. The outcome comes by what is returned, always as a value; to let that go takes nothing
    // back. Throws Error (ERROR_CANCELLED) when the launcher was stopped, std::bad_alloc.
    Pending Launch(Request request)
    {
        // (Not make_shared: its comparison of types is there twice for clang with the libraries of a mingw
        // gcc.)
        const std::shared_ptr<detail::OutcomeSlot> slot(new detail::OutcomeSlot);
        const Ticket ticket = Launch(std::move(request), [slot](const Outcome& outcome) {
            slot->outcome = outcome;
            slot->known.Set();
        });
        return Pending(slot, ticket);
    }

    // The same with a callback, which is called once, on the watching thread. While it runs nobody watches
    // the next launch: it should be short. What it throws ends the process. An empty one is refused: Error
    // (E_POINTER).
    Ticket Launch(Request request, Callback callback)
    {
        return m_state->queue.Add(std::move(request), std::move(callback));
    }

    // Takes a launch back that was not begun: its outcome is Cancelled, and nothing was done. False: it was
    // begun, or is over; a launch that was begun cannot be taken back.
    bool Cancel(Ticket ticket) { return m_state->queue.Cancel(ticket); }

    // A launch is waiting or running, also one whose limit is over.
    bool IsBusy() const { return m_state->queue.IsBusy(); }

    // The queries and Activate, on any thread. The reference is good until the launcher is stopped.
    const Library& GetLibrary() const noexcept { return *m_state->library; }

    // Takes no more launches, answers all that are not over with Cancelled, and waits for the library to be
    // taken down.
    //
    //   limit    milliseconds; 0: do not wait, INFINITE: as long as it takes
    //
    // Returns false when the time is over first: a launch is running, which goes on to its end. May be called
    // again. The last answers may come a moment later; none comes behind the destructor, unless that runs in
    // a callback.
    bool Stop(DWORD limit) noexcept
    {
        m_state->queue.Stop();
        return m_state->ended.Wait(limit);
    }

    // Stops, and lets the threads end by themselves: the destructor does not wait any more. The launch at
    // hand goes on, the clipboard is put back and the library is taken down behind it. The code of the
    // wrapper must stay in memory for that: for a host that ends its process, not for a DLL that is to be
    // unloaded.
    void Detach() noexcept
    {
        m_state->queue.Stop();
        if (m_launching.joinable()) {
            m_launching.detach();
        }
        if (m_watching.joinable()) {
            m_watching.detach();
        }
    }

private:
    void Shutdown() noexcept
    {
        m_state->queue.Stop();
        if (m_launching.joinable()) {
            m_launching.join();
        }
        if (m_watching.joinable()) {
            if (m_watching.get_id() == std::this_thread::get_id()) {
                m_watching.detach(); // in a callback: it ends behind it
            } else {
                m_watching.join();
            }
        }
    }

    std::shared_ptr<detail::LauncherState> m_state;
    std::thread m_launching;
    std::thread m_watching;
};

} // namespace qanh

#endif
