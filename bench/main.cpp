// What the library takes, against bare calls of the platform for the same work. scripts/bench runs this and
// makes a table of what it prints (Session.h).
//
//   bench [--short] [-R NAME]    -R: only measures whose name matches this regular expression

#include "Measures.h"

#include <cstdio>
#include <exception>
#include <regex>
#include <string>

namespace {

constexpr struct
{
    const char* name;
    void (*run)(bench::Session&);
} kMeasures[] = {
    {"load", bench::MeasureLoad},
    {"save", bench::MeasureSave},
    {"exclude", bench::MeasureExcludeNames},
    {"exclude-hits", bench::MeasureExcludeManyNames},
    {"add-shortcuts", bench::MeasureAddShortcuts},
    {"find-packages", bench::MeasureFindPackages},
    {"mark", bench::MeasureMarkRecords},
    {"first-pass", bench::MeasureFirstPass},
    {"first-pass-packages", bench::MeasureFirstPassOfManyPackages},
    {"log", bench::MeasureLog},
    {"log-off", bench::MeasureSilentLog},
    {"memory", bench::MeasureMemory},
    {"file", bench::MeasureFile},
    {"start and stop", bench::MeasureStartAndStop},
    {"idle", bench::MeasureIdle},
    {"launch", bench::MeasureLaunch},
};

} // namespace

int main(int count, char** arguments)
{
    bool isShort = false;
    std::string wanted;
    for (int index = 1; index < count; ++index) {
        const std::string argument = arguments[index];
        if (argument == "--short") {
            isShort = true;
        } else if (argument == "-R" && index + 1 < count) {
            wanted = arguments[++index];
        } else {
            std::fprintf(stderr, "bench [--short] [-R NAME]\n");
            return 2;
        }
    }
    bench::Session session(isShort);
    try {
        const std::regex pattern(wanted);
        for (const auto& measure : kMeasures) {
            if (std::regex_search(measure.name, pattern)) {
                measure.run(session);
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
    return 0;
}
