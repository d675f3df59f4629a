// The export that starts the browser by the Start screen's search.

#include "QanHelper.h"
#include "api/Modes.h"
#include "common/DiagnosticLog.h"
#include "common/Reg.h"

namespace {

constexpr wchar_t kBrowserName[] = L"Internet Explorer";

// The browser's tile setting for the length of a launch: forced to what the host asks for, then put back.
// What becomes of writing and deleting is dropped: it is logged there, and the launch does not depend on it.
class ForcedTileSetting
{
public:
    explicit ForcedTileSetting(DWORD tileMode) noexcept
    {
        DWORD type = REG_DWORD;
        const LSTATUS status = CQanhReg::GetCurrentTileImmersiveActivation(&m_oldValue, &type);
        if (status == ERROR_SUCCESS && type != REG_DWORD) {
            // A value of another type stays as it is.
            return;
        }
        m_wasAbsent = status == ERROR_FILE_NOT_FOUND;
        const bool isKnown = status == ERROR_SUCCESS || m_wasAbsent;
        if (isKnown && tileMode != QANH_TILE_UNCHANGED && tileMode != m_oldValue) {
            (void)CQanhReg::SetCurrentTileImmersiveActivation(tileMode);
            m_isChanged = true;
        }
    }
    ~ForcedTileSetting()
    {
        if (m_wasAbsent) {
            // Deliberate: whether it was set or not. Deleting a value that is not there does no harm.
            (void)CQanhReg::DeleteTileImmersiveActivation();
        } else if (m_isChanged) {
            (void)CQanhReg::SetCurrentTileImmersiveActivation(m_oldValue);
        }
    }
    ForcedTileSetting(const ForcedTileSetting&) = delete;
    ForcedTileSetting& operator=(const ForcedTileSetting&) = delete;

private:
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
