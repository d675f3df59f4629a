#include "api/Statics.h"

#include "common/MemoryReserve.h"

namespace {

// The package manager is not destroyed when the process ends under a library that is still up: the refresh
// thread was killed wherever it stood then, and may have left the catalogue's lists half changed. The library
// itself cannot be unloaded while that thread runs.
class StaticPackageManager
{
public:
    StaticPackageManager() : value() {}
    ~StaticPackageManager()
    {
        if (!value.m_hRefreshThread) {
            value.~CQanhPackageManager();
            MemoryReserve::FreeRuntimePool();
        }
    }
    StaticPackageManager(const StaticPackageManager&) = delete;
    StaticPackageManager& operator=(const StaticPackageManager&) = delete;

    union
    {
        CQanhPackageManager value;
    };
};

StaticPackageManager s_StaticPackageManager;

} // namespace

LONG s_nCount = 0;
CQanhMonitorMode s_MonitorMode;
CQanhPackageManager& s_PackageManager = s_StaticPackageManager.value;
