#include "launch/KeyEmulate.h"

#include "support/ImportPatch.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What the operation asked of the platform, one text for each call, in order. The order of the two reads that
// belong to one event is free, so they are sorted.
std::vector<std::string> g_calls;
std::vector<std::string> g_reads;
const test::LogCapture* g_log = nullptr;
UINT g_scanCode = 0;
LPARAM g_extraInfo = 0;
UINT g_sent = 1;

void FlushReads()
{
    std::sort(g_reads.begin(), g_reads.end());
    g_calls.insert(g_calls.end(), g_reads.begin(), g_reads.end());
    g_reads.clear();
}

std::string Hex(unsigned long long number, int digits = 1)
{
    std::ostringstream text;
    text << "0x" << std::uppercase << std::hex << std::setfill('0') << std::setw(digits) << number;
    return text.str();
}

// Every read gives a value of its own, so that an event shows which one it was filled from.
UINT WINAPI MapKey(UINT code, UINT type)
{
    g_reads.push_back("map " + Hex(code, 2) + " type " + std::to_string(type));
    return ++g_scanCode;
}

LPARAM WINAPI ReadExtraInfo()
{
    g_reads.push_back("extra info");
    return ++g_extraInfo;
}

UINT WINAPI Send(UINT count, INPUT* inputs, int size)
{
    FlushReads();
    if (count != 1 || size != static_cast<int>(sizeof(INPUT))) {
        g_calls.push_back("not one event");
        return 0;
    }
    const KEYBDINPUT& key = inputs->ki;
    g_calls.push_back("send type " + std::to_string(inputs->type) + " key " + Hex(key.wVk, 2) + " scan " +
                      Hex(key.wScan) + " flags " + Hex(key.dwFlags) + " time " + std::to_string(key.time) +
                      " extra " + Hex(key.dwExtraInfo));
    if (g_log) {
        g_calls.push_back("log: " + g_log->Lines().back());
    }
    return g_sent;
}

void Pause(DWORD milliseconds)
{
    FlushReads();
    if (g_log) {
        g_calls.push_back("log: " + g_log->Lines().back());
    }
    g_calls.push_back("sleep " + std::to_string(milliseconds));
}

class KeyEmulate : public ::testing::Test
{
protected:
    KeyEmulate()
        : m_send("SendInput", Send), m_map("MapVirtualKeyW", MapKey),
          m_extra("GetMessageExtraInfo", ReadExtraInfo)
    {
        g_calls.clear();
        g_reads.clear();
        g_log = nullptr;
        g_scanCode = 0x40;
        g_extraInfo = 0x7000;
        g_sent = 1;
        m_sleep.OnSleep(Pause);
    }

    test::FakeSleep m_sleep;
    test::ImportPatch<decltype(&SendInput)> m_send;
    test::ImportPatch<decltype(&MapVirtualKeyW)> m_map;
    test::ImportPatch<decltype(&GetMessageExtraInfo)> m_extra;
};

TEST_F(KeyEmulate, WindowsKeyGoesDownExtendedAndUpPlain)
{
    CQanhKeyEmulate::Sendinput_Win();
    EXPECT_THAT(g_calls, ElementsAre("send type 1 key 0x5B scan 0x0 flags 0x1 time 0 extra 0x0", "sleep 50",
                                     "send type 1 key 0x5B scan 0x0 flags 0x2 time 0 extra 0x0", "sleep 50"));
    EXPECT_THAT(g_reads, IsEmpty());
}

TEST_F(KeyEmulate, WindowsQPressesQAsAScanCodeAndReleasesItAsAKey)
{
    CQanhKeyEmulate::SendInput_Win_Q();
    EXPECT_THAT(g_calls,
                ElementsAre("send type 1 key 0x5B scan 0x0 flags 0x1 time 0 extra 0x0", "sleep 50",
                            "extra info", "send type 1 key 0x51 scan 0x10 flags 0x8 time 0 extra 0x7001",
                            "sleep 50", "extra info",
                            "send type 1 key 0x51 scan 0x10 flags 0x2 time 0 extra 0x7002", "sleep 100",
                            "send type 1 key 0x5B scan 0x0 flags 0x2 time 0 extra 0x0", "sleep 200"));
}

