#include "catalog/ExcludeList.h"

#include "common/OutOfMemory.h"

#include <cwchar>

HRESULT ExcludeList::AddUnique(const wchar_t* name) noexcept
{
    for (const WideString& entry : m_names) {
        if (_wcsicmp(entry.c_str(), name) == 0) {
            return S_FALSE;
        }
    }
    return CatchOutOfMemory([&] {
        m_names.emplace_back(name);
        return S_OK;
    });
}
