#pragma once

#include "catalog/AppNameList.h"

// Adds the shortcuts of this machine's Start menu and of the user's own, as a refresh of the library would
// find them. Folders that cannot be read are left out.
void AddStartMenu(CQanhAppNameList& list);
