#pragma once

#include "Applications.h"
#include "Json.h"

#include <string>
#include <vector>

// What became of a catalogue. The applications are borrowed from the two catalogues.
struct Change
{
    const wchar_t* field;
    std::wstring before;
    std::wstring after;
};

// An application that is in both catalogues, in one place and of one name.
struct Changed
{
    Application application; // of the second one
    std::vector<Change> changes;
};

struct Difference
{
    [[nodiscard]] bool IsEmpty() const { return removed.empty() && added.empty() && changed.empty(); }

    std::vector<Application> removed;
    std::vector<Application> added;
    std::vector<Changed> changed;
};

// Versions whose third and fourth number have traded places are the same.
[[nodiscard]] Difference Compare(const CQanhAppNameList& before, const CQanhAppNameList& after);

// A line for each application that was removed, added or changed, and one for each of its changes.
[[nodiscard]] std::wstring TextOf(const Difference& difference);
[[nodiscard]] Json JsonOf(const Difference& difference);
