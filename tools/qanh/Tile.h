#pragma once

#include <windows.h>

#include <string>

// What a launch of the browser does with its tile setting in this tile mode (QANH_TILE_...), for people.
[[nodiscard]] std::wstring TileText(DWORD tileMode);
