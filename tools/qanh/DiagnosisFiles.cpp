#include "Diagnosis.h"

#include "Applications.h"
#include "Catalogue.h"
#include "Document.h"
#include "Failure.h"
#include "Findings.h"
#include "FolderEntries.h"
#include "LogTexts.h"
#include "common/FormatText.h"
#include "common/Xml.h"

#include <algorithm>
#include <optional>

namespace {

using Level = Diagnosis::Level;

constexpr unsigned long long kUnitsPerSecond = 10000000;
constexpr unsigned kSecondsPerDay = 86400;
constexpr unsigned long long kLargeLog = 100000000; // bytes

struct FileFacts
{
    unsigned long long size = 0;
    unsigned long long age = 0; // seconds since it was written
};

unsigned long long Joined(DWORD high, DWORD low)
{
    return (static_cast<unsigned long long>(high) << 32) | low;
}

std::optional<FileFacts> FactsOf(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const unsigned long long written =
        Joined(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime);
    const unsigned long long present = Joined(now.dwHighDateTime, now.dwLowDateTime);
    return FileFacts{Joined(data.nFileSizeHigh, data.nFileSizeLow),
                     present > written ? (present - written) / kUnitsPerSecond : 0};
}

DWORD EffectiveOf(std::wstring_view name)
{
    for (const Setting& setting : ReadSettings()) {
        if (setting.name == name) {
            return setting.effective;
        }
    }
    return 0;
}

std::wstring Facts(const std::wstring& path, const FileFacts& facts)
{
    return FormatText(L"%s, %s, written %s ago", {path, SizeText(facts.size), AgeText(facts.age)});
}

void DiagnoseFindings(const std::wstring& path, const CQanhAppNameList& list, Diagnoses& diagnoses)
{
    const std::vector<Finding> findings = FindingsOf(ReadDocument(path), list, false);
    const auto problems = std::count_if(findings.begin(), findings.end(),
                                        [](const Finding& finding) { return finding.isProblem; });
    if (problems != 0) {
        diagnoses.push_back({Level::Warning, L"catalogue",
                             L"problems in the file: " + std::to_wstring(problems),
                             L"qanh check tells which"});
    }
}

void DiagnosePreset(const std::wstring& host, Diagnoses& diagnoses)
{
    // It stands beside the executable, whose folder only a path tells.
    const std::size_t backslash = host.rfind(L'\\');
    if (backslash == std::wstring::npos) {
        return;
    }
    const std::wstring path = host.substr(0, backslash) + L"\\PresetAppNameList.xml";
    const std::optional<FileFacts> facts = FactsOf(path);
    diagnoses.push_back(
        facts ? Diagnosis{Level::Ok, L"preset", Facts(path, *facts), L""}
              : Diagnosis{Level::Warning, L"preset", L"there is none: " + path,
                          L"ship one, even an empty one: without it, a second process may fail to start"});
}

// For somebody who does not know what the host is called.
void DiagnoseHosts(Diagnoses& diagnoses)
{
    try {
        std::wstring names;
        std::wstring pattern = FileOfHost(L"*", L"");
        pattern.pop_back(); // the backslash behind it
        ForEachEntry(pattern, [&names](const WIN32_FIND_DATAW& entry) {
            const std::wstring name = entry.cFileName;
            if (name.front() != L'.' && FactsOf(FileOfHost(name, kCatalogueFile))) {
                names += (names.empty() ? L"" : L", ") + name;
            }
        });
        diagnoses.push_back({Level::Ok, L"hosts",
                             names.empty() ? L"none has a catalogue of this user"
                                           : L"with a catalogue of this user: " + names,
                             L""});
    } catch (const Failure& failure) {
        diagnoses.push_back({Level::Problem, L"hosts", failure.what,
                             L"the library needs this variable as well: ask again with the user's whole "
                             L"environment"});
    }
}

} // namespace

std::wstring SizeText(unsigned long long bytes)
{
    std::wstring digits = std::to_wstring(bytes);
    for (std::size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, L",");
    }
    return digits + (bytes == 1 ? L" byte" : L" bytes");
}

