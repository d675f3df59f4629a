#include "discovery/CatalogRollback.h"

#include "common/UniqueHandle.h"

#include <cstdio>
#include <optional>

namespace {

constexpr wchar_t kCopyFormat[] = L"%s.tmp";
constexpr wchar_t kRollbackFormat[] = L"%s.bak";

// ERROR_DISK_QUOTA_EXCEEDED, which some toolchains' headers lack.
constexpr DWORD kDiskQuotaExceeded = 1295;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

void Compose(wchar_t (&path)[MAX_PATH], const wchar_t* format, const wchar_t* catalogPath) noexcept
{
    if (_snwprintf_s(path, MAX_PATH, _TRUNCATE, format, catalogPath) < 0) {
        path[0] = L'\0';
    }
}

[[nodiscard]] UniqueFile OpenFile(const wchar_t* path, DWORD access, DWORD sharing,
                                  DWORD disposition) noexcept
{
    return UniqueFile(
        CreateFileW(path, access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// In bytes; nothing when there is no file of this name.
[[nodiscard]] std::optional<ULONGLONG> SizeOf(const wchar_t* path) noexcept
{
    WIN32_FILE_ATTRIBUTE_DATA file{};
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &file) ||
        (file.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    return (ULONGLONG{file.nFileSizeHigh} << 32) + file.nFileSizeLow;
}

[[nodiscard]] bool IsDiskFull(DWORD error) noexcept
{
    return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL || error == kDiskQuotaExceeded;
}

// Copies from where the files stand to the end of the source.
[[nodiscard]] DWORD CopyBytes(HANDLE source, HANDLE target) noexcept
{
    BYTE buffer[16384];
    for (;;) {
        DWORD length = 0;
        DWORD written = 0;
        if (!ReadFile(source, buffer, sizeof buffer, &length, nullptr)) {
            return GetLastError();
        }
        if (length == 0) {
            return ERROR_SUCCESS;
        }
        if (!WriteFile(target, buffer, length, &written, nullptr)) {
            return GetLastError();
        }
        if (written != length) {
            return ERROR_DISK_FULL;
        }
    }
}

// Brings a file to the disk that may still be in the system's memory. One that cannot be opened for that is
// taken to be there.
[[nodiscard]] DWORD FlushFile(const wchar_t* path) noexcept
{
    const UniqueFile file = OpenFile(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    return !file || FlushFileBuffers(file.Get()) ? ERROR_SUCCESS : GetLastError();
}

} // namespace

CatalogRollback::CatalogRollback(const wchar_t* catalogPath) noexcept
{
    Compose(m_catalog, L"%s", catalogPath);
    Compose(m_copy, kCopyFormat, catalogPath);
    Compose(m_rollback, kRollbackFormat, catalogPath);
}

HRESULT CatalogRollback::Begin() noexcept
{
    // One that is there already is what a save that was cut off has left, and no start or end of a save has
    // been able to bring back since. It is whole; the catalogue file may not be, so nothing is copied.
    m_isThere = SizeOf(m_rollback).has_value();
    if (m_isThere) {
        return S_OK;
    }
    DWORD error = Copy();
    if (error == ERROR_SUCCESS) {
        // Fails when something of that name has come meanwhile.
        m_isThere = MoveFileExW(m_copy, m_rollback, 0) != FALSE;
        error = m_isThere ? ERROR_SUCCESS : GetLastError();
    }
    if (!m_isThere) {
        DeleteFileW(m_copy);
    }
    return IsDiskFull(error) ? HRESULT_FROM_WIN32(error) : S_OK;
}

HRESULT CatalogRollback::End(HRESULT saved) noexcept
{
    if (!m_isThere) {
        return saved;
    }
    if (SUCCEEDED(saved)) {
        const DWORD error = FlushFile(m_catalog);
        saved = error == ERROR_SUCCESS ? saved : HRESULT_FROM_WIN32(error);
    }
    if (SUCCEEDED(saved)) {
        DeleteFileW(m_rollback);
    } else {
        BringBack();
    }
    return saved;
}

void CatalogRollback::Restore() const noexcept
{
    BringBack();
    DeleteFileW(m_copy);
}

const wchar_t* CatalogRollback::WholeFile() const noexcept
{
    const std::optional<ULONGLONG> size = SizeOf(m_rollback);
    if (!size) {
        return m_catalog;
    }
    return *size != 0 ? m_rollback : nullptr;
}

DWORD CatalogRollback::Copy() const noexcept
{
    // Opened for writing too: a catalogue file that cannot be written is safe from the save, and is left
    // alone with its attributes and rights.
    const UniqueFile source = OpenFile(m_catalog, GENERIC_READ | GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    const DWORD opened = source ? ERROR_SUCCESS : GetLastError();
    if (!source && opened != ERROR_FILE_NOT_FOUND) {
        return opened;
    }
    const UniqueFile target = OpenFile(m_copy, GENERIC_WRITE, 0, CREATE_ALWAYS);
    if (!target) {
        return GetLastError();
    }
    if (!source) {
        return ERROR_SUCCESS; // nothing of an empty file has to get to the disk
    }
    const DWORD error = CopyBytes(source.Get(), target.Get());
    if (error != ERROR_SUCCESS) {
        return error;
    }
    return FlushFileBuffers(target.Get()) ? ERROR_SUCCESS : GetLastError();
}

// In steps of which each may be the last: what is left is done by the next start.
void CatalogRollback::BringBack() const noexcept
{
    const std::optional<ULONGLONG> size = SizeOf(m_rollback);
    if (!size) {
        return;
    }
    if (*size != 0) {
        MoveFileExW(m_rollback, m_catalog, MOVEFILE_REPLACE_EXISTING);
    } else if (DeleteFileW(m_catalog) || GetLastError() == ERROR_FILE_NOT_FOUND) {
        DeleteFileW(m_rollback);
    }
}
