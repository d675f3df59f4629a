#include "discovery/CatalogTurn.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

// The name of the file's own mutex. Where the path does not fit whole, what is cut is in the file's name,
// which is the same for all.
constexpr wchar_t kTurnName[] = L"QanHelperSave_%s";
constexpr DWORD kTurnWait = 5000; // milliseconds; a save takes a few

[[nodiscard]] UniqueHandle MakeMutex(const wchar_t* catalogPath) noexcept
{
    wchar_t name[MAX_PATH] = {};
    _snwprintf_s(name, MAX_PATH, _TRUNCATE, kTurnName, catalogPath);
    // A backslash would name a folder of the system's objects; and their names differ by the case of letters,
    // which paths do not.
    std::replace(std::begin(name), std::end(name), L'\\', L'/');
    CharUpperBuffW(name, MAX_PATH);
    return UniqueHandle(CreateMutexW(nullptr, FALSE, name));
}

} // namespace

CatalogTurn::CatalogTurn(const wchar_t* catalogPath, HANDLE exitEvent) noexcept
    : m_mutex(MakeMutex(catalogPath)), m_result(S_OK)
{
    if (!m_mutex) {
        // One that may not be opened is there: an elevated process has made it.
        if (GetLastError() == ERROR_ACCESS_DENIED) {
            m_result = HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION);
        }
        return;
    }
    const HANDLE handles[] = {m_mutex.Get(), exitEvent};
    switch (WaitForMultipleObjects(exitEvent ? 2 : 1, handles, FALSE, kTurnWait)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED_0: // whoever had the turn before died in it
        return;
    case WAIT_OBJECT_0 + 1:
        m_result = S_FALSE;
        break;
    case WAIT_TIMEOUT:
        m_result = HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION);
        break;
    default:
        break;
    }
    m_mutex.Reset();
}

CatalogTurn::~CatalogTurn()
{
    if (m_mutex) {
        ReleaseMutex(m_mutex.Get());
    }
}
