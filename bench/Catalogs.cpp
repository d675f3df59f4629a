#include "Catalogs.h"

#include <iterator>
#include <stdexcept>

namespace bench {

namespace {

constexpr const wchar_t* kMakers[] = {L"Contoso",  L"Fabrikam",  L"Northwind", L"Adventure Works",
                                      L"Tailspin", L"Litware",   L"Proseware", L"Wide World",
                                      L"Lucerne",  L"Margie's",  L"Trey",      L"Blue Yonder",
                                      L"Coho",     L"Southridge"};
constexpr const wchar_t* kThings[] = {L"Photo Editor", L"Player",       L"Notes",      L"Calendar",
                                      L"Reader",       L"Chess",        L"Backup",     L"Terminal",
                                      L"Music",        L"Weather",      L"Paint",      L"Database Browser",
                                      L"Recorder",     L"Disk Cleaner", L"Spreadsheet"};
// Names that have a reading. In ASCII: Wine's XML reader garbles other characters where one lies across the
// end of one of its buffers.
constexpr const wchar_t* kReadNames[] = {L"Gakkou 5", L"Tenki 24", L"Ongaku 7", L"Chizu 3D", L"Memo 1000"};
constexpr const wchar_t* kReadings[] = {L"gakkou go", L"tenki nijuuyon", L"ongaku nana", L"chizu suriidii",
                                        L"memo sen"};

constexpr wchar_t kPrograms[] = L"C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs";
constexpr wchar_t kHitWord[] = L"mail";

template <std::size_t count> std::wstring Pick(const wchar_t* const (&texts)[count], std::size_t number)
{
    return texts[number % count];
}

bool HasReading(std::size_t number)
{
    return number % 11 == 7;
}

std::wstring Reading(std::size_t number)
{
    return HasReading(number) ? Pick(kReadings, number) + L" " + std::to_wstring(number) : std::wstring();
}

std::wstring ToLower(std::wstring text)
{
    for (wchar_t& character : text) {
        character = L'A' <= character && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
    }
    return text;
}

} // namespace

std::wstring AppName(std::size_t number)
{
    if (HasReading(number)) {
        return Pick(kReadNames, number) + L" " + std::to_wstring(number);
    }
    return Pick(kMakers, number) + L" " + Pick(kThings, number / std::size(kMakers)) + L" " +
           std::to_wstring(number);
}

std::wstring MenuFolder(std::size_t number)
{
    if (number % 10 == 0) {
        return L"";
    }
    const std::size_t group = number / 6;
    const std::wstring folder = Pick(kMakers, group) + L" " + std::to_wstring(group);
    return number % 6 == 5 ? folder + L"\\Tools" : folder;
}

StorePackage MakePackage(std::size_t number, std::size_t appNumber)
{
    const std::wstring maker = Pick(kMakers, number);
    StorePackage package;
    package.familyName =
        maker.substr(0, maker.find(L' ')) + L".App" + std::to_wstring(number) + L"_8wekyb3d8bbwe";
    // The last two parts trade places when the library reads and writes them.
    package.version = std::to_wstring(1 + number % 5) + L"." + std::to_wstring(number % 400) + L".0.0";
    // As the manifest reader stores names.
    const std::wstring name = ToLower(AppName(appNumber));
    package.apps.push_back({name, name.substr(0, name.find(L' ')), Reading(appNumber)});
    return package;
}

Catalog MakeCatalog(std::size_t size, std::size_t hits)
{
    Catalog catalog;
    const std::size_t stride = hits == 0 ? 0 : size / hits;
    std::size_t namedHits = 0;
    for (std::size_t number = 0; number < size; ++number) {
        const bool isHit = stride != 0 && namedHits < hits && number / stride >= namedHits;
        if (!isHit && number % 5 == 3) {
            const std::size_t packages = catalog.packages.size();
            if (packages != 0 && packages % 7 == 0 && catalog.packages.back().apps.size() == 1) {
                catalog.packages.back().apps.push_back(MakePackage(packages, number).apps.front());
            } else {
                catalog.packages.push_back(MakePackage(packages, number));
            }
            continue;
        }
        std::wstring name = AppName(number);
        if (isHit) {
            name = L"Web" + (kHitWord + (L" " + std::to_wstring(number)));
            ++namedHits;
        }
        const std::wstring folder = MenuFolder(number);
        std::wstring shortcut = std::wstring(kPrograms) + L"\\" + folder;
        shortcut += (folder.empty() ? L"" : L"\\") + name + L".lnk";
        catalog.desktopApps.push_back({std::move(name), std::move(shortcut), isHit ? L"" : Reading(number)});
    }
    return catalog;
}

std::vector<std::wstring> Catalog::SearchedNames() const
{
    std::vector<std::wstring> names;
    const auto add = [&](const std::wstring& name) {
        if (!name.empty()) {
            names.push_back(name);
        }
    };
    for (const StorePackage& package : packages) {
        for (const StoreApp& app : package.apps) {
            add(app.displayName);
            add(app.reading);
            add(app.shortName);
        }
    }
    for (const DesktopApp& app : desktopApps) {
        add(app.displayName);
        add(app.reading);
    }
    return names;
}

std::unique_ptr<CQanhAppNameList> LoadList(const std::wstring& file)
{
    auto list = std::make_unique<CQanhAppNameList>();
    if (list->Load(file.c_str()) != S_FALSE) {
        throw std::runtime_error("a catalogue file cannot be loaded");
    }
    return list;
}

} // namespace bench
