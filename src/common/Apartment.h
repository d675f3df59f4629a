#pragma once

#include <windows.h>

#include <objbase.h>
#include <roapi.h>

// The calling thread's way into an apartment and out of it, made from the result of entering: what was
// entered is left at the end of the scope. A thread that is in an apartment of another kind
// (RPC_E_CHANGED_MODE) stays in that one, which is not left. Used on one thread, and ended after everything
// that lives in the apartment was released.
template <typename Policy> class ScopedApartment
{
public:
    // Nothing was entered.
    ScopedApartment() noexcept = default;
    explicit ScopedApartment(HRESULT entered) noexcept : m_isEntered(SUCCEEDED(entered)) {}
    ~ScopedApartment()
    {
        if (m_isEntered) {
            Policy::Leave();
        }
    }
    ScopedApartment(const ScopedApartment&) = delete;
    ScopedApartment& operator=(const ScopedApartment&) = delete;

    // For an apartment that somebody else has entered and leaves to this scope to leave.
    void TakeOver() noexcept { m_isEntered = true; }

private:
    bool m_isEntered = false;
};

struct ComPolicy
{
    static void Leave() noexcept { CoUninitialize(); }
};

struct WinRtPolicy
{
    static void Leave() noexcept { RoUninitialize(); }
};

using ComApartment = ScopedApartment<ComPolicy>;
using WinRtApartment = ScopedApartment<WinRtPolicy>;
