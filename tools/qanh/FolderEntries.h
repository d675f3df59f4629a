#pragma once

#include "common/UniqueHandle.h"

#include <windows.h>

#include <string>

// Calls visit(entry) for each file and folder that a pattern ("C:\folder\*") fits, "." and ".." among them.
template <typename Visit> void ForEachEntry(const std::wstring& pattern, Visit visit)
{
    WIN32_FIND_DATAW entry{};
    const UniqueFind find(FindFirstFileW(pattern.c_str(), &entry));
    if (!find) {
        return;
    }
    do {
        visit(entry);
    } while (FindNextFileW(find.Get(), &entry));
}
