#pragma once

#include "Applications.h"

#include <string>
#include <vector>

// A name that the query of a launch excludes.
struct ExcludedName
{
    std::wstring name;
    const wchar_t* rule; // what the search hits: "display name", "reading", ...
    Application application;
};

struct Reason
{
    const wchar_t* kind; // "capital letters", ...
    std::wstring detail; // may be empty
};

// A name that a person would expect among these, and that is not.
struct LeftInName
{
    std::wstring name;
    Reason reason;
    bool comesFirst; // the search finds it too, and lists it before the wanted name
    Application application;
};

// Why a launch by search pastes what it pastes.
struct Explanation
{
    std::wstring query;
    bool isFound = false; // the catalogue knows the wanted application: search mode 2 pastes the plain name
    std::size_t logLineBytes = 0;
    std::wstring ownName; // one that the query excludes although a called application has it; or empty
    std::vector<Application> called; // those that are installed and have exactly this name
    std::vector<ExcludedName>
        excluded;                   // in the order of the query; once for each application that has the name
    std::vector<LeftInName> leftIn; // in the order of the catalogue
};

// Throws Failure.
// codePage: that of the machine with the log.
[[nodiscard]] Explanation ExplainLaunch(const CQanhAppNameList& list, const std::wstring& wantedName,
                                        unsigned codePage = CP_ACP);
