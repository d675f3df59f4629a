// The trace of a launch by search.

#include "QanHelper.h"
#include "support/Allocations.h"
#include "support/LogCapture.h"
#include "unit/api/SearchDesktop.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

using namespace api_test;
using ::testing::ElementsAre;
using Lines = std::vector<std::string>;

// The two lines of one key event.
Lines Key(const std::string& arguments)
{
    return {"CQanhKeyEmulate::Sendinput_Key(" + arguments + ") IN", "CQanhKeyEmulate::Sendinput_Key OUT"};
}

const Lines kPaneLines =
    Lines{"CQanhMonitorMode::OpenAppSearchUI IN", "CQanhMonitorMode::GetMonitorState IN",
          "CQanhMonitorMode::GetMonitorState OUT(0) dwMode(1)", "CQanhKeyEmulate::SendInput_Win_Q IN"} +
    Key("0x005B, 0x00000001") + Key("0x0051, 0x0010, 0x00000008") + Key("0x0051, 0x0010, 0x00000002") +
    Key("0x005B, 0x00000002") +
    Lines{"CQanhKeyEmulate::SendInput_Win_Q OUT", "CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)"};
const Lines kPasteLines = Lines{"CQanhKeyEmulate::SendInput_Shift_Insert IN"} +
                          Key("0x0010, 0x002A, 0x00000000") + Key("0x002D, 0x0052, 0x00000001") +
                          Key("0x002D, 0x0052, 0x00000003") +
                          Lines{"CQanhKeyEmulate::SendInput_Shift_Insert OUT"};
const Lines kEnterLines = Lines{"CQanhKeyEmulate::SendInput_Enter IN"} + Key("0x000D, 0x00000001") +
                          Key("0x000D, 0x00000002") + Lines{"CQanhKeyEmulate::SendInput_Enter OUT"};
const Lines kEndLines = Key("0x0010, 0x002A, 0x00000002") + Lines{"QanhLaunchBySearch OUT(0x00000000)"};

Lines CopyLines(const std::string& text)
{
    return {"CQanhClipboard::SetClipboardData(" + text + ") IN",
            "CQanhClipboard::SetClipboardData OUT(0x00000000)"};
}

class SearchLaunchLog : public SearchDesktop
{
protected:
    SearchLaunchLog() { readsClipboard = false; }

    // Without what the catalogue's records write about their names.
    [[nodiscard]] Lines WithoutRecords() const
    {
        Lines lines;
        for (const std::string& line : m_log.Lines()) {
            const std::string operation = line.substr(0, line.find("::"));
            if (operation != "CQanhApp" && operation != "CQanhDesktopApp" && operation != "CQanhMetroApp" &&
                operation != "CQanhPackage") {
                lines.push_back(line);
            }
        }
        return lines;
    }

    test::LogCapture m_log;
};

TEST_F(SearchLaunchLog, OfALaunchWithoutTheExcludeList)
{
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_EQ(m_log.Lines(),
              (Lines{"QanhLaunchBySearch(Mail, 0, 0) IN", "QanhLaunchBySearch szKeyword = \"Mail\" "} +
               kPaneLines + CopyLines("\"Mail\"") + kPasteLines + kEnterLines + kEndLines));
}

TEST_F(SearchLaunchLog, OfALaunchWithTheExcludeList)
{
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, TRUE), S_OK);
    EXPECT_EQ(m_log.Lines(), (Lines{"QanhLaunchBySearch(Mail, 0, 1) IN",
                                    "CQanhPackageManager::GetExcludeAppNameList(Mail) IN",
                                    "CQanhAppNameList::GetExcludeAppNameList(Mail) IN",
                                    "CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)",
                                    "CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)",
                                    "QanhLaunchBySearch szKeyword = \"Mail\" "} +
                              kPaneLines + CopyLines("\"Mail\"") + kPasteLines + kEnterLines + kEndLines));
}

TEST_F(SearchLaunchLog, OfShowing)
{
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 1, FALSE), S_OK);
    EXPECT_EQ(m_log.Lines(),
              (Lines{"QanhLaunchBySearch(Mail, 1, 0) IN", "QanhLaunchBySearch szKeyword = \"Mail\" "} +
               kPaneLines + CopyLines("Mail") + kPasteLines +
               Lines{"CQanhReg::GetClearClipboardWaitTime IN", "CQanhReg::GetDWORDRegVal IN",
                     "CQanhReg::GetDWORDRegVal OUT", "CQanhReg::GetClearClipboardWaitTime OUT(1000)"} +
               kEndLines));
}

