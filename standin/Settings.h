#pragma once

#include <windows.h>

#include <string>

// The switches of the stand-in desktop. They live in the registry under settingsKey, are read at the moment
// of use by the desktop and by the platform library, and are written by tests only. Every value is a
// REG_DWORD but three texts; an absent value counts as 0. All functions may be called on any thread.
namespace standin {

inline constexpr wchar_t settingsKey[] = L"Software\\StandInDesktop"; // below HKEY_CURRENT_USER

// REG_SZ
inline constexpr wchar_t journalValue[] = L"Journal";           // absent: no journal
inline constexpr wchar_t packageStoreValue[] = L"PackageStore"; // absent: no packages
inline constexpr wchar_t languageValue[] = L"Language";         // absent: defaultLanguage

inline constexpr wchar_t defaultLanguage[] = L"en-US";

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
    FailPackageFactory,
    FailPackageManager,
    FailFindAll,
    FailFindFamily,
    FailMoveNextAt,
    FailMoveNext,
    FailManifestFactory,
    FailManifestReader,
    FailManifestApplications,
    FailManifestCurrentAt,
    FailManifestStringAt,
    FailManifestMoveNextAt,
    FailActivationManager,
    FailActivation,
    FailResources,
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
    {Setting::FailPackageFactory, L"FailPackageFactory",
     L"HRESULT that getting the package manager's factory gives, 0: none"},
    {Setting::FailPackageManager, L"FailPackageManager",
     L"HRESULT that making a package manager gives, 0: none"},
    {Setting::FailFindAll, L"FailFindAll", L"HRESULT that finding all packages gives, 0: none"},
    {Setting::FailFindFamily, L"FailFindFamily", L"HRESULT that finding a family's packages gives, 0: none"},
    {Setting::FailMoveNextAt, L"FailMoveNextAt",
     L"number of the MoveNext call, from 1, that fails in a collection of packages, 0: none"},
    {Setting::FailMoveNext, L"FailMoveNext", L"HRESULT that this call gives, 0: E_FAIL"},
    {Setting::FailManifestFactory, L"FailManifestFactory",
     L"HRESULT that creating the manifest factory gives, 0: none"},
    {Setting::FailManifestReader, L"FailManifestReader", L"HRESULT that CreateManifestReader gives, 0: none"},
    {Setting::FailManifestApplications, L"FailManifestApplications",
     L"HRESULT that GetApplications gives, 0: none"},
    {Setting::FailManifestCurrentAt, L"FailManifestCurrentAt",
     L"number of the application, from 1, that GetCurrent refuses with E_FAIL, 0: none"},
    {Setting::FailManifestStringAt, L"FailManifestStringAt",
     L"number of the application, from 1, whose GetStringValue gives E_FAIL, 0: none"},
    {Setting::FailManifestMoveNextAt, L"FailManifestMoveNextAt",
     L"number of the application, from 1, behind which MoveNext gives E_FAIL, 0: none"},
    {Setting::FailActivationManager, L"FailActivationManager",
     L"HRESULT that creating the activation manager gives, 0: none"},
    {Setting::FailActivation, L"FailActivation", L"HRESULT that ActivateApplication gives, 0: none"},
    {Setting::FailResources, L"FailResources", L"HRESULT that every look-up of a resource gives, 0: none"},
};

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
