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

} // namespace

DWORD GetSetting(Setting setting) noexcept
{
    DWORD value = 0;
    DWORD size = sizeof(value);
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, settingsKey, NameOf(setting), RRF_RT_REG_DWORD,
                                        nullptr, &value, &size);
    return status == ERROR_SUCCESS ? value : 0;
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
    for (DWORD size = MAX_PATH * sizeof(wchar_t);;) {
        std::wstring path(size / sizeof(wchar_t), L'\0');
        const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, settingsKey, journalValue, RRF_RT_REG_SZ,
                                            nullptr, path.data(), &size);
        if (status == ERROR_SUCCESS) {
            path.resize(size / sizeof(wchar_t));
            path.resize(wcsnlen(path.c_str(), path.size()));
            return path;
        }
        if (status != ERROR_MORE_DATA) {
            return {};
        }
    }
}

bool SetJournalPath(const std::wstring& path) noexcept
{
    if (path.empty()) {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_CURRENT_USER, settingsKey, journalValue);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    const auto size = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_CURRENT_USER, settingsKey, journalValue, REG_SZ, path.c_str(), size) ==
           ERROR_SUCCESS;
}

} // namespace standin
