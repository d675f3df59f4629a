#pragma once

#include <windows.h>

#include <string>

// The switches of the stand-in desktop. They live in the registry under settingsKey, are read at the moment
// of use by the desktop and by the platform library, and are written by tests only. Every value is a
// REG_DWORD or a text (REG_SZ); an absent value counts as 0. All functions may be called on any thread.
namespace standin {

inline constexpr wchar_t settingsKey[] = L"Software\\StandInDesktop"; // below HKEY_CURRENT_USER

inline constexpr wchar_t defaultLanguage[] = L"en-US";

// The switches that are numbers, and those that are texts. Switches.inc lists them.
enum class Setting
{
#define STANDIN_SWITCH(name, meaning) name,
#include "standin/Switches.inc"
};

enum class TextSetting
{
#define STANDIN_TEXT(name, meaning) name,
#include "standin/Switches.inc"
};

struct SettingDescription
{
    const wchar_t* name; // of the registry value
    const wchar_t* meaning;
};

// In the order of the enumerations.
inline constexpr SettingDescription settings[] = {
#define STANDIN_SWITCH(name, meaning) {L## #name, meaning},
#include "standin/Switches.inc"
};

inline constexpr SettingDescription textSettings[] = {
#define STANDIN_TEXT(name, meaning) {L## #name, meaning},
#include "standin/Switches.inc"
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

// Empty when the text is absent or of another type.
[[nodiscard]] std::wstring GetText(TextSetting setting);

// An empty text removes the value. Returns false when the registry refuses.
bool SetText(TextSetting setting, const std::wstring& text) noexcept;

// The language in which packages give their texts; defaultLanguage when none was chosen.
[[nodiscard]] std::wstring GetLanguage();

} // namespace standin
