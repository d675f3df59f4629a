// What stands beside the catalogue file while it is saved.

#include "discovery/CatalogRollback.h"

#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/discovery/FileSteps.h"

#include <gmock/gmock.h>

#include <shlwapi.h>

#include <set>
#include <string>

namespace {

using discovery_test::FailAt;
using discovery_test::FileSteps;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class CatalogRollbackFile : public ::testing::Test
{
protected:
    // The names in the folder, after the first dot: "xml", "xml.bak", "xml.tmp".
    std::set<std::string> Files() const
    {
        std::set<std::string> files;
        WIN32_FIND_DATAW found{};
        const HANDLE find = FindFirstFileW((m_folder / L"App*").c_str(), &found);
        if (find != INVALID_HANDLE_VALUE) {
            do {
                const std::string name = test::ToUtf8(found.cFileName);
                files.insert(name.substr(name.find('.') + 1));
            } while (FindNextFileW(find, &found));
            FindClose(find);
        }
        return files;
    }
    std::string Catalog() const { return test::ReadFileBytes(m_catalog); }
    std::string Bak() const { return test::ReadFileBytes(m_bak); }
    void WriteCatalog(std::string_view bytes) const { test::WriteFileBytes(m_catalog, bytes); }
    void WriteBak(std::string_view bytes) const { test::WriteFileBytes(m_bak, bytes); }

    test::TemporaryFolder m_folder;
    const std::wstring m_catalog = m_folder / L"AppNameList.xml";
    const std::wstring m_bak = m_folder / L"AppNameList.xml.bak";
    const std::wstring m_tmp = m_folder / L"AppNameList.xml.tmp";
    CatalogRollback m_rollback{m_catalog.c_str()};
};

TEST_F(CatalogRollbackFile, HoldsTheOldCatalogDuringTheSave)
{
    // More than one buffer full, and no multiple of one.
    const std::string old = std::string(40000, 'o') + "ld";
    WriteCatalog(old);
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
    EXPECT_EQ(Bak(), old);
    EXPECT_EQ(Catalog(), old);
}

TEST_F(CatalogRollbackFile, GoesWhenTheSaveSucceeded)
{
    WriteCatalog("old");
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    WriteCatalog("new");
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "new");
}

TEST_F(CatalogRollbackFile, ComesBackWhenTheSaveFailed)
{
    WriteCatalog("old");
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    WriteCatalog("ne");
    EXPECT_EQ(m_rollback.End(STG_E_MEDIUMFULL), STG_E_MEDIUMFULL);
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
}

TEST_F(CatalogRollbackFile, IsEmptyWhereThereWasNoCatalog)
{
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml.bak"));
    EXPECT_EQ(Bak(), "");
    WriteCatalog("new");
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "new");
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

TEST_F(CatalogRollbackFile, GoesWhenTheNewCatalogIsOnTheDisk)
{
    WriteCatalog("old");
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    const FileSteps steps;
    ASSERT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_THAT(steps.Get(),
                ElementsAre("open AppNameList.xml", "flush AppNameList.xml", "delete AppNameList.xml.bak"));
}

