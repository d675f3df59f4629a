// What a refresh pass does with the records that are there: looks packages up, marks what is installed.

#include "BareXml.h"
#include "Catalogs.h"
#include "Measures.h"
#include "support/TemporaryFolder.h"

#include <stdexcept>
#include <unordered_map>

namespace bench {

namespace {

// The packages of one catalogue, as the library holds them and in a hash map.
struct Packages
{
    std::vector<std::wstring> names;
    std::unique_ptr<CQanhAppNameList> list = std::make_unique<CQanhAppNameList>();
    std::unordered_map<std::wstring, std::size_t> map;

    Packages(std::size_t first, std::size_t count)
    {
        for (std::size_t number = first; number < first + count; ++number) {
            names.push_back(MakePackage(number, number).familyName);
            map.emplace(names.back(), number);
            (void)list->AddMetroPackage(
                std::make_unique<CQanhPackage>(names.back().c_str(), RecordVersion(), FALSE, TRUE));
        }
    }

    void FindInList() const
    {
        for (const std::wstring& name : names) {
            if (!list->GetPackage(name.c_str())) {
                throw std::runtime_error("a package is lost");
            }
        }
    }
    void FindInMap() const
    {
        for (const std::wstring& name : names) {
            if (map.find(name) == map.end()) {
                throw std::runtime_error("a name is lost");
            }
        }
    }
};

} // namespace

void MeasureFindPackages(Session& session)
{
    const Sizes sizes = session.isShort ? Sizes{100, 300, 1000, 3000} : Sizes{300, 1000, 3000, 10000};
    for (const std::size_t size : sizes) {
        std::vector<Packages> catalogs;
        while (catalogs.size() * size + size <= sizes.back()) {
            catalogs.emplace_back(catalogs.size() * size, size);
        }
        const bool isQuick = session.Compare("find-packages", size,
                                             {{kOurs,
                                               [&] {
                                                   for (const Packages& catalog : catalogs) {
                                                       catalog.FindInList();
                                                   }
                                               }},
                                              {"hash map",
                                               [&] {
                                                   for (const Packages& catalog : catalogs) {
                                                       catalog.FindInMap();
                                                   }
                                               }}},
                                             catalogs.size());
        if (!isQuick) {
            break;
        }
    }
}

namespace {

// One catalogue as the library holds it, and as an array of records.
struct Marked
{
    struct Record
    {
        std::wstring key;
        BOOL isInstalled;
    };

    std::unique_ptr<CQanhAppNameList> list;
    std::vector<Record> records;

    explicit Marked(std::size_t size)
    {
        const test::TemporaryFolder folder;
        const std::wstring file = folder / L"catalogue.xml";
        const Catalog catalog = MakeCatalog(size);
        WriteXml(catalog, file);
        list = LoadList(file);
        for (const StorePackage& package : catalog.packages) {
            records.push_back({package.familyName, FALSE});
        }
        for (const DesktopApp& app : catalog.desktopApps) {
            records.push_back({app.shortcut, FALSE});
        }
    }

    // The copies of the keys are what a pass asks the system about, which is not part of this.
    void MarkList()
    {
        list->SetPackagesInstalled(std::vector<BOOL>(list->PackageFamilyNames().size(), TRUE));
        list->SetDesktopAppsInstalled(std::vector<BOOL>(list->DesktopShortcuts().size(), TRUE));
    }
    void MarkArray()
    {
        std::vector<std::wstring> keys;
        for (const Record& record : records) {
            keys.push_back(record.key);
        }
        g_sink = keys.size();
        for (Record& record : records) {
            record.isInstalled = TRUE;
        }
    }
};

} // namespace

void MeasureMarkRecords(Session& session)
{
    const Sizes sizes = {300, 1000, 3000, 10000};
    for (const std::size_t size : sizes) {
        std::vector<Marked> catalogs;
        while (catalogs.size() * size + size <= sizes.back()) {
            catalogs.emplace_back(size);
        }
        session.Compare("mark", size,
                        {{kOurs,
                          [&] {
                              for (Marked& catalog : catalogs) {
                                  catalog.MarkList();
                              }
                          }},
                         {"array",
                          [&] {
                              for (Marked& catalog : catalogs) {
                                  catalog.MarkArray();
                              }
                          }}},
                        catalogs.size());
    }
}

} // namespace bench
