#pragma once

#include "catalog/AppNameList.h"

#include <string>
#include <variant>
#include <vector>

// One application of a catalogue, borrowed from it: a Store application with its package, a package of which
// no names are known, or a desktop application.
struct Application
{
    const CQanhPackage* package = nullptr;
    const CQanhMetroApp* storeApp = nullptr;
    const CQanhDesktopApp* desktopApp = nullptr;
};

// In the order of the catalogue.
[[nodiscard]] std::vector<Application> ApplicationsOf(const CQanhAppNameList& list);

// Its record; null for a package of which no names are known.
[[nodiscard]] const CQanhApp* AppOf(const Application& application);
// "store" or "desktop".
[[nodiscard]] const wchar_t* KindOf(const Application& application);
[[nodiscard]] bool IsInstalled(const Application& application);
// The package family name, or the path of the shortcut.
[[nodiscard]] std::wstring PlaceOf(const Application& application);
// The name that the search shows.
[[nodiscard]] std::wstring NameOf(const Application& application);

// What the catalogue holds of it, by the names of the file.
struct Field
{
    const wchar_t* name;
    std::variant<std::wstring, bool> value;
};
[[nodiscard]] std::vector<Field> FieldsOf(const Application& application);
