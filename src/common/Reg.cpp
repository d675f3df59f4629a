#include "common/Reg.h"

#include "common/DiagnosticLog.h"
#include "common/UniqueHandle.h"

namespace {

constexpr wchar_t kSettingsKey[] = L"Software\\Vel\\VELQAN\\QanHelper";
constexpr wchar_t kBrowserKey[] = L"Software\\Microsoft\\Internet Explorer\\Main";
constexpr wchar_t kTileValue[] = L"ApplicationTileImmersiveActivation";

constexpr DWORD kDefaultDebugLog = 0;
constexpr DWORD kDefaultManifestReader = 1;
constexpr DWORD kDefaultRefreshMinutes = 720;
constexpr DWORD kDefaultClearClipboardWait = 1000;
constexpr DWORD kDefaultTileActivation = 1;
constexpr DWORD kMillisecondsPerMinute = 60000;

LSTATUS QueryDword(HKEY key, const wchar_t* name, DWORD* value, DWORD* type) noexcept
{
    *type = REG_DWORD;
    DWORD size = sizeof *value;
    return RegQueryValueExW(key, name, nullptr, type, reinterpret_cast<BYTE*>(value), &size);
}

// A setting, or its default when it cannot be read: a failed query may leave anything in the buffer.
DWORD ReadSetting(const wchar_t* name, DWORD defaultValue) noexcept
{
    DWORD value = defaultValue;
    return CQanhReg::GetDWORDRegVal(name, &value) ? value : defaultValue;
}

} // namespace

int CQanhReg::GetDWORDRegVal(const wchar_t* valueName, DWORD* pValue) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::GetDWORDRegVal";
    LogIn(kName);
    UniqueRegistryKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSettingsKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS) {
        LogOut(kName);
        return 0;
    }
    DWORD type = REG_DWORD;
    const LSTATUS status = QueryDword(key.Get(), valueName, pValue, &type);
    key.Reset();
    return LogOutNumber(kName, status == ERROR_SUCCESS && type == REG_DWORD ? 1 : 0);
}

DWORD CQanhReg::IsDebugLogOn() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::IsDebugLogOn";
    LogIn(kName);
    const DWORD on = ReadSetting(L"DebugLog", kDefaultDebugLog) != 0 ? 1u : 0u;
    LogOutNumber(kName, static_cast<int>(on));
    return on;
}

DWORD CQanhReg::GetManifestReaderSetting() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::GetManifestReaderSetting";
    LogIn(kName);
    DWORD choice = ReadSetting(L"ManifestReaderSetting", kDefaultManifestReader);
    if (choice >= 2) {
        choice = kDefaultManifestReader;
    }
    LogOutNumber(kName, static_cast<int>(choice));
    return choice;
}

DWORD CQanhReg::GetRefreshInterval() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::GetRefreshInterval";
    LogIn(kName);
    const DWORD minutes = ReadSetting(L"RefreshInterval", kDefaultRefreshMinutes);
    // Deliberate: the line tells the minutes as they stand in the registry, the caller gets milliseconds.
    LogOutNumber(kName, static_cast<int>(minutes));
    return minutes * kMillisecondsPerMinute;
}

DWORD CQanhReg::GetClearClipboardWaitTime() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::GetClearClipboardWaitTime";
    LogIn(kName);
    const DWORD wait = ReadSetting(L"ClearClipboardWaitTime", kDefaultClearClipboardWait);
    LogOutNumber(kName, static_cast<int>(wait));
    return wait;
}

LSTATUS CQanhReg::GetCurrentTileImmersiveActivation(DWORD* pdwTileImmersiveActivation,
                                                    DWORD* pdwType) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::GetCurrentTileImmersiveActivation";
    LogIn(kName);
    *pdwTileImmersiveActivation = kDefaultTileActivation;
    DWORD type = REG_DWORD;
    UniqueRegistryKey key;
    LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, kBrowserKey, 0, KEY_READ, key.Put());
    if (status == ERROR_SUCCESS) {
        status = QueryDword(key.Get(), kTileValue, pdwTileImmersiveActivation, &type);
        key.Reset();
    }
    if (pdwType) {
        *pdwType = type;
    }
    DiagnosticLog::WriteLine("%S OUT(*pdwTileImmersiveActivation = %d)\r\n", kName,
                             static_cast<int>(*pdwTileImmersiveActivation));
    return status;
}

int CQanhReg::SetCurrentTileImmersiveActivation(DWORD dwValue) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::SetCurrentTileImmersiveActivation";
    DiagnosticLog::WriteLine("%S(%d) IN\r\n", kName, static_cast<int>(dwValue));
    UniqueRegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kBrowserKey, 0, KEY_WRITE, key.Put()) != ERROR_SUCCESS) {
        return LogOutNumber(kName, 0);
    }
    const LSTATUS status = RegSetValueExW(key.Get(), kTileValue, 0, REG_DWORD,
                                          reinterpret_cast<const BYTE*>(&dwValue), sizeof dwValue);
    key.Reset();
    LogOut(kName);
    return status == ERROR_SUCCESS ? 1 : 0;
}

int CQanhReg::DeleteTileImmersiveActivation() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhReg::DeleteTileImmersiveActivation";
    LogIn(kName);
    UniqueRegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kBrowserKey, 0, KEY_WRITE, key.Put()) != ERROR_SUCCESS) {
        return LogOutNumber(kName, 0);
    }
    const LSTATUS status = RegDeleteValueW(key.Get(), kTileValue);
    key.Reset();
    LogOut(kName);
    return status == ERROR_SUCCESS ? 1 : 0;
}
