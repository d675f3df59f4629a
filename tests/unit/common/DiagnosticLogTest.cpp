#include "common/DiagnosticLog.h"

#include "support/Allocations.h"
#include "unit/common/CodePage.h"
#include "unit/common/FileCalls.h"
#include "unit/common/InvalidParameter.h"

#include <cerrno>
#include <cstdlib>

namespace {

using namespace test;

constexpr char kStamp[] = "[2014/03/01 09:05:07.042]";

// What the writing of a line asks of the platform.
Lines WriteSteps(const std::string& message)
{
    return {"open for appending",           "seek the end",     "look at the clock",
            std::string("write ") + kStamp, "write " + message, "close"};
}

class DiagnosticLog : public ::testing::Test
{
protected:
    LogCapture m_log;
};

TEST_F(DiagnosticLog, EachLineIsTwoWritesToAFileOpenedForIt)
{
    const FileCalls calls;
    ::DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize");
    ::DiagnosticLog::WriteLine("two\r\n");
    EXPECT_EQ(calls.journal, WriteSteps("QanhInitialize IN\r\n") + WriteSteps("two\r\n"));
}

TEST_F(DiagnosticLog, StampIsTheLocalTime)
{
    const auto minute = [] {
        SYSTEMTIME time{};
        GetLocalTime(&time);
        char text[32];
        _snprintf_s(text, sizeof text, _TRUNCATE, "[%04d/%02d/%02d %02d:%02d", time.wYear, time.wMonth,
                    time.wDay, time.wHour, time.wMinute);
        return std::string(text);
    };
    const std::string before = minute();
    ::DiagnosticLog::WriteLine("x");
    const std::string after = minute();
    const std::string line = ReadFileBytes(m_log.File());
    EXPECT_THAT(line, MatchesRegex("\\[\\d\\d\\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d\\]x"));
    EXPECT_THAT(line.substr(0, 17), testing::AnyOf(before, after));
}

TEST_F(DiagnosticLog, NoLineEndIsAdded)
{
    ::DiagnosticLog::WriteLine("without an end");
    ::DiagnosticLog::WriteLine("\r\n");
    EXPECT_EQ(m_log.Text(), "without an end\r\n");
}

TEST_F(DiagnosticLog, SwitchedOffTouchesNothing)
{
    ::DiagnosticLog::SetEnabled(false);
    FileCalls calls;
    EXPECT_EQ(::DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize"), 1);
    // Not even this is looked at: an argument that could not be read.
    EXPECT_EQ(::DiagnosticLog::WriteLine("%S IN\r\n", reinterpret_cast<const wchar_t*>(1)), 1);
    EXPECT_EQ(::DiagnosticLog::WriteLine(nullptr), 1);
    EXPECT_THAT(calls.journal, IsEmpty());
    EXPECT_FALSE(Exists(m_log.File()));
}

TEST_F(DiagnosticLog, IsSwitchedOnAndOffFromLineToLine)
{
    ::DiagnosticLog::WriteLine("one\r\n");
    ::DiagnosticLog::SetEnabled(false);
    ::DiagnosticLog::WriteLine("two\r\n");
    ::DiagnosticLog::SetEnabled(true);
    ::DiagnosticLog::WriteLine("three\r\n");
    EXPECT_THAT(m_log.Lines(), ElementsAre("one", "three"));
}

TEST_F(DiagnosticLog, NullFormatWritesNothing)
{
    FileCalls calls;
    EXPECT_EQ(::DiagnosticLog::WriteLine(nullptr), 0);
    EXPECT_THAT(calls.journal, IsEmpty());
}

TEST_F(DiagnosticLog, FileThatCannotBeOpenedDropsTheLine)
{
    FileCalls calls;
    calls.failsToOpen = true;
    EXPECT_EQ(::DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize"), 0);
    EXPECT_THAT(calls.journal, ElementsAre("open for appending"));
}

TEST_F(DiagnosticLog, FileOpenForReadingAndWritingElsewhereIsShared)
{
    const HANDLE other = CreateFileW(m_log.File().c_str(), GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(::DiagnosticLog::WriteLine("kept\r\n"), 0);
    CloseHandle(other);
    EXPECT_THAT(m_log.Lines(), ElementsAre("kept"));
}

TEST_F(DiagnosticLog, ResultIsThatOfTheLastWrite)
{
    FileCalls calls;
    EXPECT_NE(::DiagnosticLog::WriteLine("x"), 0);
    calls.failingWrite = 4; // the message of the next line
    EXPECT_EQ(::DiagnosticLog::WriteLine("x"), 0);
    calls.failingWrite = 5; // the stamp of the one after that
    EXPECT_NE(::DiagnosticLog::WriteLine("x"), 0);
}

TEST_F(DiagnosticLog, LastErrorOfTheThreadAndErrnoAreKept)
{
    const InvalidParameterHandler handler;
    FileCalls calls;
    SetLastError(4711);
    _set_errno(EDOM);
    ::DiagnosticLog::WriteLine("%S IN\r\n", L"\u30e1\u30fc\u30eb");
    EXPECT_EQ(GetLastError(), 4711u);
    ::DiagnosticLog::WriteLine("%S", std::wstring(2000, L'\u30e1').c_str());
    EXPECT_EQ(GetLastError(), 4711u);
    calls.failsToOpen = true;
    ::DiagnosticLog::WriteLine("%S IN\r\n", L"QanhInitialize");
    EXPECT_EQ(GetLastError(), 4711u);
    EXPECT_EQ(errno, EDOM);
}

TEST_F(DiagnosticLog, LogOutReturnsWhatItLogs)
{
    EXPECT_EQ(LogOut(L"QanhIsInstalled", E_FAIL), E_FAIL);
    EXPECT_EQ(LogOut(L"QanhIsInstalled", S_OK), S_OK);
    EXPECT_EQ(LogOutNumber(L"CQanhReg::IsDebugLogOn", -1), -1);
    LogOut(L"QanhReleaseString");
    EXPECT_EQ(m_log.Text(), "QanhIsInstalled OUT(0x80004005)\r\nQanhIsInstalled OUT(0x00000000)\r\n"
                            "CQanhReg::IsDebugLogOn OUT(-1)\r\nQanhReleaseString OUT\r\n");
}

TEST_F(DiagnosticLog, LineIsWrittenWholeWithoutMemory)
{
    const CodePage western(1252);
    std::wstring text;
    std::string bytes;
    for (int i = 0; i < 300; ++i) {
        text += L"\u0101\u30e1\u00e9";
        bytes += "??\xe9";
    }
    bool isAsked = true;
    {
        const AllocationWatch watch(0);
        ::DiagnosticLog::WriteLine("%S(%S, 0x%08X)\r\n", L"A", text.c_str(), 5);
        isAsked = watch.Failed();
    }
    EXPECT_FALSE(isAsked);
    EXPECT_THAT(m_log.Lines(), ElementsAre("A(" + bytes + ", 0x00000005)"));
}

TEST_F(DiagnosticLog, NullStringPrintsAsSuchAndPercentSignsInArgumentsAreText)
{
    const wchar_t* none = nullptr;
    ::DiagnosticLog::WriteLine("%S(%S, %S) IN\r\n", L"QanhLaunchByManager", none, L"\u0e01");
    for (const wchar_t* text : {none, L"100% %s%n%S", L"100% %s%n%S \u0e01"}) {
        ::DiagnosticLog::WriteLine("%S(%S) IN\r\n", L"QanhIsInstalled", text);
    }
    EXPECT_THAT(m_log.Lines(), ElementsAre(testing::StartsWith("QanhLaunchByManager((null), "),
                                           "QanhIsInstalled((null)) IN", "QanhIsInstalled(100% %s%n%S) IN",
                                           testing::StartsWith("QanhIsInstalled(100% %s%n%S ")));
}

// A name can make lines of its own.
TEST_F(DiagnosticLog, LineEndsInArgumentsAreText)
{
    ::DiagnosticLog::WriteLine("%S(%S) IN\r\n", L"QanhIsInstalled", L"x\r\n[2014/03/01 09:05:07.042]forged");
    EXPECT_THAT(m_log.Lines(), ElementsAre("QanhIsInstalled(x", "forged) IN"));
}

TEST_F(DiagnosticLog, MessageOf1023BytesIsWrittenWhole)
{
    const std::string message(1023, 'x');
    ::DiagnosticLog::WriteLine("%s", message.c_str());
    EXPECT_EQ(m_log.Text(), message);
}

// A message that is too long ends the process on some C runtimes, unless the host prevents that; there, and
// where the C runtime does not mind at all, only the message itself may be missing.
TEST_F(DiagnosticLog, OverlongMessageLeavesItsStampAndAWholeFile)
{
    const InvalidParameterHandler handler;
    for (const std::size_t size : {1024u, 1025u, 1026u, 5000u, 100000u}) {
        SCOPED_TRACE(size);
        m_log.Clear();
        ::DiagnosticLog::WriteLine("before\r\n");
        const std::string message(size, 'x');
        const std::wstring wide(size, L'x');
        {
            FileCalls calls;
            ::DiagnosticLog::WriteLine("%s", message.c_str());
            ::DiagnosticLog::WriteLine("%S", wide.c_str());
            // The writes show that nothing beyond the buffer was read.
            EXPECT_EQ(calls.journal, WriteSteps("") + WriteSteps(""));
        }
        ::DiagnosticLog::WriteLine("after\r\n");
        EXPECT_EQ(m_log.Text(), "before\r\nafter\r\n");
    }
}

// What the tests compare with. Of two threads' lines the stamps may both come first.
TEST(LogOfTheTests, TellsOfALineWithoutAStamp)
{
    const std::string stamp = "[2014/03/01 09:05:07.042]";
    EXPECT_EQ(WithoutTimeStamps(stamp + "a\r\n" + stamp + "b\r\n"), "a\r\nb\r\n");
    EXPECT_EQ(WithoutTimeStamps(stamp + stamp + "b\r\na\r\n" + stamp + "c\r\n"), "b\r\na\r\nc\r\n");
    EXPECT_EQ(WithoutTimeStamps(stamp + "a\r\nb\r\n"), "a\r\n<no stamp>b\r\n");
    EXPECT_EQ(WithoutTimeStamps("a" + stamp + "\r\n"), "<no stamp>a\r\n");
    EXPECT_EQ(WithoutTimeStamps(stamp + stamp + "b\r\na\r\nc\r\n"), "b\r\na\r\n<no stamp>c\r\n");
    EXPECT_EQ(WithoutTimeStamps(stamp + "a\r\nb\r\n", stamp.size() + 1), "\r\n<no stamp>b\r\n");
    EXPECT_EQ(WithoutTimeStamps(stamp + stamp + "b\r\na\r\n", stamp.size()), "b\r\na\r\n");
}

} // namespace
