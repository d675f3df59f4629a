#pragma once

#include <windows.h>

// The registry values that the library reads and writes. Stateless: every call opens the key, reads or
// writes, and closes it. Callable from every thread.
//
// Settings of the library, below HKEY_LOCAL_MACHINE "Software\Vel\VELQAN\QanHelper", REG_DWORD, never
// written:
//
//   value                   default  accepted     returned
//   DebugLog                0        any          1 when not 0, else 0
//   ManifestReaderSetting   1        0 and 1      the value
//   RefreshInterval         720      any          minutes as milliseconds, in unsigned 32 bits (wraps)
//   ClearClipboardWaitTime  1000     any          the value, in milliseconds
//
// What is absent, of another type or not accepted counts as its default; no getter fails.
class CQanhReg
{
public:
    CQanhReg() = delete;

    // Reads a setting of the library. Returns 1 when a REG_DWORD was read into *pValue, else 0; *pValue may
    // then hold anything.
    [[nodiscard]] static int GetDWORDRegVal(const wchar_t* valueName, DWORD* pValue) noexcept;

    [[nodiscard]] static DWORD IsDebugLogOn() noexcept;
    [[nodiscard]] static DWORD GetManifestReaderSetting() noexcept;
    [[nodiscard]] static DWORD GetRefreshInterval() noexcept;
    [[nodiscard]] static DWORD GetClearClipboardWaitTime() noexcept;

    // The browser's tile setting, "ApplicationTileImmersiveActivation" below HKEY_CURRENT_USER
    // "Software\Microsoft\Internet Explorer\Main".

    // Reads it into *pdwTileImmersiveActivation, preset to 1. Returns the registry's status: 0,
    // or the Win32 error of opening the key or querying the value. A value of another type is read with
    // status 0; pdwType, when not null, receives the type.
    [[nodiscard]] static LSTATUS GetCurrentTileImmersiveActivation(DWORD* pdwTileImmersiveActivation,
                                                                   DWORD* pdwType = nullptr) noexcept;
    // Both return 1 when the value was written or deleted, else 0. The key is never created.
    [[nodiscard]] static int SetCurrentTileImmersiveActivation(DWORD dwValue) noexcept;
    [[nodiscard]] static int DeleteTileImmersiveActivation() noexcept;
};
