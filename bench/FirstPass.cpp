// The first refresh pass of a machine: the real thread, over folders and manifests on the disk. The system's
// packages are objects of the tests, which answer at once.

#include "BareXml.h"
#include "Machine.h"
#include "Measures.h"
#include "discovery/PackageManager.h"
#include "support/FakePackages.h"
#include "support/ImportPatch.h"
#include "support/Text.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

constexpr DWORD kFirstWait = 1000; // milliseconds, of the thread before its first pass
constexpr DWORD kLongWait = 60000; // the shortest pause between two passes

// The thread's pauses take no time: it begins its pass at once, and behind the pass it is told to stop.
class NoPauses
{
public:
    NoPauses() : m_patch("WaitForSingleObject", Wait) { s_original = m_patch.Original(); }

    static DWORD WaitFor(HANDLE handle) { return s_original(handle, INFINITE); }

private:
    static DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds)
    {
        if (milliseconds == kFirstWait) {
            return WAIT_TIMEOUT;
        }
        return milliseconds >= kLongWait ? WAIT_OBJECT_0 : s_original(handle, milliseconds);
    }

    static inline decltype(&WaitForSingleObject) s_original = &WaitForSingleObject;

    test::ImportPatch<decltype(&WaitForSingleObject)> m_patch;
};

