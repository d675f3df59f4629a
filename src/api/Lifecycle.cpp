// The exports that bring the library up and down, and the hand-back of strings.

#include "QanHelper.h"
#include "api/Statics.h"
#include "common/DiagnosticLog.h"
#include "common/Reg.h"

HRESULT QANH_CALL QanhInitialize(void)
{
    static constexpr wchar_t kName[] = L"QanhInitialize";
    // The setting is read on every call; the lines of reading it for the first time are written with the log
    // off.
    const bool isLogOn = CQanhReg::IsDebugLogOn() != 0;
    if (isLogOn) {
        // Before the first line can be written, by whichever thread. Should it fail, the log stays where it
        // was.
        (void)DiagnosticLog::ComposePath();
    }
    DiagnosticLog::SetEnabled(isLogOn);
    LogIn(kName);
    HRESULT hr = S_OK;
    if (s_nCount == 0) {
        hr = s_MonitorMode.Initialize();
        if (FAILED(hr)) {
            DiagnosticLog::WriteLine("%S OUT(s_MonitorMode.Initialize : hr=%d)\r\n", kName,
                                     static_cast<int>(hr));
            return hr;
        }
        hr = s_PackageManager.Initialize();
        if (FAILED(hr)) {
            s_MonitorMode.Finalize();
            DiagnosticLog::WriteLine("%S OUT(s_PackageManager.Initialize : hr=%d)\r\n", kName,
                                     static_cast<int>(hr));
            return hr;
        }
    }
    ++s_nCount;
    DiagnosticLog::WriteLine("%S OUT(%d) : s_nCount(%d)\r\n", kName, static_cast<int>(hr),
                             static_cast<int>(s_nCount));
    return hr;
}

void QANH_CALL QanhFinalize(void)
{
    static constexpr wchar_t kName[] = L"QanhFinalize";
    LogIn(kName);
    --s_nCount;
    if (s_nCount == 0) {
        s_PackageManager.Finalize();
        s_MonitorMode.Finalize();
    } else if (s_nCount < 0) {
        s_nCount = 0;
    }
    DiagnosticLog::WriteLine("%S OUT : s_nCount(%d)\r\n", kName, static_cast<int>(s_nCount));
}

void QANH_CALL QanhReleaseString(LPWSTR str)
{
    static constexpr wchar_t kName[] = L"QanhReleaseString";
    LogIn(kName);
    if (str) {
        LocalFree(str);
    }
    LogOut(kName);
}