std::wstring AgeText(unsigned long long seconds)
{
    struct Unit
    {
        unsigned long long seconds;
        const wchar_t* name;
    };
    constexpr Unit kUnits[] = {{kSecondsPerDay, L"day"}, {3600, L"hour"}, {60, L"minute"}, {1, L"second"}};
    for (const Unit& unit : kUnits) {
        if (seconds >= unit.seconds) {
            const unsigned long long count = seconds / unit.seconds;
            return std::to_wstring(count) + L" " + unit.name + (count == 1 ? L"" : L"s");
        }
    }
    return L"0 seconds";
}

void DiagnoseCatalogue(const CommandLine& line, Diagnoses& diagnoses)
{
    if (line.host.empty() && line.catalogue.empty()) {
        if (line.log.empty()) {
            DiagnoseHosts(diagnoses);
        }
        return;
    }
    DiagnosePreset(line.host, diagnoses);
    const std::wstring path = CataloguePath(line);
    if (FactsOf(path + L".bak")) {
        diagnoses.push_back(
            {Level::Warning, L"catalogue",
             L"there is a rollback file: a save is going on, or was cut off: " + path + L".bak",
             L"leave it: the next start of the host brings the old catalogue back"});
    }
    const std::optional<FileFacts> facts = FactsOf(path);
    if (!facts) {
        diagnoses.push_back(
            {Level::Problem, L"catalogue", L"there is none: " + path,
             L"start the host once and wait for its first refresh, which ends with the saving; if "
             L"there is still none, qanh log --errors tells why"});
        return;
    }
    CQanhAppNameList list;
    const HRESULT hr = list.Load(path.c_str());
    const HRESULT result = FAILED(hr) && hr != Xml::kInputEnds ? hr : ReadDocument(path).CutOff();
    if (FAILED(result)) {
        diagnoses.push_back({Level::Problem, L"catalogue",
                             Facts(path, *facts) + L"; cannot be read to its end: " + Described(result),
                             L"qanh check tells where; the host's next pass writes it anew"});
        return;
    }
    const std::size_t count = ApplicationsOf(list).size();
    if (count == 0) {
        diagnoses.push_back({Level::Problem, L"catalogue", Facts(path, *facts) + L", without any application",
                             L"nothing is excluded from any search: qanh log --errors tells why"});
        return;
    }
    const std::wstring text = Facts(path, *facts) + L", " + std::to_wstring(count) +
                              (count == 1 ? L" application" : L" applications");
    const unsigned long long interval = EffectiveOf(L"RefreshInterval") * 60ULL;
    const bool isOld = facts->age > interval + kSecondsPerDay;
    diagnoses.push_back(
        {isOld ? Level::Warning : Level::Ok, L"catalogue", text,
         isOld ? L"older than the refresh interval by a day: no host has run, or its passes fail; qanh "
                 L"log --errors tells why"
               : L""});
    DiagnoseFindings(path, list, diagnoses);
}

void DiagnoseLog(const CommandLine& line, Diagnoses& diagnoses)
{
    if (line.host.empty() && line.log.empty()) {
        return;
    }
    const std::wstring path = LogPath(line);
    const bool isOn = EffectiveOf(L"DebugLog") != 0;
    const std::optional<FileFacts> facts = FactsOf(path);
    if (!facts) {
        diagnoses.push_back(
            {isOn ? Level::Warning : Level::Ok, L"log", L"there is none: " + path,
             isOn ? L"it is on: it begins with the host's next QanhInitialize, in a folder that is there"
                  : L""});
    } else if (facts->size > kLargeLog) {
        diagnoses.push_back(
            {Level::Warning, L"log", Facts(path, *facts), L"nothing ever shortens it: delete it"});
    } else {
        diagnoses.push_back({Level::Ok, L"log",
                             Facts(path, *facts) + (isOn ? L"; it is on"
                                                         : L"; it is off, unless a host runs that was "
                                                           L"started while it was on"),
                             L""});
    }
}
