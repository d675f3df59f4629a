// Where the diagnostic log lies.

#include "common/DiagnosticLog.h"

#include "support/HostExecutable.h"
#include "support/OtherProcess.h"
#include "unit/common/FileCalls.h"
#include "unit/common/InvalidParameter.h"

namespace {

using namespace test;

// A process in which the path has never been composed, with the current directory of the argument: it
// switches the log on, after it has tried to compose its path, when it is told to. Its exit code is 100 when
// that failed, or a line was written before, plus 1 for each of two lines that was written.
int WriteWithDefaultPath(const Part::Context& context, bool composes)
{
    SetCurrentDirectoryW(context.Argument().c_str());
    const int off = DiagnosticLog::WriteLine("zero\r\n"); // off at start
    DiagnosticLog::SetEnabled(true);
    int result = composes ? (DiagnosticLog::ComposePath() == 0 ? 100 : 0) : off * 100;
    result += DiagnosticLog::WriteLine("one\r\n") != 0 ? 1 : 0;
    result += DiagnosticLog::WriteLine("two\r\n") != 0 ? 1 : 0;
    return result;
}

const Part g_withoutLocalAppData(L"LogWithoutLocalAppData", [](const Part::Context& context) {
    const ScopedEnvironment environment(L"LOCALAPPDATA", nullptr);
    return WriteWithDefaultPath(context, true);
});
const Part g_withoutExecutablePath(L"LogWithoutExecutablePath", [](const Part::Context& context) {
    HostExecutable host(L"");
    host.FailNext(HostExecutable::kAlways);
    return WriteWithDefaultPath(context, true);
});
const Part g_switchedOn(L"LogWithoutComposing",
                        [](const Part::Context& context) { return WriteWithDefaultPath(context, false); });

std::string LogIn(const TemporaryFolder& folder)
{
    const std::wstring file = folder / L"QanHelperLog.txt";
    return Exists(file) ? WithoutTimeStamps(ReadFileBytes(file)) : "no file";
}

class BareLogPath : public ::testing::TestWithParam<const wchar_t*>
{
};

TEST_P(BareLogPath, IsTheNameInTheCurrentDirectory)
{
    const TemporaryFolder folder;
    EXPECT_EQ(OtherProcess(GetParam(), folder.Path()).End(), 102u);
    EXPECT_EQ(LogIn(folder), "one\r\ntwo\r\n");
}

INSTANTIATE_TEST_SUITE_P(Of, BareLogPath,
                         ::testing::Values(L"LogWithoutLocalAppData", L"LogWithoutExecutablePath",
                                           L"LogWithoutComposing"));

// The path under which the log is opened, for a host's executable and a value of LOCALAPPDATA.
std::wstring PathFor(const std::wstring& localAppData, const std::wstring& executable)
{
    const HostExecutable host(executable);
    const ScopedEnvironment environment(L"LOCALAPPDATA", localAppData.c_str());
    EXPECT_EQ(DiagnosticLog::ComposePath(), 1);
    FileCalls calls;
    calls.failsToOpen = true;
    DiagnosticLog::SetEnabled(true);
    DiagnosticLog::WriteLine("x");
    DiagnosticLog::SetEnabled(false);
    return calls.paths.empty() ? L"" : calls.paths.front();
}

TEST(DiagnosticLogPath, IsMadeOfLocalAppDataAndTheHostName)
{
    // With a doubled separator before the host name.
    EXPECT_EQ(PathFor(L"C:\\Local", L"C:\\Tools\\Launcher.exe"),
              L"C:\\Local\\Vel\\QanHelper\\\\Launcher\\QanHelperLog.txt");
    EXPECT_EQ(PathFor(L"C:\\Local.x", L"C:\\v1.2\\Launcher.exe"),
              L"C:\\Local.x\\Vel\\QanHelper\\\\Launcher\\QanHelperLog.txt");
    EXPECT_EQ(PathFor(L"C:\\Local\\", L"C:\\Tools\\Launcher.exe"),
              L"C:\\Local\\\\Vel\\QanHelper\\\\Launcher\\QanHelperLog.txt");
    EXPECT_EQ(PathFor(L"C:\\\u30e1\u30fc\u30eb", L"C:\\Tools\\\u0436\xd83d\xde00.exe"),
              L"C:\\\u30e1\u30fc\u30eb\\Vel\\QanHelper\\\\\u0436\xd83d\xde00\\QanHelperLog.txt");
    // Up to its first dot, also where nothing stands before that.
    EXPECT_EQ(PathFor(L"C:\\Local", L"C:\\Tools\\a.b.exe"),
              L"C:\\Local\\Vel\\QanHelper\\\\a\\QanHelperLog.txt");
    EXPECT_EQ(PathFor(L"C:\\Local", L"C:\\Tools\\Launcher"),
              L"C:\\Local\\Vel\\QanHelper\\\\Launcher\\QanHelperLog.txt");
    EXPECT_EQ(PathFor(L"C:\\Local", L"C:\\Tools\\.exe"), L"C:\\Local\\Vel\\QanHelper\\\\\\QanHelperLog.txt");
}

TEST(DiagnosticLogPath, IsComposedAnewEveryTime)
{
    EXPECT_EQ(PathFor(L"C:\\Local", L"C:\\A.exe"), L"C:\\Local\\Vel\\QanHelper\\\\A\\QanHelperLog.txt");
    EXPECT_EQ(PathFor(L"D:\\L", L"C:\\B.exe"), L"D:\\L\\Vel\\QanHelper\\\\B\\QanHelperLog.txt");
}

// What the path of the log of "C:\\a.exe" adds to LOCALAPPDATA.
const std::wstring kRest = L"\\Vel\\QanHelper\\\\a\\QanHelperLog.txt";

// A value of LOCALAPPDATA that makes a path of so many characters.
std::wstring LocalAppDataFor(std::size_t characters)
{
    const std::wstring drive = L"C:\\";
    return drive + std::wstring(characters - drive.size() - kRest.size(), L'x');
}

TEST(DiagnosticLogPath, TakesUpTo259Characters)
{
    const std::wstring localAppData = LocalAppDataFor(259);
    EXPECT_EQ(PathFor(localAppData, L"C:\\a.exe"), localAppData + kRest);
}

// A longer path ends the process on some C runtimes, unless the host prevents that; there, and where the
// C runtime does not mind at all, the log stays where it was.
TEST(DiagnosticLogPath, OfMoreCharactersLeavesTheLogWhereItWas)
{
    const InvalidParameterHandler handler;
    const LogCapture log;
    for (const std::size_t characters : {260u, 261u, 262u, 270u, 290u}) {
        const ScopedEnvironment environment(L"LOCALAPPDATA", LocalAppDataFor(characters).c_str());
        const HostExecutable host(L"C:\\a.exe");
        EXPECT_EQ(DiagnosticLog::ComposePath(), 0) << characters;
    }
    DiagnosticLog::WriteLine("x\r\n");
    EXPECT_THAT(log.Lines(), ElementsAre("x"));
}

TEST(DiagnosticLogPath, LocalAppDataOf260CharactersCannotBeRead)
{
    const LogCapture log;
    const ScopedEnvironment environment(L"LOCALAPPDATA", std::wstring(260, L'x').c_str());
    EXPECT_EQ(DiagnosticLog::ComposePath(), 0);
    DiagnosticLog::WriteLine("x\r\n");
    EXPECT_THAT(log.Lines(), ElementsAre("x"));
}

TEST(DiagnosticLogPath, ComposingMakesNoFolderAndLinesAreLostUntilThereIsOne)
{
    const TemporaryFolder local;
    const HostExecutable host(L"C:\\Tools\\Launcher.exe");
    const ScopedEnvironment environment(L"LOCALAPPDATA", local.Path().c_str());
    EXPECT_EQ(DiagnosticLog::ComposePath(), 1);
    DiagnosticLog::SetEnabled(true);
    EXPECT_EQ(DiagnosticLog::WriteLine("lost\r\n"), 0);
    EXPECT_FALSE(Exists(local / L"Vel"));
    MakeFolder(local / L"Vel\\QanHelper\\Launcher");
    EXPECT_NE(DiagnosticLog::WriteLine("kept\r\n"), 0);
    DiagnosticLog::SetEnabled(false);
    const std::wstring file = local / L"Vel\\QanHelper\\Launcher\\QanHelperLog.txt";
    ASSERT_TRUE(Exists(file));
    EXPECT_EQ(WithoutTimeStamps(ReadFileBytes(file)), "kept\r\n");
}

} // namespace
