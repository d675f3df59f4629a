// The whole log of bringing the library up and down in the first process of an executable.
#include "system/StartLog.h"
#include "support/Text.h"
#include "system/Golden.h"

namespace {

using test::IsGolden;

using StartLog = test::StartLog;

TEST_F(StartLog, FirstRunWithoutAnyFileEndedAtOnce)
{
    test::HostProcess host(sandbox);
    EXPECT_EQ(Initialize(host), "0x00000000");
    sandbox.WaitForLogLine("CQanhReg::GetRefreshInterval OUT(720)");
    host.Do("finalize"); // waits for the first pass
    // The first lines are lost: their folder is made by the operation whose exit is the first to be seen.
    EXPECT_TRUE(IsGolden(sandbox.Log(), R"(
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
        CQanhPackageManager::GetPresetAppNameFullPath IN
        CQanhPackageManager::GetPresetAppNameFullPath OUT(C)
        CQanhAppNameList::Load(<host>\PresetAppNameList.xml) IN
        CQanhAppNameList::Load OUT(0x80070002)
        m_AppNameList.Load() failed. ErrCode = 0x80070002 <end>
        CQanhPackageManager::Initialize OUT(0x00000000)
        QanhInitialize OUT(0) : s_nCount(1)
        CQanhPackageManager::RefreshThread IN
        CQanhPackageManager::CreateAppNameListFolder IN
        CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
        CQanhReg::GetRefreshInterval IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(0)
        CQanhReg::GetRefreshInterval OUT(720)
        QanhFinalize IN
        CQanhPackageManager::Finalize IN
        CQanhPackageManager::RefreshThread Refresh app name list!
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
        CQanhPackageManager::RefreshDesktopApps(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        <allusers>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 3 <end>
        CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        <allusers>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 3 <end>
        Errcode = 3 <end>
        CQanhPackageManager::RefreshThread pPyxPackageManager->RefreshDesktopApps(C) failed. ErrCode = 0x80004005 <end>
        CQanhPackageManager::RefreshDesktopApps(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        <roaming>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 3 <end>
        CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        <roaming>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 3 <end>
        Errcode = 3 <end>
        CQanhPackageManager::RefreshThread pPyxPackageManager->RefreshDesktopApps(C) failed. ErrCode = 0x80004005 <end>
        CQanhAppNameList::Save(<local>\Vel\QanHelper\TestHost\AppNameList.xml) IN
        CQanhAppNameList::Save OUT(0x00000000)
        OpenMutex() : Mutex none. <end>
        CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)
        CQanhPackageManager::Finalize OUT
        CQanhMonitorMode::Finalize IN
        CQanhMonitorMode::Finalize OUT
        QanhFinalize OUT : s_nCount(0)
    )"));
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
    EXPECT_TRUE(IsGolden(sandbox.Log(), R"(
        QanhInitialize IN
        CQanhMonitorMode::Initialize IN
        CQanhMonitorMode::Initialize OUT(0)
        CQanhPackageManager::Initialize IN
        CQanhPackageManager::GetModuleName IN
        CQanhPackageManager::GetModuleName OUT(T)
        CQanhPackageManager::Initialize CreateMutex() success. <end>
        CQanhPackageManager::CreateAppNameListFolder IN
        CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
        CQanhAppNameList::Load(<local>\Vel\QanHelper\TestHost\AppNameList.xml) IN
        CQanhAppNameList::ReadDesktopApps IN
        CQanhAppNameList::ReadDesktopApps OUT(0x00000000)
        CQanhAppNameList::Load OUT(0x00000001)
        CQanhPackageManager::Initialize OUT(0x00000000)
        QanhInitialize OUT(0) : s_nCount(1)
        CQanhPackageManager::RefreshThread IN
        CQanhPackageManager::CreateAppNameListFolder IN
        CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
        CQanhReg::GetRefreshInterval IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(1)
        CQanhReg::GetRefreshInterval OUT(5)
        CQanhPackageManager::RefreshThread Refresh app name list!
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
        CQanhPackageManager::RefreshDesktopApps(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhAppNameList::AddDesktopApp(A, <allusers>\Microsoft\Windows\Start Menu\Programs\A.lnk) IN
        CQanhAppNameList::IsInDesktopAppList(<allusers>\Microsoft\Windows\Start Menu\Programs\A.lnk) IN
        CQanhAppNameList::IsInDesktopAppList OUT(0)
        CQanhAppNameList::AddDesktopApp OUT(0x00000000)
        CQanhPackageManager::AddLinkFileToList OUT
        CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        <allusers>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 2 <end>
        CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
        CQanhPackageManager::RefreshDesktopApps(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        <roaming>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 2 <end>
        CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhAppNameList::AddDesktopApp(B, <roaming>\Microsoft\Windows\Start Menu\Programs\B.url) IN
        CQanhAppNameList::IsInDesktopAppList(<roaming>\Microsoft\Windows\Start Menu\Programs\B.url) IN
        CQanhDesktopApp::IsSameShortcut IN(<roaming>\Microsoft\Windows\Start Menu\Programs\B.url)
        CQanhDesktopApp::IsSameShortcut OUT(0)
        CQanhAppNameList::IsInDesktopAppList OUT(0)
        CQanhAppNameList::AddDesktopApp OUT(0x00000000)
        CQanhPackageManager::AddLinkFileToList OUT
        CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
        CQanhAppNameList::Save(<local>\Vel\QanHelper\TestHost\AppNameList.xml) IN
        CQanhDesktopApp::ToXmlNode IN
        CQanhDesktopApp::ToXmlNode OUT(0x00000000)
        CQanhDesktopApp::ToXmlNode IN
        CQanhDesktopApp::ToXmlNode OUT(0x00000000)
        CQanhAppNameList::Save OUT(0x00000000)
        QanhFinalize IN
        CQanhPackageManager::Finalize IN
        CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)
        CQanhPackageManager::Finalize OUT
        CQanhMonitorMode::Finalize IN
        CQanhMonitorMode::Finalize OUT
        QanhFinalize OUT : s_nCount(0)
    )"));
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
    EXPECT_TRUE(IsGolden(sandbox.Log(), R"(
        QanhInitialize IN
        CQanhMonitorMode::Initialize IN
        CQanhMonitorMode::Initialize OUT(0)
        CQanhPackageManager::Initialize IN
        CQanhPackageManager::GetModuleName IN
        CQanhPackageManager::GetModuleName OUT(T)
        CQanhPackageManager::Initialize CreateMutex() success. <end>
        CQanhPackageManager::CreateAppNameListFolder IN
        CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
        CQanhPackageManager::GetPresetAppNameFullPath IN
        CQanhPackageManager::GetPresetAppNameFullPath OUT(C)
        CQanhAppNameList::Load(<host>\PresetAppNameList.xml) IN
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
        CQanhPackageManager::Initialize OUT(0x00000000)
        QanhInitialize OUT(0) : s_nCount(1)
        CQanhPackageManager::RefreshThread IN
        CQanhPackageManager::CreateAppNameListFolder IN
        CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)
        CQanhPackageManager::CreateAppNameListFolder OUT(C)
        CQanhReg::GetRefreshInterval IN
        CQanhReg::GetDWORDRegVal IN
        CQanhReg::GetDWORDRegVal OUT(0)
        CQanhReg::GetRefreshInterval OUT(720)
        CQanhPackageManager::RefreshThread Refresh app name list!
        QanhIsInstalled(Vel.Notes_x) IN
        CQanhPackageManager::IsInstalled(Vel.Notes_x) IN
        CQanhPackageManager::FindPackageByName(Vel.Notes_x) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)
        QanhIsInstalled OUT(0x00000000)
        QanhIsInstalled(Vel.Gone_x) IN
        CQanhPackageManager::IsInstalled(Vel.Gone_x) IN
        CQanhPackageManager::FindPackageByName(Vel.Gone_x) IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)
        QanhIsInstalled OUT(0x00000000)
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
        CQanhPackageManager::RefreshDesktopApps(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        <allusers>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 2 <end>
        CQanhPackageManager::AddLinkFileToList(<allusers>\Microsoft\Windows\Start Menu\Programs) IN
        <allusers>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 2 <end>
        CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
        CQanhPackageManager::RefreshDesktopApps(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        <roaming>\Microsoft\Windows\Start Menu\Programs\*.lnk Errcode = 2 <end>
        CQanhPackageManager::AddLinkFileToList(<roaming>\Microsoft\Windows\Start Menu\Programs) IN
        <roaming>\Microsoft\Windows\Start Menu\Programs\*.url Errcode = 2 <end>
        CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
        CQanhAppNameList::Save(<local>\Vel\QanHelper\TestHost\AppNameList.xml) IN
        CQanhPackage::ToXmlNode IN
        CQanhMetroApp::ToXmlNode IN
        CQanhMetroApp::ToXmlNode OUT(0x00000000)
        CQanhPackage::ToXmlNode OUT(0x00000000)
        CQanhPackage::ToXmlNode IN
        CQanhPackage::ToXmlNode OUT(0x00000000)
        CQanhDesktopApp::ToXmlNode IN
        CQanhDesktopApp::ToXmlNode OUT(0x00000001)
        CQanhDesktopApp::ToXmlNode IN
        CQanhDesktopApp::ToXmlNode OUT(0x00000000)
        CQanhAppNameList::Save OUT(0x00000000)
    )"));
}

} // namespace
