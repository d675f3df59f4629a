#pragma once

#include <windows.h>

#include <string>

// The switches of the stand-in desktop. They live in the registry under settingsKey, are read at the moment
// of use by the desktop and by the platform library, and are written by tests only. Every value is a
// REG_DWORD but the journal's path; an absent value counts as 0. All functions may be called on any thread.
namespace standin {

inline constexpr wchar_t settingsKey[] = L"Software\\StandInDesktop"; // below HKEY_CURRENT_USER
inline constexpr wchar_t journalValue[] = L"Journal";                 // REG_SZ, absent: no journal

enum class Setting
{
    StartScreenDelay,
    StartScreenNever,
    PaneDelay,
    PaneNever,
    LosePastes,
    VisibilityUnknown,
    AppVisible,
    FailLauncherQuery,
    FailMonitorQuery,
    FailCreate,
};

struct SettingDescription
{
    Setting setting;
    const wchar_t* name; // of the registry value
    const wchar_t* meaning;
};

inline constexpr SettingDescription settings[] = {
    {Setting::StartScreenDelay, L"StartScreenDelay", L"milliseconds by which the Start screen comes late"},
    {Setting::StartScreenNever, L"StartScreenNever", L"not 0: the Start screen does not come at all"},
    {Setting::PaneDelay, L"PaneDelay", L"milliseconds by which the search pane comes late"},
    {Setting::PaneNever, L"PaneNever", L"not 0: the search pane does not come at all"},
    {Setting::LosePastes, L"LosePastes", L"number of pastes that a newly opened search pane ignores"},
    {Setting::VisibilityUnknown, L"VisibilityUnknown", L"not 0: every monitor's state is MAV_UNKNOWN"},
    {Setting::AppVisible, L"AppVisible", L"not 0: every monitor's state is MAV_APP_VISIBLE"},
    {Setting::FailLauncherQuery, L"FailLauncherQuery", L"HRESULT that IsLauncherVisible gives, 0: none"},
    {Setting::FailMonitorQuery, L"FailMonitorQuery",
     L"HRESULT that GetAppVisibilityOnMonitor gives, 0: none"},
    {Setting::FailCreate, L"FailCreate", L"HRESULT that creating the app-visibility object gives, 0: none"},
};

// The switch's value, 0 when it is absent or of another type.
[[nodiscard]] DWORD GetSetting(Setting setting) noexcept;

// Returns false when the registry refuses.
bool SetSetting(Setting setting, DWORD value) noexcept;

// Removes all switches and the journal's path. Returns false when the registry refuses; nothing to remove is
// fine.
bool ClearSettings() noexcept;

// The journal's path, empty when there is none.
[[nodiscard]] std::wstring GetJournalPath();

// An empty path removes the value.
bool SetJournalPath(const std::wstring& path) noexcept;

} // namespace standin
