#pragma once

#include "CommandLine.h"
#include "catalog/AppNameList.h"

#include <string>

inline constexpr wchar_t kCatalogueFile[] = L"AppNameList.xml";

// Where the catalogue is that the command line names. Throws WrongUse when it names none.
[[nodiscard]] std::wstring CataloguePath(const CommandLine& line);

// A file in the folder that the library keeps for a host of this user. The host's name, its executable's and
// that one's path will do. Throws Failure.
[[nodiscard]] std::wstring FileOfHost(const std::wstring& host, const wchar_t* file);

// For a command that was given files of its own, by what: throws WrongUse when the command line names a
// catalogue too.
void RefuseCatalogue(const CommandLine& line, const wchar_t* given = L"a FILE");

// Reads a catalogue file as the library does. Of a file that is no whole document every record up to the
// place where it breaks off is read, and that is said on standard error; but for a root that is not closed,
// which is how the library writes it. Returns whether all was read. Throws Failure when the file cannot be
// opened.
[[nodiscard]] bool LoadCatalogue(const std::wstring& path, CQanhAppNameList& list);
