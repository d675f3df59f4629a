#include "standin/Faults.h"

#include "standin/Settings.h"

namespace standin {

namespace {

const wchar_t* NameOf(Fault fault) noexcept
{
    return fault == Fault::UseOutsideApartment ? L"UsesOutsideApartment" : L"ReleasesOutsideApartment";
}

} // namespace

void CountFault(Fault fault) noexcept
{
    const DWORD count = GetFaults(fault) + 1;
    RegSetKeyValueW(HKEY_CURRENT_USER, settingsKey, NameOf(fault), REG_DWORD, &count, sizeof(count));
}

DWORD GetFaults(Fault fault) noexcept
{
    DWORD count = 0;
    DWORD size = sizeof(count);
    RegGetValueW(HKEY_CURRENT_USER, settingsKey, NameOf(fault), RRF_RT_REG_DWORD, nullptr, &count, &size);
    return count;
}

} // namespace standin