TEST_F(KeyEmulate, EnterGoesDownExtendedAndUpPlain)
{
    CQanhKeyEmulate::SendInput_Enter();
    EXPECT_THAT(g_calls, ElementsAre("send type 1 key 0x0D scan 0x0 flags 0x1 time 0 extra 0x0", "sleep 50",
                                     "send type 1 key 0x0D scan 0x0 flags 0x2 time 0 extra 0x0", "sleep 50"));
}

TEST_F(KeyEmulate, ShiftInsertLeavesShiftPressed)
{
    CQanhKeyEmulate::SendInput_Shift_Insert();
    EXPECT_THAT(g_calls,
                ElementsAre("extra info", "map 0x10 type 0",
                            "send type 1 key 0x10 scan 0x41 flags 0x0 time 0 extra 0x7001", "sleep 50", //
                            "extra info", "map 0x2D type 0",
                            "send type 1 key 0x2D scan 0x42 flags 0x1 time 0 extra 0x7002", "sleep 50", //
                            "extra info", "map 0x2D type 0",
                            "send type 1 key 0x2D scan 0x43 flags 0x3 time 0 extra 0x7003", "sleep 1000"));
}

TEST_F(KeyEmulate, ShiftUpReleasesShift)
{
    CQanhKeyEmulate::SendInput_ShiftUp();
    EXPECT_THAT(g_calls,
                ElementsAre("extra info", "map 0x10 type 0",
                            "send type 1 key 0x10 scan 0x41 flags 0x2 time 0 extra 0x7001", "sleep 50"));
}

TEST_F(KeyEmulate, RefusedEventsDoNotCutAScriptShort)
{
    g_sent = 0;
    CQanhKeyEmulate::Sendinput_Win();
    CQanhKeyEmulate::SendInput_Win_Q();
    CQanhKeyEmulate::SendInput_Enter();
    CQanhKeyEmulate::SendInput_Shift_Insert();
    CQanhKeyEmulate::SendInput_ShiftUp();
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 50u, 50u, 100u, 200u, 50u, 50u, 50u, 50u, 1000u, 50u));
    EXPECT_EQ(std::count_if(g_calls.begin(), g_calls.end(),
                            [](const std::string& call) { return call.rfind("send", 0) == 0; }),
              12);
}

TEST_F(KeyEmulate, WindowsKeyLog)
{
    const test::LogCapture log;
    CQanhKeyEmulate::Sendinput_Win();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhKeyEmulate::Sendinput_Win IN",
                                         "CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000001) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000002) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT", //
                                         "CQanhKeyEmulate::Sendinput_Win OUT"));
}

TEST_F(KeyEmulate, WindowsQLogNamesTheScanCodeForQOnly)
{
    const test::LogCapture log;
    CQanhKeyEmulate::SendInput_Win_Q();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhKeyEmulate::SendInput_Win_Q IN",
                                         "CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000001) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x0051, 0x0010, 0x00000008) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x0051, 0x0010, 0x00000002) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000002) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT", //
                                         "CQanhKeyEmulate::SendInput_Win_Q OUT"));
}

TEST_F(KeyEmulate, EnterLog)
{
    const test::LogCapture log;
    CQanhKeyEmulate::SendInput_Enter();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhKeyEmulate::SendInput_Enter IN",
                                         "CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000001) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000002) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT", //
                                         "CQanhKeyEmulate::SendInput_Enter OUT"));
}

TEST_F(KeyEmulate, ShiftInsertLogNamesEveryScanCode)
{
    const test::LogCapture log;
    CQanhKeyEmulate::SendInput_Shift_Insert();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhKeyEmulate::SendInput_Shift_Insert IN",
                                         "CQanhKeyEmulate::Sendinput_Key(0x0010, 0x0041, 0x00000000) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x002D, 0x0042, 0x00000001) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT",
                                         "CQanhKeyEmulate::Sendinput_Key(0x002D, 0x0043, 0x00000003) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT", //
                                         "CQanhKeyEmulate::SendInput_Shift_Insert OUT"));
}

