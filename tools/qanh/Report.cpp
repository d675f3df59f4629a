#include "Commands.h"

#include "Catalogue.h"
#include "Diagnosis.h"
#include "Document.h"
#include "Failure.h"
#include "File.h"
#include "Findings.h"
#include "Json.h"
#include "LogTexts.h"
#include "ReportPage.h"
#include "Text.h"
#include "common/FormatText.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::string_view kPlace = "QANH_PAGE_DATA";
constexpr std::size_t kMostFailures = 500;

// For a script element of the page: nothing in it ends the element.
std::string ScriptText(const Json& json)
{
    std::string text;
    for (const char character : json.dump(-1, ' ', true)) {
        switch (character) {
        case '<':
            text += "\\u003c";
            break;
        case '>':
            text += "\\u003e";
            break;
        case '&':
            text += "\\u0026";
            break;
        default:
            text += character;
        }
    }
    return text;
}

std::wstring Now()
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    wchar_t text[32];
    _snwprintf_s(text, 32, _TRUNCATE, L"%04d-%02d-%02d %02d:%02d", now.wYear, now.wMonth, now.wDay, now.wHour,
                 now.wMinute);
    return text;
}

// What cannot be read is a problem that the report tells of.
template <typename Add> void AddOrTell(Json& json, Add add)
{
    try {
        add();
    } catch (const Failure& failure) {
        json["Problems"].push_back(JsonOf(failure.what + L": " + Described(failure.result)));
    }
}

void AddCatalogue(const std::wstring& path, bool isHere, Json& json)
{
    const Document document = ReadDocument(path);
    CQanhAppNameList list;
    // What ended the reading is among the findings.
    (void)list.Load(path.c_str());
    json["Applications"] = JsonOf(ApplicationsOf(list));
    for (const Finding& finding : FindingsOf(document, list, isHere)) {
        json["Findings"].push_back(
            {{"Line", finding.place.line}, {"IsProblem", finding.isProblem}, {"Text", JsonOf(finding.text)}});
    }
}

void AddLog(const CommandLine& line, Json& json)
{
    const std::wstring path = LogPath(line);
    LogLines lines(path, LogCodePage(line));
    LogSummary summary(0);
    const LogExtent extent = ReadCalls(lines, summary);
    const std::size_t count = summary.failures.size();
    if (count > kMostFailures) {
        summary.failures.erase(summary.failures.begin(), summary.failures.end() - kMostFailures);
    }
    Json log{{"Path", JsonOf(path)}};
    log.update(JsonOf(extent));
    log["Launches"] = JsonOfLaunches(summary);
    log["RefreshPasses"] = JsonOfPasses(summary);
    log["FailureCount"] = count;
    log["Failures"] = JsonOfFailures(summary);
    json["Log"] = std::move(log);
}

Json DataOf(const CommandLine& line)
{
    const bool hasCatalogue = !line.host.empty() || !line.catalogue.empty();
    Json json{{"Made", JsonOf(Now())},
              {"Catalogue", hasCatalogue ? JsonOf(CataloguePath(line)) : Json(nullptr)},
              {"Applications", Json::array()},
              {"Findings", Json::array()},
              {"Problems", Json::array()},
              {"Diagnoses", JsonOf(Diagnose(line))},
              {"Log", nullptr}};
    if (hasCatalogue) {
        AddOrTell(json, [&] { AddCatalogue(CataloguePath(line), !line.host.empty(), json); });
    }
    // A host need not have a log.
    if (!line.log.empty() ||
        (!line.host.empty() && GetFileAttributesW(LogPath(line).c_str()) != INVALID_FILE_ATTRIBUTES)) {
        AddOrTell(json, [&] { AddLog(line, json); });
    }
    return json;
}

} // namespace

Answer Report(const CommandLine& line)
{
    if (line.host.empty() && line.catalogue.empty() && line.log.empty()) {
        throw WrongUse{L"a report of what? Give --host NAME, --catalogue FILE or --log FILE"};
    }
    if (line.output.empty()) {
        throw WrongUse{L"the name of the file to make is empty"};
    }
    const Json data = DataOf(line);
    const std::string_view page(kReportPage);
    const std::size_t place = page.find(kPlace);
    std::string report(page.substr(0, place));
    report += ScriptText(data);
    report += page.substr(place + kPlace.size());
    WriteNewFile(line.output, FromUtf8(report));
    Answer answer;
    if (line.isJson) {
        answer.text = TextOf(Json{{"File", JsonOf(line.output)}, {"Problems", data["Problems"]}});
    }
    for (const Json& problem : data["Problems"]) {
        answer.problem += (answer.problem.empty() ? L"" : L"; ") + FromUtf8(problem.get<std::string>());
        answer.status = Status::No;
    }
    return answer;
}
