#pragma once

#include "support/TemporaryFolder.h"

#include <windows.h>

#include <string>

namespace bench {

// The built library, loaded into this program as into any host, on a machine with nothing in its Start menu
// and with no Store packages. Serves the platform's objects from the stand-in's library, as the tests do;
// switches of the stand-in and the registration stay behind. One at a time; each operation throws
// std::runtime_error.
class Library
{
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // In bytes.
    [[nodiscard]] static ULONGLONG FileSize();

    // Its folder exists.
    [[nodiscard]] std::wstring CatalogFile() const;

    void Initialize() const;
    void WaitForFirstPass() const;
    void Finalize() const;

    // Launches by search, showing the query only, and returns how many seconds of that the library did not
    // spend in Sleep().
    [[nodiscard]] double LaunchBeyondPauses() const;

private:
    test::TemporaryFolder m_folder;
    test::ScopedEnvironment m_local;
    test::ScopedEnvironment m_roaming;
    test::ScopedEnvironment m_common;
    HMODULE m_module;
};

// The stand-in desktop, running.
class StandInDesktop
{
public:
    StandInDesktop();
    ~StandInDesktop();
    StandInDesktop(const StandInDesktop&) = delete;
    StandInDesktop& operator=(const StandInDesktop&) = delete;

    // Closes the search pane and waits until it is gone.
    void ClosePane() const;

private:
    HANDLE m_process;
};

// The name of this program up to its first dot, by which the library knows its host.
[[nodiscard]] std::wstring HostName();

} // namespace bench
