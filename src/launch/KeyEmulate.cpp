#include "launch/KeyEmulate.h"

#include "common/DiagnosticLog.h"

namespace {

constexpr wchar_t kSendKeyName[] = L"CQanhKeyEmulate::Sendinput_Key";
constexpr WORD kVirtualKeyQ = 'Q';
constexpr WORD kScanCodeQ = 0x10;

void SendOne(WORD virtualKey, WORD scanCode, DWORD flags, ULONG_PTR extraInfo) noexcept
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    input.ki.wScan = scanCode;
    input.ki.dwFlags = flags;
    input.ki.dwExtraInfo = extraInfo;
    SendInput(1, &input, sizeof input);
}

WORD ScanCode(WORD virtualKey) noexcept
{
    return static_cast<WORD>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
}

} // namespace

void CQanhKeyEmulate::Sendinput_Key(WORD virtualKey, DWORD flags, DWORD pause) noexcept
{
    DiagnosticLog::WriteLine("%S(0x%04X, 0x%08X) IN\r\n", kSendKeyName, static_cast<unsigned>(virtualKey),
                             static_cast<unsigned>(flags));
    SendOne(virtualKey, 0, flags, 0);
    LogOut(kSendKeyName);
    Sleep(pause);
}

void CQanhKeyEmulate::Sendinput_Key(WORD virtualKey, WORD scanCode, DWORD flags, DWORD pause) noexcept
{
    DiagnosticLog::WriteLine("%S(0x%04X, 0x%04X, 0x%08X) IN\r\n", kSendKeyName,
                             static_cast<unsigned>(virtualKey), static_cast<unsigned>(scanCode),
                             static_cast<unsigned>(flags));
    SendOne(virtualKey, scanCode, flags, static_cast<ULONG_PTR>(GetMessageExtraInfo()));
    LogOut(kSendKeyName);
    Sleep(pause);
}

// The flags of the scripts are uneven on purpose: the Windows and Enter keys go down as extended keys and up
// as plain ones, and only the press of Q is marked as a scan code.

void CQanhKeyEmulate::Sendinput_Win() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhKeyEmulate::Sendinput_Win";
    LogIn(kName);
    Sendinput_Key(VK_LWIN, KEYEVENTF_EXTENDEDKEY, 50);
    Sendinput_Key(VK_LWIN, KEYEVENTF_KEYUP, 50);
    LogOut(kName);
}

void CQanhKeyEmulate::SendInput_Win_Q() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhKeyEmulate::SendInput_Win_Q";
    LogIn(kName);
    Sendinput_Key(VK_LWIN, KEYEVENTF_EXTENDEDKEY, 50);
    Sendinput_Key(kVirtualKeyQ, kScanCodeQ, KEYEVENTF_SCANCODE, 50);
    Sendinput_Key(kVirtualKeyQ, kScanCodeQ, KEYEVENTF_KEYUP, 100);
    Sendinput_Key(VK_LWIN, KEYEVENTF_KEYUP, 200);
    LogOut(kName);
}

void CQanhKeyEmulate::SendInput_Enter() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhKeyEmulate::SendInput_Enter";
    LogIn(kName);
    Sendinput_Key(VK_RETURN, KEYEVENTF_EXTENDEDKEY, 50);
    Sendinput_Key(VK_RETURN, KEYEVENTF_KEYUP, 50);
    LogOut(kName);
}

void CQanhKeyEmulate::SendInput_Shift_Insert() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhKeyEmulate::SendInput_Shift_Insert";
    LogIn(kName);
    // Deliberate: Shift stays down. The launch releases it once, after the last paste.
    Sendinput_Key(VK_SHIFT, ScanCode(VK_SHIFT), 0, 50);
    Sendinput_Key(VK_INSERT, ScanCode(VK_INSERT), KEYEVENTF_EXTENDEDKEY, 50);
    Sendinput_Key(VK_INSERT, ScanCode(VK_INSERT), KEYEVENTF_EXTENDEDKEY | KEYEVENTF_KEYUP, 1000);
    LogOut(kName);
}

void CQanhKeyEmulate::SendInput_ShiftUp() noexcept
{
    Sendinput_Key(VK_SHIFT, ScanCode(VK_SHIFT), KEYEVENTF_KEYUP, 50);
}
