#pragma once

#include "catalog/AppNameList.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

// Catalogues of any size, in the shape of real ones: made up, but the same in every run.
namespace bench {

struct StoreApp
{
    std::wstring displayName;
    std::wstring shortName;
    std::wstring reading; // of the display name; may be empty, here and below
};

struct StorePackage
{
    std::wstring familyName;
    std::wstring version;
    std::vector<StoreApp> apps;
};

struct DesktopApp
{
    std::wstring displayName;
    std::wstring shortcut;
    std::wstring reading;
};

struct Catalog
{
    std::vector<StorePackage> packages;
    std::vector<DesktopApp> desktopApps;

    // All texts that a search looks at: names and readings, in the order of the catalogue.
    [[nodiscard]] std::vector<std::wstring> SearchedNames() const;
};

// A catalogue of so many applications: of ten, eight are desktop applications and two belong to Store
// packages, every seventh of which holds two. Every eleventh name has a reading. The name of `hits`
// desktop applications, evenly spread, holds the word "mail"; no other does.
[[nodiscard]] Catalog MakeCatalog(std::size_t size, std::size_t hits = 0);

// The folder of a Start menu that the shortcut of this number stands in, relative to the menu's: six in a
// folder as a rule, some in folders of a folder, and every tenth in the menu itself ("").
[[nodiscard]] std::wstring MenuFolder(std::size_t number);
// A name that no other number has.
[[nodiscard]] std::wstring AppName(std::size_t number);
// A Store package of one application; what the fields hold is as in a catalogue of MakeCatalog().
[[nodiscard]] StorePackage MakePackage(std::size_t number, std::size_t appNumber);

// The library's list of what the catalogue file holds. Throws when it cannot be loaded to its end.
[[nodiscard]] std::unique_ptr<CQanhAppNameList> LoadList(const std::wstring& file);

} // namespace bench
