// The display name of the package of a family.

#include "unit/discovery/StoreQueries.h"

#include "support/FakeResources.h"

namespace {

using namespace store_test;

constexpr HRESULT kNoPackage = static_cast<HRESULT>(0xA0000001);

class DisplayNameOfFamily : public StoreQueries
{
protected:
    ~DisplayNameOfFamily() override { LocalFree(m_name); }

    // A package of the family whose manifest lies in this folder.
    void Install(const TemporaryFolder& folder, const std::string& applications)
    {
        WriteFileBytes(folder / L"AppxManifest.xml",
                       "<Package><Applications>" + applications + "</Applications></Package>");
        PackageFacts facts;
        facts.familyName = kFamily;
        facts.path = folder.Path();
        m_store.Add(facts);
    }
    static std::string Named(const std::string& name)
    {
        return "<Application><VisualElements DisplayName=\"" + name + "\"/></Application>";
    }

    HRESULT Ask(const wchar_t* familyName = kFamily)
    {
        return CQanhPackageManager::GetAppDisplayNameByPFN(familyName, &m_name);
    }
    void Reset()
    {
        LocalFree(m_name);
        m_name = nullptr;
    }

    // The entry line shows the lower half of the out pointer.
    static Lines AskLines(const std::string& familyName, const void* pointer, const std::string& result,
                          const Lines& finding = {})
    {
        return Call("CQanhPackageManager::GetAppDisplayNameByPFN(" + familyName + ", " +
                        Hexadecimal(pointer) + ")",
                    result, finding);
    }

    FakeResources m_resources;
    TemporaryFolder m_folder;
    wchar_t* m_name = nullptr;
};

TEST_F(DisplayNameOfFamily, IsThatOfItsManifest)
{
    Install(m_folder, Named("Weather"));
    const LogCapture log;
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_STREQ(m_name, L"weather");
    const Lines lines = log.Lines();
    // The name is a wide one, printed as a narrow one.
    const Lines ends = AskLines("mail_1", &m_name, "(0x00000000) DisplayName = w",
                                Call("CQanhPackageManager::FindPackageByName(mail_1)", "", ManagerLines()) +
                                    Call("CQanhManifestReader::GetAppDisplayName", "(0x00000000)"));
    ASSERT_GT(lines.size(), 7u);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 6), Lines(ends.begin(), ends.begin() + 6));
    EXPECT_EQ(Lines(lines.end() - 2, lines.end()), Lines(ends.end() - 2, ends.end()));
}

TEST_F(DisplayNameOfFamily, IsThatOfTheFirstPackage)
{
    const TemporaryFolder second;
    Install(m_folder, Named("First"));
    Install(second, Named("Second"));
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_STREQ(m_name, L"first");
}

// The package's apartment is entered before the search and left after the package is given back.
TEST_F(DisplayNameOfFamily, IsReadInAnApartmentOfItsOwn)
{
    Install(m_folder, Named("Weather"));
    InApartment(Apartment::kNone, [&] { EXPECT_EQ(Ask(), S_OK); });
    EXPECT_STREQ(m_name, L"weather");
    EXPECT_EQ(Journal(), Lines{"RoInitialize(0) = 0x00000000"} +
                             FindSteps("0x00000001", {"Current", "RoUninitialize", "InstalledLocation",
                                                      "QueryInterface", "Path", "RoUninitialize"}));
}

TEST_F(DisplayNameOfFamily, IsHadInEveryApartment)
{
    Install(m_folder, Named("ms-resource:Name"));
    m_resources.texts[kNameSource] = L"Weather";
    for (const Apartment apartment : kEveryApartment) {
        InApartment(apartment, [&] { EXPECT_EQ(Ask(), S_OK); });
        EXPECT_STREQ(m_name, L"Weather");
        Reset();
    }
}

