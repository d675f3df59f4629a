#pragma once

#include "Applications.h"

#include <string>

// An application in one line: kind, name, package or shortcut, and what is special, with tabs between.
[[nodiscard]] std::wstring LineOf(const Application& application);

// All that the catalogue holds of it, a line for each field that is not empty.
[[nodiscard]] std::wstring BlockOf(const Application& application);
