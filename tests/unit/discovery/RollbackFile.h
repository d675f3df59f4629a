#pragma once

#include "discovery/CatalogRollback.h"

#include "unit/discovery/FileSteps.h"

#include <shlwapi.h>
#include <wrl/client.h>

namespace discovery_test {

// A folder for a catalogue and what stands beside it while it is saved.
class CatalogRollbackFile : public ::testing::Test
{
protected:
    // The names of the catalogue's files in a folder, after the first dot: "xml", "xml.bak", "xml.tmp".
    static Lines FilesIn(const std::wstring& folder)
    {
        Lines files;
        WIN32_FIND_DATAW found{};
        const HANDLE find = FindFirstFileW((folder + L"\\App*").c_str(), &found);
        if (find != INVALID_HANDLE_VALUE) {
            do {
                const std::string name = ToUtf8(found.cFileName);
                files.push_back(name.substr(name.find('.') + 1));
            } while (FindNextFileW(find, &found));
            FindClose(find);
        }
        std::sort(files.begin(), files.end());
        return files;
    }
    Lines Files() const { return FilesIn(m_folder.Path()); }
    std::string Catalog() const { return ReadFileBytes(m_catalog); }
    std::string Bak() const { return ReadFileBytes(m_bak); }
    void WriteCatalog(std::string_view bytes) const { WriteFileBytes(m_catalog, bytes); }
    void WriteBak(std::string_view bytes) const { WriteFileBytes(m_bak, bytes); }

    // Begins a save over this catalogue, which must work.
    void BeginOver(std::string_view catalog)
    {
        WriteCatalog(catalog);
        ASSERT_EQ(m_rollback.Begin(), S_OK);
    }
    // The catalogue is alone, and holds this.
    void ExpectOnlyCatalog(const std::string& bytes) const
    {
        EXPECT_EQ(Files(), kCatalogOnly);
        EXPECT_EQ(Catalog(), bytes);
    }
    // Another program holds the catalogue; the result must be released.
    Microsoft::WRL::ComPtr<IStream> HoldCatalog() const
    {
        Microsoft::WRL::ComPtr<IStream> stream;
        EXPECT_EQ(SHCreateStreamOnFileW(m_catalog.c_str(), STGM_WRITE, &stream), S_OK);
        return stream;
    }

    const Lines kCatalogOnly = {"xml"};
    const Lines kBoth = {"xml", "xml.bak"};
    TemporaryFolder m_folder;
    const std::wstring m_catalog = m_folder / L"AppNameList.xml";
    const std::wstring m_bak = m_folder / L"AppNameList.xml.bak";
    const std::wstring m_tmp = m_folder / L"AppNameList.xml.tmp";
    CatalogRollback m_rollback{m_catalog.c_str()};
};

} // namespace discovery_test
