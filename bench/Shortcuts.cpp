// Bringing the shortcuts of a Start menu into the catalogue.

#include "Catalogs.h"
#include "Measures.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <vector>

namespace bench {

namespace {

// As the library compares paths: the letters A to Z count as small ones.
std::wstring Fold(const std::wstring& path)
{
    std::wstring folded = path;
    for (wchar_t& character : folded) {
        character = L'A' <= character && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
    }
    return folded;
}

} // namespace

void MeasureAddShortcuts(Session& session)
{
    const Sizes sizes = session.isShort ? Sizes{100, 300, 1000, 3000} : Sizes{300, 1000, 3000, 10000};
    for (const std::size_t size : sizes) {
        std::vector<DesktopApp> apps;
        for (DesktopApp& app : MakeCatalog(size * 2).desktopApps) {
            if (apps.size() < size) {
                apps.push_back(std::move(app));
            }
        }
        std::unique_ptr<CQanhAppNameList> list;
        std::unique_ptr<std::unordered_set<std::wstring>> set;
        const bool isQuick = session.Compare(
            "add-shortcuts", size,
            {{kOurs,
              [&] {
                  for (const DesktopApp& app : apps) {
                      if (list->AddDesktopApp(app.displayName.c_str(), app.shortcut.c_str()) != S_OK) {
                          throw std::runtime_error("a shortcut cannot be added");
                      }
                  }
              },
              [&] { list = std::make_unique<CQanhAppNameList>(); }},
             {"hash set",
              [&] {
                  for (const DesktopApp& app : apps) {
                      if (!set->insert(Fold(app.shortcut)).second) {
                          throw std::runtime_error("a shortcut is there twice");
                      }
                  }
              },
              [&] { set = std::make_unique<std::unordered_set<std::wstring>>(); }}});
        if (!isQuick) {
            break;
        }
    }
}

} // namespace bench
