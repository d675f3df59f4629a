// The names are right wherever the output goes, and the tool only looks.

#include "standin/ModulePath.h"
#include "system/ImageFile.h"
#include "tools/ToolTest.h"

namespace {

using namespace test;

constexpr char kRecords[] =
    R"(<DesktopApps><DesktopApp DisplayName="メール 🙂" LnkFileName="C:\1.lnk"/></DesktopApps>)";

class ToolOutput : public ToolTest
{
protected:
    ToolOutput() { WriteCatalogue(kRecords); }

    [[nodiscard]] std::wstring CommandLine() const { return L"list --catalogue \"" + m_path + L"\""; }

    static HANDLE OpenInherited(const std::wstring& path, DWORD access, DWORD how)
    {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, how, 0,
                           nullptr);
    }
};

TEST_F(ToolOutput, IsUtf8InAPipe)
{
    EXPECT_EQ(Output({L"list"}), "desktop\tメール 🙂\tC:\\1.lnk\n");
}

TEST_F(ToolOutput, IsUtf8InAFile)
{
    const std::wstring output = m_folder / L"output.txt";
    const std::wstring problems = m_folder / L"problems.txt";
    const HANDLE outputFile = OpenInherited(output, GENERIC_WRITE, CREATE_ALWAYS);
    const HANDLE problemsFile = OpenInherited(problems, GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(RunToolWith(CommandLine(), outputFile, problemsFile), 0u);
    EXPECT_EQ(RunToolWith(L"show ねこ --catalogue \"" + m_path + L"\"", outputFile, problemsFile), 1u);
    CloseHandle(outputFile);
    CloseHandle(problemsFile);
    EXPECT_EQ(ReadFileBytes(output), "desktop\tメール 🙂\tC:\\1.lnk\r\n");
    EXPECT_EQ(ReadFileBytes(problems),
              "qanh: no application in " + ToUtf8(m_path) + " is called \"ねこ\"\r\n");
}

// A console of the test's own.
class ToolOnConsole : public ToolOutput
{
protected:
    ToolOnConsole()
    {
        FreeConsole();
        m_hasConsole = AllocConsole() != FALSE;
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        m_screen = CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                             &inherited, CONSOLE_TEXTMODE_BUFFER, nullptr);
    }
    ~ToolOnConsole() override
    {
        CloseHandle(m_screen);
        FreeConsole();
    }

    bool m_hasConsole;
    HANDLE m_screen;
};

TEST_F(ToolOnConsole, IsTextOfTheConsole)
{
    ASSERT_TRUE(m_hasConsole);
    ASSERT_NE(m_screen, INVALID_HANDLE_VALUE);
    WriteCatalogue(R"(<DesktopApps><DesktopApp DisplayName="メール" LnkFileName="C:\1.lnk"/></DesktopApps>)");
    EXPECT_EQ(RunToolWith(CommandLine(), m_screen, m_screen), 0u);
    wchar_t line[40] = {};
    DWORD read = 0;
    EXPECT_TRUE(ReadConsoleOutputCharacterW(m_screen, line, 30, COORD{0, 0}, &read));
    EXPECT_THAT(ToUtf8(std::wstring(line, read)), StartsWith("desktop メール"));
}

// The colours of what stands on the console.
class ToolColours : public ToolOnConsole
{
protected:
    ToolColours()
    {
        WriteCatalogue("<Odd/>\n<DesktopApps/>");
        SetConsoleTextAttribute(m_screen, kPlain);
    }

    static constexpr WORD kPlain = BACKGROUND_BLUE | FOREGROUND_GREEN;

    // Of a word that begins in this column of the first line; 0 where it is not all of one colour.
    [[nodiscard]] WORD ColourOf(std::string_view word, SHORT column) const
    {
        wchar_t text[40] = {};
        WORD colours[40] = {};
        const auto length = static_cast<DWORD>(word.size());
        DWORD read = 0;
        EXPECT_TRUE(ReadConsoleOutputCharacterW(m_screen, text, length, COORD{column, 0}, &read));
        EXPECT_EQ(ToUtf8(text), word);
        EXPECT_TRUE(ReadConsoleOutputAttribute(m_screen, colours, length, COORD{column, 0}, &read));
        const bool isOne =
            std::all_of(colours, colours + length, [&](WORD colour) { return colour == colours[0]; });
        return isOne ? colours[0] : WORD{0};
    }

