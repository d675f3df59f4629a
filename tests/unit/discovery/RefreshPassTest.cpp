// What one pass of the refresh thread does.

#include "unit/discovery/ThreadRun.h"

namespace {

using namespace discovery_test;

using RefreshPass = RefreshThread;

TEST_F(RefreshPass, StepsOfAPassComeInTheirOrder)
{
    WriteAndLoad(
        "<Applications><MetroApps><Package PackageFamilyName=\"b\" /><Package PackageFamilyName=\"a\" />"
        "</MetroApps><DesktopApps><DesktopApp DisplayName=\"z\" LnkFileName=\"C:\\z.lnk\" />"
        "<DesktopApp DisplayName=\"y\" LnkFileName=\"C:\\y.lnk\" /></DesktopApps></Applications>");
    m_store.Add(L"c");
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, ElementsAre(L"wait 1000", L"family b", L"family a", L"exists C:\\z.lnk",
                                     L"exists C:\\y.lnk", L"store", L"search " + Common() + L"\\*.lnk",
                                     L"search " + Common() + L"\\*.url", L"search " + Common() + L"\\*",
                                     L"search " + User() + L"\\*.lnk", L"search " + User() + L"\\*.url",
                                     L"search " + User() + L"\\*", L"save " + CatalogFile(), L"wait 180000"));
    EXPECT_THAT(Names(m_manager.m_AppNameList.PackageFamilyNames()), ElementsAre(L"b", L"a", L"c"));
}

TEST_F(RefreshPass, PackagesAreAskedForByTheirOwnNames)
{
    WriteAndLoad("<Applications><Package PackageFamilyName=\"b\" /><Package PackageFamilyName=\"\" />"
                 "</Applications>");
    EXPECT_EQ(Run(), 0u);
    ExpectLog(Lines{"QanhIsInstalled(b) IN", "QanhIsInstalled() IN"} + kStore + WalksLines() + SaveLines());
}

TEST_F(RefreshPass, PackagesCountAsInstalledUnlessTheStoreSaysNo)
{
    WriteAndLoad(
        "<Applications>"
        "<Package PackageFamilyName=\"there\" Version=\"1.0.0.0\" NeedReserve=\"1\" IsInstalled=\"0\" />"
        "<Package PackageFamilyName=\"gone\" Version=\"1.0.0.0\" NeedReserve=\"1\" />"
        "<Package PackageFamilyName=\"broken\" Version=\"1.0.0.0\" NeedReserve=\"1\" IsInstalled=\"0\" />"
        "<Package Version=\"2.0.0.0\" IsInstalled=\"0\" />"
        "</Applications>");
    m_store.Add(L"there");
    m_store.objects.Fail("First", E_ACCESSDENIED, 2); // of the search for the third
    // What the system lists would be marked too.
    m_store.objects.Fail("FindPackagesByUserSecurityId", E_ACCESSDENIED);
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(m_manager.m_AppNameList.GetPackage(L"there")->IsInstalled, 1);
    EXPECT_EQ(m_manager.m_AppNameList.GetPackage(L"gone")->IsInstalled, 0);
    EXPECT_EQ(m_manager.m_AppNameList.GetPackage(L"broken")->IsInstalled, 1);
    // A package without a name cannot be asked for, so it counts as installed and is saved.
    EXPECT_THAT(Saved(), HasSubstr("<Package PackageFamilyName=\"\" Version=\"2.0.0.0\" />"));
}

