#pragma once

#include <windows.h>

#include <roapi.h>

// Leaves the Windows Runtime at the end of the scope when the flag says so then.
class RuntimeApartmentLeaver
{
public:
    explicit RuntimeApartmentLeaver(const BOOL& needsUninitialize) noexcept
        : m_needsUninitialize(needsUninitialize)
    {
    }
    ~RuntimeApartmentLeaver()
    {
        if (m_needsUninitialize) {
            RoUninitialize();
        }
    }
    RuntimeApartmentLeaver(const RuntimeApartmentLeaver&) = delete;
    RuntimeApartmentLeaver& operator=(const RuntimeApartmentLeaver&) = delete;

private:
    const BOOL& m_needsUninitialize;
};
