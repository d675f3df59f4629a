#pragma once

#include <windows.h>

#include <string>

// What the commands that drive the library were asked for.
struct DriveOptions
{
    std::wstring dll;         // the library's file; empty: beside this program
    bool isDryRun = false;    // only tell what would be done
    DWORD searchMode = 0;     // QANH_SEARCH_...
    DWORD tileMode = 2;       // QANH_TILE_...
    bool isExcluding = false; // with the exclusions of the catalogue
    std::wstring arguments;   // for the application
    bool isWatching = false;  // progress, and where the time goes
};
