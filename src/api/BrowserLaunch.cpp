// The export that starts the browser by the Start screen's search.

#include "QanHelper.h"
#include "api/Arguments.h"
#include "common/DiagnosticLog.h"

HRESULT QANH_CALL QanhLaunchIEBySearch(DWORD tileMode, DWORD searchMode, BOOL useExcludeList)
{
    static constexpr wchar_t kName[] = L"QanhLaunchIEBySearch";
    DiagnosticLog::WriteLine("%S(%d, %d, %d) IN\r\n", kName, static_cast<int>(tileMode),
                             static_cast<int>(searchMode), useExcludeList);
    const HRESULT hr = FAILED(CheckMode(tileMode)) ? E_INVALIDARG : CheckMode(searchMode);
    return LogOut(kName, FAILED(hr) ? hr : E_NOTIMPL);
}
