#pragma once

#include <windows.h>

using HSTRING = struct NativeString*;