TEST_F(SearchLaunchLog, OfAFoundApplicationTellsTheQueryThatWasNotPasted)
{
    AddDesktopApp(L"Mail");
    AddDesktopApp(L"gmail");
    m_log.Clear();
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 2, 7), S_OK);
    EXPECT_EQ(WithoutRecords(), (Lines{"QanhLaunchBySearch(Mail, 2, 7) IN",
                                       "CQanhPackageManager::GetExcludeAppNameList(Mail) IN",
                                       "CQanhAppNameList::GetExcludeAppNameList(Mail) IN",
                                       "CQanhAppNameList::GetExcludeAppNameList OUT(0x00000000)",
                                       "CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)",
                                       "QanhLaunchBySearch szKeyword = \"Mail\" NOT(\"gmail\") "} +
                                 kPaneLines + CopyLines("Mail") + kPasteLines + kEnterLines + kEndLines));
}

TEST_F(SearchLaunchLog, OfShowingTellsTheQueryThatWasNotPasted)
{
    AddStoreApp(L"gmail");
    m_log.Clear();
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 1, TRUE), S_OK);
    EXPECT_THAT(m_log.Lines(), testing::Contains("QanhLaunchBySearch szKeyword = \"Mail\" NOT(\"gmail\") "));
}

TEST_F(SearchLaunchLog, OfAPaneThatStays)
{
    isPaneInFront = [](std::size_t look) { return look <= 12; };
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 2, FALSE), S_OK);
    EXPECT_EQ(m_log.Lines(),
              (Lines{"QanhLaunchBySearch(Mail, 2, 0) IN", "QanhLaunchBySearch szKeyword = \"Mail\" "} +
               kPaneLines + CopyLines("\"Mail\"") + kPasteLines + kEnterLines + kPasteLines + kEnterLines +
               kEndLines));
}

TEST_F(SearchLaunchLog, OfAPaneThatCannotBeOpened)
{
    s_MonitorMode.m_pImmersiveMode = nullptr;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), E_FAIL);
    EXPECT_EQ(m_log.Text(), "QanhLaunchBySearch(Mail, 0, 0) IN\r\n"
                            "QanhLaunchBySearch szKeyword = \"Mail\" \r\n"
                            "CQanhMonitorMode::OpenAppSearchUI IN\r\n"
                            "CQanhMonitorMode::GetMonitorState IN\r\n"
                            "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)\r\n"
                            "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)\r\n"
                            "QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)\r\n");
}

TEST_F(SearchLaunchLog, OfAClipboardThatCannotBeOpened)
{
    opensClipboard = false;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_EQ(m_log.Lines(),
              (Lines{"QanhLaunchBySearch(Mail, 0, 0) IN", "QanhLaunchBySearch szKeyword = \"Mail\" "} +
               kPaneLines +
               Lines{"CQanhClipboard::SetClipboardData(\"Mail\") IN",
                     "CQanhClipboard::SetClipboardData OUT(0x80004005)"} +
               kPasteLines + kEnterLines + kEndLines));
}

TEST_F(SearchLaunchLog, TellsTheScanCodeOfShift)
{
    scanCodeOfShift = 0x36;
    EXPECT_EQ(QanhLaunchBySearch(L"Mail", 0, FALSE), S_OK);
    EXPECT_THAT(m_log.Lines(),
                testing::Contains("CQanhKeyEmulate::Sendinput_Key(0x0010, 0x0036, 0x00000002) IN"));
}

// Whichever allocation fails, the launch says so and lets everything go; what is lost inside the catalogue is
// a name less to exclude. The screen cannot be read here, so that no launch goes further than its query.
TEST_F(SearchLaunchLog, OfALaunchWithoutMemory)
{
    s_MonitorMode.m_pImmersiveMode = nullptr;
    AddDesktopApp(L"gmail");
    AddDesktopApp(L"a mail program with a name that is not short");
    std::size_t outOfMemory = 0;
    const std::size_t attempts = test::ForEachFailingAllocation([&](std::size_t index) {
        m_log.Clear();
        HRESULT hr = S_OK;
        bool failed = false;
        std::size_t live = 0;
        {
            const test::AllocationWatch watch(index);
            hr = QanhLaunchBySearch(L"Mail", 0, TRUE);
            failed = watch.Failed();
            live = watch.Live();
        }
        EXPECT_EQ(live, 0u) << index;
        if (hr == E_OUTOFMEMORY) {
            ++outOfMemory;
            EXPECT_EQ(m_log.Lines().back(), "QanhLaunchBySearch OUT(0x8007000E)") << index;
        } else {
            EXPECT_EQ(hr, E_FAIL) << index;
            EXPECT_EQ(m_log.Lines().back(), "QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)")
                << index;
        }
        return failed;
    });
    EXPECT_GT(attempts, 0u);
    EXPECT_GT(outOfMemory, 0u);
}

} // namespace
