#pragma once

#include <windows.h>

#include <string>
#include <vector>

// The applications that the stand-in desktop shows, finds and starts. Pure functions without state, any
// thread.
namespace standin {

struct Application
{
    enum class Kind
    {
        Shortcut,
        Store
    };

    std::wstring name;   // as shown and searched
    std::wstring origin; // the path of its shortcut file, or the ID of a Store application
    Kind kind = Kind::Shortcut;
};

// All applications, in the order of their names. Read anew at each call: one for each shortcut file in or
// below the Start-menu Programs folders of all users (ALLUSERSPROFILE) and of this user (APPDATA), and one
// for each application of the installed packages that are no frameworks.
[[nodiscard]] std::vector<Application> ListApplications();

// Starts what the application's shortcut names, or has the platform activate the Store application; the
// thread is in a COM apartment.
[[nodiscard]] HRESULT StartApplication(const Application& application);

} // namespace standin
