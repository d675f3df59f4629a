#pragma once

#include "QanHelper.h"
#include "common/UniqueHandle.h"

#include <string>

struct ModulePolicy
{
    using Type = HMODULE;
    [[nodiscard]] static Type None() noexcept { return nullptr; }
    static void Close(Type value) noexcept { FreeLibrary(value); }
};

// QanHelper.dll, loaded as a host loads it, with those of its functions that the commands call. This program
// has the library's own code inside too, for what it only looks at; that is never brought up. Unloaded at the
// end of its life.
class Library
{
public:
    // From this file, and from nowhere else; empty: the one beside this program. What it needs comes from the
    // system's folder. Throws Failure.
    explicit Library(const std::wstring& path);

private:
    UniqueResource<ModulePolicy> m_module;

public:
    // See QanHelper.h.
    decltype(&QanhInitialize) const initialize;
    decltype(&QanhFinalize) const finalize;
    decltype(&QanhReleaseString) const releaseString;
    decltype(&QanhIsInstalledByAppUserModeID) const isInstalledByAppUserModeId;
    decltype(&QanhGetAppDisplayNameByPFN) const getAppDisplayNameByPfn;
    decltype(&QanhLaunchBySearch) const launchBySearch;
    decltype(&QanhLaunchIEBySearch) const launchBrowserBySearch;
    decltype(&QanhLaunchByManager) const launchByManager;
};
