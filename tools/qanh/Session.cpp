#include "Session.h"

#include "Catalogue.h"
#include "Failure.h"
#include "common/FormatText.h"
#include "common/HostEnvironment.h"

namespace {

constexpr DWORD kPoll = 20;          // milliseconds
constexpr ULONGLONG kLimit = 300000; // milliseconds

std::wstring ExecutablePath()
{
    wchar_t path[MAX_PATH];
    if (!GetHostExecutablePath(path)) {
        throw Failure{L"cannot tell where this program is", E_FAIL};
    }
    return path;
}

// As the library calls the host.
std::wstring HostName()
{
    std::wstring path = ExecutablePath();
    return CutHostName(path.data()) + 1;
}

std::wstring MutexName()
{
    return L"QanHelper_" + HostName();
}

// A mutex exists from the start of the process that refreshes first to the end of its first refresh. It is
// not kept open: that would keep it in being.
bool IsFirstRefreshRunning()
{
    const UniqueHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, MutexName().c_str()));
    return mutex || GetLastError() != ERROR_FILE_NOT_FOUND;
}

} // namespace

std::wstring OwnFile(const wchar_t* file)
{
    return FileOfHost(ExecutablePath(), file);
}

std::wstring StartText()
{
    return FormatText(L"starts the library as the host %s, which refreshes %s",
                      {HostName(), OwnFile(kCatalogueFile)});
}

std::wstring AnotherRefreshes()
{
    return FormatText(
        L"another process of %s is in its first refresh: try again in a second or two. If it stays "
        L"so, some program keeps the mutex %s open",
        {HostName(), MutexName()});
}

Session::Session(const Library& library) : m_library(library)
{
    const bool wasRunning = IsFirstRefreshRunning();
    m_result = m_library.initialize();
    if (FAILED(m_result)) {
        throw Failure{wasRunning || IsFirstRefreshRunning()
                          ? L"the library does not come up: " + AnotherRefreshes()
                          : L"the library does not come up",
                      m_result};
    }
}

Session::~Session()
{
    m_library.finalize();
}

void Session::WaitForFirstRefresh(const std::function<void()>& onLook) const
{
    for (const ULONGLONG begin = GetTickCount64(); IsFirstRefreshRunning(); Sleep(kPoll)) {
        if (GetTickCount64() - begin > kLimit) {
            throw Failure{L"the first refresh does not end", HRESULT_FROM_WIN32(WAIT_TIMEOUT)};
        }
        onLook();
    }
}
