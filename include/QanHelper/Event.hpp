// An event of the system as an object. Part of QanHelper.hpp; not for hosts.
#ifndef QANHELPER_EVENT_HPP
#define QANHELPER_EVENT_HPP

#include "Results.hpp"

namespace qanh {
namespace detail {

// An event of the system, not set at first.
class Event
{
public:
    explicit Event(bool isManual) : m_handle(CreateEventW(nullptr, isManual, FALSE, nullptr))
    {
        ThrowIfFailed(m_handle ? S_OK : HRESULT_FROM_WIN32(GetLastError()), "CreateEventW");
    }
    ~Event() { CloseHandle(m_handle); }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void Set() const noexcept { SetEvent(m_handle); }
    bool Wait(DWORD milliseconds) const noexcept
    {
        return WaitForSingleObject(m_handle, milliseconds) == WAIT_OBJECT_0;
    }
    HANDLE Handle() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace detail
} // namespace qanh

#endif
