// The catalogue file on disk: what a pass writes, what the next start reads.
#include "support/CutDocument.h"
#include "support/Text.h"
#include "system/FirstPassOfAnother.h"
#include "system/HostProcess.h"
#include "system/QueryFor.h"
#include "system/StoreCatalog.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using CatalogFile = test::StoreCatalog;

TEST_F(CatalogFile, HoldsWhatAPresetBroughtIn)
{
    const test::ScopedEnvironment variable(L"QANH_TEST_FOLDER", L"C:\\nowhere");
    test::MakeFile(m_sandbox.Folder() + L"\\There.lnk");
    test::WriteFileBytes(
        m_sandbox.PresetFile(),
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<applications><metroapps>"
        "<package packagefamilyname=\"Vel.Notes_x\" version=\"1.2.3.4\" needreserve=\"yes\">"
        "<metroapp displayname=\"Notes\" shortname=\"nt\" rubydisplayname=\"ノート\" rubyshortname=\"ノ\"/></package>"
        "<Package PackageFamilyName=\"Vel.Gone_x\" Version=\"1.0.0.0\"><MetroApp DisplayName=\"gone\"/></Package>"
        "</metroapps><other/><desktopapps>"
        "<DesktopApp DisplayName=\"Kept\" LnkFileName=\"%QANH_TEST_FOLDER%\\Kept.lnk\" LocalizeName=\"Bewahrt\" "
        "RubyDisplayName=\"r\" NeedReserve=\"1\" IsDualMode=\"1\"/>"
        "<DesktopApp DisplayName=\"Gone\" LnkFileName=\"C:\\nowhere\\Gone.lnk\"/>"
        "<DesktopApp DisplayName=\"There\" LnkFileName=\"" +
            test::ToUtf8(m_sandbox.Folder()) +
            "\\There.lnk\" IsInstalled=\"0\" IsDualMode=\"yes\"/>"
            "</desktopapps></applications>");
    test::HostProcess host(m_sandbox);
    host.InitializeAndPass();
    std::string folder = test::ToUtf8(m_sandbox.Folder());
    EXPECT_EQ(Bytes(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                       "<Applications>\r\n"
                       "  <MetroApps>\r\n"
                       "    <Package PackageFamilyName=\"Vel.Notes_x\" Version=\"1.2.4.3\" NeedReserve=\"1\" "
                       "IsInstalled=\"0\">\r\n"
                       "      <MetroApp DisplayName=\"Notes\" ShortName=\"nt\" RubyDisplayName=\"ノート\" "
                       "RubyShortName=\"ノ\" />\r\n"
                       "    </Package>\r\n"
                       "  </MetroApps>\r\n"
                       "  <DesktopApps>\r\n"
                       "    <DesktopApp DisplayName=\"Kept\" LnkFileName=\"C:\\nowhere\\Kept.lnk\" "
                       "LocalizeName=\"Bewahrt\" RubyDisplayName=\"r\" NeedReserve=\"1\" IsInstalled=\"0\" "
                       "IsDualMode=\"1\" />\r\n"
                       "    <DesktopApp DisplayName=\"There\" LnkFileName=\"" +
                           folder +
                           "\\There.lnk\" />\r\n"
                           "  </DesktopApps>");
}

// A backup program may read it meanwhile. What only the preset knew is in no other place than the catalogue
// by then.
TEST_F(CatalogFile, HeldByAnotherProgramAtTheNextStartItCostsNoRecord)
{
    test::WriteFileBytes(m_sandbox.PresetFile(),
                         test::CatalogueOf("kept", "C:\\nowhere\\x.lnk", "NeedReserve=\"1\""));
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("init"), "0x00000000");
    host.Do("finalize");
    const std::string before = Bytes();
    EXPECT_NE(before.find("\"kept\""), std::string::npos) << before;
    const HANDLE backup = CreateFileW(m_sandbox.CatalogFile().c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(backup, INVALID_HANDLE_VALUE);
    EXPECT_EQ(host.Command("init"), "0x00000000");
    CloseHandle(backup);
    host.Do("finalize");
    EXPECT_EQ(Bytes(), before);
}

TEST_F(CatalogFile, NamesWithMarkupAreEscapedAndReadBack)
{
    m_sandbox.AddCommonShortcut(L"rock & roll.lnk");
    RunOnePass();
    EXPECT_NE(Bytes().find("DisplayName=\"rock &amp; roll\""), std::string::npos) << Bytes();
    // As the preset of a process that is not the first, which looks for no shortcuts of its own.
    test::WriteFileBytes(m_sandbox.PresetFile(), test::ReadFileBytes(m_sandbox.CatalogFile()));
    const test::FirstPassOfAnother owner;
    test::HostProcess host(m_sandbox);
    EXPECT_EQ(host.Command("init"), "0x00000001");
    EXPECT_EQ(test::QueryFor(m_sandbox, host, "roll"), "\"roll\" NOT(\"rock & roll\")");
}

TEST_F(CatalogFile, GoesBeforeThePreset)
{
    test::MakeFolder(m_sandbox.CatalogFolder());
    test::WriteFileBytes(m_sandbox.CatalogFile(), test::CatalogueOf("mine mail", "x"));
    test::WriteFileBytes(m_sandbox.PresetFile(), test::CatalogueOf("preset mail", "y"));
    test::HostProcess host(m_sandbox);
    host.Command("init");
    EXPECT_EQ(test::QueryFor(m_sandbox, host, "mail"), "\"mail\" NOT(\"mine mail\")");
}

constexpr char wholeCatalog[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>\r\n  <MetroApps>\r\n"
    "    <Package PackageFamilyName=\"Vel.Notes_x\" Version=\"1.2.3.4\" NeedReserve=\"1\">\r\n"
    "      <MetroApp DisplayName=\"notes\" ShortName=\"nt\" />\r\n    </Package>\r\n  </MetroApps>\r\n"
    "  <DesktopApps>\r\n    <DesktopApp DisplayName=\"web mail\" LnkFileName=\"C:\\メール.lnk\" />\r\n"
    "    <!-- -->\r\n  </DesktopApps>\r\n</Applications>";

TEST_F(CatalogFile, CutOffAtAnyByteItNeitherStopsNorHangsTheHost)
{
    m_sandbox.Settings().DeleteValue(L"DebugLog");
    test::HostProcess host(m_sandbox);
    // As the preset of a process that is not the first: every start reads it, and none writes.
    const test::FirstPassOfAnother owner;
    const std::string whole = wholeCatalog;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const std::string cut = whole.substr(0, length);
        if (test::EndsTheProcess(cut)) {
            continue;
        }
        test::WriteFileBytes(m_sandbox.PresetFile(), cut);
        const std::string result = host.Command("init");
        if (result.starts_with("0x0")) {
            host.Do("finalize");
        } else {
            EXPECT_TRUE(result.starts_with("0x8") || result.starts_with("0xC")) << result;
        }
    }
    EXPECT_EQ(host.Exit(), 0u);
}

TEST_F(CatalogFile, CutOffItIsReplacedByTheFirstPass)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    const std::string whole = wholeCatalog;
    test::MakeFolder(m_sandbox.CatalogFolder());
    for (const std::size_t length :
         {std::size_t(0), std::size_t(45), whole.find("Version"), whole.find("<MetroApp "),
          whole.find(" mail"), whole.find("</DesktopApps>")}) {
        test::WriteFileBytes(m_sandbox.CatalogFile(), whole.substr(0, length));
        SCOPED_TRACE("cut at " + std::to_string(length));
        RunOnePass();
        EXPECT_NE(Bytes().find("A.lnk"), std::string::npos);
    }
}

} // namespace
