#include "Diagnosis.h"

#include "common/FormatText.h"
#include "common/UniqueHandle.h"

#include <optional>

namespace {

using Level = Diagnosis::Level;

constexpr wchar_t kKey[] = L"Software\\Vel\\VELQAN\\QanHelper";
constexpr DWORD kMillisecondsPerMinute = 60000;
constexpr DWORD kLongestInterval = MAXDWORD / kMillisecondsPerMinute; // minutes

struct Known
{
    const wchar_t* name;
    DWORD defaultValue;
};
constexpr Known kKnown[] = {
    {L"DebugLog", 0},
    {L"ManifestReaderSetting", 1},
    {L"RefreshInterval", 720},
    {L"ClearClipboardWaitTime", 1000},
};

// What stands in one of the registry's two views; the library reads that of 64 bits.
struct Stored
{
    bool isThere = false;
    std::optional<DWORD> value; // none when it is of another type
};

Stored ReadStored(const wchar_t* name, REGSAM view)
{
    UniqueRegistryKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ | view, key.Put()) != ERROR_SUCCESS) {
        return {};
    }
    DWORD value = 0;
    DWORD type = 0;
    DWORD size = sizeof value;
    const LSTATUS status =
        RegQueryValueExW(key.Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    Stored stored;
    stored.isThere = status == ERROR_SUCCESS || status == ERROR_MORE_DATA;
    if (status == ERROR_SUCCESS && type == REG_DWORD) {
        stored.value = value;
    }
    return stored;
}

Setting Read(const Known& known)
{
    const Stored stored = ReadStored(known.name, KEY_WOW64_64KEY);
    if (!stored.isThere) {
        // An installer of 32 bits writes there unless it asks for the other one.
        const bool isInOtherView = ReadStored(known.name, KEY_WOW64_32KEY).isThere;
        return {known.name, known.defaultValue,
                isInOtherView
                    ? L"stands in the 32-bit view alone, which the library does not read: the default"
                    : L"absent: the default",
                isInOtherView};
    }
    if (!stored.value) {
        return {known.name, known.defaultValue, L"is no REG_DWORD and does not count: the default", true};
    }
    if (std::wstring_view(known.name) == L"ManifestReaderSetting" && *stored.value >= 2) {
        return {known.name, known.defaultValue,
                L"is " + std::to_wstring(*stored.value) + L", which counts as 1", true};
    }
    return {known.name, *stored.value, L"set", false};
}

struct Judgement
{
    Level level = Level::Ok;
    const wchar_t* advice = L"";
};

Judgement Judge(std::wstring_view name, DWORD value)
{
    if (name == L"DebugLog" && value != 0) {
        return {Level::Warning,
                L"the log is on: a long name or query ends the host; set it to 0 when you have seen what "
                L"you wanted to see"};
    }
    if (name == L"ManifestReaderSetting" && value == 0) {
        return {Level::Warning,
                L"names that stand in a package's resources are not resolved, and such applications are "
                L"never excluded from a search; set it to 1"};
    }
    if (name == L"RefreshInterval") {
        if (value == 0) {
            return {Level::Problem,
                    L"pass after pass without a pause keeps a processor and the disk busy; set it to 10 "
                    L"or more"};
        }
        if (value > kLongestInterval) {
            return {Level::Problem,
                    L"more minutes than the library can count in milliseconds: it wraps; set it to "
                    L"71,582 or less"};
        }
        if (value < 10) {
            return {Level::Warning, L"short for what a pass costs; 10 minutes and more are sensible"};
        }
    }
    if (name == L"ClearClipboardWaitTime") {
        if (value == INFINITE) {
            return {Level::Problem, L"a launch in search mode 1 never returns; set it to 5000 or less"};
        }
        if (value < 500) {
            return {Level::Warning,
                    L"the pane may read the clipboard when it is empty already; 500 and more are sensible"};
        }
        if (value > 5000) {
            return {Level::Warning,
                    L"a launch in search mode 1 lasts that much longer, with the Shift key pressed; 5000 "
                    L"and less are sensible"};
        }
    }
    return {};
}

std::wstring EffectiveText(std::wstring_view name, DWORD value)
{
    if (name == L"RefreshInterval" && value > kLongestInterval) {
        const DWORD milliseconds = value * kMillisecondsPerMinute;
        return std::to_wstring(value) + L", which makes " + std::to_wstring(milliseconds) + L" milliseconds";
    }
    return std::to_wstring(value);
}

} // namespace

std::vector<Setting> ReadSettings()
{
    std::vector<Setting> settings;
    for (const Known& known : kKnown) {
        settings.push_back(Read(known));
    }
    return settings;
}

void DiagnoseSettings(Diagnoses& diagnoses)
{
    for (const Setting& setting : ReadSettings()) {
        Judgement judgement = Judge(setting.name, setting.effective);
        if (setting.isOdd && judgement.level == Level::Ok) {
            judgement = {Level::Warning,
                         L"write it as a REG_DWORD in the 64-bit view (reg add ... /reg:64), or delete it"};
        }
        diagnoses.push_back(
            {judgement.level, std::wstring(L"setting ") + setting.name,
             FormatText(L"%s (%s)", {EffectiveText(setting.name, setting.effective), setting.why}),
             judgement.advice});
    }
}
