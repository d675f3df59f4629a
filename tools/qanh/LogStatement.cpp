#include "LogStatement.h"

#include "Text.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr std::wstring_view kEntry = L" IN";
constexpr std::wstring_view kExit = L" OUT";
constexpr std::wstring_view kEntryWithArguments = L") IN";
constexpr std::wstring_view kEntryBeforeArguments = L" IN(";

// How a message that names no operation begins.
constexpr std::wstring_view kBareNotes[] = {
    L"dwMode = ",
    L"Errcode = ",
    L"OpenMutex() : Mutex none.",
    L"m_AppNameList.Load() failed. ErrCode = ",
    L"CreateEventW() failed. ErrCode = ",
    L"CreateThread() failed. ErrCode = ",
};
// What a message tells behind the name of its operation.
constexpr std::wstring_view kNotes[] = {
    L" szKeyword = ",
    L" CreateMutex()",
    L" SHCreateDirectoryEx ",
    L" Refresh app name list!",
    L" RefreshMetroApps() ",
    L" pPyxPackageManager->",
    L" ERROR ",
    L" Error (0x",
    L" ms-resource = ",
};
constexpr std::wstring_view kSwitchFails = L" OUT : GetMonitorState(";
constexpr std::wstring_view kAddLinkFileToList = L"CQanhPackageManager::AddLinkFileToList";
constexpr std::wstring_view kGetPackageManager = L"CQanhPackageManager::GetPackageManager";
constexpr std::wstring_view kLinks = L"\\*.lnk Errcode = ";
constexpr std::wstring_view kInternetLinks = L"\\*.url Errcode = ";

bool IsOfName(wchar_t character) noexcept
{
    return (L'a' <= character && character <= L'z') || (L'A' <= character && character <= L'Z') ||
           character == L':' || character == L'_';
}

// The name of the operation that the message begins with; empty when it begins with something else.
std::wstring_view OperationOf(std::wstring_view message)
{
    const auto end = std::find_if_not(message.begin(), message.end(), IsOfName);
    const std::wstring_view name = message.substr(0, static_cast<std::size_t>(end - message.begin()));
    return name.starts_with(L"Qanh") || (name.starts_with(L"CQanh") && name.find(L"::") != name.npos)
               ? name
               : std::wstring_view();
}

std::wstring_view Trimmed(std::wstring_view text)
{
    while (!text.empty() && text.front() == L' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == L' ') {
        text.remove_suffix(1);
    }
    return text;
}

// "(0x00000000)" without its parentheses, if they belong together.
std::wstring_view Inside(std::wstring_view text)
{
    text = Trimmed(text);
    if (text.size() >= 2 && text.front() == L'(' && text.find(L')') == text.size() - 1) {
        text = text.substr(1, text.size() - 2);
    }
    return Trimmed(text);
}

LogStatement Statement(LogStatement::Kind kind, std::wstring_view operation, std::wstring_view text)
{
    return {kind, std::wstring(operation), std::wstring(text)};
}

LogStatement ParseBare(std::wstring_view message)
{
    using Kind = LogStatement::Kind;
    if (message.find(kLinks) != message.npos || message.find(kInternetLinks) != message.npos) {
        // It takes the place of the exit, and tells the pattern that nothing was found for.
        return Statement(Kind::Exit, kAddLinkFileToList, Trimmed(message));
    }
    if (message.starts_with(L"Errcode = ")) {
        return Statement(Kind::Exit, kRefreshDesktopApps, Trimmed(message));
    }
    if (message.starts_with(kSwitchFails)) {
        return Statement(Kind::Note, kSwitchToStartScreen, Trimmed(message));
    }
    return Statement(BeginsWithOne(message, kBareNotes) ? Kind::Note : Kind::Foreign, {}, Trimmed(message));
}

} // namespace

LogStatement ParseStatement(const std::wstring& text)
{
    using Kind = LogStatement::Kind;
    const std::wstring_view message(text);
    const std::wstring_view operation = OperationOf(message);
    if (operation.empty()) {
        return ParseBare(message);
    }
    const std::wstring_view rest = message.substr(operation.size());
    if (rest == kEntry) {
        return Statement(Kind::Entry, operation, {});
    }
    if (rest.starts_with(L'(') && rest.ends_with(kEntryWithArguments)) {
        return Statement(Kind::Entry, operation,
                         rest.substr(1, rest.size() - 1 - kEntryWithArguments.size()));
    }
    if (rest.starts_with(kEntryBeforeArguments) && rest.ends_with(L')')) {
        const std::size_t begin = kEntryBeforeArguments.size();
        return Statement(Kind::Entry, operation, rest.substr(begin, rest.size() - 1 - begin));
    }
    if (rest == kExit || rest.starts_with(L" OUT(") || rest.starts_with(L" OUT ")) {
        const LogStatement exit = Statement(Kind::Exit, operation, Inside(rest.substr(kExit.size())));
        // A platform's message does not end this operation: its exit comes behind.
        const bool isOnItsWay = operation == kRefreshMetroApps && !exit.text.starts_with(L"0x") &&
                                !exit.text.starts_with(L"GetPackageManager");
        return isOnItsWay ? Statement(Kind::Note, operation, exit.text) : exit;
    }
    if (BeginsWithOne(rest, kNotes)) {
        return Statement(Kind::Note, operation, Trimmed(rest));
    }
    if (operation == kGetPackageManager && rest.starts_with(L' ')) {
        return Statement(Kind::Exit, operation, Trimmed(rest)); // the platform's message
    }
    return Statement(Kind::Foreign, {}, message);
}
