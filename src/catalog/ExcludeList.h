#pragma once

#include "common/CaseInsensitiveSet.h"
#include "common/WideString.h"

#include <windows.h>

#include <list>

// The names that one search must exclude, in the order in which they were first added. Made and owned by one
// search launch, on the thread of its caller; the records of the catalogue only add to it.
class ExcludeList
{
public:
    ExcludeList() = default;
    ExcludeList(const ExcludeList&) = delete;
    ExcludeList& operator=(const ExcludeList&) = delete;

    // Appends a copy of the name unless an entry equals it ignoring case. S_OK; S_FALSE when it is there
    // already; E_OUTOFMEMORY, with the list as before.
    [[nodiscard]] HRESULT AddUnique(const wchar_t* name) noexcept;

    [[nodiscard]] bool IsEmpty() const noexcept { return m_names.empty(); }
    auto begin() const noexcept { return m_names.begin(); }
    auto end() const noexcept { return m_names.end(); }

private:
    std::list<WideString> m_names;
    CaseInsensitiveSet m_known; // the same names
};
