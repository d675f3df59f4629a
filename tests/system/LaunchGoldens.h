#pragma once

#include "system/KeyGoldens.h"

#include <string>

// What a launch by search leaves in the log: pieces of goldens, in the order of a launch.
namespace test {

// No application is in the catalogue.
inline std::string NothingIsExcluded(const std::string& name)
{
    return "\nCQanhPackageManager::GetExcludeAppNameList(" + name +
           ") IN\nCQanhAppNameList::GetExcludeAppNameList(" + name + R"() IN
        CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)
        CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)
        )";
}

inline std::string KeywordIs(const std::string& keyword)
{
    return "\nQanhLaunchBySearch szKeyword = " + keyword + " <end>\n";
}

// On the Start screen.
inline const std::string searchPaneOpens = std::string(R"(
    CQanhMonitorMode::OpenAppSearchUI IN
    CQanhMonitorMode::GetMonitorState IN
    CQanhMonitorMode::GetMonitorState OUT(0) dwMode(1)
    )") + windowsQIsPressed + "CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)\n";

// Where the shell does not tell what the screen shows. It ends the launch.
inline constexpr char launcherQueryFails[] = R"(
    CQanhMonitorMode::OpenAppSearchUI IN
    CQanhMonitorMode::GetMonitorState IN
    CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err <end>
    CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)
    QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)
)";

inline std::string TextIsCopied(const std::string& text)
{
    return "\nCQanhClipboard::SetClipboardData(" + text +
           ") IN\nCQanhClipboard::SetClipboardData OUT(0x00000000)\n";
}

// Shift is released.
inline constexpr char launchEnds[] = R"(
    CQanhKeyEmulate::Sendinput_Key(0x0010, 0x002A, 0x00000002) IN
    CQanhKeyEmulate::Sendinput_Key OUT
    QanhLaunchBySearch OUT(0x00000000)
)";

} // namespace test