TEST_F(RefreshPass, DesktopRecordsAreInstalledWhileTheirShortcutExists)
{
    MakeFile(m_folder / L"there.lnk");
    MakeFolder(m_folder / L"folder.lnk");
    const std::wstring reserved = L"\" NeedReserve=\"1\" ";
    WriteAndLoad(ToUtf8(L"<Applications><DesktopApps><DesktopApp DisplayName=\"a\" LnkFileName=\"" +
                        (m_folder / L"there.lnk") + reserved +
                        L"IsInstalled=\"0\" /><DesktopApp DisplayName=\"b\" LnkFileName=\"" +
                        (m_folder / L"gone.lnk") + reserved +
                        L"/><DesktopApp DisplayName=\"c\" LnkFileName=\"" + (m_folder / L"gone too.lnk") +
                        L"\" /><DesktopApp DisplayName=\"d\" LnkFileName=\"" + (m_folder / L"folder.lnk") +
                        reserved + L"IsInstalled=\"0\" /><DesktopApp DisplayName=\"e\" NeedReserve=\"1\" />" +
                        L"</DesktopApps></Applications>"));
    EXPECT_EQ(Run(), 0u);
    const std::string saved = Saved();
    EXPECT_THAT(saved, HasSubstr(ToUtf8(m_folder / L"there.lnk") + "\" NeedReserve=\"1\" />"));
    EXPECT_THAT(saved,
                HasSubstr(ToUtf8(m_folder / L"gone.lnk") + "\" NeedReserve=\"1\" IsInstalled=\"0\" />"));
    // Gone and not reserved: not written any more.
    EXPECT_THAT(saved, Not(HasSubstr("gone too")));
    EXPECT_THAT(saved, HasSubstr(ToUtf8(m_folder / L"folder.lnk") + "\" NeedReserve=\"1\" />"));
    EXPECT_THAT(saved, HasSubstr("<DesktopApp DisplayName=\"e\" NeedReserve=\"1\" IsInstalled=\"0\" />"));
}

TEST_F(RefreshPass, RecordsThatTheWalkFindsAreNotMarkedInTheSamePass)
{
    MakeFile(Common() + L"\\A.lnk");
    MakeFile(User() + L"\\B.url");
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(Common() + L"\\A.lnk", User() + L"\\B.url"));
    EXPECT_THAT(m_steps, Not(Contains(L"exists " + Common() + L"\\A.lnk")));
    EXPECT_THAT(Saved(), HasSubstr("<DesktopApp DisplayName=\"B\""));
}

TEST_F(RefreshPass, AFailingStoreIsLoggedAndThePassGoesOn)
{
    WriteAndLoad("<Applications><Package PackageFamilyName=\"b\" /></Applications>");
    m_store.objects.Fail("RoGetActivationFactory", REGDB_E_CLASSNOTREG);
    EXPECT_EQ(Run(), 0u);
    ExpectLog(Lines{"QanhIsInstalled(b) IN"} + kStore +
              Lines{"CQanhPackageManager::RefreshThread RefreshMetroApps() failed. ErrCode = 0x80004005 "} +
              WalksLines() + SaveLines());
    EXPECT_EQ(m_manager.m_AppNameList.GetPackage(L"b")->IsInstalled, 0); // without a manager nothing is
}

TEST_F(RefreshPass, AMissingFolderIsLoggedAndThePassGoesOn)
{
    RemoveDirectoryW(Common().c_str());
    RemoveDirectoryW(User().c_str());
    EXPECT_EQ(Run(), 0u);
    // The wide folder is printed as a narrow text: its first letter.
    const Lines failed = {"CQanhPackageManager::RefreshThread pPyxPackageManager->RefreshDesktopApps" +
                          FirstLetter(m_folder.Path()) + " failed. ErrCode = 0x80004005 "};
    ExpectLog(kStore + WalkLines(Common(), 3) + failed + WalkLines(User(), 3) + failed + SaveLines());
}

