#pragma once

#include "discovery/PackageManager.h"
#include "launch/MonitorMode.h"

// The process-wide objects of the library. The exports bring them up and down; only the host's thread may
// call those that do.
extern LONG s_nCount; // successful QanhInitialize calls without their QanhFinalize, never below 0
extern CQanhMonitorMode s_MonitorMode;
extern CQanhPackageManager& s_PackageManager;
