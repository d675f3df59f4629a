// Which messages of the log tell of a failure, and what each of them means.

#include "LogStatement.h"
#include "Text.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string_view>

namespace {

struct Sentence
{
    const wchar_t* operation; // empty: any
    const wchar_t* part;      // of the text; empty: any
    const wchar_t* sentence;
};

// What several of them mean.
constexpr wchar_t kFewApplications[] =
    L"the start knows no applications, or not all, until the refresh has found them";
constexpr wchar_t kNoRefresh[] = L"the catalogue is not refreshed by this process";
constexpr wchar_t kNotSaved[] = L"the catalogue was not saved; the next pass tries again";
constexpr wchar_t kFewPackages[] = L"the pass found no Store packages, or not all";
constexpr wchar_t kNoPackage[] = L"no package of this family is installed";
constexpr wchar_t kNoFolder[] = L"a folder of the Start menu cannot be read";

// The first one that fits counts.
constexpr Sentence kSentences[] = {
    {L"QanhInitialize", L"s_MonitorMode",
     L"the library did not come up, for want of the object that tells what the screen shows"},
    {L"QanhInitialize", L"s_PackageManager",
     L"the library did not come up: the catalogue could not be set up"},
    {L"QanhLaunchBySearch", L"SwitchToStartScreen",
     L"nothing was started: it could not be told what the screen shows"},
    {L"QanhLaunchBySearch", L"", L"nothing was started"},
    {L"QanhLaunchIEBySearch", L"", L"the browser was not started"},
    {L"QanhLaunchByManager", L"", L"nothing was started: the host handed over no ID"},
    {L"CQanhMonitorMode::Initialize", L"CoInitializeEx",
     L"the host's thread must not be in a multithreaded apartment"},
    {L"CQanhMonitorMode::Initialize", L"",
     L"the system has no object that tells what the screen shows: is it one with a Start screen?"},
    {L"CQanhMonitorMode::GetMonitorState", L"m_pImmersiveMode NULL",
     L"the library is not up: QanhInitialize failed or was not called"},
    {L"CQanhMonitorMode::GetMonitorState", L"", L"the system does not tell what the screen shows"},
    {L"CQanhMonitorMode::", L"", L"the Start screen could not be brought up"},
    {L"CQanhClipboard::", L"ERROR",
     L"the clipboard did not take the text: the launch pasted what it held before"},
    {L"CQanhClipboard::", L"", L"another program held the clipboard: the launch pasted what it held before"},
    {L"CQanhPackageManager::Initialize", L"CreateMutex",
     L"it cannot be told who owns the catalogue: this process does not refresh it"},
    {L"CQanhPackageManager::Initialize", L"", kFewApplications},
    {L"", L"m_AppNameList.Load()", kFewApplications},
    {L"", L"CreateEventW()", kNoRefresh},
    {L"", L"CreateThread()", kNoRefresh},
    {L"CQanhAppNameList::Load", L"",
     L"the catalogue or the preset cannot be opened, or not be read to its end: the start knows no applications, or not all, until the refresh has found them; at a first start without a preset that is as it should be"},
    {L"CQanhAppNameList::ReadDesktopApps", L"", L"the reading of the desktop applications ended early"},
    {L"CQanhPackageManager::CreateAppNameListFolder", L"",
     L"there is no folder for the catalogue and for this log"},
    {L"CQanhPackageManager::RefreshThread", L"Save()", kNotSaved},
    {L"CQanhPackageManager::RefreshThread", L"RefreshMetroApps()", kFewPackages},
    {L"CQanhPackageManager::RefreshThread", L"RefreshDesktopApps",
     L"the pass could not read a folder of the Start menu"},
    {L"CQanhAppNameList::Save", L"", kNotSaved},
    {L"CQanhPackageManager::RefreshMetroApps", L"", kFewPackages},
    {L"CQanhPackageManager::GetPackageManager", L"", L"the system's package manager cannot be had"},
    {L"CQanhPackageManager::FindPackageByName", L"",
     L"the package counts as not installed, for this reason alone"},
    {L"CQanhPackageManager::IsInstalled", L"",
     L"the system could not be asked whether the package is installed"},
    {L"CQanhPackageManager::GetAppDisplayNameByPFN", L"0xA0000001", kNoPackage},
    {L"QanhGetAppDisplayNameByPFN", L"0xA0000001", kNoPackage},
    {L"CQanhPackageManager::GetAppDisplayNameByPFN", L"", L"the name of the package cannot be had"},
    {L"CQanhPackageManager::AddLinkFileToList", L"", kNoFolder},
    {L"CQanhPackageManager::RefreshDesktopApps", L"", kNoFolder},
    {L"CQanhAppNameList::AddMetroPackage", L"",
     L"the manifest of a package cannot be read: it has no names, or keeps the old ones"},
    {L"CQanhManifestReader::", L"", L"the names of a package cannot be read from its manifest"},
};

// Operations that end with a path, of which the log shows the first letter, or with a text that may be any.
constexpr std::wstring_view kEndWithText[] = {
    L"CQanhPackageManager::GetModuleName",
    L"CQanhPackageManager::CreateAppNameListFolder",
    L"CQanhPackageManager::GetPresetAppNameFullPath",
    L"CQanhManifestReader::ConvertMsResourceToString",
};

// What stands before a number at the end of an exit.
constexpr std::wstring_view kBeforeNumbers[] = {
    L"s_MonitorMode.Initialize : hr=",
    L"s_PackageManager.Initialize : hr=",
    L"CoInitializeEx:(",
    L"CoCreateInstance:(",
    L"m_pImmersiveMode NULL : ",
};

// What an operation that fails answers in place of a result: the log has no more of it.
constexpr int kSmallestAnswer = -1000;

constexpr int kNoShortcuts = ERROR_FILE_NOT_FOUND;

std::optional<unsigned> HexadecimalIn(std::wstring_view text)
{
    const std::size_t at = text.find(L"0x");
    if (at == text.npos || text.size() < at + 10) {
        return std::nullopt;
    }
    const std::wstring digits(text.substr(at + 2, 8));
    wchar_t* end = nullptr;
    const unsigned long value = std::wcstoul(digits.c_str(), &end, 16);
    return *end == L'\0' ? std::optional(static_cast<unsigned>(value)) : std::nullopt;
}

// The last number of the text, such as that of "ErrCode = (183)" or "hr=-2147221164)".
std::optional<int> NumberIn(std::wstring_view text)
{
    while (!text.empty() && (text.back() == L')' || text.back() == L' ')) {
        text.remove_suffix(1);
    }
    std::size_t begin = text.size();
    while (begin > 0 && L'0' <= text[begin - 1] && text[begin - 1] <= L'9') {
        --begin;
    }
    if (begin == text.size()) {
        return std::nullopt;
    }
    if (begin > 0 && text[begin - 1] == L'-') {
        --begin;
    }
    return static_cast<int>(std::wcstol(std::wstring(text.substr(begin)).c_str(), nullptr, 10));
}

bool IsFailedResult(std::optional<unsigned> result)
{
    return result && FAILED(static_cast<HRESULT>(*result));
}

LogFailure Explained(const LogStatement& statement, std::optional<HRESULT> result)
{
    const auto fits = [&statement](const Sentence& entry) {
        const std::wstring_view operation(entry.operation);
        const bool isOperation = operation.empty()            ? statement.operation.empty()
                                 : operation.ends_with(L"::") ? statement.operation.starts_with(operation)
                                                              : statement.operation == operation;
        return isOperation && statement.text.find(entry.part) != std::wstring::npos;
    };
    const auto found = std::find_if(std::begin(kSentences), std::end(kSentences), fits);
    return {result, found == std::end(kSentences) ? L"" : found->sentence};
}

LogFailure OfSystemError(const LogStatement& statement, int error)
{
    return Explained(statement, HRESULT_FROM_WIN32(static_cast<DWORD>(error)));
}

std::optional<LogFailure> FailureOfExit(const LogStatement& exit)
{
    if (exit.text.empty() || std::find(std::begin(kEndWithText), std::end(kEndWithText), exit.operation) !=
                                 std::end(kEndWithText)) {
        return std::nullopt;
    }
    if (const std::size_t at = exit.text.rfind(L"Errcode = "); at != std::wstring::npos) {
        const int error = NumberIn(exit.text).value_or(0);
        return error == kNoShortcuts ? std::nullopt : std::optional(OfSystemError(exit, error));
    }
    if (const std::optional<unsigned> result = HexadecimalIn(exit.text)) {
        return IsFailedResult(result) ? std::optional(Explained(exit, static_cast<HRESULT>(*result)))
                                      : std::nullopt;
    }
    const std::wstring_view text(exit.text);
    const bool isValue = text.starts_with(L"*p") || text.starts_with(L": s_nCount");
    if (isValue) {
        return std::nullopt;
    }
    // A number stands first, as in "(0) : s_nCount(1)" and "(-2) MonitorFromPoint(7)", or behind what has
    // failed.
    wchar_t* end = nullptr;
    const wchar_t* begin = exit.text.c_str() + (text.starts_with(L'(') ? 1 : 0);
    const long first = std::wcstol(begin, &end, 10);
    std::optional<int> value;
    if (end != begin && (*end == L'\0' || *end == L')')) {
        value = static_cast<int>(first);
    } else if (BeginsWithOne(text, kBeforeNumbers)) {
        value = NumberIn(text);
    }
    if (!value) {
        return Explained(exit, std::nullopt); // the platform's message
    }
    if (*value >= 0) {
        return std::nullopt;
    }
    return Explained(exit,
                     *value < kSmallestAnswer ? std::optional(static_cast<HRESULT>(*value)) : std::nullopt);
}

std::optional<LogFailure> FailureOfNote(const LogStatement& note)
{
    const std::wstring_view text(note.text);
    const bool isFailure = text.find(L"ailed") != text.npos || text.starts_with(L"ERROR ") ||
                           text.starts_with(L"Error (") || text.starts_with(L"OUT : GetMonitorState");
    if (note.operation == L"CQanhPackageManager::RefreshMetroApps") {
        return Explained(note, std::nullopt); // the platform's message
    }
    if (!isFailure || note.operation.ends_with(L"::ConvertMsResourceToString") ||
        text.starts_with(L"szKeyword = ")) {
        return std::nullopt;
    }
    if (const std::optional<unsigned> result = HexadecimalIn(text)) {
        return Explained(note, static_cast<HRESULT>(*result));
    }
    const std::optional<int> number = NumberIn(text);
    if (!number || *number < 0) {
        return Explained(note, std::nullopt);
    }
    if (text.starts_with(L"SHCreateDirectoryEx") && *number == ERROR_ALREADY_EXISTS) {
        return std::nullopt; // as it should be
    }
    return OfSystemError(note, *number);
}

} // namespace

std::optional<LogFailure> FailureOf(const LogStatement& statement)
{
    switch (statement.kind) {
    case LogStatement::Kind::Exit:
        return FailureOfExit(statement);
    case LogStatement::Kind::Note:
        return FailureOfNote(statement);
    default:
        return std::nullopt;
    }
}
