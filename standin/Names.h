#pragma once

// The names by which other processes find the stand-in desktop.
namespace standin {

inline constexpr wchar_t startScreenClass[] = L"StandInStartScreen"; // window class; visible: the launcher is
inline constexpr wchar_t searchPaneClass[] = L"SearchPane";          // window class, as on the real desktop
inline constexpr wchar_t appClass[] = L"StandInApp";                 // window class of StandInApp.exe

// Manual-reset event, set while a desktop hears the keyboard.
inline constexpr wchar_t readyEventName[] = L"Local\\StandInDesktopReady";

} // namespace standin
