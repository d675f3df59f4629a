#pragma once

#include <windows.h>

#include <string>

// The switches of the stand-in desktop. They live in the registry under settingsKey, are read at the moment
// of use by the desktop and by the platform library, and are written by tests only. Every value is a
// REG_DWORD but three texts; an absent value counts as 0. All functions may be called on any thread.
namespace standin {

inline constexpr wchar_t settingsKey[] = L"Software\\StandInDesktop"; // below HKEY_CURRENT_USER

inline constexpr wchar_t defaultLanguage[] = L"en-US";

// The switches that are numbers. Switches.inc lists them.
enum class Setting
{
#define STANDIN_SWITCH(name, meaning) name,
#include "standin/Switches.inc"
#undef STANDIN_SWITCH
};

struct SettingDescription
{
    const wchar_t* name; // of the registry value
    const wchar_t* meaning;
};

// In the order of the enumeration.
inline constexpr SettingDescription settings[] = {
#define STANDIN_SWITCH(name, meaning) {L## #name, meaning},
#include "standin/Switches.inc"
#undef STANDIN_SWITCH
};

// All switches and texts with what they mean, one a line, for people.
[[nodiscard]] std::wstring DescribeSwitches();

// The switch's value, 0 when it is absent or of another type.
[[nodiscard]] DWORD GetSetting(Setting setting) noexcept;

// The switch's value when it is a failure, else S_OK.
[[nodiscard]] HRESULT GetFailure(Setting setting) noexcept;

// Returns false when the registry refuses.
bool SetSetting(Setting setting, DWORD value) noexcept;

// Removes all switches and texts. Returns false when the registry refuses; nothing to remove is
// fine.
bool ClearSettings() noexcept;

// The journal's path, empty when there is none.
[[nodiscard]] std::wstring GetJournalPath();

// An empty path removes the value.
bool SetJournalPath(const std::wstring& path) noexcept;

// The folder of the installed packages, empty when there is none.
[[nodiscard]] std::wstring GetPackageStorePath();

// An empty path removes the value: there are no packages any more.
bool SetPackageStorePath(const std::wstring& path) noexcept;

// The language in which packages give their texts; defaultLanguage when none was chosen.
[[nodiscard]] std::wstring GetLanguage();

// An empty language removes the value.
bool SetLanguage(const std::wstring& language) noexcept;

} // namespace standin
