#pragma once

#include <windows.h>

#include <string>
#include <vector>

// The applications that the stand-in desktop shows, finds and starts. Pure functions without state, any
// thread.
namespace standin {

struct Application
{
    std::wstring name;   // as shown and searched
    std::wstring origin; // where it was found: the path of its shortcut file
};

// All applications, in the order of their names. Read anew at each call: one for each shortcut file in or
// below the Start-menu Programs folders of all users (ALLUSERSPROFILE) and of this user (APPDATA).
[[nodiscard]] std::vector<Application> ListApplications();

// Starts what the application's shortcut names.
[[nodiscard]] HRESULT StartApplication(const Application& application);

} // namespace standin
