// The public header in C++, without anything included before it; and the import library.
#include "QanHelper.h"

#include <type_traits>

static_assert(std::is_same_v<decltype(&QanhLaunchBySearch), HRESULT(WINAPI*)(LPCWSTR, DWORD, BOOL)>);
static_assert(std::is_same_v<decltype(&QanhGetAppDisplayNameByPFN), HRESULT(WINAPI*)(LPCWSTR, LPWSTR*)>);
static_assert(QANH_E_NO_PACKAGE == static_cast<HRESULT>(0xA0000001));
static_assert(QANH_E_SEVERAL_APPLICATIONS == static_cast<HRESULT>(0xA0000002));

extern "C" int CheckInCpp(); // for PublicHeader.c

int CheckInCpp()
{
    BOOL flag = 7;
    return QanhIsInstalled(L"family", nullptr) == E_POINTER && QanhIsInstalled(L"", &flag) == E_INVALIDARG &&
                   QanhLaunchBySearch(L"Mail", 3, FALSE) == E_INVALIDARG && flag == 7
               ? 0
               : 1;
}
