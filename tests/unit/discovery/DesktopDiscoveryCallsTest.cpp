// What the walk through the Start menu asks of the platform, and what it makes of the answers.

#include "unit/discovery/Walk.h"

namespace {

using namespace walk_test;

// A walk whose calls to the file system are seen, changed and answered.
class WalkCalls : public DesktopDiscovery
{
protected:
    HANDLE First(const std::wstring& path, WIN32_FIND_DATAW* found)
    {
        m_searched.push_back(path);
        if (path == m_exitAt) {
            SetEvent(m_manager.m_hExitEvent);
        }
        if (path == m_failAt) {
            SetLastError(m_error);
            return INVALID_HANDLE_VALUE;
        }
        if (m_invented) {
            m_position = 0;
            if (path.find(L"*.lnk") == std::wstring::npos) {
                SetLastError(ERROR_FILE_NOT_FOUND);
                return INVALID_HANDLE_VALUE;
            }
            m_opened.push_back(this);
            Next(this, found);
            return this;
        }
        const HANDLE find = m_first.Original(path.c_str(), found);
        if (find != INVALID_HANDLE_VALUE) {
            m_opened.push_back(find);
        }
        return find;
    }

    BOOL Next(HANDLE find, WIN32_FIND_DATAW* found)
    {
        if (!m_invented) {
            return m_next.Original(find, found);
        }
        if (m_position == m_invented->size()) {
            SetLastError(ERROR_NO_MORE_FILES);
            return FALSE;
        }
        *found = {};
        lstrcpynW(found->cFileName, (*m_invented)[m_position++].c_str(), MAX_PATH);
        return TRUE;
    }

    // Every search is closed once, whatever its end.
    void ExpectAllClosed()
    {
        std::sort(m_opened.begin(), m_opened.end());
        std::sort(m_closed.begin(), m_closed.end());
        EXPECT_EQ(m_closed, m_opened);
    }

    std::vector<std::wstring> m_searched;
    std::vector<HANDLE> m_opened;
    std::vector<HANDLE> m_closed;
    std::vector<DWORD> m_polls;
    std::wstring m_exitAt;
    std::wstring m_failAt;
    DWORD m_error = 0;
    // Names that the "*.lnk" search finds instead of the real ones.
    const std::vector<std::wstring>* m_invented = nullptr;
    std::size_t m_position = 0;

    CapturingPatch<decltype(&FindFirstFileW)> m_first{
        "FindFirstFileW",
        [this](const wchar_t* path, WIN32_FIND_DATAW* found) { return First(path, found); }};
    CapturingPatch<decltype(&FindNextFileW)> m_next{
        "FindNextFileW", [this](HANDLE find, WIN32_FIND_DATAW* found) { return Next(find, found); }};
    CapturingPatch<decltype(&FindClose)> m_close{"FindClose", [this](HANDLE find) -> BOOL {
                                                     m_closed.push_back(find);
                                                     return m_invented ? TRUE : m_close.Original(find);
                                                 }};
    CapturingPatch<decltype(&WaitForSingleObject)> m_wait{"WaitForSingleObject",
                                                          [this](HANDLE handle, DWORD milliseconds) {
                                                              if (handle == m_manager.m_hExitEvent) {
                                                                  m_polls.push_back(milliseconds);
                                                              }
                                                              return m_wait.Original(handle, milliseconds);
                                                          }};
};

TEST_F(WalkCalls, PatternsAndOrder)
{
    MakeFiles({L"A.lnk", L"Sub\\C.lnk"});
    EXPECT_EQ(Walk(), S_OK);
    EXPECT_THAT(m_searched, ElementsAre(At(L"*.lnk"), At(L"*.url"), At(L"*"), At(L"Sub\\*.lnk"),
                                        At(L"Sub\\*.url"), At(L"Sub\\*")));
    ExpectAllClosed();
}

TEST_F(WalkCalls, ExitEventIsPolledBeforeEachFolderAndEachEntry)
{
    MakeFiles({L"A.lnk", L"B.txt", L"Sub\\C.lnk"});
    EXPECT_EQ(Walk(), S_OK);
    // The folder, ".", "..", A.lnk, B.txt and Sub; Sub itself, ".", ".." and C.lnk.
    EXPECT_EQ(m_polls, std::vector<DWORD>(6 + 4, 0));
}

TEST_F(WalkCalls, ExitEventDuringTheShortcutsStopsBeforeTheFirstEntry)
{
    MakeFiles({L"A.lnk", L"B.lnk", L"C.url", L"Sub\\D.lnk"});
    m_exitAt = At(L"*.lnk");
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"A.lnk", L"B.lnk", L"C.url"});
    EXPECT_EQ(m_polls.size(), 2u);
    EXPECT_EQ(WalkLines().back(), kOut[0]);
    ExpectAllClosed();
}

