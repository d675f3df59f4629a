// The trace of a launch by search.

#include "QanHelper.h"
#include "support/Allocations.h"
#include "unit/api/SearchDesktop.h"

namespace {

using namespace api_test;

// The two lines of one key event.
Lines Key(const std::string& arguments)
{
    return Call("CQanhKeyEmulate::Sendinput_Key(" + arguments + ")");
}

const Lines kPaneLines = Call("CQanhMonitorMode::OpenAppSearchUI", "(0x00000000)",
                              Call("CQanhMonitorMode::GetMonitorState", "(0) dwMode(1)") +
                                  Call("CQanhKeyEmulate::SendInput_Win_Q", "",
                                       Key("0x005B, 0x00000001") + Key("0x0051, 0x0010, 0x00000008") +
                                           Key("0x0051, 0x0010, 0x00000002") + Key("0x005B, 0x00000002")));
const Lines kPasteLines = Call("CQanhKeyEmulate::SendInput_Shift_Insert", "",
                               Key("0x0010, 0x0036, 0x00000000") + Key("0x002D, 0x0052, 0x00000001") +
                                   Key("0x002D, 0x0052, 0x00000003"));
const Lines kEnterLines =
    Call("CQanhKeyEmulate::SendInput_Enter", "", Key("0x000D, 0x00000001") + Key("0x000D, 0x00000002"));
const Lines kExcludeLines = Call("CQanhPackageManager::GetExcludeAppNameList(Mail)", "(0x00000000)",
                                 Call("CQanhAppNameList::GetExcludeAppNameList(Mail)", "(0x00000000)"));

Lines CopyLines(const std::string& text, const std::string& result = "(0x00000000)")
{
    return Call("CQanhClipboard::SetClipboardData(" + text + ")", result);
}

class SearchLaunchLog : public SearchDesktop
{
protected:
    SearchLaunchLog() { readsClipboard = false; }

    // The log of a launch that succeeds: what it has made of its arguments, and what it does with the pane.
    static Lines LaunchLines(const std::string& arguments, const Lines& query, const Lines& inPane)
    {
        return Call("QanhLaunchBySearch(" + arguments + ")", "(0x00000000)",
                    query + kPaneLines + inPane + Key("0x0010, 0x0036, 0x00000002"));
    }
    void ExpectLaunch(DWORD mode, BOOL usesExcludeList)
    {
        EXPECT_EQ(QanhLaunchBySearch(L"Mail", mode, usesExcludeList), S_OK);
    }

