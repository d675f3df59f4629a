// Which of the two manifest readers is used.

#include "unit/manifest/FakeManifest.h"
#include "unit/manifest/ManifestFile.h"

namespace {

using namespace manifest_test;

constexpr wchar_t kSetting[] = L"ManifestReaderSetting";

// The two readers give different names, so that they can be told apart.
const Names kOfTheXml = {L"from the xml", L"tile"};
const Names kOfTheSystem = {L"From the system", L""};

class ManifestReaderSetting : public ManifestFile
{
protected:
    ManifestReaderSetting()
    {
        m_manifest.displayNames = {L"From the system"};
        Write(Manifest(Application("From the XML", "Tile")));
    }

    HRESULT Add() { return CQanhManifestReader::AddAppsToPackage(Path().c_str(), &m_package); }

    void ExpectTheXml()
    {
        m_package.DeleteAllApp();
        EXPECT_EQ(CQanhManifestReader::LoadSetting(), 1u);
        EXPECT_EQ(Add(), S_FALSE);
        EXPECT_EQ(NamesOf(m_package), NameList{kOfTheXml});
        EXPECT_THAT(m_manifest.objects.journal, IsEmpty());
    }

    // Adds with the reader that is set; the log has this loading of the setting, and this reader and result.
    void ExpectLog(const Lines& loading, const std::string& reader, const std::string& exit)
    {
        const LogCapture log;
        EXPECT_EQ(Add(), Result(exit));
        EXPECT_THAT(NamesOf(m_package), IsEmpty());
        EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::AddAppsToPackage", "(" + exit + ")",
                                    loading + Call("CQanhManifestReader::" + reader, "(" + exit + ")")));
    }

    FakeManifest m_manifest;
};

// The log of the loading of the setting.
Lines Loading(const std::string& registry, const std::string& setting)
{
    return Call(
        "CQanhManifestReader::LoadSetting", "",
        Call("CQanhReg::GetManifestReaderSetting", setting, Call("CQanhReg::GetDWORDRegVal", registry)));
}

TEST_F(ManifestReaderSetting, IsTheXmlUnlessItIsTheNumberZero)
{
    ExpectTheXml(); // when it is absent
    for (const DWORD value : {1u, 2u, 3u, 0x80000000u, 0xFFFFFFFFu}) {
        m_settings.SetDword(kSetting, value);
        ExpectTheXml();
    }
    m_settings.SetText(kSetting, L"0");
    ExpectTheXml();
    m_settings.SetBytes(kSetting, REG_QWORD, std::vector<BYTE>(8, 0));
    ExpectTheXml();
}

TEST_F(ManifestReaderSetting, ZeroIsTheSystem)
{
    m_settings.SetDword(kSetting, 0);
    const LogCapture log;
    EXPECT_EQ(CQanhManifestReader::LoadSetting(), 0u);
    EXPECT_EQ(log.Lines(), Loading("(1)", "(0)"));
    EXPECT_EQ(Add(), S_OK);
    EXPECT_EQ(NamesOf(m_package), NameList{kOfTheSystem});
}

TEST_F(ManifestReaderSetting, IsReadAnewForEachPackage)
{
    Add();
    m_settings.SetDword(kSetting, 0);
    Add();
    m_settings.DeleteValue(kSetting);
    Add();
    EXPECT_EQ(NamesOf(m_package), (NameList{kOfTheXml, kOfTheSystem, kOfTheXml}));
}

TEST_F(ManifestReaderSetting, ResultOfTheReaderIsPassedOn)
{
    DeleteFileW(Path().c_str());
    ExpectLog(Loading("", "(1)"), "GetAppNameUsingXmlParser", "0x80070002");
    m_settings.SetDword(kSetting, 0);
    m_manifest.objects.Fail("CoCreateInstance", REGDB_E_CLASSNOTREG);
    ExpectLog(Loading("(1)", "(0)"), "GetAppNameUsingAPI", "0x80040154");
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
