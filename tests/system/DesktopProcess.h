#pragma once

#include "standin/Settings.h"
#include "system/Sandbox.h"

#include <string>
#include <vector>

namespace test {

// The stand-in desktop, running in a sandbox with its journal in the sandbox's folder. Set switches before
// what they shall change; the sandbox takes them back.
class DesktopProcess
{
public:
    explicit DesktopProcess(Sandbox& sandbox);
    ~DesktopProcess();
    DesktopProcess(const DesktopProcess&) = delete;
    DesktopProcess& operator=(const DesktopProcess&) = delete;

    // The journal's lines after "ready". Fields are joined by tabs; of "started" only the name is kept.
    [[nodiscard]] std::vector<std::string> Journal() const;
    // How often a line stands in the journal.
    [[nodiscard]] std::size_t Count(const std::string& line) const;
    // Throws when the line does not come so often in time.
    void WaitFor(const std::string& line, std::size_t times = 1) const;
    // The name of the one application that was started, which is waited for; "": none came.
    [[nodiscard]] std::string Started() const;
    // That none was; a second is left for it to come.
    [[nodiscard]] bool HasStartedNothing() const;

    // Waits for the window of an application that was started, closes it and waits until it is gone. It comes
    // to the front at a moment of its own, which must not be one of the next launch.
    void CloseApplication(const std::wstring& name) const;

    // Presses the Windows key and waits for the Start screen; the journal is emptied then.
    void ShowStartScreen();
    // Closes the search pane, as its user would.
    void ClosePane() const;
    [[nodiscard]] static bool IsPaneOpen();

private:
    [[nodiscard]] std::string StartedWithin(DWORD milliseconds) const;

    std::wstring m_journal;
    StartedProcess m_process;
};

} // namespace test
