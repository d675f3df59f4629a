#include "Diagnosis.h"

#include "Catalogue.h"
#include "Failure.h"
#include "Text.h"
#include "common/FormatText.h"
#include "common/HostEnvironment.h"
#include "common/UniqueHandle.h"

#include <tlhelp32.h>

#include <algorithm>

namespace {

using Level = Diagnosis::Level;

// The names that the library gives its objects.
constexpr wchar_t kInstanceMutex[] = L"QanHelper_%s";
constexpr wchar_t kExitEvent[] = L"Local\\PYX_Event_Exit_RefreshThread%s";
constexpr std::wstring_view kTurnMutex = L"QanHelperSave_";

enum class Presence
{
    Absent,
    There,
    Denied, // there, and not to be had by who asks
};

Presence PresenceOf(HANDLE object)
{
    const DWORD error = GetLastError();
    const UniqueHandle closed(object);
    return closed ? Presence::There : error == ERROR_ACCESS_DENIED ? Presence::Denied : Presence::Absent;
}

Presence PresenceOfMutex(const std::wstring& name)
{
    return PresenceOf(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
}

// The name of the host that an executable belongs to: up to its first dot.
std::wstring HostNameOf(const std::wstring& executable)
{
    std::wstring path = L"\\" + executable;
    return CutHostName(path.data()) + 1;
}

std::vector<DWORD> ProcessesOf(const std::wstring& host)
{
    std::vector<DWORD> processes;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return processes;
    }
    const UniqueHandle closed(snapshot);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL isThere = Process32FirstW(snapshot, &entry); isThere;
         isThere = Process32NextW(snapshot, &entry)) {
        // The tool that asks is no host.
        if (entry.th32ProcessID != GetCurrentProcessId() &&
            EqualsIgnoringCase(HostNameOf(entry.szExeFile), host)) {
            processes.push_back(entry.th32ProcessID);
        }
    }
    return processes;
}

bool IsElevated(DWORD process)
{
    const UniqueHandle handle(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    UniqueHandle token;
    TOKEN_ELEVATION elevation{};
    DWORD size = sizeof elevation;
    return handle && OpenProcessToken(handle.Get(), TOKEN_QUERY, token.Put()) &&
           GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof elevation, &size) &&
           elevation.TokenIsElevated;
}

void DiagnoseProcess(DWORD process, Diagnoses& diagnoses)
{
    const std::wstring number = std::to_wstring(process);
    const Presence exitEvent =
        PresenceOf(OpenEventW(SYNCHRONIZE, FALSE, FormatText(kExitEvent, {number}).c_str()));
    const wchar_t* state =
        exitEvent == Presence::Absent
            ? L"does not refresh: another process of the host does, or the library is not up"
            : L"refreshes the catalogue";
    const bool isElevated = IsElevated(process);
    diagnoses.push_back(
        {isElevated ? Level::Warning : Level::Ok, L"process " + number,
         std::wstring(state) + (isElevated ? L"; is elevated" : L""),
         isElevated ? L"do not run the launcher elevated: Store applications refuse to be started, and "
                      L"it works with the catalogue of its account"
                    : L""});
}

void DiagnoseInstanceMutex(const std::wstring& host, bool hasProcess, Diagnoses& diagnoses)
{
    const std::wstring name = FormatText(kInstanceMutex, {host});
    const Presence presence = PresenceOfMutex(name);
    if (presence == Presence::Absent) {
        diagnoses.push_back(
            {Level::Ok, L"first refresh", L"nobody is in it: there is no mutex " + name, L""});
    } else if (!hasProcess) {
        diagnoses.push_back(
            {Level::Problem, L"first refresh",
             L"somebody has the mutex " + name + L", and no process of the host runs",
             L"as long as it is there, no host refreshes, and without a preset none starts: find out "
             L"which program has made it"});
    } else {
        diagnoses.push_back(
            {presence == Presence::Denied ? Level::Warning : Level::Ok, L"first refresh",
             L"a process is in it: there is the mutex " + name +
                 (presence == Presence::Denied ? L", which may not be opened" : L""),
             presence == Presence::Denied
                 ? L"an elevated process has made it: do not mix elevated and other processes of a host"
                 : L""});
    }
}

void DiagnoseTurn(const std::wstring& catalogue, Diagnoses& diagnoses)
{
    std::wstring name(kTurnMutex);
    name += catalogue;
    name.resize(std::min<std::size_t>(name.size(), MAX_PATH - 1));
    std::replace(name.begin(), name.end(), L'\\', L'/');
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    switch (PresenceOfMutex(name)) {
    case Presence::Absent:
        diagnoses.push_back({Level::Ok, L"turn at the file", L"nobody reads or saves the catalogue", L""});
        break;
    case Presence::There:
        diagnoses.push_back(
            {Level::Ok, L"turn at the file",
             L"a process reads or saves the catalogue just now, or waits for it",
             L"if that lasts longer than some seconds, a program keeps the turn to itself: nothing is "
             L"saved meanwhile"});
        break;
    case Presence::Denied:
        diagnoses.push_back({Level::Warning, L"turn at the file", L"its mutex may not be opened",
                             L"an elevated process has made it: nothing is saved meanwhile"});
        break;
    }
}

} // namespace

void DiagnoseProcesses(const std::wstring& host, Diagnoses& diagnoses)
{
    if (host.empty()) {
        return;
    }
    const std::wstring name = HostNameOf(host);
    const std::vector<DWORD> processes = ProcessesOf(name);
    if (processes.empty()) {
        diagnoses.push_back({Level::Ok, L"processes", L"no process of " + name + L" runs", L""});
    }
    for (const DWORD process : processes) {
        DiagnoseProcess(process, diagnoses);
    }
    DiagnoseInstanceMutex(name, !processes.empty(), diagnoses);
    DiagnoseTurn(FileOfHost(host, kCatalogueFile), diagnoses);
}
