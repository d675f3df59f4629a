#pragma once

#include "common/Apartment.h"
#include "support/FakePackages.h"
#include "support/FakeResources.h"
#include "support/Registry.h"
#include "unit/catalog/Records.h"

#include <algorithm>
#include <optional>

namespace store_test {

using namespace test;

inline constexpr wchar_t kFamily[] = L"Contoso.Mail_8wekyb3d8bbwe";

// What the adding of a package logs: how it is looked up, and what follows.
inline Lines Adding(const std::string& result, const Lines& lookUp, const Lines& rest = {})
{
    return Call("CQanhAppNameList::AddMetroPackage", result,
                Call("CQanhAppNameList::GetPackage(Contoso.Mail_8wekyb3d8bbwe)", "", lookUp) + rest);
}

// In a catalogue that holds this package only.
inline Lines Known()
{
    return Call("CQanhPackage::IsThisPackage(Contoso.Mail_8wekyb3d8bbwe)", "(1)");
}

// What the reading of the one application "Mail" logs, without the reader's steps.
inline Lines ReadingMail()
{
    return Call("CQanhManifestReader::AddAppsToPackage", "(0x00000001)",
                Call("CQanhManifestReader::LoadSetting") +
                    Call("CQanhManifestReader::GetAppNameUsingXmlParser", "(0x00000001)",
                         Call("CQanhPackage::AddApplication(mail, s mail)", "(0x00000000)")));
}

// A package of the system with a real manifest, and a catalogue.
class AppNameListStore : public Test
{
protected:
    AppNameListStore() : m_package(m_objects.Make<FakePackage>(Facts())) { m_package->AddRef(); }
    ~AppNameListStore() override { m_package->Release(); }

    // A manifest with an application for each name.
    void WriteManifest(const std::vector<std::string>& displayNames, const std::string& tail = "")
    {
        std::string xml = "<Package><Applications>";
        for (const std::string& name : displayNames) {
            xml += "<Application><VisualElements DisplayName=\"" + name + "\"><DefaultTile ShortName=\"s " +
                   name + "\"/></VisualElements></Application>";
        }
        WriteFileBytes(m_folder / L"AppxManifest.xml", xml + tail + "</Applications></Package>");
    }

    HRESULT Add() { return m_list.AddMetroPackage(m_package); }
    const CQanhPackage* Record(const wchar_t* familyName = kFamily) { return m_list.GetPackage(familyName); }

    static std::vector<std::wstring> DisplayNames(const CQanhPackage* package)
    {
        return test::DisplayNames(package->Apps());
    }
    std::vector<std::wstring> DisplayNames() { return DisplayNames(Record()); }

    // The package is in the list once, like this.
    void ExpectRecord(const RecordVersion& version, const std::vector<std::wstring>& displayNames,
                      const wchar_t* fullName = L"Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe",
                      const wchar_t* name = L"Contoso.Mail")
    {
        ASSERT_NE(Record(), nullptr);
        EXPECT_STREQ(Record()->PackageFamilyName.c_str(), kFamily);
        EXPECT_EQ(Record()->Version, version);
        EXPECT_EQ(DisplayNames(), displayNames);
        EXPECT_STREQ(Record()->FullName.c_str(), fullName);
        EXPECT_STREQ(Record()->Name.c_str(), name);
        EXPECT_EQ(m_list.PackageFamilyNames().size(), 1u);
    }

    // The package gets other names, which say nothing of what it is.
    void Rename()
    {
        m_package->facts.fullName = L"another full name";
        m_package->facts.name = L"another name";
    }

    // The package was added with one application, and has another version now.
    void AddAndChangeVersion()
    {
        WriteManifest({"Mail"});
        EXPECT_EQ(Add(), S_OK);
        m_package->facts.version.Major = 2;
    }

    // The system's manifest reader is set, and cannot be made.
    void BreakTheSystemsReader()
    {
        m_settings.SetDword(L"ManifestReaderSetting", 0);
        m_noObjects.emplace("CoCreateInstance", [](REFCLSID, IUnknown*, DWORD, REFIID, void**) -> HRESULT {
            return REGDB_E_CLASSNOTREG;
        });
    }

    static RecordVersion VersionOf(UINT16 major, UINT16 minor, UINT16 build, UINT16 revision)
    {
        return {major, minor, revision, build};
    }

    // What a search for "app" must exclude.
    std::vector<std::wstring> Excluded() const
    {
        const SearchAnswer answer = Ask(m_list, L"app");
        EXPECT_EQ(answer.result, S_OK);
        return answer.excluded;
    }

    // The log without the reader's steps.
    static Lines WithoutSteps(const LogCapture& log)
    {
        Lines lines;
        for (const std::string& line : log.Lines()) {
            if (line.find("MoveToElementByName") == std::string::npos &&
                line.find("GetAttributeValueByName") == std::string::npos &&
                line.find("ManifestReaderSetting") == std::string::npos &&
                line.find("GetDWORDRegVal") == std::string::npos) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    // The log from the first line on that begins like this.
    static Lines LinesFrom(const std::string& begin, const LogCapture& log)
    {
        Lines lines = log.Lines();
        const auto first = std::find_if(lines.begin(), lines.end(),
                                        [&](const std::string& line) { return line.starts_with(begin); });
        lines.erase(lines.begin(), first);
        return lines;
    }

    TemporaryFolder m_folder;
    ScopedKey m_settings{HKEY_LOCAL_MACHINE, kSettingsKey};
    FakeResources m_resources;
    const ComApartment m_apartment{CoInitialize(nullptr)}; // the package's
    FakeObjects m_objects;
    FakePackage* m_package;
    CQanhAppNameList m_list;
    std::optional<ImportPatch<decltype(&CoCreateInstance)>> m_noObjects;

private:
    PackageFacts Facts() const
    {
        PackageFacts facts;
        facts.path = m_folder.Path();
        return facts;
    }
};

} // namespace store_test
