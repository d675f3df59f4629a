#include "standin/Settings.h"

namespace standin {

namespace {

// Those that are texts (REG_SZ).
constexpr SettingDescription journalSetting = {L"Journal", L"the journal's path; absent: no journal"};
constexpr SettingDescription packageStoreSetting = {
    L"PackageStore", L"the folder of the packages; absent: there are no packages"};
constexpr SettingDescription languageSetting = {L"Language",
                                                L"the language of the packages' texts; absent: en-US"};

std::wstring Describe(const SettingDescription& setting)
{
    constexpr size_t meaningColumn = 26;
    std::wstring line = setting.name;
    line.resize(meaningColumn, L' ');
    return line + setting.meaning + L"\r\n";
}

const wchar_t* NameOf(Setting setting) noexcept
{
    return settings[static_cast<size_t>(setting)].name;
}

// Empty when the value is absent or of another type.
std::wstring GetText(const wchar_t* name)
{
    for (DWORD size = MAX_PATH * sizeof(wchar_t);;) {
        std::wstring text(size / sizeof(wchar_t), L'\0');
        const LSTATUS status =
            RegGetValueW(HKEY_CURRENT_USER, settingsKey, name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
        if (status == ERROR_SUCCESS) {
            text.resize(size / sizeof(wchar_t));
            text.resize(wcsnlen(text.c_str(), text.size()));
            return text;
        }
        if (status != ERROR_MORE_DATA) {
            return {};
        }
    }
}

bool SetText(const wchar_t* name, const std::wstring& text) noexcept
{
    if (text.empty()) {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_CURRENT_USER, settingsKey, name);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_CURRENT_USER, settingsKey, name, REG_SZ, text.c_str(), size) == ERROR_SUCCESS;
}

} // namespace

std::wstring DescribeSwitches()
{
    std::wstring text = std::wstring(L"Below HKEY_CURRENT_USER\\") + settingsKey + L", REG_DWORD:\r\n\r\n";
    for (const SettingDescription& setting : settings) {
        text += Describe(setting);
    }
    text += L"\r\nREG_SZ:\r\n\r\n";
    for (const SettingDescription& setting : {journalSetting, packageStoreSetting, languageSetting}) {
        text += Describe(setting);
    }
    return text;
}

DWORD GetSetting(Setting setting) noexcept
{
    DWORD value = 0;
    DWORD size = sizeof(value);
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, settingsKey, NameOf(setting), RRF_RT_REG_DWORD,
                                        nullptr, &value, &size);
    return status == ERROR_SUCCESS ? value : 0;
}

HRESULT GetFailure(Setting setting) noexcept
{
    const auto value = static_cast<HRESULT>(GetSetting(setting));
    return FAILED(value) ? value : S_OK;
}

bool SetSetting(Setting setting, DWORD value) noexcept
{
    return RegSetKeyValueW(HKEY_CURRENT_USER, settingsKey, NameOf(setting), REG_DWORD, &value,
                           sizeof(value)) == ERROR_SUCCESS;
}

bool ClearSettings() noexcept
{
    const LSTATUS status = RegDeleteTreeW(HKEY_CURRENT_USER, settingsKey);
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

std::wstring GetJournalPath()
{
    return GetText(journalSetting.name);
}

bool SetJournalPath(const std::wstring& path) noexcept
{
    return SetText(journalSetting.name, path);
}

std::wstring GetPackageStorePath()
{
    return GetText(packageStoreSetting.name);
}

bool SetPackageStorePath(const std::wstring& path) noexcept
{
    return SetText(packageStoreSetting.name, path);
}

std::wstring GetLanguage()
{
    const std::wstring language = GetText(languageSetting.name);
    return language.empty() ? defaultLanguage : language;
}

bool SetLanguage(const std::wstring& language) noexcept
{
    return SetText(languageSetting.name, language);
}

} // namespace standin