    const Lines kMailQuery = {"QanhLaunchBySearch szKeyword = \"Mail\" "};
    LogCapture m_log;
};

TEST_F(SearchLaunchLog, OfALaunchWithoutTheExcludeList)
{
    ExpectLaunch(0, FALSE);
    EXPECT_EQ(m_log.Lines(),
              LaunchLines("Mail, 0, 0", kMailQuery, CopyLines("\"Mail\"") + kPasteLines + kEnterLines));
}

TEST_F(SearchLaunchLog, OfALaunchWithTheExcludeList)
{
    ExpectLaunch(0, TRUE);
    EXPECT_EQ(m_log.Lines(), LaunchLines("Mail, 0, 1", kExcludeLines + kMailQuery,
                                         CopyLines("\"Mail\"") + kPasteLines + kEnterLines));
}

TEST_F(SearchLaunchLog, OfShowing)
{
    ExpectLaunch(1, FALSE);
    EXPECT_EQ(m_log.Lines(), LaunchLines("Mail, 1, 0", kMailQuery,
                                         CopyLines("Mail") + kPasteLines +
                                             Call("CQanhReg::GetClearClipboardWaitTime", "(1000)",
                                                  Call("CQanhReg::GetDWORDRegVal"))));
}

TEST_F(SearchLaunchLog, OfAFoundApplicationTellsTheQueryThatWasNotPasted)
{
    AddDesktopApp(L"Mail");
    AddDesktopApp(L"gmail");
    m_log.Clear();
    ExpectLaunch(2, 7);
    const Lines query = {"QanhLaunchBySearch szKeyword = \"Mail\" NOT(\"gmail\") "};
    // Without what the catalogue's records write about their names.
    EXPECT_EQ(
        LinesWithout({"CQanhApp::", "CQanhDesktopApp::", "CQanhMetroApp::", "CQanhPackage::"}, m_log.Lines()),
        LaunchLines("Mail, 2, 7", kExcludeLines + query, CopyLines("Mail") + kPasteLines + kEnterLines));
}

TEST_F(SearchLaunchLog, OfShowingTellsTheQueryThatWasNotPasted)
{
    AddStoreApp(L"gmail");
    m_log.Clear();
    ExpectLaunch(1, TRUE);
    EXPECT_THAT(m_log.Lines(), testing::Contains("QanhLaunchBySearch szKeyword = \"Mail\" NOT(\"gmail\") "));
}

TEST_F(SearchLaunchLog, OfAPaneThatStays)
{
    isPaneInFront = [](std::size_t look) { return look <= 12; };
    ExpectLaunch(2, FALSE);
    EXPECT_EQ(m_log.Lines(),
              LaunchLines("Mail, 2, 0", kMailQuery,
                          CopyLines("\"Mail\"") + kPasteLines + kEnterLines + kPasteLines + kEnterLines));
}

TEST_F(SearchLaunchLog, OfAPaneThatCannotBeOpened)
{
    s_MonitorMode.m_pImmersiveMode = nullptr;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), E_FAIL);
    EXPECT_EQ(
        m_log.Lines(),
        Call("QanhLaunchBySearch(Mail, 0, 0)", "(SwitchToStartScreen : ret=0x80004005)",
             kMailQuery + Call("CQanhMonitorMode::OpenAppSearchUI", "(GetMonitorState : ret=0x80004005)",
                               Call("CQanhMonitorMode::GetMonitorState", "( m_pImmersiveMode NULL : -1)"))));
    EXPECT_THAT(journal, IsEmpty()) << "nothing is touched";
}

TEST_F(SearchLaunchLog, OfAClipboardThatCannotBeOpened)
{
    opensClipboard = false;
    ExpectLaunch(0, FALSE);
    EXPECT_EQ(m_log.Lines(), LaunchLines("Mail, 0, 0", kMailQuery,
                                         CopyLines("\"Mail\"", "(0x80004005)") + kPasteLines + kEnterLines));
}

// Whichever allocation fails, the launch says so and lets everything go; what is lost inside the catalogue is
// a name less to exclude. The screen cannot be read here, so that no launch goes further than its query.
TEST_F(SearchLaunchLog, OfALaunchWithoutMemory)
{
    s_MonitorMode.m_pImmersiveMode = nullptr;
    AddDesktopApp(L"gmail");
    AddDesktopApp(L"a mail program with a name that is not short");
    std::size_t outOfMemory = 0;
    const std::size_t attempts = ForEachFailingAllocation([&](std::size_t index) {
        m_log.Clear();
        SCOPED_TRACE(index);
        const Attempt attempt =
            TryWithFailingAllocation(index, [] { return QanhLaunchBySearch(L"Mail", 0, TRUE); });
        EXPECT_EQ(attempt.left, 0u);
        const bool isOutOfMemory = attempt.result == E_OUTOFMEMORY;
        outOfMemory += isOutOfMemory ? 1 : 0;
        EXPECT_TRUE(isOutOfMemory || attempt.result == E_FAIL) << attempt.result;
        EXPECT_EQ(m_log.Lines().back(), isOutOfMemory
                                            ? "QanhLaunchBySearch OUT(0x8007000E)"
                                            : "QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)");
        return attempt.failed;
    });
    EXPECT_GT(attempts, 0u);
    EXPECT_GT(outOfMemory, 0u);
}

} // namespace
