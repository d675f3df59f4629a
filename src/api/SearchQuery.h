#pragma once

#include "catalog/ExcludeList.h"

#include <string>

// The text that makes the search pane find one application and none of the others: the name in double quotes
// and, when there are names to exclude, a NOT clause with each of them in double quotes, joined by OR in list
// order. Quotes inside a name are not escaped. Throws std::bad_alloc.
[[nodiscard]] std::wstring BuildSearchQuery(const wchar_t* appName, const ExcludeList& excludeList);
