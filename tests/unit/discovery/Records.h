#pragma once

#include "discovery/PackageManager.h"
#include "support/Names.h"
#include "support/Test.h"

// The paths of the catalogue's desktop applications, in its order.
inline std::vector<std::wstring> Shortcuts(const CQanhPackageManager& manager)
{
    return test::Names(manager.m_AppNameList.DesktopShortcuts());
}
