#pragma once

#include <windows.h>

#include <string>

// The window in front, as far as it tells what a launch has started.

// As the library looks for it.
[[nodiscard]] bool IsSearchPaneInFront();

// Waits a few seconds for an application that comes to the front, and gives its title; empty: none came but
// the one that was there before, or the Start screen. On a thread in a single-threaded apartment.
[[nodiscard]] std::wstring WaitForApplication(HWND before);