TEST_F(CatalogRollbackFile, ComesBackWhenTheNewCatalogDoesNotGetToTheDisk)
{
    WriteCatalog("old");
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    WriteCatalog("new");
    {
        const FileSteps steps(FailAt("flush AppNameList.xml", ERROR_DISK_FULL));
        EXPECT_EQ(m_rollback.End(S_OK), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    }
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
}

TEST_F(CatalogRollbackFile, GoesAlsoWhenItCannotBeAskedWhetherTheNewCatalogIsOnTheDisk)
{
    WriteCatalog("old");
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    {
        const FileSteps steps(FailAt("open AppNameList.xml", ERROR_SHARING_VIOLATION));
        EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    }
    EXPECT_THAT(Files(), ElementsAre("xml"));
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
    EXPECT_EQ(BeginFailingWith(ERROR_DISK_FULL), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    EXPECT_EQ(BeginFailingWith(ERROR_HANDLE_DISK_FULL), HRESULT_FROM_WIN32(ERROR_HANDLE_DISK_FULL));
    constexpr DWORD quotaExceeded = 1295;
    EXPECT_EQ(BeginFailingWith(quotaExceeded), HRESULT_FROM_WIN32(quotaExceeded));
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
}

TEST_P(CatalogCopyFails, OtherwiseTheSaveGoesAheadWithoutIt)
{
    WriteCatalog("old");
    EXPECT_EQ(BeginFailingWith(ERROR_ACCESS_DENIED), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
    WriteCatalog("ne");
    EXPECT_EQ(m_rollback.End(E_FAIL), E_FAIL);
    EXPECT_EQ(Catalog(), "ne");
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml"));
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
        EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
        WriteCatalog("new");
        EXPECT_EQ(rollback.End(isSaved ? S_OK : E_FAIL), isSaved ? S_OK : E_FAIL);
        EXPECT_THAT(Files(), ElementsAre("xml"));
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
    EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
    // It is somebody else's.
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
}

TEST_F(CatalogRollbackFile, IsNotMadeWhereAFolderHasItsName)
{
    WriteCatalog("old");
    test::MakeFile(m_bak + L"\\x");
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
    WriteCatalog("new");
    EXPECT_EQ(m_rollback.End(E_FAIL), E_FAIL);
    m_rollback.Restore();
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
    EXPECT_EQ(Catalog(), "new");
    EXPECT_TRUE(test::Exists(m_bak + L"\\x"));
}

TEST_F(CatalogRollbackFile, AnUnfinishedCopyIsWrittenOver)
{
    WriteCatalog("old");
    test::WriteFileBytes(m_tmp, "unfinished");
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_EQ(Bak(), "old");
    EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
}

TEST_F(CatalogRollbackFile, IsNotMadeOfACatalogThatCannotBeWritten)
{
    WriteCatalog("old");
    static const std::wstring* s_path;
    s_path = &m_catalog;
    static const test::ImportPatch<decltype(&CreateFileW)>* s_patch;
    {
        const test::ImportPatch<decltype(&CreateFileW)> patch(
            "CreateFileW",
            [](const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
               DWORD disposition, DWORD flags, HANDLE pattern) -> HANDLE {
                if (path == *s_path && (access & GENERIC_WRITE) != 0) {
                    SetLastError(ERROR_ACCESS_DENIED);
                    return INVALID_HANDLE_VALUE;
                }
                return s_patch->Original()(path, access, share, security, disposition, flags, pattern);
            });
        s_patch = &patch;
        EXPECT_EQ(m_rollback.Begin(), S_OK);
    }
    EXPECT_THAT(Files(), ElementsAre("xml"));
}

// Whoever may write to read-only files has their saves guarded too, and others have nothing to guard.
TEST_F(CatalogRollbackFile, OfAReadOnlyCatalogDoesNotStay)
{
    WriteCatalog("old");
    SetFileAttributesW(m_catalog.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(m_rollback.Begin(), S_OK);
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
    SetFileAttributesW(m_catalog.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CatalogRollbackFile, IsNotMadeWhereItsPathIsTooLong)
{
    const std::wstring folder = m_folder / std::wstring(256 - m_folder.Path().size() - 17, L'x');
    test::MakeFolder(folder);
    const std::wstring path = folder + L"\\AppNameList.xml";
    ASSERT_EQ(path.size(), 256u);
    test::WriteFileBytes(path, "old");
    CatalogRollback rollback(path.c_str());
    EXPECT_EQ(rollback.Begin(), S_OK);
    EXPECT_EQ(rollback.WholeFile(), path);
    EXPECT_EQ(rollback.End(S_OK), S_OK);
    rollback.Restore();
    WIN32_FIND_DATAW found{};
    const HANDLE find = FindFirstFileW((folder + L"\\App*").c_str(), &found);
    EXPECT_STREQ(found.cFileName, L"AppNameList.xml");
    EXPECT_FALSE(FindNextFileW(find, &found));
    FindClose(find);
    EXPECT_EQ(test::ReadFileBytes(path), "old");
}

TEST_F(CatalogRollbackFile, IsMadeWhereItsPathJustFits)
{
    const std::wstring folder = m_folder / std::wstring(255 - m_folder.Path().size() - 17, L'x');
    test::MakeFolder(folder);
    const std::wstring path = folder + L"\\AppNameList.xml";
    test::WriteFileBytes(path, "old");
    CatalogRollback rollback(path.c_str());
    EXPECT_EQ(rollback.Begin(), S_OK);
    EXPECT_EQ(test::ReadFileBytes(path + L".bak"), "old");
}

TEST_F(CatalogRollbackFile, IsBroughtBackAtAStart)
{
    WriteBak("old");
    WriteCatalog("ne");
    test::WriteFileBytes(m_tmp, "o");
    m_rollback.Restore();
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
}

TEST_F(CatalogRollbackFile, IsBroughtBackWhereTheCatalogIsGone)
{
    WriteBak("old");
    m_rollback.Restore();
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
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
    EXPECT_THAT(Files(), ElementsAre("xml"));
    EXPECT_EQ(Catalog(), "old");
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
}

// By another program, or by a thread of this process that was terminated in the middle of a save.
TEST_F(CatalogRollbackFile, CountsWhileTheCatalogIsHeld)
{
    WriteBak("old");
    WriteCatalog("ne");
    IStream* stream = nullptr;
    ASSERT_EQ(SHCreateStreamOnFileW(m_catalog.c_str(), STGM_WRITE, &stream), S_OK);
    m_rollback.Restore();
    EXPECT_EQ(m_rollback.WholeFile(), m_bak);
    EXPECT_EQ(Bak(), "old");
    stream->Release();
    m_rollback.Restore();
    EXPECT_EQ(m_rollback.WholeFile(), m_catalog);
    EXPECT_EQ(Catalog(), "old");
}

TEST_F(CatalogRollbackFile, ThatIsEmptyStaysWhileTheCatalogIsHeld)
{
    WriteBak("");
    WriteCatalog("ne");
    IStream* stream = nullptr;
    ASSERT_EQ(SHCreateStreamOnFileW(m_catalog.c_str(), STGM_WRITE, &stream), S_OK);
    m_rollback.Restore();
    EXPECT_THAT(Files(), ElementsAre("xml", "xml.bak"));
    stream->Release();
    m_rollback.Restore();
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(CatalogRollbackFile, NothingIsHeldDuringTheSave)
{
    WriteCatalog("old");
    ASSERT_EQ(m_rollback.Begin(), S_OK);
    for (const std::wstring& path : {m_catalog, m_bak}) {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(file, INVALID_HANDLE_VALUE) << test::ToUtf8(path);
        CloseHandle(file);
    }
    EXPECT_EQ(m_rollback.End(S_OK), S_OK);
}

} // namespace
