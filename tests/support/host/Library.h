#pragma once

#include "QanHelper.h"

#include <string>

namespace host {

// The library under test, loaded from beside this program the way a launcher does it: by the names of its
// exports. One in the process; the main thread loads and unloads it.
struct Library
{
    HMODULE module = nullptr;
    decltype(&QanhInitialize) initialize = nullptr;
    decltype(&QanhFinalize) finalize = nullptr;
    decltype(&QanhReleaseString) releaseString = nullptr;
    decltype(&QanhIsInstalled) isInstalled = nullptr;
    decltype(&QanhIsInstalledByAppUserModeID) isInstalledById = nullptr;
    decltype(&QanhGetAppDisplayNameByPFN) getDisplayName = nullptr;
    decltype(&QanhLaunchBySearch) launchBySearch = nullptr;
    decltype(&QanhLaunchIEBySearch) launchBrowser = nullptr;
    decltype(&QanhLaunchByManager) launchByManager = nullptr;
};

// The flags are LoadLibraryEx's. Throws std::runtime_error with the name of what is missing.
void Load(Library& library, DWORD flags = 0);

// FreeLibrary's result. The functions stay set: the library may still be in memory.
bool Unload(Library& library);

// Whether the library is in the process's memory, whoever holds it.
[[nodiscard]] bool IsInMemory();

} // namespace host
