// qanh refresh: one pass of the library, and what it changed.

#include "standin/Settings.h"
#include "tools/driving/DrivingTest.h"

#include <atomic>

namespace {

using namespace test;

class ToolRefresh : public DrivingTest
{
protected:
    [[nodiscard]] std::string Announced() const
    {
        return StartLine() + ", waits for that, and stops the library\n";
    }

    [[nodiscard]] std::string Place(const std::wstring& shortcut) const
    {
        return ToUtf8(sandbox.CommonPrograms() + L"\\" + shortcut);
    }

    // With "N" for each number of milliseconds.
    static std::string WithoutTimes(const std::string& text)
    {
        std::string result;
        for (const std::string& piece : Split(text, " ms")) {
            result += result.empty() ? "" : " ms";
            const std::size_t end = piece.find_last_not_of("0123456789") + 1;
            result += end < piece.size() ? piece.substr(0, end) + "N" : piece;
        }
        return result;
    }

    [[nodiscard]] std::string Catalogue() const { return ReadFileBytes(sandbox.CatalogFile(L"qanh")); }
};

TEST_F(ToolRefresh, TellsWhatThePassHasFound)
{
    sandbox.AddCommonShortcut(L"メール.lnk");
    sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_EQ(Run(L"refresh"),
              (ToolResult{"Records: 0 before, 2 after\n"
                          "+ desktop\tメール\t" +
                              Place(L"メール.lnk") +
                              "\n"
                              "+ store\tCalendar\tVel.Calendar_1vel7kq0n3rta\tshort name Days\n",
                          Announced(), 0}));
    EXPECT_THAT(Catalogue(), HasSubstr("メール.lnk"));
    EXPECT_FALSE(IsFirstPassRunning(L"qanh"));
}

TEST_F(ToolRefresh, TellsOnlyWhatHasChanged)
{
    sandbox.AddCommonShortcut(L"A.lnk");
    sandbox.AddCommonShortcut(L"B.lnk");
    (void)Run(L"refresh");
    EXPECT_EQ(Run(L"refresh"), (ToolResult{"Records: 2 before, 2 after\n", Announced(), 0}));
    DeleteFileW((sandbox.CommonPrograms() + L"\\A.lnk").c_str());
    EXPECT_EQ(
        Run(L"refresh"),
        (ToolResult{"Records: 2 before, 1 after\n- desktop\tA\t" + Place(L"A.lnk") + "\n", Announced(), 0}));
}

TEST_F(ToolRefresh, TellsTheWholeTimeWhenTheLogIsOff)
{
    const ToolResult result = Run(L"refresh --watch");
    EXPECT_EQ(
        WithoutTimes(result.output),
        "Records: 0 before, 0 after\n"
        "From the start of the library to the end of the pass: N ms, a second's wait included\n"
        "The time of each source is not known: the diagnostic log does not tell of this pass. Is it off?\n");
    const std::string number = result.output.substr(result.output.find("pass: ") + 6);
    EXPECT_GE(std::stoi(number), 1000);
    EXPECT_EQ(result.problems, Announced()) << "progress is for a console";
    EXPECT_EQ(result.status, 0u);
}

// The log has lines from before, which are another pass's.
TEST_F(ToolRefresh, TellsTheTimeOfEachSourceWhenTheLogIsOn)
{
    sandbox.Settings().SetDword(L"DebugLog", 1);
    sandbox.AddCommonShortcut(L"A.lnk");
    MakeFolder(sandbox.UserPrograms());
    MakeFolder(sandbox.CatalogFolder(L"qanh"));
    WriteFileBytes(sandbox.LogFile(L"qanh"),
                   "[2014/03/01 09:05:07.000]CQanhPackageManager::RefreshThread Refresh app name list!\r\n"
                   "[2014/03/01 09:05:09.000]CQanhPackageManager::RefreshMetroApps IN\r\n"
                   "[2014/03/01 09:55:09.000]CQanhPackageManager::RefreshMetroApps OUT(0x00000000)\r\n");
    const std::string output = Run(L"refresh --watch").output;
    EXPECT_EQ(WithoutTimes(output),
              "Records: 0 before, 1 after\n"
              "+ desktop\tA\t" +
                  Place(L"A.lnk") +
                  "\n"
                  "From the start of the library to the end of the pass: N ms, a second's wait "
                  "included\n"
                  "  what is installed\tN ms\n"
                  "  Store packages\tN ms\n"
                  "  Start menu\tN ms\n"
                  "  saving\tN ms\n");
    EXPECT_THAT(output, Not(HasSubstr("3000000 ms"))) << "that of the pass from before";
}

TEST_F(ToolRefresh, TellsWhatFailedInThePass)
{
    sandbox.Settings().SetDword(L"DebugLog", 1);
    standin::SetSetting(standin::Setting::FailPackageManager, static_cast<DWORD>(E_ACCESSDENIED));
    MakeFolder(sandbox.CatalogFolder(L"qanh"));
    const ToolResult result = Run(L"refresh --watch");
    EXPECT_THAT(result.output, HasSubstr("\nFailures:\n"));
    EXPECT_THAT(result.output, HasSubstr("the system's package manager cannot be had\n"));
    EXPECT_EQ(result.status, 0u) << "the pass was made, and its catalogue saved";
}

TEST_F(ToolRefresh, IsJson)
{
    sandbox.AddCommonShortcut(L"A.lnk");
    EXPECT_THAT(Run(L"refresh --json").output, StartsWith("{\n"
                                                          "  \"Catalogue\": \"" +
                                                          InJson(sandbox.CatalogFile(L"qanh")) +
                                                          "\",\n"
                                                          "  \"IsSaved\": true,\n"
                                                          "  \"RecordsBefore\": 0,\n"
                                                          "  \"RecordsAfter\": 1,\n"
                                                          "  \"Removed\": [],\n"
                                                          "  \"Added\": [\n"
                                                          "    {\n"
                                                          "      \"Kind\": \"desktop\",\n"
                                                          "      \"DisplayName\": \"A\","));
    const std::string watched = Run(L"refresh --json --watch").output;
    EXPECT_THAT(watched, HasSubstr("\n  \"Changed\": [],\n  \"Milliseconds\": "));
    EXPECT_THAT(watched, EndsWith(",\n  \"Sources\": null,\n  \"Failures\": []\n}\n"));
    sandbox.Settings().SetDword(L"DebugLog", 1);
    EXPECT_THAT(Run(L"refresh --json --watch").output,
                HasSubstr("\n  \"Sources\": {\n    \"WhatIsInstalled\": "));
}

TEST_F(ToolRefresh, SaysThatTheCatalogueWasNotSaved)
{
    (void)Run(L"refresh");
    const std::string before = Catalogue();
    sandbox.AddCommonShortcut(L"A.lnk");
    const HANDLE reader = CreateFileW(sandbox.CatalogFile(L"qanh").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    const ToolResult result = Run(L"refresh");
    EXPECT_EQ(result.output, "Records: 0 before, 0 after\n");
    EXPECT_THAT(result.problems, HasSubstr("\nqanh: the catalogue was not saved: "));
    EXPECT_EQ(result.status, 1u);
    EXPECT_THAT(Run(L"refresh --json").output, HasSubstr("\"IsSaved\": false,"));
    CloseHandle(reader);
    EXPECT_EQ(Catalogue(), before);
}

TEST_F(ToolRefresh, TellsWhatToDoWhileAnotherProcessRefreshes)
{
    const std::string advice =
        "another process of qanh is in its first refresh: try again in a second or two. If it "
        "stays so, some program keeps the mutex QanHelper_qanh open";
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"QanHelper_qanh");
    EXPECT_EQ(Run(L"refresh"), (ToolResult{"",
                                           Announced() + "qanh: the library does not come up: " + advice +
                                               ": 0x80070002 ERROR_FILE_NOT_FOUND (there is no such file)\n",
                                           3}));
    WriteFileBytes(InHostFolder(L"PresetAppNameList.xml"), emptyCatalog);
    EXPECT_EQ(Run(L"refresh"), (ToolResult{"", Announced() + "qanh: " + advice + "\n", 1}));
    CloseHandle(mutex);
    EXPECT_EQ(Run(L"refresh").status, 0u);
}

TEST_F(ToolRefresh, OnlyTellsWhatItWouldDo)
{
    EXPECT_EQ(Run(L"refresh --watch --dry-run"), (ToolResult{Announced().substr(6), "", 0}));
    EXPECT_FALSE(Exists(sandbox.CatalogFolder(L"qanh")));
}

TEST_F(ToolRefresh, RefusesWrongUse)
{
    for (const wchar_t* commandLine :
         {L"refresh a", L"refresh --mode show", L"refresh --host Launcher", L"refresh --catalogue a.xml"}) {
        EXPECT_EQ(Run(commandLine).status, 2u) << ToUtf8(commandLine);
    }
    EXPECT_FALSE(Exists(sandbox.CatalogFolder(L"qanh")));
}

// A console of the test's own that keeps what is written to it.
class ToolRefreshOnConsole : public ToolRefresh
{
protected:
    ToolRefreshOnConsole()
    {
        FreeConsole();
        AllocConsole();
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        m_screen = CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                             &inherited, CONSOLE_TEXTMODE_BUFFER, nullptr);
    }
    ~ToolRefreshOnConsole() override
    {
        CloseHandle(m_screen);
        FreeConsole();
    }

