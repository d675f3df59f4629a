#include "LogCalls.h"

#include "Text.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

// Operations that one of the two threads alone performs, by how their names begin or end.
constexpr std::wstring_view kOfHost[] = {
    L"QanhInitialize",
    L"QanhFinalize",
    L"QanhReleaseString",
    L"QanhIsInstalledByAppUserModeID",
    L"QanhGetAppDisplayNameByPFN",
    L"QanhLaunch",
    L"CQanhMonitorMode::",
    L"CQanhKeyEmulate::",
    L"CQanhClipboard::",
    L"CQanhApp::",
    L"CQanhDesktopApp::AddToExcludeAppNameList",
    L"CQanhDesktopApp::FromXmlNode",
    L"CQanhMetroApp::AddToExcludeAppNameList",
    L"CQanhMetroApp::FromXmlNode",
    L"CQanhPackage::AddAppNameToExcludeList",
    L"CQanhPackage::FromXmlNode",
    L"CQanhAppNameList::GetExcludeAppNameList",
    L"CQanhAppNameList::Load",
    L"CQanhAppNameList::ReadDesktopApps",
    L"CQanhPackageManager::GetExcludeAppNameList",
    L"CQanhPackageManager::Initialize",
    L"CQanhPackageManager::Finalize",
    L"CQanhPackageManager::GetModuleName",
    L"CQanhPackageManager::GetPresetAppNameFullPath",
    L"CQanhPackageManager::IsInstalledEx",
    L"CQanhPackageManager::FindPackageByNameEx",
    L"CQanhPackageManager::GetAppDisplayNameByPFN",
    L"CQanhPackageManager::WaitThreadExit",
    L"CQanhManifestReader::GetAppDisplayName",
    L"CQanhReg::IsDebugLogOn",
    L"CQanhReg::GetClearClipboardWaitTime",
    L"CQanhReg::GetCurrentTileImmersiveActivation",
    L"CQanhReg::SetCurrentTileImmersiveActivation",
    L"CQanhReg::DeleteTileImmersiveActivation",
};
constexpr std::wstring_view kOfRefresh[] = {
    L"CQanhPackageManager::RefreshThread",
    L"CQanhPackageManager::RefreshMetroApps",
    L"CQanhPackageManager::RefreshDesktopApps",
    L"CQanhPackageManager::AddLinkFileToList",
    L"CQanhAppNameList::Save",
    L"CQanhAppNameList::AddDesktopApp",
    L"CQanhAppNameList::AddMetroPackage",
    L"CQanhAppNameList::IsInDesktopAppList",
    L"CQanhAppNameList::GetPackage",
    L"CQanhDesktopApp::IsSameShortcut",
    L"CQanhDesktopApp::ToXmlNode",
    L"CQanhMetroApp::ToXmlNode",
    L"CQanhPackage::ToXmlNode",
    L"CQanhPackage::IsThisPackage",
    L"CQanhManifestReader::AddAppsToPackage",
    L"CQanhManifestReader::IsCanGetAppNameFromManifest",
    L"CQanhManifestReader::GetAppNameUsing",
    L"CQanhReg::GetRefreshInterval",
};
// Operations of both threads, and who calls them: the name of the caller begins so.
struct Caller
{
    std::wstring_view operation;
    std::wstring_view caller;
};
constexpr Caller kCallers[] = {
    {L"CQanhPackageManager::CreateAppNameListFolder", L"CQanhPackageManager::Initialize"},
    {L"CQanhPackageManager::CreateAppNameListFolder", L"CQanhPackageManager::RefreshThread"},
    {L"CQanhPackageManager::IsInstalled", L"QanhIsInstalled"},
    {L"CQanhPackageManager::FindPackageByName", L"CQanhPackageManager::IsInstalled"},
    {L"CQanhPackageManager::FindPackageByName", L"CQanhPackageManager::GetAppDisplayNameByPFN"},
    {L"CQanhPackageManager::GetPackageManager", L"CQanhPackageManager::FindPackageByName"},
    {L"CQanhPackageManager::GetPackageManager", L"CQanhPackageManager::RefreshMetroApps"},
    {L"CQanhReg::GetDWORDRegVal", L"CQanhReg::"},
    {L"CQanhReg::GetManifestReaderSetting", L"CQanhManifestReader::LoadSetting"},
};