TEST_F(WalkCalls, ExitEventInASubfolderStopsTheWalkAbove)
{
    MakeFiles({L"A.lnk", L"One\\B.lnk", L"One\\C.url", L"One\\Deep\\D.lnk", L"Two\\E.lnk"});
    m_exitAt = At(L"One\\*.lnk");
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"A.lnk", L"One\\B.lnk", L"One\\C.url"});
    EXPECT_EQ(WalkLines(), FolderLines(Root(), 0, 2) + FolderLines(Narrow(L"One"), 0, 0) + kOut + kOut);
    ExpectAllClosed();
}

TEST_F(WalkCalls, AFailedListingComesAfterTheShortcuts)
{
    MakeFiles({L"A.lnk", L"B.url", L"Sub\\C.lnk"});
    m_failAt = At(L"*");
    m_error = ERROR_ACCESS_DENIED;
    EXPECT_EQ(Walk(), E_FAIL);
    ExpectFound({L"A.lnk", L"B.url"});
    EXPECT_EQ(WalkLines(), FolderLines(Root(), 0, 0) + Lines{"Errcode = 5 "});
    ExpectAllClosed();
}

TEST_F(WalkCalls, AFailedSubfolderDoesNotStopTheWalk)
{
    MakeFiles({L"One\\A.lnk", L"Two\\B.lnk"});
    m_failAt = At(L"One\\*");
    m_error = ERROR_ACCESS_DENIED;
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"One\\A.lnk", L"Two\\B.lnk"});
}

TEST_F(WalkCalls, AFailedPatternIsNoFailure)
{
    MakeFiles({L"A.lnk", L"B.url"});
    m_failAt = At(L"*.lnk");
    m_error = ERROR_SHARING_VIOLATION;
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"B.url"});
    EXPECT_EQ(WalkLines(), FolderLines(Root(), 32, 0) + kOut);
}

TEST_F(WalkCalls, NamesAreCutByCountAndKeptUnitForUnit)
{
    // What a file system may find for the pattern by a file's short name, and halves of surrogate pairs.
    const std::vector<std::wstring> names = {L"A1.lnkx", L"x\xd800.lnk", L"\xdc00y.lnk", L"\xd83d.lnk"};
    m_invented = &names;
    m_manager.AddLinkFileToList(L"C:\\Start", L"\\*.lnk");
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\Start\\A1.lnkx", L"C:\\Start\\x\xd800.lnk",
                                                  L"C:\\Start\\\xdc00y.lnk", L"C:\\Start\\\xd83d.lnk"));
    EXPECT_EQ(HandedOver()[0], "A1., C:\\Start\\A1.lnkx");
    EXPECT_EQ(HandedOver()[1], "x?, C:\\Start\\x?.lnk");
    ExpectAllClosed();
}

TEST_F(WalkCalls, TheLongestNameFits)
{
    const std::vector<std::wstring> names = {std::wstring(255, L'n') + L".lnk",
                                             std::wstring(252, L'm') + L".lnk"};
    m_invented = &names;
    // "C:" and 256 characters with the backslash make 259; one more does not fit.
    m_manager.AddLinkFileToList(L"C:", L"\\*.lnk");
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\" + names[1]));
}

} // namespace
