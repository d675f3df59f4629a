#include "common/DiagnosticLog.h"

#include "support/Allocations.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/common/CodePage.h"
#include "unit/common/FileCalls.h"
#include "unit/common/InvalidParameter.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using test::FileCalls;
using test::LogCapture;
using test::ReadFileBytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

constexpr char kStamp[] = "[2014/03/01 09:05:07.042]";

TEST(DiagnosticLog, LineIsTwoWritesToAFileOpenedForIt)
{
    const LogCapture log;
    FileCalls calls;
    DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize");
    EXPECT_THAT(calls.journal,
                ElementsAre("open for appending", "seek the end", "look at the clock",
                            std::string("write ") + kStamp, "write QanhInitialize IN\r\n", "close"));
}

TEST(DiagnosticLog, EveryLineOpensAndClosesTheFile)
{
    const LogCapture log;
    FileCalls calls;
    DiagnosticLog::WriteLine("one\r\n");
    calls.journal.clear();
    DiagnosticLog::WriteLine("two\r\n");
    EXPECT_THAT(calls.journal, ElementsAre("open for appending", "seek the end", "look at the clock",
                                           std::string("write ") + kStamp, "write two\r\n", "close"));
}

TEST(DiagnosticLog, LinesAreAppendedWithNothingBetweenStampAndMessage)
{
    const LogCapture log;
    {
        const FileCalls calls;
        DiagnosticLog::WriteLine("one\r\n");
        DiagnosticLog::WriteLine("two\r\n");
    }
    EXPECT_EQ(ReadFileBytes(log.File()), std::string(kStamp) + "one\r\n" + kStamp + "two\r\n");
}

TEST(DiagnosticLog, StampIsTheLocalTime)
{
    const LogCapture log;
    SYSTEMTIME before{};
    SYSTEMTIME after{};
    GetLocalTime(&before);
    DiagnosticLog::WriteLine("x");
    GetLocalTime(&after);
    const std::string line = ReadFileBytes(log.File());
    EXPECT_THAT(line, MatchesRegex("\\[\\d\\d\\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d\\]x"));
    const auto minuteOf = [](const SYSTEMTIME& time) {
        char text[32];
        _snprintf_s(text, sizeof text, _TRUNCATE, "[%04d/%02d/%02d %02d:%02d", time.wYear, time.wMonth,
                    time.wDay, time.wHour, time.wMinute);
        return std::string(text);
    };
    EXPECT_THAT(line.substr(0, 17), testing::AnyOf(minuteOf(before), minuteOf(after)));
}

TEST(DiagnosticLog, NoLineEndIsAdded)
{
    const LogCapture log;
    DiagnosticLog::WriteLine("without an end");
    DiagnosticLog::WriteLine("\r\n");
    EXPECT_EQ(log.Text(), "without an end\r\n");
}

