#pragma once

#include <windows.h>

// The rollback file of a save, "AppNameList.xml.bak": what stood in the catalogue file before, kept beside it
// until the save is over. The save writes into the catalogue file itself, so one that is cut off, by a
// logoff, a terminated thread or a full disk, would leave neither the old catalogue nor the new one, and what
// only a preset knew would be lost.
//
// A rollback file is always whole: the copy is made as "AppNameList.xml.tmp" and gets its name when all of it
// is on the disk. It never takes the place of another one. While one is there, it counts and the catalogue
// file does not; an empty one says that there was no catalogue file.
//
// Used by whoever has the turn at the catalogue file (CatalogTurn.h), on one thread. It holds no handle
// between two calls, so a thread that is terminated leaves nothing locked.
class CatalogRollback
{
public:
    explicit CatalogRollback(const wchar_t* catalogPath) noexcept;

    // Before a save. A failure when the disk has no room for the copy: the save would begin by emptying the
    // catalogue file, and might find no room either. With any other trouble there is no rollback file, and
    // the save goes ahead without it: S_OK.
    [[nodiscard]] HRESULT Begin() noexcept;

    // After the save, with its result: keeps the new catalogue or brings the old one back. Returns the
    // result, or the failure to bring the new catalogue to the disk.
    [[nodiscard]] HRESULT End(HRESULT saved) noexcept;

    // At a start: brings back what a save that was cut off has left, and clears away an unfinished copy.
    void Restore() const noexcept;

    // The file that counts: as a rule the catalogue file; the rollback file while it is there; null while
    // that one says that there was no catalogue file.
    [[nodiscard]] const wchar_t* WholeFile() const noexcept;

private:
    [[nodiscard]] DWORD Copy() const noexcept;
    void BringBack() const noexcept;

    // Empty where they do not fit: then they cannot be opened.
    wchar_t m_catalog[MAX_PATH];
    wchar_t m_copy[MAX_PATH];
    wchar_t m_rollback[MAX_PATH];
    bool m_isThere = false; // the rollback file, for the save that has begun
};
