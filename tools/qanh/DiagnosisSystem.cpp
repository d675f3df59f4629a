#include "Diagnosis.h"

#include "Failure.h"
#include "QanHelper.h"
#include "Text.h"
#include "common/FormatText.h"
#include "common/UniqueHandle.h"

#include <objbase.h>
#include <shobjidl.h>
#include <wrl/client.h>

namespace {

using Level = Diagnosis::Level;

struct Version
{
    DWORD major = 0;
    DWORD minor = 0;
    DWORD build = 0;
};

// The system's own answer: GetVersionEx() tells programs what they were made for.
Version SystemVersion()
{
    using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (const HMODULE system = GetModuleHandleW(L"ntdll.dll")) {
        const FARPROC function = GetProcAddress(system, "RtlGetVersion");
        if (function) {
            // By way of another pointer: the compilers doubt every direct way.
            reinterpret_cast<RtlGetVersionFunction>(reinterpret_cast<void*>(function))(&version);
        }
    }
    return {version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber};
}

void DiagnoseVersion(Diagnoses& diagnoses)
{
    const Version version = SystemVersion();
    const std::wstring text = FormatText(
        L"Windows %s.%s, build %s",
        {std::to_wstring(version.major), std::to_wstring(version.minor), std::to_wstring(version.build)});
    const bool isBefore = version.major < 6 || (version.major == 6 && version.minor < 2);
    if (isBefore) {
        diagnoses.push_back({Level::Problem, L"system", text + L": there is no Start screen before Windows 8",
                             L"the library is for Windows 8 and 8.1"});
    } else if (version.major > 6) {
        diagnoses.push_back({Level::Problem, L"system",
                             text + L": there is no search pane; a launch by search pastes and presses Enter "
                                    L"in the window that is in front",
                             L"launch by ID, or start the shortcut"});
    } else {
        diagnoses.push_back({Level::Ok, L"system", text, L""});
    }
}

void DiagnoseSearchPane(Diagnoses& diagnoses)
{
    HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const bool isEntered = SUCCEEDED(hr);
    BOOL isStartScreen = FALSE;
    {
        Microsoft::WRL::ComPtr<IAppVisibility> visibility;
        hr = CoCreateInstance(CLSID_AppVisibility, nullptr, CLSCTX_INPROC_SERVER,
                              IID_PPV_ARGS(visibility.GetAddressOf()));
        if (SUCCEEDED(hr)) {
            hr = visibility->IsLauncherVisible(&isStartScreen);
        }
    }
    if (isEntered) {
        CoUninitialize();
    }
    if (FAILED(hr)) {
        diagnoses.push_back(
            {Level::Problem, L"search pane",
             L"the system does not tell what the screen shows: " + Described(hr),
             L"without that, QanhInitialize fails and nothing is launched by search: is this a "
             L"desktop session of Windows 8 with Explorer as its shell?"});
    } else {
        diagnoses.push_back({Level::Ok, L"search pane",
                             isStartScreen ? L"the system tells what the screen shows: the Start screen"
                                           : L"the system tells what the screen shows: not the Start screen",
                             L""});
    }
}

void DiagnoseElevation(Diagnoses& diagnoses)
{
    UniqueHandle token;
    TOKEN_ELEVATION elevation{};
    DWORD size = sizeof elevation;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) ||
        !GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof elevation, &size)) {
        diagnoses.push_back({Level::Warning, L"elevation",
                             L"it cannot be told: " + Described(HRESULT_FROM_WIN32(GetLastError())), L""});
    } else if (elevation.TokenIsElevated) {
        diagnoses.push_back(
            {Level::Warning, L"elevation",
             L"this prompt is elevated: catalogue, packages and rights are those of its account",
             L"ask again from an ordinary prompt, and do not run the launcher elevated"});
    } else {
        diagnoses.push_back({Level::Ok, L"elevation", L"this prompt is not elevated", L""});
    }
}

} // namespace

void DiagnoseSystem(Diagnoses& diagnoses)
{
    diagnoses.push_back({Level::Ok, L"qanh", L"version " + FromUtf8(QANH_VERSION_STRING), L""});
    DiagnoseVersion(diagnoses);
    DiagnoseSearchPane(diagnoses);
    DiagnoseElevation(diagnoses);
}
