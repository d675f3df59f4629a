// A start after a stop: what becomes of the records that the catalogue holds.

#include "support/OtherProcess.h"
#include "unit/discovery/Start.h"

namespace {

using namespace discovery_test;

// A program that reads a file and lets nobody else at it meanwhile, as a backup may do.
const Part g_holdFile(L"HoldFile", [](const Part::Context& context) {
    const HANDLE file = CreateFileW(context.Argument().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    context.ReadyUntilEnd();
    CloseHandle(file);
    return 0;
});

const std::string kTwoRecords = "<Applications><Package PackageFamilyName=\"mail_1\" NeedReserve=\"1\" />"
                                "<DesktopApps><DesktopApp DisplayName=\"a\" LnkFileName=\"C:\\a.lnk\" />"
                                "<DesktopApp DisplayName=\"b\" LnkFileName=\"C:\\b.lnk\" />"
                                "</DesktopApps></Applications>";

class SecondStart : public PackageManagerStart
{
protected:
    // With this catalogue; as a rule it is WriteCatalog()'s.
    void StartAndStop(const std::string& catalog = CatalogOf({L"C:\\catalog.lnk"}))
    {
        WriteFileBytes(CatalogFile(), catalog);
        ASSERT_EQ(m_manager.Initialize(), S_OK);
        SetEvent(m_manager.m_hExitEvent);
        LetThreadRun();
        m_manager.Finalize();
        m_log.Clear();
    }
};

TEST_F(SecondStart, HoldsEveryRecordOnce)
{
    StartAndStop();
    ASSERT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    WriteCatalog();
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
    ExpectLog("0x00000000", CatalogLines()); // the lines of the first
}

TEST_F(SecondStart, TakesWhatTheFileHoldsNow)
{
    StartAndStop();
    WriteFileBytes(CatalogFile(), kTwoRecords);
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\a.lnk", L"C:\\b.lnk"));
    EXPECT_NE(m_manager.m_AppNameList.GetPackage(L"mail_1"), nullptr);
}

TEST_F(SecondStart, KeepsEveryRecordWhenTheFileIsHeldByAnotherProgram)
{
    StartAndStop(kTwoRecords);
    const OtherProcess backup(L"HoldFile", CatalogFile());
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\a.lnk", L"C:\\b.lnk"));
    EXPECT_THAT(m_log.Lines(), Contains(StartsWith("m_AppNameList.Load() failed. ErrCode = 0x8")));
    EXPECT_NE(m_manager.m_AppNameList.GetPackage(L"mail_1"), nullptr);
}

TEST_F(SecondStart, KeepsEveryRecordWhenTheFileIsGone)
{
    StartAndStop();
    DeleteFileW(CatalogFile().c_str());
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\catalog.lnk"));
}

TEST_F(SecondStart, KeepsEveryRecordInAnotherProcessThanTheOwnerToo)
{
    WritePreset();
    HoldMutexElsewhere();
    const FakeSleep sleep;
    ASSERT_EQ(m_manager.Initialize(), S_FALSE);
    ASSERT_EQ(DeleteFileW(PresetFile().c_str()), TRUE);
    EXPECT_EQ(m_manager.Initialize(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
    WritePreset();
    EXPECT_EQ(m_manager.Initialize(), S_FALSE);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\preset.lnk"));
}

// The file is what counts once it could be opened, however the reading of it ended.
TEST_F(SecondStart, TakesWhatABrokenFileHoldsUpToItsFault)
{
    StartAndStop();
    WriteFileBytes(CatalogFile(), "<Applications><DesktopApps>"
                                  "<DesktopApp DisplayName=\"n\" LnkFileName=\"C:\\new.lnk\" />"
                                  "<DesktopApp></DesktopApps>");
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(m_log.Lines(), Contains("m_AppNameList.Load() failed. ErrCode = 0xC00CEE3B "));
    EXPECT_EQ(Shortcuts(m_manager)[0], L"C:\\new.lnk");
    EXPECT_NE(Shortcuts(m_manager).back(), L"C:\\catalog.lnk");
}

TEST_F(SecondStart, TakesNothingFromAnEmptyFile)
{
    StartAndStop();
    WriteFileBytes(CatalogFile(), "");
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(m_log.Lines(), Contains(StartsWith("m_AppNameList.Load() failed. ErrCode = 0x")));
    EXPECT_THAT(Shortcuts(m_manager), IsEmpty());
}

TEST_F(PackageManagerStart, WhatStandsInTheCatalogBeforeTheFirstStartStays)
{
    WriteCatalog();
    EXPECT_EQ(m_manager.m_AppNameList.AddDesktopApp(L"early", L"C:\\early.lnk"), S_OK);
    ASSERT_EQ(m_manager.Initialize(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\early.lnk", L"C:\\catalog.lnk"));
}

} // namespace
