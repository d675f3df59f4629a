// Reading and writing the catalogue file.

#include "BareXml.h"
#include "Catalogs.h"
#include "Measures.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <stdexcept>

namespace bench {

namespace {

Sizes FileSizes(const Session& session)
{
    return session.isShort ? Sizes{300, 1000, 3000, 10000} : Sizes{300, 1000, 3000, 10000, 30000, 100000};
}

} // namespace

void MeasureLoad(Session& session)
{
    const test::TemporaryFolder folder;
    const std::wstring file = folder / L"catalogue.xml";
    for (const std::size_t size : FileSizes(session)) {
        WriteXml(MakeCatalog(size), file);
        std::unique_ptr<CQanhAppNameList> list;
        session.Compare("load", size,
                        {{kOurs,
                          [&] {
                              if (list->Load(file.c_str()) != S_FALSE) {
                                  throw std::runtime_error("the catalogue cannot be loaded");
                              }
                          },
                          [&] { list = std::make_unique<CQanhAppNameList>(); }},
                         {"XmlLite", [&] { g_sink = WalkXml(file); }},
                         {"rapidxml", [&] { g_sink = ParseInMemory(file); }}});
    }
}

void MeasureSave(Session& session)
{
    const test::TemporaryFolder folder;
    const std::wstring ourFile = folder / L"ours.xml";
    const std::wstring bareFile = folder / L"bare.xml";
    for (const std::size_t size : FileSizes(session)) {
        const Catalog catalog = MakeCatalog(size);
        WriteXml(catalog, bareFile);
        const std::unique_ptr<CQanhAppNameList> list = LoadList(bareFile);
        session.Compare("save", size,
                        {{kOurs,
                          [&] {
                              if (list->Save(ourFile.c_str()) != S_OK) {
                                  throw std::runtime_error("the catalogue cannot be saved");
                              }
                          }},
                         {"XmlLite", [&] { WriteXml(catalog, bareFile); }}});
        if (test::ReadFileBytes(ourFile) != test::ReadFileBytes(bareFile)) {
            throw std::runtime_error("the bare writing writes another document than the library");
        }
    }
}

} // namespace bench
