// The log of refresh passes over small Start menus, and what the catalogue file holds after them.
#include "support/Text.h"
#include "system/Golden.h"
#include "system/HostProcess.h"
#include "system/PassGoldens.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace test;

class RefreshLog : public testing::Test
{
protected:
    // The lines of the first pass.
    std::vector<std::string> FirstPass()
    {
        m_host.Command("init");
        m_sandbox.WaitForLogLine(test::passEnd);
        return test::PassesOf(m_sandbox.Log()).at(0);
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
};

TEST_F(RefreshLog, SmallTreeIsWalkedFolderByFolder)
{
    m_sandbox.AddCommonShortcut(L"B.url");
    m_sandbox.AddCommonShortcut(L"A.lnk");
    m_sandbox.AddCommonShortcut(L"Read me.txt");
    m_sandbox.AddCommonShortcut(L"Sub\\C.lnk");
    m_sandbox.AddUserShortcut(L"D.lnk");
    const std::string sub = commonPrograms + "\\Sub";
    EXPECT_TRUE(IsGolden(FirstPass(), {
                                          noPackages,
                                          FolderBegins(commonPrograms),
                                          NewShortcut(commonPrograms, "A.lnk", 0),
                                          NewShortcut(commonPrograms, "B.url", 1),
                                          FolderBegins(sub),
                                          NewShortcut(sub, "C.lnk", 2),
                                          NoShortcuts(sub, "*.url"),
                                          folderEnds,
                                          folderEnds,
                                          FolderBegins(userPrograms),
                                          NewShortcut(userPrograms, "D.lnk", 3),
                                          NoShortcuts(userPrograms, "*.url"),
                                          folderEnds,
                                          saveBegin,
                                          shortcutIsWritten,
                                          shortcutIsWritten,
                                          shortcutIsWritten,
                                          shortcutIsWritten,
                                          saveEnd,
                                      }));
}

TEST_F(RefreshLog, MissingUserFolderFailsAloneAndThePassGoesOn)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    const std::vector<std::string> pass = FirstPass();
    const auto user =
        std::find(pass.begin(), pass.end(),
                  "CQanhPackageManager::RefreshDesktopApps(<roaming>\\Microsoft\\Windows\\Start "
                  "Menu\\Programs) IN");
    EXPECT_TRUE(IsGolden(std::vector<std::string>(user, pass.end()),
                         {MissingFolder(userPrograms), saveBegin, shortcutIsWritten, saveEnd}));
}

TEST_F(RefreshLog, ShortcutThatDisappearsKeepsItsRecordButLeavesTheFile)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0); // passes follow each other without a pause
    m_sandbox.AddCommonShortcut(L"A.lnk");
    m_sandbox.AddCommonShortcut(L"B.url");
    test::MakeFolder(m_sandbox.UserPrograms());
    m_host.Command("init");
    test::WaitForWholePass(m_sandbox);
    DeleteFileW((m_sandbox.CommonPrograms() + L"\\A.lnk").c_str());
    test::WaitForWholePass(m_sandbox);
    m_host.Do("finalize");
    const std::vector<std::string> log = m_sandbox.Log();

    // Both are known and found again.
    EXPECT_TRUE(IsGolden(test::PassesOf(log).at(1), {
                                                        noPackages,
                                                        FolderBegins(commonPrograms),
                                                        KnownShortcut(commonPrograms, "A.lnk", 0),
                                                        KnownShortcut(commonPrograms, "B.url", 1),
                                                        folderEnds,
                                                        EmptyFolder(userPrograms),
                                                        saveBegin,
                                                        shortcutIsWritten,
                                                        shortcutIsWritten,
                                                        saveEnd,
                                                    }));

    // The record of A is still there to be compared with B's path, but it is not written any more.
    EXPECT_TRUE(IsGolden(test::PassWith("CQanhDesktopApp::ToXmlNode OUT(0x00000001)", log),
                         {
                             noPackages,
                             FolderBegins(commonPrograms),
                             NoShortcuts(commonPrograms, "*.lnk"),
                             KnownShortcut(commonPrograms, "B.url", 1),
                             folderEnds,
                             EmptyFolder(userPrograms),
                             saveBegin,
                             shortcutIsLeftOut,
                             shortcutIsWritten,
                             saveEnd,
                         }));
    const std::string file = test::ReadFileBytes(m_sandbox.CatalogFile());
    EXPECT_EQ(file.find("A.lnk"), std::string::npos) << file;
    EXPECT_NE(file.find("B.url"), std::string::npos) << file;
}

TEST_F(RefreshLog, WrongArgumentsOfEveryExportAreTracedAndNothingElse)
{
    m_host.Command("init");
    m_sandbox.WaitForLogLine(test::passEnd);
    const std::size_t offset = m_sandbox.LogLength();
    m_host.Command("installed\t(null)");
    m_host.Command("installed\t");
    m_host.Command("installed-by-id\t(null)");
    m_host.Command("installed-by-id\tfamily!app\tnull");
    m_host.Command("display-name\tfamily\tnull");
    m_host.Command("search\t0\t0\t(null)");
    m_host.Command("search\t1\t7\t");
    m_host.Command("search\t3\t0\tMail");
    m_host.Command("browser\t3\t0\t1");
    m_host.Command("browser\t0\t3\t0");
    m_host.Command("activate\t(null)\t(null)");
    m_host.Command("activate\t\targument");
    m_host.Command("release\t(null)");
    EXPECT_TRUE(IsGolden(m_sandbox.Log(offset), R"(
        QanhIsInstalled((null)) IN
        QanhIsInstalled OUT(0x80004003)
        QanhIsInstalled() IN
        QanhIsInstalled OUT(0x80070057)
        QanhIsInstalledByAppUserModeID((null)) IN
        QanhIsInstalledByAppUserModeID OUT(0x80004003)
        QanhIsInstalledByAppUserModeID(family!app) IN
        QanhIsInstalledByAppUserModeID OUT(0x80004003)
        QanhGetAppDisplayNameByPFN(family, 0x00000000) IN
        QanhGetAppDisplayNameByPFN OUT(0x80004003)
        QanhReleaseString IN
        QanhReleaseString OUT
        QanhLaunchBySearch((null), 0, 0) IN
        QanhLaunchBySearch OUT(0x80004003)
        QanhLaunchBySearch(, 1, 7) IN
        QanhLaunchBySearch OUT(0x80070057)
        QanhLaunchBySearch(Mail, 3, 0) IN
        QanhLaunchBySearch OUT(0x80070057)
        QanhLaunchIEBySearch(3, 0, 1) IN
        QanhLaunchIEBySearch OUT(0x80070057)
        QanhLaunchIEBySearch(0, 3, 0) IN
        QanhLaunchIEBySearch OUT(0x80070057)
        QanhLaunchByManager((null), (null)) IN
        QanhLaunchByManager OUT(0x80004003)
        QanhLaunchByManager(, argument) IN
        QanhLaunchByManager OUT(0x80070057)
        QanhReleaseString IN
        QanhReleaseString OUT
    )"));
}

} // namespace