// One run of the library's thread over a machine.
class Pass
{
public:
    explicit Pass(const Machine& machine)
    {
        DeleteFileW(machine.CatalogFile().c_str());
        m_store.objects.isQuiet = true;
        for (const test::PackageFacts& facts : machine.packages) {
            m_store.Add(facts);
        }
        m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    ~Pass() { CloseHandle(m_manager.m_hExitEvent); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    void Run()
    {
        // The thread gives this back.
        HMODULE module = nullptr;
        GetModuleHandleExW(0, nullptr, &module);
        const HANDLE thread =
            CreateThread(nullptr, 0, CQanhPackageManager::RefreshThread, &m_manager, 0, nullptr);
        NoPauses::WaitFor(thread);
        CloseHandle(thread);
    }

private:
    const NoPauses m_noPauses;
    test::FakeStore m_store;
    CQanhPackageManager m_manager;
};

// Calls visit(entry) for each entry of the folder that matches the pattern.
template <typename Visit> void ForEachEntry(const std::wstring& folder, const wchar_t* pattern, Visit visit)
{
    WIN32_FIND_DATAW entry;
    const HANDLE find = FindFirstFileExW((folder + pattern).c_str(), FindExInfoBasic, &entry,
                                         FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (find == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        visit(entry);
    } while (FindNextFileW(find, &entry));
    FindClose(find);
}

bool IsFolder(const WIN32_FIND_DATAW& entry)
{
    const std::wstring_view name = entry.cFileName;
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && name != L"." && name != L"..";
}

using Paths = std::vector<std::wstring>;

// The calls of the platform that the library's walk makes: it has the file system match the two patterns, and
// looks at the exit event before each entry.
class LibrarysWalk
{
public:
    ~LibrarysWalk() { CloseHandle(m_event); }

    void operator()(const std::wstring& folder, Paths& shortcuts) const
    {
        for (const wchar_t* pattern : {L"\\*.lnk", L"\\*.url"}) {
            ForEachEntry(folder, pattern, [&](const WIN32_FIND_DATAW& entry) {
                shortcuts.push_back(folder + L"\\" + entry.cFileName);
            });
        }
        ForEachEntry(folder, L"\\*", [&](const WIN32_FIND_DATAW& entry) {
            if (WaitForSingleObject(m_event, 0) == WAIT_TIMEOUT && IsFolder(entry)) {
                (*this)(folder + L"\\" + entry.cFileName, shortcuts);
            }
        });
    }

private:
    const HANDLE m_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

// What nobody interrupts may list each folder once, and match the names itself.
void WalkOnce(const std::wstring& folder, Paths& shortcuts)
{
    ForEachEntry(folder, L"\\*", [&](const WIN32_FIND_DATAW& entry) {
        const std::wstring_view name = entry.cFileName;
        if (name.ends_with(L".lnk") || name.ends_with(L".url")) {
            shortcuts.push_back(folder + L"\\" + entry.cFileName);
        } else if (IsFolder(entry)) {
            WalkOnce(folder + L"\\" + entry.cFileName, shortcuts);
        }
    });
}

// What was saved must be on the disk when the pass is over.
void Flush(const std::wstring& path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool isOnDisk = FlushFileBuffers(file) != FALSE;
    CloseHandle(file);
    if (!isOnDisk) {
        throw std::runtime_error("the bare save does not get to the disk");
    }
}

// The same work by bare calls: the walk of the folders, the reading of the manifests, the save.
template <typename Walk> void RunBare(const Machine& machine, const Walk& walk)
{
    Paths shortcuts;
    for (const std::wstring& folder : machine.programs) {
        walk(folder, shortcuts);
    }
    if (shortcuts.size() != machine.catalog.desktopApps.size()) {
        throw std::runtime_error("the bare walk finds other shortcuts than there are");
    }
    std::size_t characters = 0;
    for (const test::PackageFacts& facts : machine.packages) {
        characters += WalkXml(facts.path + L"\\AppxManifest.xml");
    }
    g_sink = characters;
    WriteXml(machine.catalog, machine.OtherFile());
    Flush(machine.OtherFile());
}

// The same work on a thread made for it: a new one begins apart from what it works with, which costs the
// library's thread time, too.
template <typename Walk> void RunBareOnThread(const Machine& machine, const Walk& walk)
{
    struct Work
    {
        const Machine& machine;
        const Walk& walk;
        std::exception_ptr failure;
    } work{machine, walk, nullptr};
    const auto run = [](void* argument) -> DWORD {
        auto& todo = *static_cast<Work*>(argument);
        try {
            RunBare(todo.machine, todo.walk);
        } catch (...) {
            todo.failure = std::current_exception();
        }
        return 0;
    };
    const HANDLE thread = CreateThread(nullptr, 0, run, &work, 0, nullptr);
    NoPauses::WaitFor(thread);
    CloseHandle(thread);
    if (work.failure) {
        std::rethrow_exception(work.failure);
    }
}

bool Measure(Session& session, const std::string& measure, std::size_t shortcuts, std::size_t packages)
{
    std::fprintf(stderr, "making %zu shortcuts and %zu packages\n", shortcuts, packages);
    const Machine machine(shortcuts, packages);
    std::unique_ptr<Pass> pass;
    const bool isQuick = session.Compare(measure, shortcuts,
                                         {{kOurs, [&] { pass->Run(); },
                                           [&] {
                                               pass.reset();
                                               pass = std::make_unique<Pass>(machine);
                                           }},
                                          {"same calls", [&] { RunBareOnThread(machine, LibrarysWalk()); }},
                                          {"one listing", [&] { RunBareOnThread(machine, WalkOnce); }}});
    // The order of the records is the folders' own.
    if (test::ReadFileBytes(machine.CatalogFile()).size() !=
        test::ReadFileBytes(machine.OtherFile()).size()) {
        throw std::runtime_error("the pass has found other applications than there are");
    }
    return isQuick;
}

} // namespace

void MeasureFirstPass(Session& session)
{
    for (const std::size_t shortcuts :
         session.isShort ? Sizes{100, 300, 1000, 3000} : Sizes{300, 1000, 3000, 10000}) {
        if (!Measure(session, "first-pass", shortcuts, 60)) {
            break;
        }
    }
}

void MeasureFirstPassOfManyPackages(Session& session)
{
    Measure(session, "first-pass-packages", session.isShort ? 300 : 10000, 500);
}

} // namespace bench
