#include "unit/discovery/Start.h"

namespace discovery_test {
namespace {

using ::testing::ElementsAre;

TEST_F(PackageManagerStart, AStartAfterAStopHoldsEveryRecordOnce)
{
    WriteCatalog();
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    ASSERT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    SetEvent(m_manager.m_hExitEvent);
    LetThreadRun();
    m_manager.Finalize();
    WriteCatalog();
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
}

TEST_F(PackageManagerStart, WhatStandsInTheCatalogBeforeTheFirstStartStays)
{
    WriteCatalog();
    EXPECT_EQ(m_manager.m_AppNameList.AddDesktopApp(L"early", L"C:\\early.lnk"), S_OK);
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\early.lnk", L"C:\\catalog.lnk"));
}

} // namespace
} // namespace discovery_test