// The package is held until the last line is written, and given back after it.
TEST_F(DisplayNameOfFamily, IsLoggedBeforeThePackageIsGivenBack)
{
    const FakePackage* package = m_store.Add(kFamily);
    LONG references = 0; // at the last line
    const LogCapture log;
    {
        const CapturingPatch<decltype(&CreateFileW)> patch(
            "CreateFileW", [&](const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                               DWORD how, DWORD flags, HANDLE model) {
                references = package->References();
                return patch.Original(path, access, share, security, how, flags, model);
            });
        Ask();
    }
    EXPECT_TRUE(log.Lines().back().starts_with("CQanhPackageManager::GetAppDisplayNameByPFN OUT("));
    EXPECT_EQ(references, 1);
    EXPECT_EQ(package->References(), 0);
}

TEST_F(DisplayNameOfFamily, OfAnUnknownFamilyIsLeftAsItWas)
{
    wchar_t before[] = L"before";
    wchar_t* name = before;
    const LogCapture log;
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(L"none", &name), kNoPackage);
    EXPECT_EQ(name, before);
    EXPECT_EQ(Ask(L"none"), kNoPackage);
    EXPECT_EQ(m_name, nullptr);
    const Lines finding = Call("CQanhPackageManager::FindPackageByName(none)", "", ManagerLines());
    EXPECT_EQ(log.Lines(), AskLines("none", &name, "(0xA0000001) DisplayName = b", finding) +
                               AskLines("none", &m_name, "(0xA0000001) DisplayName = (null)", finding));
}

TEST_F(DisplayNameOfFamily, ThatIsMissingIsEmpty)
{
    Install(m_folder, "<Application><VisualElements/></Application>");
    const LogCapture log;
    EXPECT_EQ(Ask(), S_FALSE);
    EXPECT_STREQ(m_name, L"");
    EXPECT_EQ(log.Lines().back(),
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000001) DisplayName = ");
}

TEST_F(DisplayNameOfFamily, OfAnUnresolvedResourceIsHandedOutWithTheFailure)
{
    Install(m_folder, Named("ms-resource:No"));
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_NE(m_name, nullptr);
}

TEST_F(DisplayNameOfFamily, NullAndEmptyArguments)
{
    const LogCapture log;
    EXPECT_EQ(Ask(nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(kFamily, nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(L"", nullptr), E_POINTER);
    EXPECT_EQ(Ask(L""), E_INVALIDARG);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_EQ(log.Lines(), AskLines("(null)", &m_name, "(0x80004003)") +
                               AskLines("mail_1", nullptr, "(0x80004003)") +
                               AskLines("", nullptr, "(0x80004003)") + AskLines("", &m_name, "(0x80070057)"));
}

TEST_F(DisplayNameOfFamily, WithoutAManagerIsAsOfAnUnknownFamily)
{
    Install(m_folder, Named("A"));
    m_store.initializeResult = E_OUTOFMEMORY;
    const LogCapture log;
    EXPECT_EQ(Ask(), kNoPackage);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines(), AskLines("mail_1", &m_name, "(0xA0000001) DisplayName = (null)",
                                    Call("CQanhPackageManager::FindPackageByName(mail_1)",
                                         "(GetPackageManager failed.)", ManagerLines("(0x8007000E)"))));
}

TEST_F(DisplayNameOfFamily, AFailureOfTheFindingIsLoggedAndReturned)
{
    Install(m_folder, Named("A"));
    m_store.objects.Fail("Current", E_ACCESSDENIED);
    const LogCapture log;
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(),
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(" + Message(E_ACCESSDENIED) + ")");
}

TEST_F(DisplayNameOfFamily, SurvivesEveryFailingCall)
{
    Install(m_folder, Named("A"));
    EXPECT_EQ(Ask(), S_OK);
    FailEachCall(8, [&](std::size_t index) {
        Reset();
        EXPECT_EQ(Ask(), index < 3 ? kNoPackage : E_FAIL);
        EXPECT_EQ(m_name, nullptr);
    });
}

} // namespace
