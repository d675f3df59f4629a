#pragma once

#include "Catalogs.h"
#include "support/FakePackages.h"
#include "support/TemporaryFolder.h"

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

// What a first pass finds: folders of a Start menu, seven tenths of it all users', manifests of packages, and
// a place for the catalogue. The environment of this program points there until the end of the scope.
class Machine
{
public:
    Machine(std::size_t shortcuts, std::size_t packages);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // Where the library saves.
    [[nodiscard]] std::wstring CatalogFile() const;
    // Where somebody else may save.
    [[nodiscard]] std::wstring OtherFile() const { return m_folder / L"bare.xml"; }

    std::vector<std::wstring> programs; // the folders of the Start menu
    std::vector<test::PackageFacts> packages;
    Catalog catalog; // what there is to be found

private:
    void AddShortcut(std::size_t number);
    void AddPackage(std::size_t number);

    test::TemporaryFolder m_folder;
    test::ScopedEnvironment m_local;
    test::ScopedEnvironment m_roaming;
    test::ScopedEnvironment m_common;
};

} // namespace bench
