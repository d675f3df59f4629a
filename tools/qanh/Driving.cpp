#include "Driving.h"

#include "Failure.h"
#include "Json.h"
#include "Output.h"
#include "Text.h"
#include "common/FormatText.h"

#include <cstdio>

void RefuseOtherHost(const CommandLine& line)
{
    if (!line.catalogue.empty() || !line.host.empty() || !line.log.empty()) {
        throw WrongUse{line.command +
                       L" drives the library as a host of its own: it takes neither --catalogue, "
                       L"--log nor --host"};
    }
}

void Announce(const std::wstring& what)
{
    WriteText(STD_ERROR_HANDLE, FormatText(L"qanh: %s\n", {Shown(what)}));
}

Answer DryRun(const CommandLine& line, const std::vector<std::wstring>& announced)
{
    Answer answer;
    Json json = Json::array();
    for (const std::wstring& what : announced) {
        json.push_back(JsonOf(what));
        answer.text += Shown(what) + L"\n";
    }
    if (line.isJson) {
        answer.text = TextOf(Json{{"DryRun", std::move(json)}});
    }
    return answer;
}

std::wstring Hexadecimal(HRESULT result)
{
    wchar_t number[16];
    _snwprintf_s(number, 16, _TRUNCATE, L"0x%08X", static_cast<unsigned>(result));
    return number;
}
