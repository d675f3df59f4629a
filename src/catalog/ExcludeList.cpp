#include "catalog/ExcludeList.h"

#include "common/OutOfMemory.h"

HRESULT ExcludeList::AddUnique(const wchar_t* name) noexcept
{
    if (m_known.Contains(name)) {
        return S_FALSE;
    }
    return CatchOutOfMemory([&] {
        std::list<WideString> entry;
        entry.emplace_back(name);
        m_known.Add(entry.front().c_str());
        m_names.splice(m_names.end(), entry);
        return S_OK;
    });
}
