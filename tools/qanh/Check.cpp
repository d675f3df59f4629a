#include "Commands.h"

#include "Catalogue.h"
#include "Document.h"
#include "Findings.h"
#include "Json.h"
#include "Output.h"
#include "Text.h"
#include "common/FormatText.h"

#include <algorithm>

namespace {

std::wstring JsonText(const std::wstring& path, const std::vector<Finding>& findings, bool isPreset)
{
    Json list = Json::array();
    for (const Finding& finding : findings) {
        list.push_back({{"Line", finding.place.line},
                        {"Column", finding.place.column},
                        {"IsProblem", finding.isProblem},
                        {"Text", JsonOf(finding.text)}});
    }
    return TextOf(
        Json{{"Catalogue", JsonOf(path)}, {"FitAsPreset", isPreset}, {"Findings", std::move(list)}});
}

std::wstring Text(const std::vector<Finding>& findings, bool isPreset)
{
    std::wstring text;
    for (const Finding& finding : findings) {
        text += FormatText(L"%s:%s\t%s\t%s\n",
                           {std::to_wstring(finding.place.line), std::to_wstring(finding.place.column),
                            finding.isProblem ? Coloured(L"problem", Colour::Problem) : L"note",
                            Shown(finding.text)});
    }
    return text + (isPreset ? L"Fit as a preset: yes\n" : L"Fit as a preset: no\n");
}

} // namespace

Answer Check(const CommandLine& line)
{
    if (!line.file.empty()) {
        RefuseCatalogue(line);
    }
    const std::wstring path = line.file.empty() ? CataloguePath(line) : line.file;
    const Document document = ReadDocument(path);
    CQanhAppNameList list;
    // What ended the reading is among the findings.
    (void)list.Load(path.c_str());
    const std::vector<Finding> findings = FindingsOf(document, list, line.isHere || !line.host.empty());
    const bool hasProblem = std::any_of(findings.begin(), findings.end(),
                                        [](const Finding& finding) { return finding.isProblem; });
    const bool isPreset = document.isWhole && SUCCEEDED(document.ended);
    Answer answer;
    answer.text = line.isJson ? JsonText(path, findings, isPreset) : Text(findings, isPreset);
    answer.status = hasProblem ? Status::No : Status::Done;
    return answer;
}
