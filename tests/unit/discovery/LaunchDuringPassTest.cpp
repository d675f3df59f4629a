// What a launch sees of the catalogue while a refresh pass works on it.

#include "catalog/ExcludeList.h"
#include "unit/discovery/ThreadRun.h"

#include <map>

namespace {

using namespace discovery_test;

class LaunchDuringPass : public RefreshThread
{
protected:
    // What a search for "mail" must exclude.
    std::vector<std::wstring> Excluded()
    {
        ExcludeList list;
        BOOL found = FALSE;
        EXPECT_EQ(m_manager.m_AppNameList.GetExcludeAppNameList(L"mail", &list, &found), S_OK);
        return Names(list);
    }
};

TEST_F(LaunchDuringPass, SeesAtOnceWhatThePassHasFound)
{
    WriteAndLoad(
        "<Applications><Package PackageFamilyName='gone'><MetroApp DisplayName='gone mail'/></Package>"
        "<DesktopApps><DesktopApp DisplayName='lost mail' LnkFileName='C:\\lost.lnk'/></DesktopApps>"
        "</Applications>");
    WriteFileBytes(Common() + L"\\new mail.lnk", "");
    WriteFileBytes(User() + L"\\own mail.url", "");
    std::map<std::wstring, std::vector<std::wstring>> seen;
    m_onStep = [&](const std::wstring& step) { seen[step] = Excluded(); };
    EXPECT_EQ(Run(), 0u);
    // Each step of the pass, and the launch right before it.
    EXPECT_THAT(seen.at(L"family gone"), ElementsAre(L"gone mail", L"lost mail"));
    EXPECT_THAT(seen.at(L"exists C:\\lost.lnk"), ElementsAre(L"lost mail"));
    EXPECT_THAT(seen.at(L"store"), IsEmpty());
    EXPECT_THAT(seen.at(L"search " + Common() + L"\\*.lnk"), IsEmpty());
    EXPECT_THAT(seen.at(L"search " + Common() + L"\\*.url"), ElementsAre(L"new mail"));
    EXPECT_THAT(seen.at(L"search " + User() + L"\\*.url"), ElementsAre(L"new mail"));
    EXPECT_THAT(seen.at(L"save " + CatalogFile()), ElementsAre(L"new mail", L"own mail"));
}

} // namespace
