#include "standin/Settings.h"

namespace standin {

namespace {

const wchar_t* NameOf(Setting setting) noexcept
{
    for (const SettingDescription& description : settings) {
        if (description.setting == setting) {
            return description.name;
        }
    }
    return L"";
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
    return GetText(journalValue);
}

bool SetJournalPath(const std::wstring& path) noexcept
{
    return SetText(journalValue, path);
}

std::wstring GetPackageStorePath()
{
    return GetText(packageStoreValue);
}

bool SetPackageStorePath(const std::wstring& path) noexcept
{
    return SetText(packageStoreValue, path);
}

std::wstring GetLanguage()
{
    const std::wstring language = GetText(languageValue);
    return language.empty() ? defaultLanguage : language;
}

bool SetLanguage(const std::wstring& language) noexcept
{
    return SetText(languageValue, language);
}

} // namespace standin
