#include "standin/Names.h"
#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/desktop/Desktop.h"

#include <windows.h>

#include <ole2.h>
#include <shellapi.h>

#include <string_view>

namespace {

constexpr wchar_t runningMutexName[] = L"Local\\StandInDesktopRunning";
constexpr DWORD quitTimeout = 10000; // milliseconds

constexpr std::string_view helpText =
    "StandInDesktop: a small Windows 8-like desktop for machines that have none.\r\n"
    "\r\n"
    "  StandInDesktop.exe            runs until it is asked to end\r\n"
    "  StandInDesktop.exe --quit     asks a running one to end and waits for it\r\n"
    "  StandInDesktop.exe --switches lists the switches for tests\r\n"
    "  StandInDesktop.exe --help     shows this text\r\n"
    "\r\n"
    "Windows key: the Start screen. Windows+Q: the search pane. Enter: starts the top hit. Escape: closes "
    "the\r\n"
    "pane. The applications are the shortcuts in the Start-menu Programs folders below ALLUSERSPROFILE and\r\n"
    "APPDATA, and those of the packages in the folder that the switch PackageStore names. The event\r\n"
    "Local\\StandInDesktopReady is set when keys are heard. Switches for tests stand in the registry below\r\n"
    "HKEY_CURRENT_USER\\Software\\StandInDesktop.\r\n"
    "\r\n"
    "Exit code: 0, or 1 when one is running already, when the desktop cannot start or will not end, or when "
    "the\r\n"
    "argument is unknown.\r\n";

// A program without a console of its own: into the pipe, file or console that it was given, else its
// parent's.
void Print(std::string_view text)
{
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if ((output == nullptr || output == INVALID_HANDLE_VALUE) && AttachConsole(ATTACH_PARENT_PROCESS)) {
        output = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                             nullptr, OPEN_EXISTING, 0, nullptr);
    }
    DWORD written = 0;
    WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

int Quit()
{
    const HWND window = FindWindowW(standin::startScreenClass, nullptr);
    if (!window) {
        return 0;
    }
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
    if (!process) {
        return IsWindow(window) ? 1 : 0;
    }
    PostMessageW(window, WM_CLOSE, 0, 0);
    const DWORD result = WaitForSingleObject(process, quitTimeout);
    CloseHandle(process);
    return result == WAIT_OBJECT_0 ? 0 : 1;
}

// Under Wine's X11 driver a window that a window manager would look after takes two seconds to hide when
// there is no window manager. This program's windows do without one; the driver reads the wish when the first
// window is made.
void DeclineWindowManager() noexcept
{
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    if (ntdll && GetProcAddress(ntdll, "wine_get_version")) {
        RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\StandInDesktop.exe\\X11 Driver",
                        L"Managed", REG_SZ, L"N", 2 * sizeof(wchar_t));
    }
}

int RunDesktop()
{
    const HANDLE running = CreateMutexW(nullptr, FALSE, runningMutexName);
    if (!running || GetLastError() == ERROR_ALREADY_EXISTS) {
        Print("A stand-in desktop is running already.\r\n");
        return 1;
    }
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, standin::readyEventName);
    if (!ready) {
        return 1;
    }
    ResetEvent(ready); // a test may still hold the event of an earlier desktop
    DeclineWindowManager();
    int exitCode = 1;
    if (SUCCEEDED(OleInitialize(nullptr))) {
        {
            standin::Desktop desktop;
            if (desktop.Create()) {
                SetEvent(ready);
                exitCode = desktop.Run();
            } else {
                Print("The stand-in desktop cannot create its windows or hear the keyboard.\r\n");
            }
        }
        OleUninitialize();
    }
    ResetEvent(ready);
    CloseHandle(ready);
    CloseHandle(running);
    return exitCode;
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int)
{
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count == 1) {
        return RunDesktop();
    }
    const std::wstring_view argument = arguments && count == 2 ? arguments[1] : L"";
    if (argument == L"--quit") {
        return Quit();
    }
    if (argument == L"--switches") {
        Print(standin::ToUtf8(standin::DescribeSwitches()));
        return 0;
    }
    Print(helpText);
    return argument == L"--help" ? 0 : 1;
}
