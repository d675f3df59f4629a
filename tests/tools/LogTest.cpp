// What the tool makes of the diagnostic log.

#include "tools/ToolTest.h"

namespace {

using namespace test;

class ToolLog : public Test
{
protected:
    // A line of the log: so many milliseconds after nine o'clock.
    static std::string At(int time, const std::string& message)
    {
        char stamp[40];
        _snprintf_s(stamp, 40, _TRUNCATE, "[2014/03/01 09:00:%02d.%03d]", time / 1000, time % 1000);
        return stamp + message + "\r\n";
    }

    void Write(const std::string& text) const { WriteFileBytes(m_path, text); }
    ToolResult Run(std::vector<std::wstring> options = {}) const
    {
        options.insert(options.begin(), L"log");
        options.insert(options.end(), {L"--log", m_path});
        return RunTool(options);
    }
    ToolResult RunOn(const std::string& text, const std::vector<std::wstring>& options) const
    {
        Write(text);
        return Run(options);
    }

    const TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"QanHelperLog.txt";
};

// A launch on the desktop that took its time, with one paste that was lost.
std::string Launch(const std::function<std::string(int, const std::string&)>& at)
{
    return at(0, "QanhLaunchBySearch(Mail, 0, 1) IN") +
           at(1, "CQanhPackageManager::GetExcludeAppNameList(Mail) IN") +
           at(4, "CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)") +
           at(4, "QanhLaunchBySearch szKeyword = \"Mail\" NOT(\"Gmail\") ") +
           at(5, "CQanhMonitorMode::OpenAppSearchUI IN") + at(6, "CQanhMonitorMode::SwitchToStartScreen IN") +
           at(6, "dwMode = 0 ") + at(600, "dwMode = 1 ") +
           at(606, "CQanhMonitorMode::SwitchToStartScreen OUT(0)") +
           at(606, "CQanhKeyEmulate::SendInput_Win_Q IN") + at(1000, "CQanhKeyEmulate::SendInput_Win_Q OUT") +
           at(1305, "CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)") +
           at(1305, "CQanhClipboard::SetClipboardData(\"Mail\" NOT(\"Gmail\")) IN") +
           at(1307, "CQanhClipboard::SetClipboardData OUT(0x00000000)") +
           at(1307, "CQanhKeyEmulate::SendInput_Shift_Insert IN") +
           at(1400, "CQanhKeyEmulate::SendInput_Shift_Insert OUT") +
           at(2400, "CQanhKeyEmulate::SendInput_Shift_Insert IN") +
           at(2500, "CQanhKeyEmulate::SendInput_Shift_Insert OUT") +
           at(2707, "CQanhKeyEmulate::Sendinput_Key(0x0010, 0x002A, 0x00000002) IN") +
           at(2707, "CQanhKeyEmulate::Sendinput_Key OUT") + at(2708, "QanhLaunchBySearch OUT(0x00000000)");
}

TEST_F(ToolLog, TellsThePhasesOfALaunch)
{
    EXPECT_EQ(
        RunOn(Launch(At), {L"--times"}),
        (ToolResult{"Launches:\n"
                    "  2014-03-01 09:00:00.000\tQanhLaunchBySearch(Mail, 0, 1)\t2708 ms\t0x00000000\n"
                    "    query: \"Mail\" NOT(\"Gmail\")\n"
                    "    exclusions 3 ms, Start screen 600 ms, search pane 700 ms, clipboard 2 ms, paste "
                    "and start 1400 ms (pasted 2 times)\n"
                    "Refresh passes: none\n",
                    "", 0}));
}

TEST_F(ToolLog, TellsTheSlowestOperations)
{
    EXPECT_EQ(RunOn(Launch(At), {L"--slow", L"2"}),
              (ToolResult{"Slowest operations:\n"
                          "  line 1\t2014-03-01 09:00:00.000\thost\t1210 ms of its own, 2708 ms in all\t"
                          "QanhLaunchBySearch(Mail, 0, 1)\n"
                          "  line 6\t2014-03-01 09:00:00.006\thost\t600 ms of its own, 600 ms in all\t"
                          "CQanhMonitorMode::SwitchToStartScreen\n",
                          "", 0}));
}

TEST_F(ToolLog, IsATree)
{
    EXPECT_EQ(
        RunOn(At(42, "QanhLaunchBySearch(Mail, 0, 1) IN") +
                  At(43, "CQanhPackageManager::GetExcludeAppNameList(Mail) IN") +
                  At(43, "CQanhApp::IsSubStrNoOrder(mail, Gmail) IN") +
                  At(44, "CQanhApp::IsSubStrNoOrder OUT(1)") +
                  At(46, "CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)") +
                  At(46, "QanhLaunchBySearch szKeyword = \"Mail\" NOT(\"Gmail\") "),
              {L"--tree"}),
        (ToolResult{"2014-03-01 09:00:00.042\thost\tQanhLaunchBySearch(Mail, 0, 1)\n"
                    "2014-03-01 09:00:00.043\thost\t  CQanhPackageManager::GetExcludeAppNameList(Mail)\n"
                    "2014-03-01 09:00:00.043\thost\t    CQanhApp::IsSubStrNoOrder(mail, Gmail): 1, 1 ms\n"
                    "2014-03-01 09:00:00.046\thost\t  end of "
                    "CQanhPackageManager::GetExcludeAppNameList: 0x00000000, 3 ms\n"
                    "2014-03-01 09:00:00.046\thost\t  szKeyword = \"Mail\" NOT(\"Gmail\")\n"
                    "                       \thost\tend of QanhLaunchBySearch: no exit in the log\n",
                    "", 0}));
}

TEST_F(ToolLog, TellsAResultThatHasAColonWithoutIt)
{
    EXPECT_THAT(RunOn(At(0, "CQanhPackageManager::RefreshThread IN") +
                          At(1, "CQanhPackageManager::RefreshThread OUT : nRet(0x00000000)"),
                      {L"--tree"})
                    .output,
                HasSubstr("\trefresh\tCQanhPackageManager::RefreshThread: nRet(0x00000000), 1 ms\n"));
}

// A pass that asks for a package while a launch asks what to exclude.
TEST_F(ToolLog, KeepsTheRefreshThreadApartAndMarksWhatIsAGuess)
{
    EXPECT_EQ(
        RunOn(At(0, "CQanhPackageManager::RefreshThread IN") +
                  At(1, "CQanhPackageManager::RefreshThread Refresh app name list!") +
                  At(2, "QanhLaunchBySearch(Mail, 0, 1) IN") + At(3, "QanhIsInstalled(Vel.A_1) IN") +
                  At(3, "CQanhPackageManager::GetExcludeAppNameList(Mail) IN") +
                  At(4, "CQanhPackageManager::IsInstalled(Vel.A_1) IN") +
                  At(5, "CQanhPackageManager::GetExcludeAppNameList OUT(0x00000000)") +
                  At(6, "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 1)") +
                  At(7, "QanhIsInstalled OUT(0x00000000)") + At(8, "QanhLaunchBySearch OUT(0x00000000)"),
              {L"--tree"}),
        (ToolResult{
            "2014-03-01 09:00:00.000\trefresh\tCQanhPackageManager::RefreshThread\n"
            "2014-03-01 09:00:00.001\trefresh\t  Refresh app name list!\n"
            "2014-03-01 09:00:00.002\thost\tQanhLaunchBySearch(Mail, 0, 1)\n"
            "2014-03-01 09:00:00.003\trefresh?\t  QanhIsInstalled(Vel.A_1)\n"
            "2014-03-01 09:00:00.003\thost\t  CQanhPackageManager::GetExcludeAppNameList(Mail)\n"
            "2014-03-01 09:00:00.004\trefresh?\t    CQanhPackageManager::IsInstalled(Vel.A_1)\n"
            "2014-03-01 09:00:00.005\thost\t  end of CQanhPackageManager::GetExcludeAppNameList: "
            "0x00000000, 2 ms\n"
            "2014-03-01 09:00:00.006\trefresh?\t    end of CQanhPackageManager::IsInstalled: "
            "*pIsInstalled = 1, 2 ms\n"
            "2014-03-01 09:00:00.007\trefresh?\t  end of QanhIsInstalled: 0x00000000, 4 ms\n"
            "2014-03-01 09:00:00.008\thost\tend of QanhLaunchBySearch: 0x00000000, 6 ms\n"
            "                       \trefresh\tend of CQanhPackageManager::RefreshThread: no exit in the "
            "log\n",
            "", 0}));
}

TEST_F(ToolLog, TellsWhereARefreshPassSpentItsTime)
{
    EXPECT_EQ(RunOn(At(0, "CQanhPackageManager::RefreshThread Refresh app name list!") +
                        At(10, "CQanhPackageManager::RefreshMetroApps IN") +
                        At(110, "CQanhPackageManager::RefreshMetroApps OUT(0x00000000)") +
                        At(110, "CQanhPackageManager::RefreshDesktopApps(C:\\A) IN") +
                        At(111, "CQanhPackageManager::RefreshDesktopApps(C:\\A\\B) IN") +
                        At(130, "CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)") +
                        At(140, "CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)") +
                        At(140, "CQanhPackageManager::RefreshDesktopApps(C:\\C) IN") +
                        At(145, "CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)") +
                        At(146, "CQanhAppNameList::Save(C:\\AppNameList.xml) IN") +
                        At(150, "CQanhAppNameList::Save OUT(0x00000000)"),
                    {L"--times"}),
              (ToolResult{"Launches: none\n"
                          "Refresh passes:\n"
                          "  2014-03-01 09:00:00.000\t150 ms\n"
                          "    what is installed 10 ms, Store 100 ms, Start menu 35 ms, saving 4 ms\n",
                          "", 0}));
}

TEST_F(ToolLog, ExplainsAFailureOnceAndWhatItDidToTheHost)
{
    EXPECT_EQ(RunOn(At(0, "QanhLaunchBySearch(Mail, 0, 0) IN") +
                        At(1, "CQanhMonitorMode::OpenAppSearchUI IN") +
                        At(2, "CQanhMonitorMode::GetMonitorState IN") +
                        At(3, "CQanhMonitorMode::GetMonitorState OUT(-2) IsLauncherVisible Err ") +
                        At(4, "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)") +
                        At(5, "QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)"),
                    {L"--errors"}),
              (ToolResult{
                  "Failures:\n"
                  "  line 4\t2014-03-01 09:00:00.003\thost\tCQanhMonitorMode::GetMonitorState (-2) "
                  "IsLauncherVisible Err\n"
                  "    in QanhLaunchBySearch(Mail, 0, 0)\n"
                  "    the system does not tell what the screen shows\n"
                  "  line 6\t2014-03-01 09:00:00.005\thost\tQanhLaunchBySearch SwitchToStartScreen : "
                  "ret=0x80004005\n"
                  "    0x80004005 E_FAIL (the system does not say why): nothing was started: it could not be "
                  "told what the screen shows\n",
                  "", 1}));
}

// What each line tells of, wherever it stands.
TEST_F(ToolLog, KnowsTheFailures)
{
    const std::pair<const char*, const char*> lines[] = {
        {"CQanhPackageManager::RefreshThread pPyxPackageManager->m_AppNameList.Save() failed. ErrCode = "
         "0x80070020 ",
         "0x80070020 ERROR_SHARING_VIOLATION (another program holds the file): the catalogue was not saved"},
        {"m_AppNameList.Load() failed. ErrCode = 0x80070020 ",
         "0x80070020 ERROR_SHARING_VIOLATION (another program holds the file): the start knows no applications"},
        {"CQanhClipboard::SetClipboardData OUT(0x80004005)", "another program held the clipboard"},
        {"CQanhClipboard::SetClipboardData ERROR SetClipboardData(CF_UNICODETEXT, hg) Failed. ErrCode = 5",
         "0x80070005 ERROR_ACCESS_DENIED (this user may not, or it is a folder): the clipboard did not take"},
        {"CQanhMonitorMode::Initialize OUT CoInitializeEx:(-2147417850)", "0x80010106 RPC_E_CHANGED_MODE"},
        {"CQanhMonitorMode::Initialize OUT CoCreateInstance:(-2147221164)", "0x80040154 REGDB_E_CLASSNOTREG"},
        {"QanhInitialize OUT(s_MonitorMode.Initialize : hr=-2147221164)", "the library did not come up"},
        {"CQanhPackageManager::GetPackageManager Class not registered",
         "the system's package manager cannot be had"},
        {"CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)",
         "the package counts as not installed, for this reason alone"},
        {"CQanhPackageManager::IsInstalled OUT(Access is denied.)", "the system could not be asked"},
        {"CQanhPackageManager::RefreshMetroApps OUT(GetPackageManager Failed.)",
         "the pass found no Store packages"},
        {"CQanhAppNameList::AddMetroPackage Error (0x80070002)", "the manifest of a package cannot be read"},
        {"CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)",
         "0xA0000001 QANH_E_NO_PACKAGE"},
        {"CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (5)",
         "there is no folder for the catalogue"},
        {"C:\\Menu\\*.lnk Errcode = 5 ", "a folder of the Start menu cannot be read"},
        {"Errcode = 3 ", "a folder of the Start menu cannot be read"},
        {"CreateThread() failed. ErrCode = 8 ", "the catalogue is not refreshed by this process"},
        {"CQanhPackageManager::Initialize CreateMutex() failed. ", "this process does not refresh it"},
    };
    for (const auto& [line, meaning] : lines) {
        // With the call that it ends, if it ends one.
        const std::string name = std::string(line).substr(0, std::string(line).find_first_of(" ("));
        const std::string entry = name.rfind("C:", 0) == 0
                                      ? "CQanhPackageManager::AddLinkFileToList(C:\\Menu)"
                                  : name == "Errcode" ? "CQanhPackageManager::RefreshDesktopApps(C:\\Menu)"
                                  : name.find("Qanh") < 2 ? name
                                                          : "QanhInitialize";
        const ToolResult result = RunOn(At(0, entry + " IN") + At(1, line), {L"--errors"});
        EXPECT_THAT(result.output, HasSubstr(meaning)) << line;
        EXPECT_EQ(result.status, 1u) << line;
    }
}

TEST_F(ToolLog, FindsNoFailureInWhatLooksLikeOne)
{
    for (const char* line :
         {"CQanhPackageManager::CreateAppNameListFolder SHCreateDirectoryEx failed. ErrCode = (183)",
          "CQanhPackageManager::CreateAppNameListFolder OUT(C)", "OpenMutex() : Mutex none. ",
          "C:\\Menu\\*.url Errcode = 2 ", "CQanhReg::GetDWORDRegVal OUT(0)",
          "CQanhAppNameList::Load OUT(0x00000001)", "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)",
          "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = failed)",
          "QanhLaunchBySearch szKeyword = \"failed\" ", "CQanhMonitorMode::GetMonitorState OUT(0) dwMode()",
          "QanhFinalize OUT : s_nCount(0)"}) {
        const std::string name = std::string(line).substr(0, std::string(line).find_first_of(" ("));
        EXPECT_EQ(RunOn(At(0, name + " IN") + At(1, line), {L"--errors"}).output, "Failures: none\n") << line;
    }
}

TEST_F(ToolLog, SeesThatThePaneOrTheStartScreenNeverCame)
{
    const ToolResult result =
        RunOn(At(0, "CQanhMonitorMode::OpenAppSearchUI IN") +
                  At(1, "CQanhMonitorMode::SwitchToStartScreen IN") + At(2, "dwMode = 0 ") +
                  At(2000, "dwMode = 0 ") + At(2001, "CQanhMonitorMode::SwitchToStartScreen OUT(0)") +
                  At(2001, "CQanhKeyEmulate::SendInput_Win_Q IN") +
                  At(2400, "CQanhKeyEmulate::SendInput_Win_Q OUT") +
                  At(22600, "CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)"),
              {L"--errors"});
    EXPECT_THAT(result.output, HasSubstr("the Start screen did not come up within 2 s"));
    EXPECT_THAT(result.output, HasSubstr("the search pane did not come to the front within 20 s"));
    EXPECT_EQ(result.status, 1u);
}

TEST_F(ToolLog, GoesOnBehindBrokenLines)
{
    const ToolResult result = RunOn(
        At(0, "QanhReleaseString IN") + "something else\r\n" + std::string("\0\0\r\n", 4) +
            At(5, "CQanhPackageManager::Initialize CreateMutex()  GetLastError() : ERROR_ALREADY_EXISTS" +
                      At(6, "QanhReleaseString OUT").substr(0, 46)) +
            At(7, "QanhFinalize IN").substr(0, 30),
        {L"--tree"});
    EXPECT_EQ(
        result.output,
        "2014-03-01 09:00:00.000\thost\tQanhReleaseString\n"
        "2014-03-01 09:00:00.005\thost\t  CQanhPackageManager::Initialize CreateMutex()  GetLastError() : "
        "ERROR_ALREADY_EXISTS\n"
        "2014-03-01 09:00:00.006\thost\tend of QanhReleaseString: 6 ms\n");
    EXPECT_EQ(result.problems,
              "qanh: broken lines in " + ToUtf8(m_path) +
                  ", or lines of somebody else: 3, the first one is line 2; the last line of " +
                  ToUtf8(m_path) + " has no end: it was cut, or is being written\n");
    EXPECT_EQ(result.status, 0u);
}

// The time stamp of the one, the time stamp of the other, the message of the one, that of the other.
TEST_F(ToolLog, ReadsTwoLinesThatWereWrittenIntoEachOther)
{
    EXPECT_EQ(
        RunOn("[2014/03/01 09:00:00.001][2014/03/01 09:00:00.002]QanhReleaseString IN\r\n"
              "CQanhPackageManager::RefreshThread IN\r\n" +
                  At(4, "QanhReleaseString OUT"),
              {L"--tree"}),
        (ToolResult{"2014-03-01 09:00:00.002\thost\tQanhReleaseString\n"
                    "2014-03-01 09:00:00.002\trefresh\tCQanhPackageManager::RefreshThread\n"
                    "2014-03-01 09:00:00.004\thost\tend of QanhReleaseString: 2 ms\n"
                    "                       \trefresh\tend of CQanhPackageManager::RefreshThread: no exit in "
                    "the log\n",
                    "", 0}));
}

TEST_F(ToolLog, IsReadInTheCodePageOfItsMachine)
{
    const std::string japanese = "\x83\x81\x81\x5B\x83\x8B"; // of code page 932
    EXPECT_THAT(
        RunOn(At(0, "QanhLaunchBySearch(" + japanese + ", 0, 1) IN"), {L"--tree", L"--code-page", L"932"})
            .output,
        HasSubstr("QanhLaunchBySearch(メール, 0, 1)"));
    EXPECT_EQ(Run({L"--code-page", L"64999"}).status, 2u);
}

TEST_F(ToolLog, OfOneMegabyteIsReadInPieces)
{
    std::string text;
    for (int call = 0; call < 7000; ++call) {
        text += At(call, "QanhReleaseString IN") + At(call, "QanhReleaseString OUT");
    }
    const ToolResult result = RunOn(text, {});
    EXPECT_THAT(result.output,
                StartsWith("From 2014-03-01 09:00:00.000 to 2014-03-01 09:00:06.999: 14000 lines, "
                           "7000 calls, 0 launches, 0 refresh passes, 0 failures\n"));
    EXPECT_EQ(result.problems, "");
    const ToolResult tree = Run({L"--tree"});
    EXPECT_EQ(Split(tree.output, "\n").size(), 7001u);
}

TEST_F(ToolLog, IsJsonWhenAskedFor)
{
    const ToolResult result = RunOn(Launch(At), {L"--tree", L"--times", L"--json"});
    EXPECT_EQ(result.status, 2u); // one of the two
    const ToolResult tree = Run({L"--tree", L"--slow", L"1", L"--errors", L"--json"});
    for (const char* part :
         {"\"Lines\": 21,", "\"Tree\": [", "\"Operation\": \"QanhLaunchBySearch\"", "\"Milliseconds\": 2708",
          "\"Note\": \"szKeyword = \\\"Mail\\\" NOT(\\\"Gmail\\\")\"", "\"Slowest\": [",
          "\"Failures\": []"}) {
        EXPECT_THAT(tree.output, HasSubstr(part));
    }
    EXPECT_EQ(tree.status, 0u);
    EXPECT_THAT(Run({L"--times", L"--json"}).output, HasSubstr("\"PasteAndStart\": 1400,"));
}

TEST_F(ToolLog, IsFoundForAHost)
{
    const ScopedEnvironment localAppData(L"LOCALAPPDATA", m_folder.Path().c_str());
    MakeFolder(m_folder / L"Vel\\QanHelper\\Launcher");
    WriteFileBytes(m_folder / L"Vel\\QanHelper\\Launcher\\QanHelperLog.txt",
                   At(0, "QanhReleaseString IN") + At(1, "QanhReleaseString OUT"));
    EXPECT_EQ(RunTool({L"log", L"--host", L"Launcher", L"--tree"}),
              (ToolResult{"2014-03-01 09:00:00.000\thost\tQanhReleaseString: 1 ms\n", "", 0}));
}

TEST_F(ToolLog, ThatIsEmptyOrOfSomebodyElseHasNoLine)
{
    for (const char* text : {"", "\r\n", "[2014/03/01 09:00:00.000]hello\r\n", "hello\n"}) {
        EXPECT_EQ(RunOn(text, {}),
                  (ToolResult{"", "qanh: no line in " + ToUtf8(m_path) + " is one of the library's\n", 1}));
    }
}

TEST_F(ToolLog, MustBeNamedAndThere)
{
    EXPECT_EQ(RunTool({L"log"}), (ToolResult{"",
                                             "qanh: which log? Give --log FILE or --host NAME\n"
                                             "\"qanh help log\" tells how it is used.\n",
                                             2}));
    EXPECT_EQ(RunTool({L"log", L"--catalogue", m_path}).status, 2u);
    EXPECT_EQ(Run({L"--slow", L"0"}).status, 2u);
    EXPECT_EQ(Run({L"--slow", L"many"}).status, 2u);
    EXPECT_EQ(Run(), (ToolResult{"",
                                 "qanh: cannot read " + ToUtf8(m_path) +
                                     ": 0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)\n",
                                 3}));
}

TEST_F(ToolLog, LetsTheSystemTellWhatTheToolDoesNotKnow)
{
    const auto answer = [this](const char* result) {
        WriteFileBytes(m_folder / L"own.txt",
                       std::string("[2014/03/01 09:05:07.042]QanhLaunchBySearch(Mail, 0, 1) IN\r\n"
                                   "[2014/03/01 09:05:08.653]QanhLaunchBySearch OUT(") +
                           result + ")\r\n");
        return RunTool({L"log", L"--errors", L"--log", m_folder / L"own.txt"}).output;
    };
    EXPECT_THAT(answer("0xC00CEE61"), HasSubstr("0xC00CEE61 NC_E_QNAMECHARACTER ("));
    EXPECT_THAT(answer("0x80070006"), HasSubstr("0x80070006 ERROR_INVALID_HANDLE ("));
    EXPECT_THAT(answer("0x80070013"), HasSubstr("0x80070013 (")); // the medium is write-protected
}

} // namespace
