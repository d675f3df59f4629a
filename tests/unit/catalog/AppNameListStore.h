#pragma once

#include "catalog/AppNameList.h"
#include "catalog/ExcludeList.h"
#include "common/Apartment.h"
#include "support/FakePackages.h"
#include "support/FakeResources.h"
#include "support/LogCapture.h"
#include "support/Registry.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace store_test {

inline constexpr wchar_t kFamily[] = L"Contoso.Mail_8wekyb3d8bbwe";

// A package of the system with a real manifest, and a catalogue.
class AppNameListStore : public ::testing::Test
{
protected:
    AppNameListStore() : m_package(m_objects.Make<test::FakePackage>(Facts())) { m_package->AddRef(); }
    ~AppNameListStore() override
    {
        m_package->Release();
        EXPECT_THAT(m_objects.Leaks(), ::testing::IsEmpty());
    }

    // A manifest with an application for each name.
    void WriteManifest(const std::vector<std::string>& displayNames, const std::string& tail = "")
    {
        std::string xml = "<Package><Applications>";
        for (const std::string& name : displayNames) {
            xml += "<Application><VisualElements DisplayName=\"" + name + "\"><DefaultTile ShortName=\"s " +
                   name + "\"/></VisualElements></Application>";
        }
        test::WriteFileBytes(m_folder / L"AppxManifest.xml", xml + tail + "</Applications></Package>");
    }

    HRESULT Add() { return m_list.AddMetroPackage(m_package); }
    const CQanhPackage* Record(const wchar_t* familyName = kFamily) { return m_list.GetPackage(familyName); }

    static std::vector<std::wstring> DisplayNames(const CQanhPackage* package)
    {
        std::vector<std::wstring> names;
        for (const auto& app : package->Apps()) {
            names.emplace_back(app->DisplayName.c_str());
        }
        return names;
    }
    std::vector<std::wstring> DisplayNames() { return DisplayNames(Record()); }

    static RecordVersion VersionOf(UINT16 major, UINT16 minor, UINT16 build, UINT16 revision)
    {
        RecordVersion version;
        version.Major = major;
        version.Minor = minor;
        version.Build = build;
        version.Revision = revision;
        return version;
    }

    // What a search for "app" must exclude.
    std::vector<std::wstring> Excluded() const
    {
        ExcludeList names;
        BOOL found = FALSE;
        EXPECT_EQ(m_list.GetExcludeAppNameList(L"app", &names, &found), S_OK);
        return test::Names(names);
    }

    // The log without the reader's steps.
    static std::vector<std::string> WithoutSteps(const test::LogCapture& log)
    {
        std::vector<std::string> lines;
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
    static std::vector<std::string> LinesFrom(const std::string& begin, const test::LogCapture& log)
    {
        std::vector<std::string> lines = log.Lines();
        const auto first = std::find_if(lines.begin(), lines.end(),
                                        [&](const std::string& line) { return line.starts_with(begin); });
        lines.erase(lines.begin(), first);
        return lines;
    }

    test::TemporaryFolder m_folder;
    test::ScopedKey m_settings{HKEY_LOCAL_MACHINE, test::kSettingsKey};
    test::FakeResources m_resources;
    const ComApartment m_apartment{CoInitialize(nullptr)}; // the package's
    test::FakeObjects m_objects;
    test::FakePackage* m_package;
    CQanhAppNameList m_list;

private:
    test::PackageFacts Facts() const
    {
        test::PackageFacts facts;
        facts.path = m_folder.Path();
        return facts;
    }
};

} // namespace store_test