TEST_F(RefreshPass, MutexStaysUntilTheFirstPassIsSaved)
{
    std::vector<std::wstring> withoutMutex;
    m_onStep = [&](const std::wstring& step) {
        if (!MutexExists()) {
            withoutMutex.push_back(step);
        }
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(withoutMutex, ElementsAre(L"wait 180000"));
    EXPECT_TRUE(Exists(CatalogFile()));
}

// The exit event is signalled in the middle of a pass: what is still done.
class InterruptedPass : public RefreshPass
{
protected:
    void RunUntil(const std::wstring& step)
    {
        MakeFile(Common() + L"\\A.lnk");
        MakeFile(User() + L"\\B.lnk");
        WriteAndLoad(CatalogOf({L"C:\\x.lnk", L"C:\\y.lnk"}));
        m_exitAt = step;
        EXPECT_EQ(Run(), 0u);
        EXPECT_FALSE(IsExitEventSignalled());
        EXPECT_EQ(ThreadLines().back(), kPassesOut[0]);
        EXPECT_EQ(m_steps.back(), L"wait 180000");
        ExpectMutexClosed();
    }
    bool WasSearched(const std::wstring& folder) const { return Steps(L"search " + folder + L"\\*.lnk") > 0; }
    bool WasSaved() const { return Steps(L"save " + CatalogFile()) > 0; }
};

TEST_F(InterruptedPass, WhileMarkingShortcutsLeavesTheRestAsItWasAndAsksTheStore)
{
    RunUntil(L"exists C:\\x.lnk");
    EXPECT_THAT(m_steps, ElementsAre(L"wait 1000", L"exists C:\\x.lnk", L"store", L"wait 180000"));
    ExpectLog(kStore);
    EXPECT_FALSE(Exists(CatalogFile()));
    // Neither shortcut exists. The one that was looked for does not count as installed any more.
    const std::wstring file = m_folder / L"now.xml";
    ASSERT_EQ(m_manager.m_AppNameList.Save(file.c_str()), S_OK);
    const std::string now = ReadFileBytes(file);
    EXPECT_THAT(now, Not(HasSubstr("C:\\x.lnk")));
    EXPECT_THAT(now, HasSubstr("C:\\y.lnk"));
}

TEST_F(InterruptedPass, WhileMarkingPackagesLeavesTheRestAsItWasAndAsksTheStore)
{
    WriteAndLoad("<Applications><Package PackageFamilyName=\"b\" /><Package PackageFamilyName=\"a\" />"
                 "</Applications>");
    RunUntil(L"family b");
    EXPECT_THAT(m_steps, ElementsAre(L"wait 1000", L"family b", L"store", L"wait 180000"));
    EXPECT_FALSE(Exists(CatalogFile()));
    // Neither package is installed.
    EXPECT_EQ(m_manager.m_AppNameList.GetPackage(L"b")->IsInstalled, 0);
    EXPECT_EQ(m_manager.m_AppNameList.GetPackage(L"a")->IsInstalled, 1);
}

TEST_F(InterruptedPass, WhileAskingTheStoreWalksNoFolder)
{
    RunUntil(L"store");
    EXPECT_EQ(Shortcuts(m_manager).size(), 2u);
    EXPECT_FALSE(WasSearched(Common()));
    EXPECT_FALSE(WasSearched(User()));
    EXPECT_FALSE(WasSaved());
}

TEST_F(InterruptedPass, WhileWalkingTheCommonFolderLeavesTheUsersOut)
{
    RunUntil(L"search " + Common() + L"\\*.lnk");
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\x.lnk", L"C:\\y.lnk", Common() + L"\\A.lnk"));
    EXPECT_FALSE(WasSearched(User()));
    EXPECT_FALSE(WasSaved());
}

TEST_F(InterruptedPass, WhileWalkingTheUsersFolderDoesNotSave)
{
    RunUntil(L"search " + User() + L"\\*.lnk");
    EXPECT_THAT(Shortcuts(m_manager),
                ElementsAre(L"C:\\x.lnk", L"C:\\y.lnk", Common() + L"\\A.lnk", User() + L"\\B.lnk"));
    EXPECT_FALSE(WasSaved());
}

TEST_F(InterruptedPass, WhileSavingSavesAll)
{
    RunUntil(L"save " + CatalogFile());
    EXPECT_THAT(Saved(), HasSubstr("DisplayName=\"B\""));
    EXPECT_EQ(m_waits, 2);
}

TEST_F(RefreshPass, RunningOutOfMemoryWhileMarkingDoesNotEndThePass)
{
    WriteAndLoad(CatalogOf({L"C:\\x.lnk"}));
    RunOutOfMemoryAfter(L"exists C:\\x.lnk");
    EXPECT_THAT(m_steps, Contains(L"save " + CatalogFile()));
    // The record was not marked.
    EXPECT_THAT(Saved(), HasSubstr("C:\\x.lnk"));
}

// A package that nobody could be asked about stays what it was, and the pass goes on.
TEST_F(RefreshPass, RunningOutOfMemoryBeforeThePackagesLeavesThemAsTheyWere)
{
    WriteAndLoad("<Applications><MetroApps><Package PackageFamilyName=\"mail_1\" Version=\"1.2.3.4\">"
                 "<MetroApp DisplayName=\"mail\" /></Package></MetroApps></Applications>");
    RunOutOfMemoryAfter(L"wait 1000");
    EXPECT_THAT(m_steps, Not(Contains(L"family mail_1")));
    EXPECT_THAT(m_steps, Contains(L"save " + CatalogFile()));
    EXPECT_THAT(Saved(), HasSubstr("mail_1"));
}

} // namespace
