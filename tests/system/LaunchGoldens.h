#pragma once

#include "system/Golden.h"

#include <string>
#include <string_view>

// What a launch by search leaves in the log: pieces of goldens, in the order of a launch.
namespace test {

// Keys.
inline constexpr char windowsQIsPressed[] = R"(
    CQanhKeyEmulate::SendInput_Win_Q IN
    CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000001) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x0051, 0x0010, 0x00000008) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x0051, 0x0010, 0x00000002) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000002) IN ... OUT
    CQanhKeyEmulate::SendInput_Win_Q OUT
)";

inline constexpr char shiftInsertIsPressed[] = R"(
    CQanhKeyEmulate::SendInput_Shift_Insert IN
    CQanhKeyEmulate::Sendinput_Key(0x0010, 0x002A, 0x00000000) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x002D, 0x0052, 0x00000001) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x002D, 0x0052, 0x00000003) IN ... OUT
    CQanhKeyEmulate::SendInput_Shift_Insert OUT
)";

inline constexpr char enterIsPressed[] = R"(
    CQanhKeyEmulate::SendInput_Enter IN
    CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000001) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000002) IN ... OUT
    CQanhKeyEmulate::SendInput_Enter OUT
)";

// The catalogue is asked what to exclude, and looks at its applications.
inline std::string Excluded(std::string_view name, std::string_view applications)
{
    return Filled(R"(
        CQanhPackageManager::GetExcludeAppNameList(<1>) IN
        CQanhAppNameList::GetExcludeAppNameList(<1>) IN
        <2>
        CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)
        CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)
    )",
                  {name, applications});
}

inline std::string KeywordIs(std::string_view keyword)
{
    return Filled("QanhLaunchBySearch szKeyword = <1> <end>\n", {keyword});
}

// On the Start screen.
inline std::string SearchPaneOpens()
{
    return Filled(R"(
        CQanhMonitorMode::OpenAppSearchUI IN
        CQanhMonitorMode::GetMonitorState IN ... OUT(0) dwMode(1)
        <1>
        CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)
    )",
                  {windowsQIsPressed});
}

// Where the screen's state cannot be had. It ends the launch.
inline std::string ScreenIsUnknown(std::string_view cause)
{
    return Filled(R"(
        CQanhMonitorMode::OpenAppSearchUI IN
        CQanhMonitorMode::GetMonitorState IN ... OUT(-2) <1>
        CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)
        QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)
    )",
                  {cause});
}

inline constexpr char launcherQueryFails[] = "IsLauncherVisible Err <end>";

inline std::string TextIsCopied(std::string_view text)
{
    return Filled("CQanhClipboard::SetClipboardData(<1>) IN ... OUT(0x00000000)\n", {text});
}

// Shift is released.
inline constexpr char launchEnds[] = R"(
    CQanhKeyEmulate::Sendinput_Key(0x0010, 0x002A, 0x00000002) IN ... OUT
    QanhLaunchBySearch OUT(0x00000000)
)";

// From the search pane on: the text is pasted and the top hit started.
inline std::string TextIsSearched(std::string_view text)
{
    return Joined({SearchPaneOpens(), TextIsCopied(text), shiftInsertIsPressed, enterIsPressed, launchEnds});
}

} // namespace test
