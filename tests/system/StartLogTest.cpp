// The whole log of bringing the library up and down in the first process of an executable.
#include "system/StartLog.h"
#include "support/Text.h"
#include "system/PassGoldens.h"
#include "system/Passes.h"
#include "system/StartGoldens.h"

namespace {

using namespace test;

TEST_F(StartLog, FirstRunWithoutAnyFileEndedAtOnce)
{
    HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine("CQanhReg::GetRefreshInterval OUT(720)");
    host.Do("finalize"); // waits for the first pass
    // The first lines are lost: their folder is made by the operation whose exit is the first to be seen.
    EXPECT_TRUE(IsGolden(sandbox.Log(),
                         {"CQanhPackageManager::CreateAppNameListFolder OUT(C)", presetIsOpened,
                          presetIsMissing, firstProcessIsUp, ThreadBegins(), IntervalIsRead(false, "720"),
                          finalizeBegins, passBegin, Packages({}), MissingFolder(commonPrograms),
                          MissingFolder(userPrograms), Saved({}), mutexIsGone, threadEnds, finalizeEnds}));
}

TEST_F(StartLog, LaterRunEndedAfterTheFirstPass)
{
    MakeLogFolder();
    WriteFileBytes(sandbox.CatalogFile(), emptyCatalog);
    sandbox.Settings().SetDword(L"RefreshInterval", 5);
    sandbox.AddCommonShortcut(L"A.lnk");
    sandbox.AddUserShortcut(L"B.url");
    HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine("CQanhReg::GetRefreshInterval OUT(5)");
    WaitForFirstPass();
    host.Do("finalize");
    EXPECT_TRUE(
        IsGolden(sandbox.Log(), {FirstProcessBegins(), catalogIsOpened, nothingIsRead, firstProcessIsUp,
                                 ThreadBegins(), IntervalIsRead(true, "5"), passBegin, Packages({}),
                                 FolderWith(commonPrograms, {NewShortcut(commonPrograms, "A.lnk", 0),
                                                             NoShortcuts(commonPrograms, "*.url")}),
                                 FolderWith(userPrograms, {NoShortcuts(userPrograms, "*.lnk"),
                                                           NewShortcut(userPrograms, "B.url", 1)}),
                                 Saved({shortcut, shortcut}), finalizeBegins, threadEnds, finalizeEnds}));
}

TEST_F(StartLog, FirstRunWithAPreset)
{
    MakeLogFolder();
    WriteFileBytes(
        sandbox.PresetFile(),
        "<Applications><MetroApps>"
        "<Package PackageFamilyName=\"Vel.Notes_x\" Version=\"1.2.3.4\" NeedReserve=\"1\">"
        "<MetroApp DisplayName=\"notes\" ShortName=\"nt\"/></Package>"
        "<Package PackageFamilyName=\"Vel.Gone_x\" Version=\"1.0.0.0\"/>"
        "</MetroApps><DesktopApps>"
        "<DesktopApp DisplayName=\"Gone\" LnkFileName=\"C:\\nowhere\\Gone.lnk\"/>"
        "<DesktopApp DisplayName=\"Kept\" LnkFileName=\"C:\\nowhere\\Kept.lnk\" NeedReserve=\"1\"/>"
        "</DesktopApps></Applications>");
    MakeFolder(sandbox.CommonPrograms());
    MakeFolder(sandbox.UserPrograms());
    HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine(passEnd);
    constexpr char recordsAreRead[] = R"(
        CQanhPackage::FromXmlNode IN
        CQanhMetroApp::FromXmlNode IN ... OUT(0x00000000)
        CQanhPackage::AddApplication IN ... OUT(0x00000000)
        CQanhPackage::FromXmlNode OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage IN ... OUT(0x00000000)
        CQanhPackage::FromXmlNode IN ... OUT(0x00000000)
        CQanhAppNameList::AddMetroPackage IN ... OUT(0x00000000)
        CQanhAppNameList::ReadDesktopApps IN
        CQanhDesktopApp::FromXmlNode IN ... OUT(0x00000000)
        CQanhDesktopApp::FromXmlNode IN ... OUT(0x00000000)
        CQanhAppNameList::ReadDesktopApps OUT(0x00000000)
        CQanhAppNameList::Load OUT(0x00000001)
    )";
    EXPECT_TRUE(
        IsGolden(sandbox.Log(),
                 {FirstProcessBegins(), presetIsOpened, recordsAreRead, firstProcessIsUp, ThreadBegins(),
                  IntervalIsRead(false, "720"), passBegin, PackageIsInstalled("Vel.Notes_x", false),
                  PackageIsInstalled("Vel.Gone_x", false), Packages({}), EmptyStartMenu(),
                  Saved({packageWithOneApplication, emptyPackage, shortcutThatIsLeftOut, shortcut})}));
}

} // namespace
