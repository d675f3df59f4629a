// Which of the two manifest readers is used.

#include "unit/manifest/FakeManifest.h"
#include "unit/manifest/ManifestFile.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace manifest_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr wchar_t kSetting[] = L"ManifestReaderSetting";

// The two readers give different names, so that they can be told apart.
class ManifestReaderSetting : public ManifestFile
{
protected:
    ManifestReaderSetting()
    {
        m_manifest.displayNames = {L"From the system"};
        Write(Manifest(Application("From the XML", "Tile")));
    }
    ~ManifestReaderSetting() override { EXPECT_THAT(m_manifest.Leaks(), IsEmpty()); }

    HRESULT Add() { return CQanhManifestReader::AddAppsToPackage(Path().c_str(), &m_package); }

    FakeManifest m_manifest;
};

TEST_F(ManifestReaderSetting, AbsentIsTheXml)
{
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 1u);
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"from the xml", L"tile")));
    EXPECT_THAT(m_manifest.objects.journal, IsEmpty());
}

TEST_F(ManifestReaderSetting, ZeroIsTheSystem)
{
    m_settings.SetDword(kSetting, 0);
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 0u);
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"From the system", L"")));
}

TEST_F(ManifestReaderSetting, OneIsTheXml)
{
    m_settings.SetDword(kSetting, 1);
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 1u);
    EXPECT_EQ(Add(), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"from the xml", L"tile")));
}

TEST_F(ManifestReaderSetting, EveryOtherNumberIsTheXml)
{
    for (const DWORD value : {2u, 3u, 0x80000000u, 0xFFFFFFFFu}) {
        m_settings.SetDword(kSetting, value);
        EXPECT_EQ(CQanhManifestReader::LoadSetting(), 1u);
        EXPECT_EQ(Add(), S_FALSE);
    }
    EXPECT_THAT(m_manifest.objects.journal, IsEmpty());
}

TEST_F(ManifestReaderSetting, AValueOfAnotherTypeIsTheXml)
{
    m_settings.SetText(kSetting, L"0");
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 1u);
    m_settings.SetBytes(kSetting, REG_QWORD, std::vector<BYTE>(8, 0));
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 1u);
}

TEST_F(ManifestReaderSetting, IsReadAnewForEachPackage)
{
    Add();
    m_settings.SetDword(kSetting, 0);
    Add();
    m_settings.DeleteValue(kSetting);
    Add();
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"from the xml", L"tile"), Pair(L"From the system", L""),
                                                Pair(L"from the xml", L"tile")));
}

TEST_F(ManifestReaderSetting, LogOfTheLoading)
{
    m_settings.SetDword(kSetting, 0);
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 0u);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhManifestReader::LoadSetting IN", "CQanhReg::GetManifestReaderSetting IN",
                            "CQanhReg::GetDWORDRegVal IN", "CQanhReg::GetDWORDRegVal OUT(1)",
                            "CQanhReg::GetManifestReaderSetting OUT(0)",
                            "CQanhManifestReader::LoadSetting OUT"));
}

TEST_F(ManifestReaderSetting, ResultOfTheSystemsReaderIsPassedOn)
{
    m_settings.SetDword(kSetting, 0);
    m_manifest.objects.Fail("CoCreateInstance", REGDB_E_CLASSNOTREG);
    const test::LogCapture log;
    EXPECT_EQ(Add(), REGDB_E_CLASSNOTREG);
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhManifestReader::AddAppsToPackage IN", "CQanhManifestReader::LoadSetting IN",
                            "CQanhReg::GetManifestReaderSetting IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(1)", "CQanhReg::GetManifestReaderSetting OUT(0)",
                            "CQanhManifestReader::LoadSetting OUT",
                            "CQanhManifestReader::GetAppNameUsingAPI IN",
                            "CQanhManifestReader::GetAppNameUsingAPI OUT(0x80040154)",
                            "CQanhManifestReader::AddAppsToPackage OUT(0x80040154)"));
}

TEST_F(ManifestReaderSetting, ResultOfTheXmlReaderIsPassedOn)
{
    DeleteFileW(Path().c_str());
    const test::LogCapture log;
    EXPECT_EQ(Add(), kNotFound);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhManifestReader::AddAppsToPackage IN", "CQanhManifestReader::LoadSetting IN",
                            "CQanhReg::GetManifestReaderSetting IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT", "CQanhReg::GetManifestReaderSetting OUT(1)",
                            "CQanhManifestReader::LoadSetting OUT",
                            "CQanhManifestReader::GetAppNameUsingXmlParser IN",
                            "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x80070002)",
                            "CQanhManifestReader::AddAppsToPackage OUT(0x80070002)"));
}

TEST_F(ManifestReaderSetting, ArgumentsAreTheReadersBusiness)
{
    for (const DWORD value : {0u, 1u}) {
        m_settings.SetDword(kSetting, value);
        EXPECT_EQ(CQanhManifestReader::AddAppsToPackage(nullptr, &m_package), E_POINTER);
        EXPECT_EQ(CQanhManifestReader::AddAppsToPackage(Path().c_str(), nullptr), E_POINTER);
        EXPECT_EQ(CQanhManifestReader::AddAppsToPackage(L"", &m_package), E_INVALIDARG);
    }
}

} // namespace