    // Whether progress shows on the console while the tool runs; none of it may stay.
    bool ShowsProgress()
    {
        bool isSeen = false;
        std::atomic<bool> isOver{false};
        std::thread watcher([&] {
            while (!isOver) {
                isSeen = isSeen || Screen().find("refreshing") != std::string::npos;
                Sleep(20);
            }
        });
        EXPECT_EQ(RunToolWith(InHostFolder(L"qanh.exe"), L"refresh --watch", m_screen, m_screen), 0u);
        isOver = true;
        watcher.join();
        EXPECT_THAT(Screen(), HasSubstr("Records: 0 before, 0 after"));
        EXPECT_THAT(Screen(), Not(HasSubstr("refreshing")));
        return isSeen;
    }

private:
    [[nodiscard]] std::string Screen() const
    {
        std::wstring text(2000, L'\0');
        DWORD read = 0;
        ReadConsoleOutputCharacterW(m_screen, text.data(), static_cast<DWORD>(text.size()), COORD{0, 0},
                                    &read);
        text.resize(read);
        return ToUtf8(text);
    }

    HANDLE m_screen;
};

TEST_F(ToolRefreshOnConsole, ShowsProgressAndTakesItAway)
{
    EXPECT_TRUE(ShowsProgress());
}

TEST_F(ToolRefreshOnConsole, ShowsNoProgressWithNoColor)
{
    const ScopedEnvironment plain(L"NO_COLOR", L"1");
    EXPECT_FALSE(ShowsProgress());
}

} // namespace
