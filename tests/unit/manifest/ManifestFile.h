#pragma once

#include "catalog/MetroApp.h"
#include "catalog/Package.h"
#include "common/Apartment.h"
#include "manifest/ManifestReader.h"
#include "support/FakePackages.h"
#include "support/FakeResources.h"
#include "support/Registry.h"
#include "support/Test.h"

namespace manifest_test {

using namespace test;
using namespace testing;

// The names of an application: display name and short name.
using Names = std::pair<std::wstring, std::wstring>;
using NameList = std::vector<Names>;

inline NameList NamesOf(const CQanhPackage& package)
{
    NameList names;
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

// An application without a tile.
inline std::string Named(const std::string& displayName)
{
    return "<Application><VisualElements DisplayName=\"" + displayName + "\"/></Application>";
}

// A whole manifest around its applications.
inline std::string Manifest(const std::string& applications)
{
    return "<Package><Identity Name=\"N\"/><Properties><DisplayName>Of the package</DisplayName></Properties>"
           "<Applications>" +
           applications + "</Applications></Package>";
}

// What the steps of a walk log.

inline Lines Found(const std::string& element)
{
    return Call("CQanhManifestReader::MoveToElementByName(" + element + ")", "(0x00000000)");
}
inline Lines NotFound(const std::string& element)
{
    return Call("CQanhManifestReader::MoveToElementByName(" + element + ")", "(0x00000001)");
}
inline Lines Value(const std::string& attribute)
{
    return Call("CQanhManifestReader::GetAttributeValueByName(" + attribute + ")", "(0x00000000)");
}
inline Lines NoValue(const std::string& attribute)
{
    return Call("CQanhManifestReader::GetAttributeValueByName(" + attribute + ")", "(0x00000001)");
}
// A reference of the package with full name "F" and name "N", which is looked for in these sources.
inline Lines Converted(const std::string& reference, const Lines& sources, const std::string& text)
{
    const std::string operation = "CQanhManifestReader::ConvertMsResourceToString";
    Lines tries;
    for (const std::string& source : sources) {
        tries.push_back(operation + " ms-resource = " + source + ")");
    }
    return Call(operation + "(" + reference + ", F, N, , 256)", "(pStr = " + text + ")", tries);
}

// A manifest in a folder of its own, the record of its package, and the package's resources.
class ManifestFile : public Test
{
protected:
    void Write(std::string_view text) { WriteFileBytes(Path(), text); }
    [[nodiscard]] std::wstring Path() const { return m_folder / L"AppxManifest.xml"; }

    // Reads the manifest into the record.
    HRESULT Parse() { return CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package); }
    HRESULT Parse(std::string_view text)
    {
        Write(text);
        return Parse();
    }

    // True when nobody has the manifest open, which may not even be there.
    [[nodiscard]] bool IsClosed() const
    {
        const HANDLE file =
            CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            CloseHandle(file);
        }
        return file != INVALID_HANDLE_VALUE || !Exists(Path());
    }

    // What stands in the log between brackets behind "OUT" when an operation ends with this result.
    static HRESULT Result(const std::string& logged)
    {
        return static_cast<HRESULT>(std::stoul(logged, nullptr, 16));
    }

    static constexpr HRESULT kMismatchedTag = static_cast<HRESULT>(0xC00CEE3B);

    TemporaryFolder m_folder;
    ScopedKey m_settings{HKEY_LOCAL_MACHINE, kSettingsKey};
    FakeResources m_resources;
    CQanhPackage m_package{L"N_8wekyb3d8bbwe", L"F", L"N", {1, 2, 3, 4}};
};

// The same with the package of the system whose manifest it is, and its display name.
class StoreManifest : public ManifestFile
{
protected:
    StoreManifest() : m_store(m_objects.Make<FakePackage>(Facts())) { m_store->AddRef(); }
    ~StoreManifest() override
    {
        LocalFree(m_name);
        m_store->Release();
        EXPECT_TRUE(IsClosed());
    }

    // Frees the name that was got before.
    HRESULT GetName()
    {
        LocalFree(m_name);
        m_name = nullptr;
        return CQanhManifestReader::GetAppDisplayName(m_store, &m_name);
    }

    const ComApartment m_apartment{CoInitialize(nullptr)}; // the package's
    FakeObjects m_objects;
    FakePackage* m_store;
    wchar_t* m_name = nullptr;

private:
    PackageFacts Facts() const
    {
        PackageFacts facts;
        facts.fullName = L"F";
        facts.name = L"N";
        facts.path = m_folder.Path();
        return facts;
    }
};

} // namespace manifest_test
