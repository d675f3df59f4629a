#pragma once

#include "discovery/PackageManager.h"
#include "support/Test.h"

// The paths of the catalogue's desktop applications, in its order.
inline std::vector<std::wstring> Shortcuts(const CQanhPackageManager& manager)
{
    std::vector<std::wstring> shortcuts;
    for (const WideString& shortcut : manager.m_AppNameList.DesktopShortcuts()) {
        shortcuts.emplace_back(shortcut.c_str());
    }
    return shortcuts;
}

// The family names of the catalogue's packages, in its order.
inline std::vector<std::wstring> Families(const CQanhPackageManager& manager)
{
    std::vector<std::wstring> families;
    for (const WideString& name : manager.m_AppNameList.PackageFamilyNames()) {
        families.emplace_back(name.c_str());
    }
    return families;
}

inline bool BeginsWithOneOf(const std::string& line, std::initializer_list<const char*> starts)
{
    return std::any_of(starts.begin(), starts.end(),
                       [&](const char* start) { return line.starts_with(start); });
}

// Of these lines, those that begin with one of the starts, or with none of them.
inline std::vector<std::string> LinesWith(std::initializer_list<const char*> starts,
                                          std::vector<std::string> lines)
{
    std::erase_if(lines, [&](const std::string& line) { return !BeginsWithOneOf(line, starts); });
    return lines;
}
inline std::vector<std::string> LinesWithout(std::initializer_list<const char*> starts,
                                             std::vector<std::string> lines)
{
    std::erase_if(lines, [&](const std::string& line) { return BeginsWithOneOf(line, starts); });
    return lines;
}