constexpr std::wstring_view kRefreshThread = L"CQanhPackageManager::RefreshThread";

bool IsExport(std::wstring_view operation)
{
    return operation.starts_with(L"Qanh");
}

// The thread that the statement can only be of; none when it could be either.
std::optional<LogThread> ThreadByName(const LogStatement& statement)
{
    // One of the refresh thread's has the beginning of another name.
    if (BeginsWithOne(statement.operation, kOfRefresh)) {
        return LogThread::Refresh;
    }
    if (BeginsWithOne(statement.operation, kOfHost) || statement.operation.empty()) {
        return LogThread::Host;
    }
    return std::nullopt;
}

class CallReader
{
public:
    explicit CallReader(LogVisitor& visitor) : m_visitor(visitor) {}

    void Take(const LogMessage& message, const LogStatement& statement)
    {
        const auto [thread, isGuess] = ThreadOf(statement);
        m_lastThread = thread;
        switch (statement.kind) {
        case LogStatement::Kind::Entry:
            Enter(message, statement, thread, isGuess);
            break;
        case LogStatement::Kind::Exit:
            Leave(message, statement, thread, isGuess);
            break;
        default:
            Note(message, statement, thread, isGuess);
        }
    }

    void EndAll()
    {
        for (const LogThread thread : {LogThread::Host, LogThread::Refresh}) {
            EndAbove(thread, 0);
        }
    }

private:
    using Calls = std::vector<LogCall>;

    [[nodiscard]] Calls& Open(LogThread thread) { return m_open[static_cast<std::size_t>(thread)]; }

    // The refresh thread waits most of the time: with nothing but itself open it is at rest.
    [[nodiscard]] bool IsBusy(LogThread thread)
    {
        const Calls& open = Open(thread);
        return open.size() > 1 || (open.size() == 1 && open[0].operation != kRefreshThread);
    }

    [[nodiscard]] bool IsOpen(LogThread thread, const std::wstring& operation)
    {
        const Calls& open = Open(thread);
        return std::any_of(open.begin(), open.end(),
                           [&operation](const LogCall& call) { return call.operation == operation; });
    }

    // The thread of a statement, and whether that is a guess.
    [[nodiscard]] std::pair<LogThread, bool> ThreadOf(const LogStatement& statement)
    {
        if (const std::optional<LogThread> thread = ThreadByName(statement)) {
            return {*thread, false};
        }
        if (statement.kind == LogStatement::Kind::Exit) {
            const bool isOfHost = IsOpen(LogThread::Host, statement.operation);
            const bool isOfRefresh = IsOpen(LogThread::Refresh, statement.operation);
            if (isOfHost != isOfRefresh) {
                const LogThread thread = isOfHost ? LogThread::Host : LogThread::Refresh;
                return {thread, GuessOf(thread, statement.operation)};
            }
            return {m_lastThread, true};
        }
        if (IsExport(statement.operation)) {
            // The pass asks which packages are installed; a host may ask the same.
            return m_isInPass ? std::pair(LogThread::Refresh, true) : std::pair(LogThread::Host, false);
        }
        const bool isOfHost = IsCalledBy(LogThread::Host, statement.operation);
        if (isOfHost != IsCalledBy(LogThread::Refresh, statement.operation)) {
            const LogThread thread = isOfHost ? LogThread::Host : LogThread::Refresh;
            return {thread, Open(thread).back().isGuess};
        }
        const bool isHostBusy = IsBusy(LogThread::Host);
        if (isHostBusy != IsBusy(LogThread::Refresh)) {
            return {isHostBusy ? LogThread::Host : LogThread::Refresh, !Open(LogThread::Refresh).empty()};
        }
        return {m_lastThread, true};
    }

    // Whether what the thread is in calls this operation.
    [[nodiscard]] bool IsCalledBy(LogThread thread, const std::wstring& operation)
    {
        const Calls& open = Open(thread);
        return !open.empty() &&
               std::any_of(std::begin(kCallers), std::end(kCallers), [&](const Caller& entry) {
                   return operation == entry.operation && open.back().operation.starts_with(entry.caller);
               });
    }

