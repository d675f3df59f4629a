// The display name of the package of a family.

#include "unit/discovery/StoreQueries.h"

#include "support/FakeResources.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace store_test;
using test::Apartment;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr HRESULT kNoPackage = static_cast<HRESULT>(0xA0000001);

class DisplayNameOfFamily : public StoreQueries
{
protected:
    ~DisplayNameOfFamily() override { LocalFree(m_name); }

    void Install(const std::string& applications)
    {
        test::WriteFileBytes(m_folder / L"AppxManifest.xml",
                             "<Package><Applications>" + applications + "</Applications></Package>");
        test::PackageFacts facts;
        facts.familyName = kFamily;
        facts.path = m_folder.Path();
        m_store.Add(facts);
    }
    HRESULT Ask(const wchar_t* familyName = kFamily)
    {
        return CQanhPackageManager::GetAppDisplayNameByPFN(familyName, &m_name);
    }
    // The entry line shows the lower half of the out pointer.
    std::string EntryLine(const char* familyName, const void* pointer) const
    {
        char text[16];
        wsprintfA(text, "0x%08X", static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(pointer)));
        return std::string("CQanhPackageManager::GetAppDisplayNameByPFN(") + familyName + ", " + text +
               ") IN";
    }

    test::FakeResources m_resources;
    test::TemporaryFolder m_folder;
    wchar_t* m_name = nullptr;
};

TEST_F(DisplayNameOfFamily, IsThatOfItsManifest)
{
    Install("<Application><VisualElements DisplayName=\"Weather\"/></Application>");
    const test::LogCapture log;
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_STREQ(m_name, L"weather");
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 6u);
    EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 6),
                ElementsAre(EntryLine("mail_1", &m_name), "CQanhPackageManager::FindPackageByName(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                            "CQanhPackageManager::FindPackageByName OUT",
                            "CQanhManifestReader::GetAppDisplayName IN"));
    // A wide name, printed as a narrow one.
    EXPECT_EQ(lines[lines.size() - 2], "CQanhManifestReader::GetAppDisplayName OUT(0x00000000)");
    EXPECT_EQ(lines.back(), "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000000) DisplayName = w");
}

TEST_F(DisplayNameOfFamily, IsThatOfTheFirstPackage)
{
    Install("<Application><VisualElements DisplayName=\"First\"/></Application>");
    const test::TemporaryFolder folder;
    test::WriteFileBytes(folder / L"AppxManifest.xml",
                         "<Package><Applications><Application><VisualElements DisplayName=\"Second\"/>"
                         "</Application></Applications></Package>");
    test::PackageFacts facts;
    facts.familyName = kFamily;
    facts.path = folder.Path();
    m_store.Add(facts);
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_STREQ(m_name, L"first");
}

// The package's apartment is entered before the search and left after the package is given back.
TEST_F(DisplayNameOfFamily, IsReadInAnApartmentOfItsOwn)
{
    Install("<Application><VisualElements DisplayName=\"Weather\"/></Application>");
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(Ask(), S_OK); }));
    EXPECT_STREQ(m_name, L"weather");
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x00000000", "RoInitialize(0) = 0x00000001",
                                       "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                                       "ActivateInstance", "QueryInterface",
                                       "FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First",
                                       "HasCurrent", "Current", "RoUninitialize", "InstalledLocation",
                                       "QueryInterface", "Path", "RoUninitialize"));
}

