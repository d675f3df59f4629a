#pragma once

#include "proof/CallGate.h"
#include "support/Registry.h"
#include "support/TemporaryFolder.h"
#include "support/host/Library.h"

#include <windows.h>

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace proof {

// What the library can be asked to do. The first two bring it up; the passes are those of its refresh thread;
// all others are called while it is up.
enum class Operation
{
    Start,       // as the owner of the catalogue
    StartBeside, // while another process is in its first pass: with the preset, without a refresh thread
    Stop,
    StopOfHung, // the refresh thread does not end by itself
    IsInstalled,
    IsInstalledById,
    DisplayName,
    Search,       // in mode 0, with exclusions, from the Start screen
    SearchToShow, // in mode 1, without them, from a desktop whose Start screen never comes
    Browser,
    BrowserWithoutSetting, // its tile setting is absent
    Activate,
    Release,
    Pass,
    PassOfPlatform, // the manifests are read by the platform's own interfaces
    // A pass, and launches beside it until it is over and once more; the fault is for every thread.
    PassBesideLaunches
};

// Those that one thread does.
inline constexpr Operation kOperations[] = {Operation::Start,
                                            Operation::StartBeside,
                                            Operation::Stop,
                                            Operation::StopOfHung,
                                            Operation::IsInstalled,
                                            Operation::IsInstalledById,
                                            Operation::DisplayName,
                                            Operation::Search,
                                            Operation::SearchToShow,
                                            Operation::Browser,
                                            Operation::BrowserWithoutSetting,
                                            Operation::Activate,
                                            Operation::Release,
                                            Operation::Pass,
                                            Operation::PassOfPlatform};

[[nodiscard]] const char* NameOf(Operation operation);
inline void PrintTo(Operation operation, std::ostream* stream)
{
    *stream << NameOf(operation);
}

// The C++ runtime in the library, at the first exception of an operation. Cold: as the host's first exception
// finds it, with all that it asks for once still to be asked for; what it holds of that afterwards cannot be
// told from a leak, so that memory is left out of the account.
enum class Runtime
{
    Warm,
    Cold
};

// How an operation went of which a call was made to fail, and what it left behind.
struct Outcome
{
    HRESULT result = S_OK; // a pass has its thread's exit code
    bool hasThrown = false;
    bool hasLaunchFailed = false; // beside a pass, and not for want of memory
    std::string answer;           // what a query found, what a launch pasted
    std::vector<std::string> log; // its lines, without time stamps
    bool hasFailed = false;       // a call was refused
    std::vector<Import> imports;  // with the calls of the operation
    // The names of the catalogue in its order, as a launch sees them, before and after.
    std::string namesBefore;
    std::string namesAfter;
    // The same operation again, with nothing in its way; passes: the names after that.
    std::string again;
    // The names that the next start finds in the file.
    std::string namesAtNextStart;
    std::optional<DWORD> tileSetting; // of the browser
    std::string held;                 // that was never given back
    bool isApartmentKept = false;
    bool isUnloaded = false;
    // Handles that the process has more than before, without those that the runtime keeps: Wine does
    // one for each time that a class of the Windows Runtime is looked up.
    std::ptrdiff_t handles = 0;
};

// A process for the library: folders, settings, packages and shortcuts of its own, a keyboard, a clipboard
// and pauses that are only looked at, all of it put in from outside, by the imports of the loaded library.
// One in the process.
class Stage
{
public:
    Stage();
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    // Loads the library, brings it to where the operation can begin, runs that with the fault (none for
    // null), looks at what it left, takes the library down and unloads it: all of that on a thread of its
    // own.
    [[nodiscard]] Outcome Run(Operation operation, const CallGate::Fault* fault,
                              Runtime runtime = Runtime::Warm);

    // Loads the library anew and lets so many threads at a time raise their first exception while there is no
    // memory for any of them, and live until all have; so often, with other threads. Returns how many did.
    // Keep: all of them have their exception at the same time. LetGo: one after the other has, and it is gone
    // before the next one's.
    enum class Exceptions
    {
        Keep,
        LetGo
    };
    [[nodiscard]] int RaiseOnThreads(int threads, int rounds, Exceptions exceptions);

    // Named when the process crashes or hangs.
    static void Say(std::string_view what);

private:
    void Reset(Operation operation);
    void RunOnThread(Operation operation, const CallGate::Fault* fault, Runtime runtime, Outcome& outcome);
    void Load();
    void RaiseFirst();
    void Unload(Outcome& outcome);
    [[nodiscard]] HRESULT Carry(Operation operation, const CallGate::Fault* fault, Outcome& outcome);
    [[nodiscard]] DWORD RunPass(const CallGate::Fault* fault);
    [[nodiscard]] DWORD RunPassBesideLaunches(const CallGate::Fault* fault, Outcome& outcome);
    [[nodiscard]] std::string Names();
    [[nodiscard]] std::string LogBytes() const;
    // The lines from this offset on.
    [[nodiscard]] std::vector<std::string> Log(std::size_t begin) const;

    test::TemporaryFolder m_folder;
    test::ScopedKey m_settings;
    host::Library m_library;
    HWND m_startScreen = nullptr;
    bool m_isUp = false;
    std::ptrdiff_t m_handlesOfALookUp = 0; // that the runtime keeps
};

} // namespace proof