    // Whether the entry of the open call was given its thread by a guess.
    [[nodiscard]] bool GuessOf(LogThread thread, const std::wstring& operation)
    {
        const Calls& open = Open(thread);
        const auto call = std::find_if(open.rbegin(), open.rend(), [&operation](const LogCall& entry) {
            return entry.operation == operation;
        });
        return call != open.rend() && call->isGuess;
    }

    void Enter(const LogMessage& message, const LogStatement& statement, LogThread thread, bool isGuess)
    {
        Calls& open = Open(thread);
        // These are called by nobody: what is still open has ended unseen.
        const bool isOutermost =
            statement.operation == kRefreshThread ||
            (thread == LogThread::Host && IsExport(statement.operation) && !open.empty() &&
             !(open.back().operation == L"QanhLaunchIEBySearch" &&
               statement.operation == L"QanhLaunchBySearch"));
        if (isOutermost) {
            EndAbove(thread, 0);
        }
        LogCall call;
        call.number = ++m_calls;
        call.line = message.line;
        call.begin = message.time;
        call.thread = thread;
        // What a call calls is on its thread.
        call.isGuess = isGuess || (!open.empty() && open.back().isGuess && !ThreadByName(statement));
        call.depth = open.size();
        call.operation = statement.operation;
        call.arguments = statement.text;
        open.push_back(std::move(call));
        m_visitor.OnBegin(open);
    }

    void Leave(const LogMessage& message, const LogStatement& statement, LogThread thread, bool isGuess)
    {
        Calls& open = Open(thread);
        if (!IsOpen(thread, statement.operation)) {
            Note(message, statement, thread, isGuess);
            return;
        }
        std::size_t index = open.size();
        do {
            --index;
        } while (open[index].operation != statement.operation);
        EndAbove(thread, index + 1);
        LogCall& call = open.back();
        call.hasExit = true;
        call.exitLine = message.line;
        call.end = message.time;
        call.outcome = statement.text;
        EndLast(thread);
    }

    void Note(const LogMessage& message, const LogStatement& statement, LogThread thread, bool isGuess)
    {
        if (statement.operation == kRefreshThread && statement.text.starts_with(L"Refresh app")) {
            m_isInPass = true;
        }
        const Calls& open = Open(thread);
        m_visitor.OnNote({message.line, message.time, thread, isGuess, open.size(), statement}, open);
    }

    // Those that were called later than the first `count` of the thread have ended without an exit.
    void EndAbove(LogThread thread, std::size_t count)
    {
        while (Open(thread).size() > count) {
            EndLast(thread);
        }
    }

    void EndLast(LogThread thread)
    {
        Calls& open = Open(thread);
        m_visitor.OnEnd(open);
        const LogCall ended = std::move(open.back());
        open.pop_back();
        if (!open.empty()) {
            open.back().innerTime += ended.Duration().value_or(0);
        }
        // The packages are asked about before the Store is: then the pass asks no more.
        if (ended.operation == L"CQanhPackageManager::RefreshMetroApps" ||
            ended.operation == kRefreshThread) {
            m_isInPass = false;
        }
    }

    LogVisitor& m_visitor;
    std::array<Calls, 2> m_open;
    std::size_t m_calls = 0;
    LogThread m_lastThread = LogThread::Host;
    bool m_isInPass = false; // in the part of it that asks which packages are installed
};

} // namespace

const wchar_t* NameOf(LogThread thread)
{
    return thread == LogThread::Host ? L"host" : L"refresh";
}

std::optional<long long> LogCall::Duration() const
{
    if (!hasExit || !begin || !end || *end < *begin) {
        return std::nullopt;
    }
    return *end - *begin;
}

LogExtent ReadCalls(LogLines& lines, LogVisitor& visitor)
{
    LogExtent extent;
    CallReader reader(visitor);
    LogMessage message;
    while (lines.Next(message)) {
        const LogStatement statement = ParseStatement(message.text);
        // A message without a time stamp of its own may be one that another thread's stamp was put before.
        if (statement.kind == LogStatement::Kind::Foreign || !message.time) {
            ++extent.foreign;
            extent.firstForeign = extent.firstForeign == 0 ? message.line : extent.firstForeign;
            continue;
        }
        ++extent.lines;
        extent.begin = extent.begin ? extent.begin : message.time;
        extent.end = message.time;
        reader.Take(message, statement);
    }
    reader.EndAll();
    extent.isCut = lines.IsCut();
    return extent;
}
