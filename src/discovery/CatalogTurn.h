#pragma once

#include "common/UniqueHandle.h"

#include <windows.h>

// A turn at the catalogue file: while one process saves it, or reads it at its start, those others that want
// to do the same wait. Two saves at once would mix, and a start in the middle of a save would take the half
// that is written for all of it. The turn is a named mutex of the file's own; a process or a thread that dies
// gives it up. It lasts as long as the object, and belongs to the thread that made it.
class CatalogTurn
{
public:
    // Of somebody who does not take turns.
    CatalogTurn() noexcept = default;
    // Waits until the file is free, 5 s at most, or until the exit event, which may be null, is signalled.
    explicit CatalogTurn(const wchar_t* catalogPath, HANDLE exitEvent = nullptr) noexcept;
    ~CatalogTurn();
    CatalogTurn(const CatalogTurn&) = delete;
    CatalogTurn& operator=(const CatalogTurn&) = delete;

    // S_OK: the file is free, or it cannot be found out whether it is. S_FALSE: the exit event ended the
    // wait, or no turn was asked for. A sharing violation: another process kept the file to itself all the
    // time, or has it and lets this one not wait.
    [[nodiscard]] HRESULT Result() const noexcept { return m_result; }

private:
    UniqueHandle m_mutex; // held; or none
    HRESULT m_result = S_FALSE;
};
