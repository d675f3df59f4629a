#ifndef QANHELPER_H
#define QANHELPER_H
#include <windows.h>
#define QANH_CALL WINAPI
#ifdef __cplusplus
extern "C" {
#endif
HRESULT QANH_CALL QanhInitialize(void);
void QANH_CALL QanhFinalize(void);
void QANH_CALL QanhReleaseString(LPWSTR str);
HRESULT QANH_CALL QanhIsInstalled(LPCWSTR packageName, BOOL* pIsInstalled);
HRESULT QANH_CALL QanhIsInstalledByAppUserModeID(LPCWSTR appUserModelId, BOOL* pIsInstalled);
HRESULT QANH_CALL QanhGetAppDisplayNameByPFN(LPCWSTR packageFamilyName, LPWSTR* ppDisplayName);
HRESULT QANH_CALL QanhLaunchBySearch(LPCWSTR appName, DWORD searchMode, BOOL useExcludeList);
HRESULT QANH_CALL QanhLaunchIEBySearch(DWORD tileMode, DWORD searchMode, BOOL useExcludeList);
HRESULT QANH_CALL QanhLaunchByManager(LPCWSTR appUserModelId, LPCWSTR arguments);
#ifdef __cplusplus
}
#endif
#endif
