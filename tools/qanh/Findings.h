#pragma once

#include "Document.h"
#include "catalog/AppNameList.h"

#include <string>
#include <vector>

// Something about a catalogue file that its author should know.
struct Finding
{
    Place place;
    bool isProblem; // or else a note
    std::wstring text;
};

// Compares what stands in the file with the records that the library made of it. In the order of the file.
// areShortcutsHere: the shortcuts are to be looked for on this machine.
[[nodiscard]] std::vector<Finding> FindingsOf(const Document& document, const CQanhAppNameList& list,
                                              bool areShortcutsHere);
