#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

// What a message of the log says: an operation begins, ends, or tells something on its way.
struct LogStatement
{
    enum class Kind
    {
        Entry,
        Exit,
        Note,
        Foreign, // nothing that the library writes
    };

    Kind kind = Kind::Foreign;
    std::wstring operation; // empty where the message does not name it
    std::wstring text;      // the arguments of an entry, the outcome of an exit, what a note tells
};

// Operations that more than one reader of statements asks for.
constexpr std::wstring_view kSwitchToStartScreen = L"CQanhMonitorMode::SwitchToStartScreen";
constexpr std::wstring_view kRefreshDesktopApps = L"CQanhPackageManager::RefreshDesktopApps";
constexpr std::wstring_view kRefreshMetroApps = L"CQanhPackageManager::RefreshMetroApps";

[[nodiscard]] LogStatement ParseStatement(const std::wstring& message);

// Why something went wrong, as far as the message tells.
struct LogFailure
{
    std::optional<HRESULT> result;
    std::wstring sentence; // what that means for who uses the library; may be empty
};

// None when the exit or the note tells of no failure.
[[nodiscard]] std::optional<LogFailure> FailureOf(const LogStatement& statement);