TEST_F(DisplayNameOfFamily, IsHadInEveryApartment)
{
    Install("<Application><VisualElements DisplayName=\"ms-resource:Name\"/></Application>");
    m_resources
        .texts[L"@{Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe?ms-resource://Contoso.Mail/resources/name}"] =
        L"Weather";
    for (const Apartment apartment :
         {Apartment::kNone, Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        EXPECT_TRUE(test::KeepsApartment(apartment, [&] { EXPECT_EQ(Ask(), S_OK); }))
            << ::testing::PrintToString(apartment);
        EXPECT_STREQ(m_name, L"Weather");
        LocalFree(m_name);
        m_name = nullptr;
    }
}

// The package is held until the last line is written, and given back after it.
TEST_F(DisplayNameOfFamily, IsLoggedBeforeThePackageIsGivenBack)
{
    test::FakePackage* package = m_store.Add(kFamily);
    static test::FakePackage* s_package;
    static LONG s_references;
    static decltype(&CreateFileW) s_open;
    s_package = package;
    const test::LogCapture log;
    {
        const test::ImportPatch<decltype(&CreateFileW)> patch(
            "CreateFileW",
            [](const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD how,
               DWORD flags, HANDLE model) -> HANDLE {
                s_references = s_package->References();
                return s_open(path, access, share, security, how, flags, model);
            });
        s_open = patch.Original();
        Ask();
    }
    EXPECT_EQ(log.Lines().back().rfind("CQanhPackageManager::GetAppDisplayNameByPFN OUT(", 0), 0u);
    EXPECT_EQ(s_references, 1);
    EXPECT_EQ(package->References(), 0);
}

TEST_F(DisplayNameOfFamily, OfAnUnknownFamilyIsLeftAsItWas)
{
    wchar_t before[] = L"before";
    wchar_t* name = before;
    const test::LogCapture log;
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(L"none", &name), kNoPackage);
    EXPECT_EQ(name, before);
    EXPECT_EQ(Ask(L"none"), kNoPackage);
    EXPECT_EQ(m_name, nullptr);
    const std::vector<std::string> finding = {"CQanhPackageManager::FindPackageByName(none) IN",
                                              "CQanhPackageManager::GetPackageManager IN",
                                              "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                              "CQanhPackageManager::FindPackageByName OUT"};
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(EntryLine("none", &name), finding[0], finding[1], finding[2], finding[3],
                    "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = b",
                    EntryLine("none", &m_name), finding[0], finding[1], finding[2], finding[3],
                    "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)"));
}

TEST_F(DisplayNameOfFamily, OfSeveralApplicationsIsNone)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application><Application/>");
    EXPECT_EQ(Ask(), static_cast<HRESULT>(0xA0000002));
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayNameOfFamily, ThatIsMissingIsEmpty)
{
    Install("<Application><VisualElements/></Application>");
    const test::LogCapture log;
    EXPECT_EQ(Ask(), S_FALSE);
    EXPECT_STREQ(m_name, L"");
    EXPECT_EQ(log.Lines().back(),
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000001) DisplayName = ");
}

TEST_F(DisplayNameOfFamily, OfAnUnresolvedResourceIsHandedOutWithTheFailure)
{
    Install("<Application><VisualElements DisplayName=\"ms-resource:No\"/></Application>");
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_NE(m_name, nullptr);
}

TEST_F(DisplayNameOfFamily, NullAndEmptyArguments)
{
    const test::LogCapture log;
    EXPECT_EQ(Ask(nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(kFamily, nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(L"", nullptr), E_POINTER);
    EXPECT_EQ(Ask(L""), E_INVALIDARG);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            EntryLine("(null)", &m_name), "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80004003)",
            EntryLine("mail_1", nullptr), "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80004003)",
            EntryLine("", nullptr), "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80004003)",
            EntryLine("", &m_name), "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80070057)"));
}

TEST_F(DisplayNameOfFamily, WithoutAManagerIsAsOfAnUnknownFamily)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application>");
    m_store.initializeResult = E_OUTOFMEMORY;
    const test::LogCapture log;
    EXPECT_EQ(Ask(), kNoPackage);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(EntryLine("mail_1", &m_name), "CQanhPackageManager::FindPackageByName(mail_1) IN",
                    "CQanhPackageManager::GetPackageManager IN",
                    "CQanhPackageManager::GetPackageManager OUT(0x8007000E)",
                    "CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)",
                    "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)"));
}

TEST_F(DisplayNameOfFamily, AFailureOfTheFindingIsLoggedAndReturned)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application>");
    m_store.objects.Fail("Current", E_ACCESSDENIED);
    const test::LogCapture log;
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(),
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(" + Message(E_ACCESSDENIED) + ")");
}

TEST_F(DisplayNameOfFamily, SurvivesEveryFailingCall)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application>");
    EXPECT_EQ(Ask(), S_OK);
    const std::size_t calls = m_store.objects.Calls();
    ASSERT_GT(calls, 8u);
    for (std::size_t index = 0; index < calls; ++index) {
        LocalFree(m_name);
        m_name = nullptr;
        m_store.objects.FailCall(m_store.objects.Calls() + index, E_ACCESSDENIED);
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            EXPECT_EQ(Ask(), index < 3 ? kNoPackage : E_FAIL) << index;
            EXPECT_EQ(m_name, nullptr);
        }));
    }
}

} // namespace
