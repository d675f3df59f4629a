#include "catalog/ExcludeList.h"

#include <cwchar>
#include <exception>

HRESULT ExcludeList::AddUnique(const wchar_t* name) noexcept
{
    for (const WideString& entry : m_names) {
        if (_wcsicmp(entry.c_str(), name) == 0) {
            return S_FALSE;
        }
    }
    try {
        m_names.emplace_back(name);
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}