TEST(DiagnosticLog, SwitchedOffTouchesNothing)
{
    const LogCapture log;
    DiagnosticLog::SetEnabled(false);
    FileCalls calls;
    EXPECT_EQ(DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize"), 1);
    // Not even this is looked at: an argument that could not be read.
    EXPECT_EQ(DiagnosticLog::WriteLine("%S IN\r\n", reinterpret_cast<const wchar_t*>(1)), 1);
    EXPECT_EQ(DiagnosticLog::WriteLine(nullptr), 1);
    EXPECT_THAT(calls.journal, IsEmpty());
    EXPECT_FALSE(test::Exists(log.File()));
}

TEST(DiagnosticLog, IsSwitchedOnAndOffFromLineToLine)
{
    const LogCapture log;
    DiagnosticLog::WriteLine("one\r\n");
    DiagnosticLog::SetEnabled(false);
    DiagnosticLog::WriteLine("two\r\n");
    DiagnosticLog::SetEnabled(true);
    DiagnosticLog::WriteLine("three\r\n");
    EXPECT_THAT(log.Lines(), ElementsAre("one", "three"));
}

TEST(DiagnosticLog, NullFormatWritesNothing)
{
    const LogCapture log;
    FileCalls calls;
    EXPECT_EQ(DiagnosticLog::WriteLine(nullptr), 0);
    EXPECT_THAT(calls.journal, IsEmpty());
}

TEST(DiagnosticLog, FileThatCannotBeOpenedDropsTheLine)
{
    const LogCapture log;
    FileCalls calls;
    calls.failsToOpen = true;
    EXPECT_EQ(DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize"), 0);
    EXPECT_THAT(calls.journal, ElementsAre("open for appending"));
}

TEST(DiagnosticLog, FileHeldByAnotherForItselfDropsTheLineAndTheNextIsWritten)
{
    const LogCapture log;
    const HANDLE holder =
        CreateFileW(log.File().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    EXPECT_EQ(DiagnosticLog::WriteLine("lost\r\n"), 0);
    CloseHandle(holder);
    EXPECT_NE(DiagnosticLog::WriteLine("kept\r\n"), 0);
    EXPECT_THAT(log.Lines(), ElementsAre("kept"));
}

TEST(DiagnosticLog, FileOpenForReadingAndWritingElsewhereIsShared)
{
    const LogCapture log;
    const HANDLE other = CreateFileW(log.File().c_str(), GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(DiagnosticLog::WriteLine("kept\r\n"), 0);
    CloseHandle(other);
    EXPECT_THAT(log.Lines(), ElementsAre("kept"));
}

TEST(DiagnosticLog, ResultIsThatOfTheLastWrite)
{
    const LogCapture log;
    FileCalls calls;
    EXPECT_NE(DiagnosticLog::WriteLine("x"), 0);
    calls.failingWrite = 4; // the message of the next line
    EXPECT_EQ(DiagnosticLog::WriteLine("x"), 0);
    calls.failingWrite = 5; // the stamp of the one after that
    EXPECT_NE(DiagnosticLog::WriteLine("x"), 0);
}

TEST(DiagnosticLog, LastErrorOfTheThreadAndErrnoAreKept)
{
    const test::InvalidParameterHandler handler;
    const LogCapture log;
    FileCalls calls;
    SetLastError(4711);
    _set_errno(EDOM);
    DiagnosticLog::WriteLine("%S IN\r\n", L"\u30e1\u30fc\u30eb");
    EXPECT_EQ(GetLastError(), 4711u);
    DiagnosticLog::WriteLine("%S", std::wstring(2000, L'\u30e1').c_str());
    EXPECT_EQ(GetLastError(), 4711u);
    calls.failsToOpen = true;
    DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize");
    EXPECT_EQ(GetLastError(), 4711u);
    EXPECT_EQ(errno, EDOM);
}

TEST(DiagnosticLog, LogOutReturnsWhatItLogs)
{
    const LogCapture log;
    EXPECT_EQ(LogOut(L"QanhIsInstalled", E_FAIL), E_FAIL);
    EXPECT_EQ(LogOut(L"QanhIsInstalled", S_OK), S_OK);
    EXPECT_EQ(LogOutNumber(L"CQanhReg::IsDebugLogOn", -1), -1);
    LogOut(L"QanhReleaseString");
    EXPECT_EQ(log.Text(), "QanhIsInstalled OUT(0x80004005)\r\nQanhIsInstalled OUT(0x00000000)\r\n"
                          "CQanhReg::IsDebugLogOn OUT(-1)\r\nQanhReleaseString OUT\r\n");
}

TEST(DiagnosticLog, TextOutsideTheCodePageDoesNotLoseTheLine)
{
    const LogCapture log;
    const test::CodePage western(1252);
    EXPECT_NE(DiagnosticLog::WriteLine("%S(%S, %d) IN\r\n", L"QanhLaunchBySearch", L"a\u0e01b\u10d0c", 7), 0);
    DiagnosticLog::WriteLine("%S(%S) IN\r\n", L"QanhIsInstalled", L"x\xd800y");
    EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchBySearch(a?b?c, 7) IN", "QanhIsInstalled(x?y) IN"));
}

TEST(DiagnosticLog, LineIsWrittenWholeWithoutMemory)
{
    const LogCapture log;
    const test::CodePage western(1252);
    {
        const test::AllocationWatch watch(0);
        DiagnosticLog::WriteLine("%S(%S, %d) IN\r\n", L"QanhLaunchBySearch", L"\u30e1\u30fc\u30eb, Caf\u00e9",
                                 7);
    }
    EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchBySearch(???, Caf\xe9, 7) IN"));
}

TEST(DiagnosticLog, NullStringPrintsAsSuch)
{
    const LogCapture log;
    const wchar_t* none = nullptr;
    DiagnosticLog::WriteLine("%S(%S, %S) IN\r\n", L"QanhLaunchByManager", none, L"\u0e01");
    DiagnosticLog::WriteLine("%S(%S) IN\r\n", L"QanhIsInstalled", none);
    EXPECT_THAT(log.Lines(), ElementsAre(testing::StartsWith("QanhLaunchByManager((null), "),
                                         "QanhIsInstalled((null)) IN"));
}

TEST(DiagnosticLog, PercentSignsInArgumentsAreText)
{
    const LogCapture log;
    DiagnosticLog::WriteLine("%S(%S) IN\r\n", L"QanhIsInstalled", L"100% %s%n%S");
    DiagnosticLog::WriteLine("%S(%S) IN\r\n", L"QanhIsInstalled", L"100% %s%n%S \u0e01");
    EXPECT_THAT(log.Lines(), ElementsAre("QanhIsInstalled(100% %s%n%S) IN",
                                         testing::StartsWith("QanhIsInstalled(100% %s%n%S ")));
}

TEST(DiagnosticLog, MessageOf1023BytesIsWrittenWhole)
{
    const LogCapture log;
    const std::string message(1023, 'x');
    DiagnosticLog::WriteLine("%s", message.c_str());
    EXPECT_EQ(log.Text(), message);
}

// A message that is too long ends the process on some C runtimes, unless the host prevents that; there, and
// where the C runtime does not mind at all, only the message itself may be missing.
class OverlongMessage : public ::testing::TestWithParam<std::size_t>
{
};

TEST_P(OverlongMessage, LeavesItsStampAndAWholeFile)
{
    const test::InvalidParameterHandler handler;
    const LogCapture log;
    DiagnosticLog::WriteLine("before\r\n");
    const std::string message(GetParam(), 'x');
    const std::wstring wide(GetParam(), L'x');
    {
        FileCalls calls;
        DiagnosticLog::WriteLine("%s", message.c_str());
        DiagnosticLog::WriteLine("%S", wide.c_str());
        // The writes show that nothing beyond the buffer was read.
        const std::string stamp = std::string("write ") + kStamp;
        EXPECT_THAT(calls.journal, ElementsAre("open for appending", "seek the end", "look at the clock",
                                               stamp, "write ", "close", "open for appending", "seek the end",
                                               "look at the clock", stamp, "write ", "close"));
    }
    DiagnosticLog::WriteLine("after\r\n");
    EXPECT_EQ(log.Text(), "before\r\nafter\r\n");
}

INSTANTIATE_TEST_SUITE_P(DiagnosticLog, OverlongMessage, ::testing::Values(1024, 1025, 1026, 5000, 100000));

TEST(DiagnosticLog, OverlongMessageWithTextOutsideTheCodePageIsLeftOutToo)
{
    const test::InvalidParameterHandler handler;
    const LogCapture log;
    const std::wstring late = std::wstring(5000, L'x') + L"\u0e01\u10d0";
    const std::wstring early = L"\u0e01\u10d0" + std::wstring(5000, L'x');
    DiagnosticLog::WriteLine("%S\r\n", late.c_str());
    DiagnosticLog::WriteLine("%S\r\n", early.c_str());
    DiagnosticLog::WriteLine("after\r\n");
    EXPECT_EQ(log.Text(), "after\r\n");
}

} // namespace
