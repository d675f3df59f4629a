#include "catalog/ExcludeList.h"
#include "discovery/PackageManager.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>

namespace {

// The question is logged here and once more by the catalogue, whose answer it is.
TEST(ExcludeQuestion, IsPassedOnToTheCatalogue)
{
    const CQanhPackageManager manager;
    ExcludeList excluded;
    BOOL found = TRUE;
    const test::LogCapture log;
    EXPECT_EQ(manager.GetExcludeAppNameList(L"mail", &excluded, &found), S_OK);
    EXPECT_EQ(found, FALSE);
    EXPECT_THAT(log.Lines(),
                testing::ElementsAre("CQanhPackageManager::GetExcludeAppNameList(mail) IN",
                                     "CQanhAppNameList::GetExcludeAppNameList(mail) IN",
                                     "CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)",
                                     "CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)"));
    EXPECT_EQ(manager.GetExcludeAppNameList(L"", &excluded, &found), E_INVALIDARG);
}

} // namespace
