#pragma once

#include "CommandLine.h"

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

// Something that the doctor looked at.
struct Diagnosis
{
    enum class Level
    {
        Ok,
        Warning, // works, but not as well as it could, or not for long
        Problem, // does not work
    };

    Level level;
    std::wstring subject;
    std::wstring text;
    std::wstring advice; // what to do; empty where there is nothing to do
};
using Diagnoses = std::vector<Diagnosis>;

// Each adds what it finds. Whatever is opened to be looked at is closed at once; nothing is made or changed.

// Windows, the search pane, and with which rights the tool itself runs.
void DiagnoseSystem(Diagnoses& diagnoses);
void DiagnoseSettings(Diagnoses& diagnoses);
// The catalogue and the preset, as far as the command line names them; when it names nothing, which hosts
// there are.
void DiagnoseCatalogue(const CommandLine& line, Diagnoses& diagnoses);
void DiagnoseLog(const CommandLine& line, Diagnoses& diagnoses);
// The processes of the host and the objects by which they agree.
void DiagnoseProcesses(const std::wstring& host, Diagnoses& diagnoses);

// All of these, as far as the command line says where to look.
[[nodiscard]] Diagnoses Diagnose(const CommandLine& line);
[[nodiscard]] const wchar_t* NameOf(Diagnosis::Level level);

// A setting of the library as it stands in the registry, and what takes effect.
struct Setting
{
    const wchar_t* name;
    DWORD effective;
    std::wstring why; // "absent: the default"
    bool isOdd;       // it stands there and does not count
};
[[nodiscard]] std::vector<Setting> ReadSettings();

// "5,321 bytes"; "12 minutes".
[[nodiscard]] std::wstring SizeText(unsigned long long bytes);
[[nodiscard]] std::wstring AgeText(unsigned long long seconds);
