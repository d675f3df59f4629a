// The commands that ask about Store packages. The library need not be up for them, and is not: they change
// nothing, and write nothing to the log.

#include "Commands.h"

#include "Driving.h"
#include "Json.h"
#include "Library.h"
#include "Text.h"
#include "common/FormatText.h"

#include <memory>
#include <optional>

namespace {

// The display name of a package, or why it has none.
struct NameAnswer
{
    HRESULT result;
    std::wstring name;
};

NameAnswer AskName(const Library& library, const std::wstring& family)
{
    wchar_t* text = nullptr;
    const HRESULT hr = library.getAppDisplayNameByPfn(family.c_str(), &text);
    // There may be a string although the call failed.
    const std::unique_ptr<wchar_t, decltype(library.releaseString)> owner(text, library.releaseString);
    return {hr, text && SUCCEEDED(hr) ? text : L""};
}

// Why there is no name, when that is an answer.
std::optional<std::wstring> ReasonOf(HRESULT result, const std::wstring& family)
{
    if (result == S_FALSE) {
        return FormatText(L"the manifest of \"%s\" gives no name", {family});
    }
    if (result == QANH_E_NO_PACKAGE) {
        return FormatText(L"no package \"%s\" is installed, or the package manager cannot be reached",
                          {family});
    }
    if (result == QANH_E_SEVERAL_APPLICATIONS) {
        return FormatText(L"the package \"%s\" has several applications, and no name of its own", {family});
    }
    return std::nullopt;
}

void RefuseEmpty(const CommandLine& line, const wchar_t* problem)
{
    if (line.name.empty()) {
        throw WrongUse{problem};
    }
}

} // namespace

Answer Installed(const CommandLine& line)
{
    RefuseOtherHost(line);
    RefuseEmpty(line, L"the ID is empty");
    const std::wstring what =
        FormatText(L"asks the system's package manager for \"%s\"; changes nothing", {line.name});
    if (line.drive.isDryRun) {
        return DryRun(line, {what});
    }
    const Library library(line.drive.dll);
    Announce(what);
    BOOL isInstalled = FALSE;
    const HRESULT hr = library.isInstalledByAppUserModeId(line.name.c_str(), &isInstalled);
    if (hr == E_INVALIDARG) {
        throw WrongUse{FormatText(L"\"%s\" has no package family name in front of its \"!\"", {line.name})};
    }
    if (FAILED(hr)) {
        throw Failure{L"the package manager does not answer", hr};
    }
    Answer answer;
    answer.text = line.isJson ? TextOf(Json{{"ID", JsonOf(line.name)}, {"IsInstalled", isInstalled != FALSE}})
                  : isInstalled ? L"yes\n"
                                : L"no\n";
    answer.status = isInstalled ? Status::Done : Status::No;
    return answer;
}

Answer DisplayName(const CommandLine& line)
{
    RefuseOtherHost(line);
    RefuseEmpty(line, L"the package family name is empty");
    const std::wstring what =
        FormatText(L"reads the display name out of the package \"%s\"; changes nothing", {line.name});
    if (line.drive.isDryRun) {
        return DryRun(line, {what});
    }
    const Library library(line.drive.dll);
    Announce(what);
    const NameAnswer found = AskName(library, line.name);
    const std::optional<std::wstring> reason = ReasonOf(found.result, line.name);
    if (!reason && FAILED(found.result)) {
        throw Failure{FormatText(L"cannot get the display name of \"%s\" out of its manifest", {line.name}),
                      found.result};
    }
    Answer answer;
    if (line.isJson) {
        answer.text = TextOf(Json{{"PackageFamilyName", JsonOf(line.name)},
                                  {"Result", JsonOf(Hexadecimal(found.result))},
                                  {"DisplayName", JsonOf(found.name)}});
    } else if (!reason) {
        answer.text = Shown(found.name) + L"\n";
    }
    if (reason) {
        answer.status = Status::No;
        answer.problem = *reason;
    }
    return answer;
}
