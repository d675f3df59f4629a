// The log of refresh passes over small Start menus, and what the catalogue file holds after them.
#include "system/RefreshLog.h"
#include "support/Text.h"

#include <algorithm>

namespace {

using namespace test;

TEST_F(RefreshLog, SmallTreeIsWalkedFolderByFolder)
{
    m_sandbox.AddCommonShortcut(L"B.url");
    m_sandbox.AddCommonShortcut(L"A.lnk");
    m_sandbox.AddCommonShortcut(L"Read me.txt");
    m_sandbox.AddCommonShortcut(L"Sub\\C.lnk");
    m_sandbox.AddUserShortcut(L"D.lnk");
    const std::string sub = std::string(commonPrograms) + "\\Sub";
    EXPECT_TRUE(IsGolden(
        FirstPass(),
        {Packages({}),
         FolderWith(commonPrograms,
                    {NewShortcut(commonPrograms, "A.lnk", 0), NewShortcut(commonPrograms, "B.url", 1),
                     FolderWith(sub, {NewShortcut(sub, "C.lnk", 2), NoShortcuts(sub, "*.url")})}),
         FolderWith(userPrograms,
                    {NewShortcut(userPrograms, "D.lnk", 3), NoShortcuts(userPrograms, "*.url")}),
         Saved({shortcut, shortcut, shortcut, shortcut})}));
}

TEST_F(RefreshLog, MissingUserFolderFailsAloneAndThePassGoesOn)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    std::vector<std::string> pass = FirstPass();
    pass.erase(pass.begin(),
               std::find(pass.begin(), pass.end(),
                         Filled("CQanhPackageManager::RefreshDesktopApps(<1>) IN", {userPrograms})));
    EXPECT_TRUE(IsGolden(pass, {MissingFolder(userPrograms), Saved({shortcut})}));
}

TEST_F(RefreshLog, ShortcutThatDisappearsKeepsItsRecordButLeavesTheFile)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0); // passes follow each other without a pause
    m_sandbox.AddCommonShortcut(L"A.lnk");
    m_sandbox.AddCommonShortcut(L"B.url");
    MakeFolder(m_sandbox.UserPrograms());
    m_host.Command("init");
    WaitForWholePass(m_sandbox);
    DeleteFileW((m_sandbox.CommonPrograms() + L"\\A.lnk").c_str());
    WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    const std::vector<std::string> log = m_sandbox.Log();

    // Both are known and found again.
    EXPECT_TRUE(IsGolden(PassesOf(log).at(1),
                         {Packages({}),
                          FolderWith(commonPrograms, {KnownShortcut(commonPrograms, "A.lnk", 0),
                                                      KnownShortcut(commonPrograms, "B.url", 1)}),
                          EmptyFolder(userPrograms), Saved({shortcut, shortcut})}));

    // The record of A is still there to be compared with B's path, but it is not written any more.
    EXPECT_TRUE(IsGolden(PassWith("CQanhDesktopApp::ToXmlNode OUT(0x00000001)", log),
                         {Packages({}),
                          FolderWith(commonPrograms, {NoShortcuts(commonPrograms, "*.lnk"),
                                                      KnownShortcut(commonPrograms, "B.url", 1)}),
                          EmptyFolder(userPrograms), Saved({shortcutThatIsLeftOut, shortcut})}));
    const std::string file = ReadFileBytes(m_sandbox.CatalogFile());
    EXPECT_EQ(file.find("A.lnk"), std::string::npos) << file;
    EXPECT_NE(file.find("B.url"), std::string::npos) << file;
}

TEST_F(RefreshLog, WrongArgumentsOfEveryExportAreTracedAndNothingElse)
{
    (void)FirstPass();
    const std::size_t offset = m_sandbox.LogLength();
    for (const char* command :
         {"installed\t(null)", "installed\t", "installed-by-id\t(null)", "installed-by-id\tfamily!app\tnull",
          "display-name\tfamily\tnull", "search\t0\t0\t(null)", "search\t1\t7\t", "search\t3\t0\tMail",
          "browser\t3\t0\t1", "browser\t0\t3\t0", "browser\t0\t4294967295\t1", "activate\t(null)\t(null)",
          "activate\t\targument", "release\t(null)"}) {
        m_host.Command(command);
    }
    EXPECT_TRUE(IsGolden(m_sandbox.Log(offset), R"(
        QanhIsInstalled((null)) IN ... OUT(0x80004003)
        QanhIsInstalled() IN ... OUT(0x80070057)
        QanhIsInstalledByAppUserModeID((null)) IN ... OUT(0x80004003)
        QanhIsInstalledByAppUserModeID(family!app) IN ... OUT(0x80004003)
        QanhGetAppDisplayNameByPFN(family, 0x00000000) IN ... OUT(0x80004003)
        QanhReleaseString IN ... OUT
        QanhLaunchBySearch((null), 0, 0) IN ... OUT(0x80004003)
        QanhLaunchBySearch(, 1, 7) IN ... OUT(0x80070057)
        QanhLaunchBySearch(Mail, 3, 0) IN ... OUT(0x80070057)
        QanhLaunchIEBySearch(3, 0, 1) IN ... OUT(0x80070057)
        QanhLaunchIEBySearch(0, 3, 0) IN ... OUT(0x80070057)
        QanhLaunchIEBySearch(0, -1, 1) IN ... OUT(0x80070057)
        QanhLaunchByManager((null), (null)) IN ... OUT(0x80004003)
        QanhLaunchByManager(, argument) IN ... OUT(0x80070057)
        QanhReleaseString IN ... OUT
    )"));
}

} // namespace
