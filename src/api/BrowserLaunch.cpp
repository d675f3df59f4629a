// The export that starts the browser by the Start screen's search.

#include "QanHelper.h"
#include "api/Modes.h"
#include "common/DiagnosticLog.h"
#include "common/Reg.h"

namespace {

constexpr wchar_t kBrowserName[] = L"Internet Explorer";

// The browser's tile setting for the length of a launch: forced to what the host asks for, then put back.
// Trouble with the registry is never the launch's.
class ForcedTileSetting
{
public:
    explicit ForcedTileSetting(DWORD tileMode) noexcept
    {
        DWORD type = REG_DWORD;
        m_status = CQanhReg::GetCurrentTileImmersiveActivation(&m_oldValue, &type);
        if (m_status == ERROR_SUCCESS && type != REG_DWORD) {
            // A setting of another kind is nobody's business here.
            return;
        }
        m_wasAbsent = m_status == ERROR_FILE_NOT_FOUND;
        const bool isKnown = m_status == ERROR_SUCCESS || m_wasAbsent;
        if (isKnown && tileMode != QANH_TILE_UNCHANGED && tileMode != m_oldValue) {
            CQanhReg::SetCurrentTileImmersiveActivation(tileMode);
            m_isChanged = true;
        }
    }
    ~ForcedTileSetting()
    {
        if (m_wasAbsent) {
            // Whether it was set or not: deleting what is not there does no harm.
            CQanhReg::DeleteTileImmersiveActivation();
        } else if (m_isChanged) {
            CQanhReg::SetCurrentTileImmersiveActivation(m_oldValue);
        }
    }
    ForcedTileSetting(const ForcedTileSetting&) = delete;
    ForcedTileSetting& operator=(const ForcedTileSetting&) = delete;

private:
    LSTATUS m_status = ERROR_SUCCESS;
    DWORD m_oldValue = 1;
    bool m_wasAbsent = false;
    bool m_isChanged = false;
};

} // namespace

HRESULT QANH_CALL QanhLaunchIEBySearch(DWORD tileMode, DWORD searchMode, BOOL useExcludeList)
{
    static constexpr wchar_t kName[] = L"QanhLaunchIEBySearch";
    DiagnosticLog::WriteLine("%S(%d, %d, %d) IN\r\n", kName, static_cast<int>(tileMode),
                             static_cast<int>(searchMode), useExcludeList);
    HRESULT hr = CheckMode(tileMode);
    if (SUCCEEDED(hr)) {
        hr = CheckMode(searchMode);
    }
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    {
        const ForcedTileSetting tileSetting(tileMode);
        hr = QanhLaunchBySearch(kBrowserName, searchMode, useExcludeList);
    }
    return LogOut(kName, hr);
}
