#pragma once

#include "Session.h"

namespace bench {

// What the program measures, each in a source file of its own. scripts/benchreport knows their names, what
// they are compared with and what is to be reached.
void MeasureLoad(Session& session);
void MeasureSave(Session& session);
void MeasureExcludeNames(Session& session);
void MeasureExcludeManyNames(Session& session);
void MeasureAddShortcuts(Session& session);

} // namespace bench
