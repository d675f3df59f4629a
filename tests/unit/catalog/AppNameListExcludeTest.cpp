// Which names a search must exclude, asked of the whole catalogue.

#include "catalog/AppNameList.h"

#include "unit/catalog/Records.h"

namespace {

using namespace test;

constexpr char kCatalogue[] = R"(<Applications><MetroApps>
<Package PackageFamilyName="mail_1"><MetroApp DisplayName="mail and calendar"/><MetroApp DisplayName="x" ShortName="my mail"/></Package>
<Package PackageFamilyName="gone_1" IsInstalled="0"><MetroApp DisplayName="mail that is gone"/></Package>
<Package PackageFamilyName="reserved_1" IsInstalled="0" NeedReserve="1"><MetroApp DisplayName="reserved mail"/></Package>
<Package PackageFamilyName="web_1"><MetroApp DisplayName="web mail"/><MetroApp DisplayName="MY MAIL"/></Package>
<Package PackageFamilyName="word_1"><MetroApp DisplayName="viewer word"/></Package>
</MetroApps><DesktopApps>
<DesktopApp DisplayName="mail merge" LnkFileName="C:\1.lnk"/>
<DesktopApp DisplayName="old mail" LnkFileName="C:\2.lnk" IsInstalled="0"/>
<DesktopApp DisplayName="My Mail" LnkFileName="C:\3.lnk"/>
<DesktopApp DisplayName="Mail" LnkFileName="C:\4.lnk"/>
<DesktopApp DisplayName="a mail reader" LnkFileName="C:\5.lnk"/>
<DesktopApp DisplayName="Dual" LnkFileName="C:\6.lnk" IsDualMode="1"/>
<DesktopApp DisplayName="web mail" LnkFileName="C:\7.lnk"/>
</DesktopApps></Applications>)";

class AppNameListExclude : public Test
{
protected:
    AppNameListExclude() { LoadText(m_list, kCatalogue); }

    CQanhAppNameList m_list;
};

TEST_F(AppNameListExclude, CollectsNamesInTheOrderOfTheCatalogueOnceEach)
{
    EXPECT_EQ(
        Ask(m_list, L"Mail"),
        (SearchAnswer{
            S_OK, 1, {L"mail and calendar", L"my mail", L"web mail", L"mail merge", L"a mail reader"}}));
}

TEST_F(AppNameListExclude, KeepsWhatARecordFoundThoughTheOthersDoNot)
{
    CQanhAppNameList packages;
    LoadText(packages, R"(<a><Package><MetroApp DisplayName="b a"/></Package>
        <Package><MetroApp DisplayName="c"/></Package><DesktopApps><DesktopApp DisplayName="c"/></DesktopApps></a>)");
    EXPECT_EQ(Ask(packages, L"a b"), kFound);
    CQanhAppNameList desktopApps;
    LoadText(desktopApps,
             R"(<DesktopApps><DesktopApp DisplayName="a"/><DesktopApp DisplayName="b"/></DesktopApps>)");
    EXPECT_EQ(Ask(desktopApps, L"a"), kFound);
}

TEST_F(AppNameListExclude, ClearsFoundWhenThereIsNothing)
{
    EXPECT_EQ(Ask(CQanhAppNameList(), L"mail"), kNothing);
    EXPECT_EQ(Ask(m_list, L"mail that is gone"), kNothing);
}

TEST_F(AppNameListExclude, AddsToWhatTheListHoldsAlready)
{
    EXPECT_EQ(
        Ask(m_list, L"mail", {L"WEB MAIL"}),
        (SearchAnswer{
            S_OK, 1, {L"WEB MAIL", L"mail and calendar", L"my mail", L"mail merge", L"a mail reader"}}));
}

TEST_F(AppNameListExclude, FollowsTheInstalledFlags)
{
    m_list.SetPackagesInstalled({FALSE, TRUE, TRUE, FALSE, FALSE});
    m_list.SetDesktopAppsInstalled({FALSE, TRUE, FALSE, FALSE, FALSE, FALSE, FALSE});
    EXPECT_EQ(Ask(m_list, L"mail"), Excluding({L"mail that is gone", L"reserved mail", L"old mail"}));
}

TEST_F(AppNameListExclude, ChecksItsArgumentsAndTouchesNothingThen)
{
    ExpectArgumentChecks(m_list);
}

TEST_F(AppNameListExclude, IgnoresWhatTheRecordsReturn)
{
    const NoCopies noCopies;
    const LogCapture log;
    EXPECT_EQ(Ask(m_list, L"mail"), kNothing);
    EXPECT_THAT(log.Lines(), Contains("CQanhMetroApp::AddToExcludeAppNameList OUT(0x8007000E)").Times(5));
    EXPECT_THAT(log.Lines(), Contains("CQanhDesktopApp::AddToExcludeAppNameList OUT(0x8007000E)").Times(6));
}

TEST_F(AppNameListExclude, LogsEveryRecordThatIsAsked)
{
    CQanhAppNameList list;
    LoadText(list,
             R"(<a><Package><MetroApp DisplayName="Mail"/></Package><Package IsInstalled="0"><MetroApp/>
        </Package><DesktopApps><DesktopApp DisplayName="mail"/><DesktopApp IsInstalled="0"/></DesktopApps></a>)");
    const LogCapture log;
    Ask(list, L"mail");
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::GetExcludeAppNameList(mail)", "(0x00000000)",
                                Call("CQanhPackage::AddAppNameToExcludeList(mail)", "",
                                     Call("CQanhMetroApp::AddToExcludeAppNameList(mail)", "(0x00000000)")) +
                                    Call("CQanhPackage::AddAppNameToExcludeList(mail)") +
                                    Call("CQanhDesktopApp::AddToExcludeAppNameList(mail)", "(0x00000000)") +
                                    Call("CQanhDesktopApp::AddToExcludeAppNameList(mail)", "(0x00000001)")));
}

TEST_F(AppNameListExclude, LogsItsEarlyExits)
{
    const LogCapture log;
    ExcludeList excluded;
    EXPECT_EQ(m_list.GetExcludeAppNameList(nullptr, &excluded, nullptr), E_POINTER);
    Ask(m_list, L"");
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::GetExcludeAppNameList((null))", "(0x80004003)") +
                               Call("CQanhAppNameList::GetExcludeAppNameList()", "(0x80070057)"));
}

// It is the work that grows with the catalogue otherwise.
TEST_F(AppNameListExclude, MakesTheWantedNameReadyOnce)
{
    ExcludeList excluded;
    BOOL found = FALSE;
    const test::CopyWatch copies;
    EXPECT_EQ(m_list.GetExcludeAppNameList(L"Mail", &excluded, &found), S_OK);
    EXPECT_EQ(copies.Freed(), L"mail");
}

} // namespace
