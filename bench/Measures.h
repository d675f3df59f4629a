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
void MeasureFindPackages(Session& session);
void MeasureMarkRecords(Session& session);
void MeasureFirstPass(Session& session);
void MeasureFirstPassOfManyPackages(Session& session);
void MeasureLog(Session& session);
void MeasureSilentLog(Session& session);
void MeasureMemory(Session& session);
void MeasureFile(Session& session);
void MeasureStartAndStop(Session& session);
void MeasureIdle(Session& session);
void MeasureLaunch(Session& session);

} // namespace bench
