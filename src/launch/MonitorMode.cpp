#include "launch/MonitorMode.h"

#include "common/DiagnosticLog.h"
#include "launch/KeyEmulate.h"

#include <cstring>
#include <cwchar>

namespace {

constexpr wchar_t kSearchPaneClass[] = L"SearchPane";
constexpr int kNoObject = -1;
constexpr int kQueryFailed = -2;

constexpr DWORD kPoll = 100; // milliseconds
constexpr int kStartScreenPolls = 20;
constexpr int kSearchPanePolls = 200;
constexpr DWORD kSearchPaneSettles = 200; // milliseconds

int ModeOf(BOOL isLauncherVisible, const MONITOR_APP_VISIBILITY& visibility) noexcept
{
    // The shell may answer with a value that the enumeration does not hold: it is looked at as a number.
    UINT32 value = 0;
    static_assert(sizeof value == sizeof visibility);
    std::memcpy(&value, &visibility, sizeof value);
    switch (value) {
    case MAV_UNKNOWN:
        return CQanhMonitorMode::kUnknown;
    case MAV_NO_APP_VISIBLE:
        return isLauncherVisible ? CQanhMonitorMode::kStartScreen : CQanhMonitorMode::kDesktop;
    case MAV_APP_VISIBLE:
        return isLauncherVisible ? CQanhMonitorMode::kStartScreen : CQanhMonitorMode::kStoreApp;
    default:
        return CQanhMonitorMode::kStoreApp;
    }
}

} // namespace

HRESULT CQanhMonitorMode::Initialize() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhMonitorMode::Initialize";
    LogIn(kName);
    HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(hr)) {
        DiagnosticLog::WriteLine("%S OUT CoInitializeEx:(%d)\r\n", kName, static_cast<int>(hr));
        return hr;
    }
    hr =
        CoCreateInstance(CLSID_AppVisibility, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&m_pImmersiveMode));
    if (FAILED(hr)) {
        CoUninitialize();
        m_pImmersiveMode = nullptr;
        DiagnosticLog::WriteLine("%S OUT CoCreateInstance:(%d)\r\n", kName, static_cast<int>(hr));
        return hr;
    }
    return LogOutNumber(kName, static_cast<int>(hr));
}

void CQanhMonitorMode::Finalize() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhMonitorMode::Finalize";
    LogIn(kName);
    if (m_pImmersiveMode) {
        m_pImmersiveMode->Release();
        m_pImmersiveMode = nullptr;
    }
    CoUninitialize();
    LogOut(kName);
}

int CQanhMonitorMode::GetMonitorState(int* pdwMode) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhMonitorMode::GetMonitorState";
    LogIn(kName);
    if (!pdwMode) {
        return LogOutNumber(kName, kNoObject);
    }
    if (!m_pImmersiveMode) {
        DiagnosticLog::WriteLine("%S OUT( m_pImmersiveMode NULL : %d)\r\n", kName, kNoObject);
        return kNoObject;
    }
    BOOL isLauncherVisible = FALSE;
    if (FAILED(m_pImmersiveMode->IsLauncherVisible(&isLauncherVisible))) {
        DiagnosticLog::WriteLine("%S OUT(%d) IsLauncherVisible Err \r\n", kName, kQueryFailed);
        return kQueryFailed;
    }
    const HMONITOR monitor = MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY);
    MONITOR_APP_VISIBILITY visibility = MAV_UNKNOWN;
    if (FAILED(m_pImmersiveMode->GetAppVisibilityOnMonitor(monitor, &visibility))) {
        DiagnosticLog::WriteLine("%S OUT(%d) MonitorFromPoint(%d)\r\n", kName, kQueryFailed,
                                 static_cast<int>(reinterpret_cast<INT_PTR>(monitor)));
        return kQueryFailed;
    }
    *pdwMode = ModeOf(isLauncherVisible, visibility);
    if (*pdwMode == kUnknown) {
        DiagnosticLog::WriteLine("%S OUT(%d) dwMode()\r\n", kName, 0);
    } else {
        DiagnosticLog::WriteLine("%S OUT(%d) dwMode(%d)\r\n", kName, 0, *pdwMode);
    }
    return 0;
}

int CQanhMonitorMode::SwitchToStartScreen() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhMonitorMode::SwitchToStartScreen";
    LogIn(kName);
    int dwMode = kUnknown;
    const int result = GetMonitorState(&dwMode);
    if (result != 0) {
        // Deliberate: the place of the operation's name stays empty in this line.
        DiagnosticLog::WriteLine("%S OUT : GetMonitorState(%d) \r\n", L"", result);
        return LogOutNumber(kName, result);
    }
    DiagnosticLog::WriteLine("dwMode = %d \r\n", dwMode);
    if (dwMode != kStartScreen) {
        CQanhKeyEmulate::Sendinput_Win();
        for (int poll = 0; poll < kStartScreenPolls && dwMode != kStartScreen; ++poll) {
            Sleep(kPoll);
            (void)GetMonitorState(&dwMode); // a state that cannot be read is asked for again
            DiagnosticLog::WriteLine("dwMode = %d \r\n", dwMode);
        }
    }
    return LogOutNumber(kName, result);
}

HRESULT CQanhMonitorMode::OpenAppSearchUI() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhMonitorMode::OpenAppSearchUI";
    LogIn(kName);
    int dwMode = kUnknown;
    if (GetMonitorState(&dwMode) != 0) {
        DiagnosticLog::WriteLine("%S OUT(GetMonitorState : ret=0x%08X)\r\n", kName,
                                 static_cast<unsigned>(E_FAIL));
        return E_FAIL;
    }
    if (dwMode != kStartScreen) {
        const int result = SwitchToStartScreen();
        if (result != 0) {
            DiagnosticLog::WriteLine("%S OUT(OpenAppSearchUI : ret=0x%08X)\r\n", kName,
                                     static_cast<unsigned>(result));
            return E_FAIL;
        }
    }
    CQanhKeyEmulate::SendInput_Win_Q();
    for (int poll = 0; poll < kSearchPanePolls; ++poll) {
        Sleep(kPoll);
        if (IsSearchPaneForeground()) {
            break;
        }
    }
    Sleep(kSearchPaneSettles);
    return LogOut(kName, S_OK);
}

BOOL CQanhMonitorMode::IsSearchPaneForeground() noexcept
{
    const HWND window = GetForegroundWindow();
    if (!window) {
        return FALSE;
    }
    wchar_t className[MAX_PATH] = {};
    GetClassNameW(window, className, MAX_PATH);
    return std::wcscmp(className, kSearchPaneClass) == 0;
}
