#include "Commands.h"

#include "Catalogue.h"
#include "Explanation.h"
#include "Json.h"
#include "Lines.h"
#include "LogLine.h"
#include "LogTexts.h"
#include "Text.h"
#include "common/FormatText.h"

#include <algorithm>

namespace {

// A rival that the search lists first, no application of this name, one that the query excludes, or a query
// that the log does not hold.
bool HasProblem(const Explanation& explanation)
{
    return explanation.called.empty() || !explanation.ownName.empty() ||
           explanation.logLineBytes > kLogLineBytes ||
           std::any_of(explanation.leftIn.begin(), explanation.leftIn.end(),
                       [](const LeftInName& name) { return name.comesFirst; });
}

std::wstring JsonText(const std::wstring& path, bool isWhole, const CommandLine& line,
                      const Explanation& explanation)
{
    Json excluded = Json::array();
    for (const ExcludedName& entry : explanation.excluded) {
        excluded.push_back({{"Name", JsonOf(entry.name)},
                            {"Rule", JsonOf(entry.rule)},
                            {"Application", JsonOf(entry.application)}});
    }
    Json leftIn = Json::array();
    for (const LeftInName& entry : explanation.leftIn) {
        leftIn.push_back({{"Name", JsonOf(entry.name)},
                          {"Reason", JsonOf(entry.reason.kind)},
                          {"Detail", JsonOf(entry.reason.detail)},
                          {"ComesFirst", entry.comesFirst},
                          {"Application", JsonOf(entry.application)}});
    }
    return TextOf(Json{{"Catalogue", JsonOf(path)},
                       {"IsCut", !isWhole},
                       {"Name", JsonOf(line.name)},
                       {"Query", JsonOf(explanation.query)},
                       {"LogLineBytes", explanation.logLineBytes},
                       {"LogLineCodePage", line.codePage.value_or(GetACP())},
                       {"LogLineRoom", kLogLineBytes},
                       {"Found", explanation.isFound},
                       {"ExcludesItself", !explanation.ownName.empty()},
                       {"Called", JsonOf(explanation.called)},
                       {"Excluded", std::move(excluded)},
                       {"LeftIn", std::move(leftIn)}});
}

// A heading with its lines below it, each of them indented.
std::wstring Section(const std::wstring& heading, const std::wstring& lines)
{
    return heading + L":" + (lines.empty() ? L" none\n" : L"\n" + lines);
}

std::wstring Text(const CommandLine& line, const Explanation& explanation)
{
    const std::wstring codePage =
        line.codePage ? L" in code page " + std::to_wstring(*line.codePage) : std::wstring();
    std::wstring text = L"Query: " + Shown(explanation.query) + L"\n";
    text +=
        FormatText(L"Log line: %s of %s bytes%s%s\n",
                   {std::to_wstring(explanation.logLineBytes), std::to_wstring(kLogLineBytes), codePage,
                    explanation.logLineBytes > kLogLineBytes ? L": with the log on, it ends the host" : L""});
    text += FormatText(L"Search mode 2 pastes: %s\n",
                       {explanation.isFound ? Shown(line.name) : std::wstring(L"the query")});
    std::wstring called;
    for (const Application& application : explanation.called) {
        called += L"  " + LineOf(application) + L"\n";
    }
    std::wstring excluded;
    for (const ExcludedName& entry : explanation.excluded) {
        excluded +=
            FormatText(L"  %s\t%s\t%s\t%s\n", {Shown(entry.name), entry.rule, KindOf(entry.application),
                                               Shown(PlaceOf(entry.application))});
    }
    std::wstring leftIn;
    for (const LeftInName& entry : explanation.leftIn) {
        std::wstring reason = entry.reason.kind;
        if (!entry.reason.detail.empty()) {
            reason += L": " + entry.reason.detail;
        }
        if (entry.comesFirst) {
            reason += L"; comes first and is started instead";
        }
        leftIn += FormatText(L"  %s\t%s\t%s\t%s\n", {Shown(entry.name), reason, KindOf(entry.application),
                                                     Shown(PlaceOf(entry.application))});
    }
    return text + Section(L"Called so", called) + Section(L"Excluded", excluded) +
           Section(L"Left in", leftIn);
}

} // namespace

Answer Explain(const CommandLine& line)
{
    if (line.name.empty()) {
        throw WrongUse{L"the name is empty"};
    }
    const std::wstring path = CataloguePath(line);
    CQanhAppNameList list;
    const bool isWhole = LoadCatalogue(path, list);
    const Explanation explanation = ExplainLaunch(list, line.name, LogCodePage(line));
    Answer answer;
    answer.text = line.isJson ? JsonText(path, isWhole, line, explanation) : Text(line, explanation);
    if (HasProblem(explanation)) {
        answer.status = Status::No;
    }
    if (explanation.called.empty()) {
        answer.problem = L"no application that is installed is called \"" + line.name + L"\"";
    } else if (!explanation.ownName.empty()) {
        answer.problem = L"the query excludes the application itself, by \"" + explanation.ownName + L"\"";
    }
    return answer;
}
