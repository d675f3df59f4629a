#pragma once

#include "catalog/MetroApp.h"
#include "catalog/Package.h"
#include "manifest/ManifestReader.h"
#include "support/FakeResources.h"
#include "support/LogCapture.h"
#include "support/Registry.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace manifest_test {

// The names of an application: display name and short name.
using Names = std::pair<std::wstring, std::wstring>;

inline std::vector<Names> NamesOf(const CQanhPackage& package)
{
    std::vector<Names> names;
    for (const auto& app : package.Apps()) {
        const auto& metroApp = dynamic_cast<const CQanhMetroApp&>(*app);
        EXPECT_TRUE(metroApp.RubyDisplayName.empty());
        EXPECT_TRUE(metroApp.RubyShortName.empty());
        names.emplace_back(metroApp.DisplayName.c_str(), metroApp.ShortName.c_str());
    }
    return names;
}

// The XML of one application as manifests have it.
inline std::string Application(const std::string& displayName, const std::string& shortName)
{
    return "<Application Id=\"App\"><VisualElements DisplayName=\"" + displayName +
           "\" Logo=\"logo.png\"><DefaultTile ShortName=\"" + shortName +
           "\" ShowName=\"allLogos\"/></VisualElements></Application>";
}

// A whole manifest around its applications.
inline std::string Manifest(const std::string& applications)
{
    return "<Package><Identity Name=\"N\"/><Properties><DisplayName>Of the package</DisplayName></Properties>"
           "<Applications>" +
           applications + "</Applications></Package>";
}

// A manifest in a folder of its own, the record of its package, and the package's resources.
class ManifestFile : public ::testing::Test
{
protected:
    void Write(std::string_view text) { test::WriteFileBytes(Path(), text); }
    [[nodiscard]] std::wstring Path() const { return m_folder / L"AppxManifest.xml"; }

    // Writes the text and reads it into the record.
    HRESULT Parse(std::string_view text)
    {
        Write(text);
        return CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package);
    }

    // True when nobody has the manifest open any more.
    [[nodiscard]] bool IsClosed() const
    {
        const HANDLE file =
            CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            CloseHandle(file);
        }
        return file != INVALID_HANDLE_VALUE;
    }

    static constexpr HRESULT kMismatchedTag = static_cast<HRESULT>(0xC00CEE3B);
    static constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80070002);

    test::TemporaryFolder m_folder;
    test::ScopedKey m_settings{HKEY_LOCAL_MACHINE, test::kSettingsKey};
    test::FakeResources m_resources;
    CQanhPackage m_package{L"N_8wekyb3d8bbwe", L"F", L"N", {1, 2, 3, 4}};
};

} // namespace manifest_test
