// What a refresh pass does with the records that are there: looks packages up, marks what is installed.

#include "BareXml.h"
#include "Catalogs.h"
#include "Measures.h"
#include "support/TemporaryFolder.h"

#include <stdexcept>
#include <unordered_map>

namespace bench {

void MeasureFindPackages(Session& session)
{
    for (const std::size_t size :
         session.isShort ? Sizes{100, 300, 1000, 3000} : Sizes{300, 1000, 3000, 10000}) {
        CQanhAppNameList list;
        std::vector<std::wstring> names;
        std::unordered_map<std::wstring, std::size_t> map;
        for (std::size_t number = 0; number < size; ++number) {
            names.push_back(MakePackage(number, number).familyName);
            map.emplace(names.back(), number);
            (void)list.AddMetroPackage(
                std::make_unique<CQanhPackage>(names.back().c_str(), RecordVersion(), FALSE, TRUE));
        }
        const bool isQuick = session.Compare("find-packages", size,
                                             {{kOurs,
                                               [&] {
                                                   for (const std::wstring& name : names) {
                                                       if (!list.GetPackage(name.c_str())) {
                                                           throw std::runtime_error("a package is lost");
                                                       }
                                                   }
                                               }},
                                              {"hash map", [&] {
                                                   for (const std::wstring& name : names) {
                                                       if (map.find(name) == map.end()) {
                                                           throw std::runtime_error("a name is lost");
                                                       }
                                                   }
                                               }}});
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
    // So many records at every size, in one catalogue or in several: this takes so little that the
    // processor's caches, which hold a small catalogue and not a large one, would make it look steeper than
    // it is.
    constexpr std::size_t kRecords = 30000;
    for (const std::size_t size : Sizes{300, 1000, 3000, 10000}) {
        std::vector<Marked> catalogs;
        for (std::size_t count = kRecords / size; count > 0; --count) {
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
