#pragma once

#include "system/Golden.h"

#include <string>
#include <string_view>

// What bringing the library up and down leaves in the log: pieces of goldens, in the order of the log. The
// catalogue's folder is there already.
namespace test {

inline constexpr char folderIsThere[] = R"(
    CQanhPackageManager::CreateAppNameListFolder IN
    CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
    CQanhPackageManager::CreateAppNameListFolder OUT(C)
)";

inline constexpr char initializeBegins[] = R"(
    QanhInitialize IN
    CQanhMonitorMode::Initialize IN ... OUT(0)
    CQanhPackageManager::Initialize IN
    CQanhPackageManager::GetModuleName IN ... OUT(T)
)";

// Up to the choice of the file: in the first process of the executable, and in another one.
inline std::string FirstProcessBegins()
{
    return Joined(
        {initializeBegins, "CQanhPackageManager::Initialize CreateMutex() success. <end>", folderIsThere});
}

// The line of the mutex that exists has no end, so the next one continues it.
inline std::string OtherProcessBegins()
{
    return Joined({initializeBegins, R"(
        CQanhPackageManager::Initialize CreateMutex()  GetLastError() : ERROR_ALREADY_EXISTSCQanhPackageManager::CreateAppNameListFolder IN
        CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
    )"});
}

inline constexpr char presetIsOpened[] = R"(
    CQanhPackageManager::GetPresetAppNameFullPath IN ... OUT(C)
    CQanhAppNameList::Load(<host>\PresetAppNameList.xml) IN
)";
inline constexpr char catalogIsOpened[] =
    "CQanhAppNameList::Load(<local>\\Vel\\QanHelper\\TestHost\\AppNameList.xml) IN";

// The rest of a file without records.
inline constexpr char nothingIsRead[] = R"(
    CQanhAppNameList::ReadDesktopApps IN ... OUT(0x00000000)
    CQanhAppNameList::Load OUT(0x00000001)
)";

inline constexpr char presetIsMissing[] = R"(
    CQanhAppNameList::Load OUT(0x80070002)
    m_AppNameList.Load() failed. ErrCode = 0x80070002 <end>
)";

// In the first process, and in another one, which returns the result of the load.
inline constexpr char firstProcessIsUp[] = R"(
    CQanhPackageManager::Initialize OUT(0x00000000)
    QanhInitialize OUT(0) : s_nCount(1)
)";
inline constexpr char otherProcessIsUp[] = R"(
    CQanhPackageManager::Initialize OUT(0x00000001)
    QanhInitialize OUT(1) : s_nCount(1)
)";

inline std::string ThreadBegins()
{
    return Joined({"CQanhPackageManager::RefreshThread IN", folderIsThere});
}

inline std::string IntervalIsRead(bool isSet, std::string_view minutes)
{
    return Filled(R"(
        CQanhReg::GetRefreshInterval IN
        CQanhReg::GetDWORDRegVal IN ... OUT(<1>)
        CQanhReg::GetRefreshInterval OUT(<2>)
    )",
                  {isSet ? "1" : "0", minutes});
}

inline constexpr char finalizeBegins[] = R"(
    QanhFinalize IN
    CQanhPackageManager::Finalize IN
)";

inline constexpr char mutexIsGone[] = "OpenMutex() : Mutex none. <end>";

inline constexpr char threadEnds[] = "CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)";

inline constexpr char finalizeEnds[] = R"(
    CQanhPackageManager::Finalize OUT
    CQanhMonitorMode::Finalize IN ... OUT
    QanhFinalize OUT : s_nCount(0)
)";

} // namespace test
