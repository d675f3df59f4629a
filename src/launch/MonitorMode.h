#pragma once

#include <windows.h>

#include <shobjidl.h>

// Tells what the primary monitor shows, brings up the Start screen and opens its search pane. One static
// instance exists; it is used on the thread that initialised it only, whose single-threaded apartment holds
// the visibility object. Finalize() releases that object, not the destructor: the apartment is gone by then.
class CQanhMonitorMode
{
public:
    CQanhMonitorMode() = default;
    virtual ~CQanhMonitorMode() = default;
    CQanhMonitorMode(const CQanhMonitorMode&) = delete;
    CQanhMonitorMode& operator=(const CQanhMonitorMode&) = delete;

    // What the primary monitor shows.
    enum Mode : int
    {
        kUnknown = -1,
        kDesktop = 0,
        kStartScreen = 1,
        kStoreApp = 2,
    };

    // Enters the apartment and creates the visibility object: the result of the one that failed, or S_OK.
    // Nothing is held after a failure.
    [[nodiscard]] HRESULT Initialize() noexcept;
    void Finalize() noexcept;

    // 0; -1 when the argument is null or the object is not there; -2 when one of its queries fails.
    [[nodiscard]] int GetMonitorState(int* pdwMode) noexcept;

    // Presses the Windows key unless the Start screen shows, and waits up to about 2 s for it. Returns the
    // result of the first GetMonitorState(); a Start screen that does not come is no failure.
    [[nodiscard]] int SwitchToStartScreen() noexcept;

    // Opens the search pane and waits up to about 20 s for it. S_OK, also when it did not come; E_FAIL when
    // the state of the monitor cannot be read.
    [[nodiscard]] HRESULT OpenAppSearchUI() noexcept;

    [[nodiscard]] static BOOL IsSearchPaneForeground() noexcept;

    IAppVisibility* m_pImmersiveMode = nullptr;
};
