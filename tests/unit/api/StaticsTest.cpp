#include "api/Statics.h"

#include "QanHelper.h"
#include "catalog/ExcludeList.h"
#include "unit/api/FakeShell.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(Statics, AreDownUntilTheyAreInitialized)
{
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(s_MonitorMode.m_pImmersiveMode, nullptr);
    EXPECT_EQ(s_PackageManager.m_hExitEvent, nullptr);
    EXPECT_EQ(s_PackageManager.m_hRefreshThread, nullptr);
    EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
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

// The thread is dead then, wherever it stood, and the catalogue must not be touched any more.
TEST(Statics, ProcessMayEndWhileTheLibraryIsUp)
{
    EXPECT_EXIT(
        {
            const api_test::FakeShell shell;
            const HRESULT hr = QanhInitialize();
            std::exit(SUCCEEDED(hr) && s_nCount == 1 ? 7 : 1);
        },
        ::testing::ExitedWithCode(7), "");
}

} // namespace
