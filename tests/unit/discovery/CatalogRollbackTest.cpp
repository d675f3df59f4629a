// What stands beside the catalogue file while it is saved.

#include "common/UniqueHandle.h"
#include "unit/discovery/RollbackFile.h"

namespace {

using namespace discovery_test;

TEST_F(CatalogRollbackFile, HoldsTheOldCatalogUntilTheNewOneIsOnTheDisk)
{
    // More than one buffer full, and no multiple of one.
    const std::string old = std::string(40000, 'o') + "ld";
    BeginOver(old);
    EXPECT_EQ(Files(), kBoth);
    EXPECT_EQ(Bak(), old);
    EXPECT_EQ(Catalog(), old);
    WriteCatalog("new");
    {
        const FileSteps steps;
        EXPECT_EQ(m_rollback.End(S_OK), S_OK);
        EXPECT_THAT(steps.Get(), ElementsAre("open AppNameList.xml", "flush AppNameList.xml",
                                             "delete AppNameList.xml.bak"));
    }
    ExpectOnlyCatalog("new");
}

TEST_F(CatalogRollbackFile, ComesBackWhenTheSaveFailed)
{
    BeginOver("old");
    WriteCatalog("ne");
    EXPECT_EQ(m_rollback.End(STG_E_MEDIUMFULL), STG_E_MEDIUMFULL);
    ExpectOnlyCatalog("old");
}

TEST_F(CatalogRollbackFile, IsEmptyWhereThereWasNoCatalog)
{
    {
        const FileSteps steps;
        ASSERT_EQ(m_rollback.Begin(), S_OK);
        EXPECT_THAT(steps.Get(), ElementsAre("open AppNameList.xml", "open AppNameList.xml.tmp",
                                             "move AppNameList.xml.tmp to AppNameList.xml.bak"));
    }
    EXPECT_THAT(Files(), ElementsAre("xml.bak"));
    EXPECT_EQ(Bak(), "");
    WriteCatalog("new");
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    ExpectOnlyCatalog("new");
}

// So that the next start takes the preset once more.
TEST_F(CatalogRollbackFile, LeavesNoCatalogOfAFailedSaveWhereThereWasNone)
{
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    WriteCatalog("ne");
    EXPECT_EQ(m_rollback.End(E_FAIL), E_FAIL);
    EXPECT_THAT(Files(), IsEmpty());
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_EQ(m_rollback.End(E_FAIL), E_FAIL) << "the file could not even be made";
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(CatalogRollbackFile, GetsItsNameWhenItIsOnTheDisk)
{
    WriteCatalog("old");
    const FileSteps steps;
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_THAT(steps.Get(),
                ElementsAre("open AppNameList.xml", "open AppNameList.xml.tmp", "read AppNameList.xml",
                            "write AppNameList.xml.tmp", "read AppNameList.xml", "flush AppNameList.xml.tmp",
                            "move AppNameList.xml.tmp to AppNameList.xml.bak"));
}

TEST_F(CatalogRollbackFile, ComesBackWhenTheNewCatalogDoesNotGetToTheDisk)
{
    BeginOver("old");
    WriteCatalog("new");
    {
        const FileSteps steps(FailAt("flush AppNameList.xml", ERROR_DISK_FULL));
        EXPECT_EQ(m_rollback.End(S_OK), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    }
    ExpectOnlyCatalog("old");
}

TEST_F(CatalogRollbackFile, GoesAlsoWhenItCannotBeAskedWhetherTheNewCatalogIsOnTheDisk)
{
    BeginOver("old");
    {
        const FileSteps steps(FailAt("open AppNameList.xml", ERROR_SHARING_VIOLATION));
        EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    }
    EXPECT_EQ(Files(), kCatalogOnly);
}

// A step of the copying that fails.
class CatalogCopyFails : public CatalogRollbackFile, public ::testing::WithParamInterface<const char*>
{
protected:
    HRESULT BeginFailingWith(DWORD error)
    {
        const FileSteps steps(FailAt(GetParam(), error));
        const HRESULT hr = m_rollback.Begin();
        EXPECT_THAT(steps.Get(), ::testing::Contains(GetParam()));
        return hr;
    }
};

TEST_P(CatalogCopyFails, ForWantOfRoomThenTheSaveIsNotTried)
{
    WriteCatalog("old");
    constexpr DWORD quotaExceeded = 1295;
    for (const DWORD error : {DWORD{ERROR_DISK_FULL}, DWORD{ERROR_HANDLE_DISK_FULL}, quotaExceeded}) {
        EXPECT_EQ(BeginFailingWith(error), HRESULT_FROM_WIN32(error));
    }
    ExpectOnlyCatalog("old");
}

TEST_P(CatalogCopyFails, OtherwiseTheSaveGoesAheadWithoutIt)
{
    WriteCatalog("old");
    EXPECT_EQ(BeginFailingWith(ERROR_ACCESS_DENIED), S_OK);
    ExpectOnlyCatalog("old");
    WriteCatalog("ne");
    EXPECT_EQ(m_rollback.End(E_FAIL), E_FAIL);
    EXPECT_EQ(Catalog(), "ne");
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_EQ(Files(), kCatalogOnly);
}

INSTANTIATE_TEST_SUITE_P(Steps, CatalogCopyFails,
                         ::testing::Values("open AppNameList.xml", "open AppNameList.xml.tmp",
                                           "read AppNameList.xml", "write AppNameList.xml.tmp",
                                           "flush AppNameList.xml.tmp",
                                           "move AppNameList.xml.tmp to AppNameList.xml.bak"));

TEST_F(CatalogRollbackFile, WithoutRoomForAnEmptyOneTheFirstSaveIsNotTriedEither)
{
    const FileSteps steps(FailAt("open AppNameList.xml.tmp", ERROR_DISK_FULL));
    EXPECT_EQ(m_rollback.Begin(), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
}

// It is the whole one: the catalogue file may be what a save that was cut off has left.
TEST_F(CatalogRollbackFile, ThatIsThereAlreadyIsNotReplaced)
{
    for (const bool isSaved : {true, false}) {
        WriteBak("older");
        WriteCatalog("hal");
        CatalogRollback rollback(m_catalog.c_str());
        ASSERT_EQ(rollback.Begin(), S_OK);
        EXPECT_EQ(Bak(), "older");
        EXPECT_EQ(Files(), kBoth);
        WriteCatalog("new");
        EXPECT_EQ(rollback.End(isSaved ? S_OK : E_FAIL), isSaved ? S_OK : E_FAIL);
        EXPECT_EQ(Files(), kCatalogOnly);
        EXPECT_EQ(Catalog(), isSaved ? "new" : "older");
    }
}

TEST_F(CatalogRollbackFile, ThatComesDuringTheCopyingIsNotReplacedEither)
{
    WriteCatalog("old");
    {
        const FileSteps steps([this](const std::string& step) {
            if (step.starts_with("move")) {
                CopyFileW(m_catalog.c_str(), m_bak.c_str(), FALSE);
            }
            return DWORD{ERROR_SUCCESS};
        });
        EXPECT_EQ(m_rollback.Begin(), S_OK);
    }
    EXPECT_EQ(Files(), kBoth);
    // It is somebody else's.
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_EQ(Files(), kBoth);
}

TEST_F(CatalogRollbackFile, IsNotMadeWhereAFolderHasItsName)
{
    WriteCatalog("old");
    MakeFile(m_bak + L"\\x");
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_EQ(Files(), kBoth);
    WriteCatalog("new");
    EXPECT_EQ(m_rollback.End(E_FAIL), E_FAIL);
    m_rollback.Restore();
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
    EXPECT_EQ(Catalog(), "new");
    EXPECT_TRUE(Exists(m_bak + L"\\x"));
}

TEST_F(CatalogRollbackFile, AnUnfinishedCopyIsWrittenOver)
{
    WriteCatalog("old");
    WriteFileBytes(m_tmp, "unfinished");
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_EQ(Bak(), "old");
    EXPECT_EQ(Files(), kBoth);
}

TEST_F(CatalogRollbackFile, IsNotMadeOfACatalogThatCannotBeWritten)
{
    WriteCatalog("old");
    {
        const CapturingPatch<decltype(&CreateFileW)> patch(
            "CreateFileW",
            [&](const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                DWORD disposition, DWORD flags, HANDLE pattern) -> HANDLE {
                if (path == m_catalog && (access & GENERIC_WRITE) != 0) {
                    SetLastError(ERROR_ACCESS_DENIED);
                    return INVALID_HANDLE_VALUE;
                }
                return patch.Original(path, access, share, security, disposition, flags, pattern);
            });
        EXPECT_EQ(m_rollback.Begin(), S_OK);
    }
    EXPECT_EQ(Files(), kCatalogOnly);
}

// Whoever may write to read-only files has their saves guarded too, and others have nothing to guard.
TEST_F(CatalogRollbackFile, OfAReadOnlyCatalogDoesNotStay)
{
    WriteCatalog("old");
    SetFileAttributesW(m_catalog.c_str(), FILE_ATTRIBUTE_READONLY);
    const bool mayBeWritten = static_cast<bool>(
        UniqueFile(CreateFileW(m_catalog.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_EQ(Files(), mayBeWritten ? kBoth : kCatalogOnly);
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    ExpectOnlyCatalog("old");
    SetFileAttributesW(m_catalog.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// The catalogue's path has this many characters: with 256 there is no room for its rollback file's.
class LongPath : public CatalogRollbackFile, public ::testing::WithParamInterface<std::size_t>
{
protected:
    LongPath()
    {
        MakeFolder(m_long);
        WriteFileBytes(m_path, "old");
    }

    const std::wstring m_long = m_folder / std::wstring(GetParam() - m_folder.Path().size() - 17, L'x');
    const std::wstring m_path = m_long + L"\\AppNameList.xml";
};

TEST_P(LongPath, HasARollbackFileOnlyWhereItFits)
{
    ASSERT_EQ(m_path.size(), GetParam());
    const bool fits = GetParam() == 255;
    CatalogRollback rollback(m_path.c_str());
    EXPECT_EQ(rollback.Begin(), S_OK);
    EXPECT_EQ(FilesIn(m_long), fits ? kBoth : kCatalogOnly);
    EXPECT_EQ(ReadFileBytes(fits ? m_path + L".bak" : m_path), "old");
    EXPECT_EQ(rollback.WholeFile(), fits ? m_path + L".bak" : m_path);
    EXPECT_EQ(rollback.End(S_OK), S_OK);
    rollback.Restore();
    EXPECT_EQ(FilesIn(m_long), kCatalogOnly);
    EXPECT_EQ(ReadFileBytes(m_path), "old");
}

INSTANTIATE_TEST_SUITE_P(Of, LongPath, ::testing::Values(255, 256));

TEST_F(CatalogRollbackFile, IsBroughtBackAtAStart)
{
    WriteBak("old");
    WriteCatalog("ne");
    WriteFileBytes(m_tmp, "o");
    m_rollback.Restore();
    ExpectOnlyCatalog("old");
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
}

TEST_F(CatalogRollbackFile, IsBroughtBackWhereTheCatalogIsGone)
{
    WriteBak("old");
    m_rollback.Restore();
    ExpectOnlyCatalog("old");
}

TEST_F(CatalogRollbackFile, ThatIsEmptyTakesTheCatalogWithIt)
{
    WriteBak("");
    WriteCatalog("ne");
    m_rollback.Restore();
    EXPECT_THAT(Files(), IsEmpty());
    WriteBak("");
    m_rollback.Restore();
    EXPECT_THAT(Files(), IsEmpty()) << "it was cut off between the two";
}

TEST_F(CatalogRollbackFile, ThatIsNotThereChangesNothingAtAStart)
{
    WriteCatalog("old");
    m_rollback.Restore();
    ExpectOnlyCatalog("old");
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
}

// By another program, or by a thread of this process that was terminated in the middle of a save.
TEST_F(CatalogRollbackFile, CountsWhileTheCatalogIsHeld)
{
    WriteBak("old");
    WriteCatalog("ne");
    Microsoft::WRL::ComPtr<IStream> holder = HoldCatalog();
    m_rollback.Restore();
    EXPECT_EQ(m_rollback.WholeFile(), m_bak);
    EXPECT_EQ(Bak(), "old");
    holder.Reset();
    m_rollback.Restore();
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
    EXPECT_EQ(Catalog(), "old");
}

TEST_F(CatalogRollbackFile, ThatIsEmptyStaysWhileTheCatalogIsHeld)
{
    WriteBak("");
    WriteCatalog("ne");
    Microsoft::WRL::ComPtr<IStream> holder = HoldCatalog();
    m_rollback.Restore();
    EXPECT_EQ(Files(), kBoth);
    holder.Reset();
    m_rollback.Restore();
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(CatalogRollbackFile, NothingIsHeldDuringTheSave)
{
    BeginOver("old");
    for (const std::wstring& path : {m_catalog, m_bak}) {
        const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(file) << ToUtf8(path);
    }
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
}

} // namespace
