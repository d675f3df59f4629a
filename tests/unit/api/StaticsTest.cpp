#include "api/Statics.h"

#include "catalog/ExcludeList.h"
#include "unit/api/LifecycleHost.h"

#include <cstdlib>
#include <memory>
#include <process.h>

namespace {

TEST(Statics, AreDownUntilTheyAreInitialized)
{
    api_test::ExpectDown();
}

TEST(Statics, CatalogueIsEmptyAndUsableBeforeInitialization)
{
    ExcludeList excludeList;
    BOOL isFound = TRUE;
    EXPECT_EQ(s_PackageManager.m_AppNameList.GetExcludeAppNameList(L"Mail", &excludeList, &isFound), S_OK);
    EXPECT_TRUE(excludeList.IsEmpty());
    EXPECT_FALSE(isFound);
    EXPECT_EQ(s_PackageManager.m_AppNameList.GetPackage(L"Contoso.Mail_8wekyb3d8bbwe"), nullptr);
}

// A record that shows, by the process' exit code, that the catalogue is destroyed.
class TellingApp : public CQanhApp
{
public:
    TellingApp() : CQanhApp(L"Mail", L"") {}
    ~TellingApp() override { _exit(9); }
    TellingApp(const TellingApp&) = delete;
    TellingApp& operator=(const TellingApp&) = delete;

    HRESULT AddToExcludeAppNameList(const WantedName&, ExcludeList*, BOOL*) const override { return S_OK; }
    HRESULT ToXmlNode(IXmlWriter*) const override { return S_OK; }
};

void AddTellingApp()
{
    auto package = std::make_unique<CQanhPackage>(L"Contoso.Mail_x", RecordVersion(), TRUE, TRUE);
    EXPECT_EQ(package->AddApplication(std::make_unique<TellingApp>()), S_OK);
    EXPECT_EQ(s_PackageManager.m_AppNameList.AddMetroPackage(std::move(package)), S_OK);
}

TEST(Statics, CatalogueIsDestroyedAtTheEndOfTheProcess)
{
    EXPECT_EXIT(
        {
            AddTellingApp();
            std::exit(7);
        },
        ::testing::ExitedWithCode(9), "");
}

// The refresh thread is dead then, wherever it stood, and the catalogue may be half changed.
TEST(Statics, CatalogueIsLeftAloneWhenTheProcessEndsWhileTheLibraryIsUp)
{
    EXPECT_EXIT(
        {
            const test::FakeShell shell;
            const HRESULT hr = QanhInitialize();
            AddTellingApp();
            std::exit(SUCCEEDED(hr) && s_PackageManager.m_hRefreshThread ? 7 : 1);
        },
        ::testing::ExitedWithCode(7), "");
}

} // namespace
