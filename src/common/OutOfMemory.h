#pragma once

#include <windows.h>

// Runs an action that makes or appends a record. Whatever it raises counts as out of memory: E_OUTOFMEMORY;
// otherwise its own result.
template <typename Action> [[nodiscard]] HRESULT CatchOutOfMemory(Action action) noexcept
{
    try {
        return action();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}