TEST_F(KeyEmulate, ShiftUpLogHasTheEventOnly)
{
    const test::LogCapture log;
    CQanhKeyEmulate::SendInput_ShiftUp();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhKeyEmulate::Sendinput_Key(0x0010, 0x0041, 0x00000002) IN",
                                         "CQanhKeyEmulate::Sendinput_Key OUT"));
}

TEST_F(KeyEmulate, AnEventIsSentBetweenItsTwoLinesAndThePauseComesAfterThem)
{
    const test::LogCapture log;
    g_log = &log;
    CQanhKeyEmulate::SendInput_ShiftUp();
    CQanhKeyEmulate::SendInput_Enter();
    g_log = nullptr;
    EXPECT_THAT(g_calls, ElementsAre("extra info", "map 0x10 type 0",
                                     "send type 1 key 0x10 scan 0x41 flags 0x2 time 0 extra 0x7001",
                                     "log: CQanhKeyEmulate::Sendinput_Key(0x0010, 0x0041, 0x00000002) IN",
                                     "log: CQanhKeyEmulate::Sendinput_Key OUT", "sleep 50",
                                     "send type 1 key 0x0D scan 0x0 flags 0x1 time 0 extra 0x0",
                                     "log: CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000001) IN",
                                     "log: CQanhKeyEmulate::Sendinput_Key OUT", "sleep 50",
                                     "send type 1 key 0x0D scan 0x0 flags 0x2 time 0 extra 0x0",
                                     "log: CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000002) IN",
                                     "log: CQanhKeyEmulate::Sendinput_Key OUT", "sleep 50"));
}

// What a low-level hook of the desktop sees, and swallows, of the events that are really sent.
class KeyboardWatch
{
public:
    KeyboardWatch()
    {
        s_seen.clear();
        m_ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        m_thread = CreateThread(nullptr, 0, Watch, m_ready, 0, &m_threadId);
        WaitForSingleObject(m_ready, 10000);
    }
    ~KeyboardWatch() { Stop(); }
    KeyboardWatch(const KeyboardWatch&) = delete;
    KeyboardWatch& operator=(const KeyboardWatch&) = delete;

    const std::vector<std::string>& Stop()
    {
        if (m_thread) {
            PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
            WaitForSingleObject(m_thread, 10000);
            CloseHandle(m_thread);
            CloseHandle(m_ready);
            m_thread = nullptr;
        }
        return s_seen;
    }

private:
    static DWORD WINAPI Watch(void* ready)
    {
        const HHOOK hook = SetWindowsHookExW(WH_KEYBOARD_LL, See, GetModuleHandleW(nullptr), 0);
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        SetEvent(ready);
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        }
        UnhookWindowsHookEx(hook);
        return 0;
    }
    static LRESULT CALLBACK See(int code, WPARAM message, LPARAM detail)
    {
        const auto& key = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(detail);
        if (code != HC_ACTION || !(key.flags & LLKHF_INJECTED)) {
            return CallNextHookEx(nullptr, code, message, detail);
        }
        s_seen.push_back((key.flags & LLKHF_UP ? "up " : "down ") + Hex(key.vkCode, 2));
        return 1;
    }

    static inline std::vector<std::string> s_seen;
    HANDLE m_ready;
    HANDLE m_thread;
    DWORD m_threadId = 0;
};

TEST(KeyEmulateOnTheDesktop, WindowsQArrivesAsFourKeyEvents)
{
    const test::FakeSleep sleep;
    KeyboardWatch watch;
    CQanhKeyEmulate::SendInput_Win_Q();
    EXPECT_THAT(watch.Stop(), ElementsAre("down 0x5B", "down 0x51", "up 0x51", "up 0x5B"));
}

} // namespace