    void Check() const { EXPECT_EQ(RunToolWith(L"check \"" + m_path + L"\"", m_screen, m_screen), 1u); }
};

TEST_F(ToolColours, MarkAProblemOnAConsole)
{
    Check();
    EXPECT_EQ(ColourOf("3:2", 0), kPlain);
    EXPECT_EQ(ColourOf("problem", 8), BACKGROUND_BLUE | FOREGROUND_RED | FOREGROUND_INTENSITY);
    EXPECT_EQ(ColourOf("Odd is skipped", 16), kPlain);
}

TEST_F(ToolColours, AreNotThereWhenPlainOutputIsWanted)
{
    const ScopedEnvironment plainOutput(L"NO_COLOR", L"1");
    Check();
    EXPECT_EQ(ColourOf("3:2", 0), kPlain);
    EXPECT_EQ(ColourOf("problem", 8), kPlain);
    EXPECT_EQ(ColourOf("Odd is skipped", 16), kPlain);
}

TEST_F(ToolColours, LeaveNothingInAPipe)
{
    EXPECT_THAT(RunTool({L"check", m_path}).output, StartsWith("3:2\tproblem\tOdd is skipped"));
    EXPECT_THAT(RunTool({L"doctor"}).output,
                Not(AnyOf(HasSubstr("\x01"), HasSubstr("\x02"), HasSubstr("\x03"))));
}

TEST_F(ToolOutput, IsAFailureWhereItCannotBeWritten)
{
    const std::wstring path = m_folder / L"readonly.txt";
    MakeFile(path);
    const std::wstring problems = m_folder / L"problems.txt";
    const HANDLE readOnly = OpenInherited(path, GENERIC_READ, OPEN_EXISTING);
    const HANDLE problemsFile = OpenInherited(problems, GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(RunToolWith(CommandLine(), readOnly, problemsFile), 3u);
    CloseHandle(readOnly);
    CloseHandle(problemsFile);
    EXPECT_THAT(ReadFileBytes(problems),
                StartsWith("qanh: cannot write the output: 0x80070005 ERROR_ACCESS_DENIED"));
}

TEST_F(ToolOutput, LeavesTheFileAndItsFolderAsTheyWere)
{
    const std::string before = ReadFileBytes(m_path);
    for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{L"list"},
                                                       {L"show", L"メール 🙂"},
                                                       {L"explain", L"メール 🙂"}}) {
        (void)Output(arguments);
    }
    for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{L"check"},
                                                       {L"preset", L"make"},
                                                       {L"doctor"},
                                                       {L"log", L"--log", m_path}}) {
        EXPECT_LE(Run(arguments).status, 1u);
    }
    EXPECT_EQ(RunTool({L"diff", m_path, m_path}).status, 0u);
    const TemporaryFolder elsewhere;
    EXPECT_LE(Run({L"report", L"-o", elsewhere / L"report.html"}).status, 1u);
    EXPECT_EQ(ReadFileBytes(m_path), before);
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW entry{};
    const HANDLE find = FindFirstFileW((m_folder / L"*").c_str(), &entry);
    do {
        names.emplace_back(entry.cFileName);
    } while (FindNextFileW(find, &entry));
    FindClose(find);
    EXPECT_THAT(names, testing::UnorderedElementsAre(L".", L"..", L"AppNameList.xml"));
}

// A build with checks links what nothing calls, too.
#ifdef NDEBUG
TEST_F(ToolOutput, ComesFromAProgramThatCannotPressKeysOrChangeSettings)
{
    for (const auto& [library, function] : ImageFile(standin::ModuleFolder() + L"\\qanh.exe").Imports()) {
        if (library == "advapi32.dll") { // it reads settings and rights
            EXPECT_THAT(function, AnyOf("RegOpenKeyExW", "RegQueryValueExW", "RegCloseKey",
                                        "OpenProcessToken", "GetTokenInformation"));
        }
        EXPECT_THAT(function,
                    Not(AnyOf(HasSubstr("SendInput"), HasSubstr("keybd_event"), HasSubstr("Clipboard"),
                              HasSubstr("CreateMutex"), HasSubstr("PostMessage"), HasSubstr("SendMessage"))));
    }
}
#endif

} // namespace
