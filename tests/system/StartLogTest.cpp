// The whole log of bringing the library up and down in the first process of an executable.
#include "system/StartLog.h"
#include "support/Text.h"
#include "system/Golden.h"
#include "system/PassGoldens.h"
#include "system/Passes.h"
#include "system/StartGoldens.h"

namespace {

using namespace test;

TEST_F(StartLog, FirstRunWithoutAnyFileEndedAtOnce)
{
    test::HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine("CQanhReg::GetRefreshInterval OUT(720)");
    host.Do("finalize"); // waits for the first pass
    // The first lines are lost: their folder is made by the operation whose exit is the first to be seen.
    EXPECT_TRUE(IsGolden(sandbox.Log(), {
                                            "CQanhPackageManager::CreateAppNameListFolder OUT(C)",
                                            presetIsChosen,
                                            presetIsOpened,
                                            presetIsMissing,
                                            firstProcessIsUp,
                                            threadBegins,
                                            IntervalIsRead(false, 720),
                                            finalizeBegins,
                                            passBegin,
                                            noPackages,
                                            MissingFolder(commonPrograms),
                                            MissingFolder(userPrograms),
                                            saveBegin,
                                            saveEnd,
                                            mutexIsGone,
                                            threadEnds,
                                            finalizeEnds,
                                        }));
}

TEST_F(StartLog, LaterRunEndedAfterTheFirstPass)
{
    MakeLogFolder();
    test::WriteFileBytes(sandbox.CatalogFile(), test::emptyCatalog);
    sandbox.Settings().SetDword(L"RefreshInterval", 5);
    sandbox.AddCommonShortcut(L"A.lnk");
    sandbox.AddUserShortcut(L"B.url");
    test::HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine("CQanhReg::GetRefreshInterval OUT(5)");
    test::WaitForFirstPass();
    host.Do("finalize");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {
                                            firstProcessBegins,
                                            catalogIsOpened,
                                            nothingIsRead,
                                            firstProcessIsUp,
                                            threadBegins,
                                            IntervalIsRead(true, 5),
                                            passBegin,
                                            noPackages,
                                            FolderBegins(commonPrograms),
                                            NewShortcut(commonPrograms, "A.lnk", 0),
                                            NoShortcuts(commonPrograms, "*.url"),
                                            folderEnds,
                                            FolderBegins(userPrograms),
                                            NoShortcuts(userPrograms, "*.lnk"),
                                            NewShortcut(userPrograms, "B.url", 1),
                                            folderEnds,
                                            saveBegin,
                                            shortcutIsWritten,
                                            shortcutIsWritten,
                                            saveEnd,
                                            finalizeBegins,
                                            threadEnds,
                                            finalizeEnds,
                                        }));
}

TEST_F(StartLog, FirstRunWithAPreset)
{
    MakeLogFolder();
    test::WriteFileBytes(
        sandbox.PresetFile(),
        "<Applications><MetroApps>"
        "<Package PackageFamilyName=\"Vel.Notes_x\" Version=\"1.2.3.4\" NeedReserve=\"1\">"
        "<MetroApp DisplayName=\"notes\" ShortName=\"nt\"/></Package>"
        "<Package PackageFamilyName=\"Vel.Gone_x\" Version=\"1.0.0.0\"/>"
        "</MetroApps><DesktopApps>"
        "<DesktopApp DisplayName=\"Gone\" LnkFileName=\"C:\\nowhere\\Gone.lnk\"/>"
        "<DesktopApp DisplayName=\"Kept\" LnkFileName=\"C:\\nowhere\\Kept.lnk\" NeedReserve=\"1\"/>"
        "</DesktopApps></Applications>");
    test::MakeFolder(sandbox.CommonPrograms());
    test::MakeFolder(sandbox.UserPrograms());
    test::HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine("CQanhAppNameList::Save OUT(0x00000000)");
    EXPECT_TRUE(IsGolden(sandbox.Log(), {
                                            firstProcessBegins,
                                            presetIsChosen,
                                            presetIsOpened,
                                            R"(
        CQanhPackage::FromXmlNode IN
        CQanhMetroApp::FromXmlNode IN
        CQanhMetroApp::FromXmlNode OUT(0x00000000)
        CQanhPackage::AddApplication IN
        CQanhPackage::AddApplication OUT(0x00000000)
        CQanhPackage::FromXmlNode OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhPackage::FromXmlNode IN
        CQanhPackage::FromXmlNode OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage IN
        CQanhAppNameList::AddMetroPackage OUT(0x00000000)
        CQanhAppNameList::ReadDesktopApps IN
        CQanhDesktopApp::FromXmlNode IN
        CQanhDesktopApp::FromXmlNode OUT(0x00000000)
        CQanhDesktopApp::FromXmlNode IN
        CQanhDesktopApp::FromXmlNode OUT(0x00000000)
        CQanhAppNameList::ReadDesktopApps OUT(0x00000000)
        CQanhAppNameList::Load OUT(0x00000001)
                                            )",
                                            firstProcessIsUp,
                                            threadBegins,
                                            IntervalIsRead(false, 720),
                                            passBegin,
                                            PackageIsInstalled("Vel.Notes_x", false),
                                            PackageIsInstalled("Vel.Gone_x", false),
                                            noPackages,
                                            noShortcuts,
                                            saveBegin,
                                            packageIsWritten,
                                            emptyPackageIsWritten,
                                            shortcutIsLeftOut,
                                            shortcutIsWritten,
                                            saveEnd,
                                        }));
}

} // namespace
