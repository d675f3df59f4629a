#include "Commands.h"

#include "Diagnosis.h"
#include "Json.h"
#include "Output.h"
#include "Text.h"
#include "common/FormatText.h"

#include <algorithm>

namespace {

std::wstring LevelText(Diagnosis::Level level)
{
    switch (level) {
    case Diagnosis::Level::Warning:
        return Coloured(NameOf(level), Colour::Warning);
    case Diagnosis::Level::Problem:
        return Coloured(NameOf(level), Colour::Problem);
    default:
        return NameOf(level);
    }
}

} // namespace

Diagnoses Diagnose(const CommandLine& line)
{
    Diagnoses diagnoses;
    DiagnoseSystem(diagnoses);
    DiagnoseSettings(diagnoses);
    DiagnoseCatalogue(line, diagnoses);
    DiagnoseLog(line, diagnoses);
    DiagnoseProcesses(line.host, diagnoses);
    return diagnoses;
}

const wchar_t* NameOf(Diagnosis::Level level)
{
    switch (level) {
    case Diagnosis::Level::Ok:
        return L"ok";
    case Diagnosis::Level::Warning:
        return L"warning";
    default:
        return L"problem";
    }
}

Answer Doctor(const CommandLine& line)
{
    const Diagnoses diagnoses = Diagnose(line);
    Answer answer;
    if (line.isJson) {
        answer.text = TextOf(Json{{"Diagnoses", JsonOf(diagnoses)}});
    } else {
        for (const Diagnosis& diagnosis : diagnoses) {
            answer.text += FormatText(L"%s\t%s\t%s\n",
                                      {LevelText(diagnosis.level), diagnosis.subject, Shown(diagnosis.text)});
            if (!diagnosis.advice.empty()) {
                answer.text += L"\t\t" + diagnosis.advice + L"\n";
            }
        }
        if (line.host.empty()) {
            answer.text +=
                L"With --host NAME, the doctor looks at the files and processes of that host too.\n";
        }
    }
    const bool hasProblem = std::any_of(diagnoses.begin(), diagnoses.end(), [](const Diagnosis& diagnosis) {
        return diagnosis.level == Diagnosis::Level::Problem;
    });
    answer.status = hasProblem ? Status::No : Status::Done;
    return answer;
}
