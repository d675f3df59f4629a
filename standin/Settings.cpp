#include "standin/Settings.h"

namespace standin {

namespace {

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

const wchar_t* NameOf(TextSetting setting) noexcept
{
    return textSettings[static_cast<size_t>(setting)].name;
}

} // namespace

std::wstring DescribeSwitches()
{
    std::wstring text = std::wstring(L"Below HKEY_CURRENT_USER\\") + settingsKey + L", REG_DWORD:\r\n\r\n";
    for (const SettingDescription& setting : settings) {
        text += Describe(setting);
    }
    text += L"\r\nREG_SZ:\r\n\r\n";
    for (const SettingDescription& setting : textSettings) {
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

std::wstring GetText(TextSetting setting)
{
    for (DWORD size = MAX_PATH * sizeof(wchar_t);;) {
        std::wstring text(size / sizeof(wchar_t), L'\0');
        const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, settingsKey, NameOf(setting), RRF_RT_REG_SZ,
                                            nullptr, text.data(), &size);
        if (status == ERROR_SUCCESS) {
            text.resize(wcsnlen(text.c_str(), text.size()));
            return text;
        }
        if (status != ERROR_MORE_DATA) {
            return {};
        }
    }
}

bool SetText(TextSetting setting, const std::wstring& text) noexcept
{
    if (text.empty()) {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_CURRENT_USER, settingsKey, NameOf(setting));
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_CURRENT_USER, settingsKey, NameOf(setting), REG_SZ, text.c_str(), size) ==
           ERROR_SUCCESS;
}

std::wstring GetLanguage()
{
    const std::wstring language = GetText(TextSetting::Language);
    return language.empty() ? defaultLanguage : language;
}

} // namespace standin
