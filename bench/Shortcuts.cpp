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

// The shortcuts of one Start menu, and where they are put.
struct Menu
{
    std::vector<DesktopApp> apps;
    std::unique_ptr<CQanhAppNameList> list;
    std::unique_ptr<std::unordered_set<std::wstring>> set;

    void FillList() const
    {
        for (const DesktopApp& app : apps) {
            if (list->AddDesktopApp(app.displayName.c_str(), app.shortcut.c_str()) != S_OK) {
                throw std::runtime_error("a shortcut cannot be added");
            }
        }
    }
    void FillSet() const
    {
        for (const DesktopApp& app : apps) {
            if (!set->insert(Fold(app.shortcut)).second) {
                throw std::runtime_error("a shortcut is there twice");
            }
        }
    }
};

std::vector<Menu> MakeMenus(std::size_t size, std::size_t shortcutsInAll)
{
    std::vector<Menu> menus(1);
    for (DesktopApp& app : MakeCatalog(shortcutsInAll * 2).desktopApps) {
        if (menus.back().apps.size() == size) {
            if (menus.size() * size >= shortcutsInAll) {
                break;
            }
            menus.emplace_back();
        }
        menus.back().apps.push_back(std::move(app));
    }
    return menus;
}

} // namespace

void MeasureAddShortcuts(Session& session)
{
    const Sizes sizes = session.isShort ? Sizes{100, 300, 1000, 3000} : Sizes{300, 1000, 3000, 10000};
    for (const std::size_t size : sizes) {
        std::vector<Menu> menus = MakeMenus(size, sizes.back());
        const bool isQuick =
            session.Compare("add-shortcuts", size,
                            {{kOurs,
                              [&] {
                                  for (const Menu& menu : menus) {
                                      menu.FillList();
                                  }
                              },
                              [&] {
                                  for (Menu& menu : menus) {
                                      menu.list = std::make_unique<CQanhAppNameList>();
                                  }
                              }},
                             {"hash set",
                              [&] {
                                  for (const Menu& menu : menus) {
                                      menu.FillSet();
                                  }
                              },
                              [&] {
                                  for (Menu& menu : menus) {
                                      menu.set = std::make_unique<std::unordered_set<std::wstring>>();
                                  }
                              }}},
                            menus.size());
        if (!isQuick) {
            break;
        }
    }
}

} // namespace bench
