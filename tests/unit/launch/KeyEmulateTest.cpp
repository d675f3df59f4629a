#include "launch/KeyEmulate.h"

#include "standin/desktop/KeyboardHook.h"
#include "support/Test.h"

#include <iomanip>
#include <sstream>

namespace {

using namespace test;

std::string Hex(unsigned long long number, int digits = 1)
{
    std::ostringstream text;
    text << "0x" << std::uppercase << std::hex << std::setfill('0') << std::setw(digits) << number;
    return text.str();
}

// The two lines of one key event.
Lines Key(const std::string& arguments)
{
    return Call("CQanhKeyEmulate::Sendinput_Key(" + arguments + ")");
}

class KeyEmulate : public ::testing::Test
{
protected:
    // What the script asked of the platform, one text for each call, in order.
    Lines Run(void (*script)())
    {
        m_calls.clear();
        script();
        EXPECT_THAT(m_reads, IsEmpty());
        return m_calls;
    }
    // What it wrote into the log.
    static Lines LogOf(void (*script)())
    {
        const LogCapture log;
        script();
        return log.Lines();
    }

    // Notes a call, and the last line of the log before it, when there is one. The order of the two reads
    // that belong to one event is free, so they are sorted.
    void Note(const std::string& call, bool isLogFirst)
    {
        std::sort(m_reads.begin(), m_reads.end());
        m_calls.insert(m_calls.end(), m_reads.begin(), m_reads.end());
        m_reads.clear();
        const Lines logged(m_lastLine ? 1 : 0, m_lastLine ? "log: " + m_lastLine() : "");
        m_calls = m_calls + (isLogFirst ? logged + Lines{call} : Lines{call} + logged);
    }
    UINT Send(UINT count, const INPUT* inputs, int size)
    {
        if (count != 1 || size != static_cast<int>(sizeof(INPUT))) {
            m_calls.push_back("not one event");
            return 0;
        }
        const KEYBDINPUT& key = inputs->ki;
        Note("send type " + std::to_string(inputs->type) + " key " + Hex(key.wVk, 2) + " scan " +
                 Hex(key.wScan) + " flags " + Hex(key.dwFlags) + " time " + std::to_string(key.time) +
                 " extra " + Hex(key.dwExtraInfo),
             false);
        return m_sent;
    }

    Lines m_calls;
    Lines m_reads;
    std::function<std::string()> m_lastLine; // of the log
    UINT m_sent = 1;
    // Every read gives a value of its own, so that an event shows which one it was filled from.
    UINT m_scanCode = 0x40;
    LPARAM m_extraInfo = 0x7000;
    const FakeSleep m_sleep{
        [this](DWORD milliseconds) { Note("sleep " + std::to_string(milliseconds), true); }};
    const CapturingPatch<decltype(&SendInput)> m_send{
        "SendInput", [this](UINT count, INPUT* inputs, int size) { return Send(count, inputs, size); }};
    const CapturingPatch<decltype(&MapVirtualKeyW)> m_map{
        "MapVirtualKeyW", [this](UINT code, UINT type) {
            m_reads.push_back("map " + Hex(code, 2) + " type " + std::to_string(type));
            return ++m_scanCode;
        }};
    const CapturingPatch<decltype(&GetMessageExtraInfo)> m_extra{"GetMessageExtraInfo", [this] {
                                                                     m_reads.push_back("extra info");
                                                                     return ++m_extraInfo;
                                                                 }};
};

TEST_F(KeyEmulate, WindowsKeyGoesDownExtendedAndUpPlain)
{
    EXPECT_THAT(Run(CQanhKeyEmulate::Sendinput_Win),
                ElementsAre("send type 1 key 0x5B scan 0x0 flags 0x1 time 0 extra 0x0", "sleep 50",
                            "send type 1 key 0x5B scan 0x0 flags 0x2 time 0 extra 0x0", "sleep 50"));
}

TEST_F(KeyEmulate, WindowsQPressesQAsAScanCodeAndReleasesItAsAKey)
{
    EXPECT_THAT(Run(CQanhKeyEmulate::SendInput_Win_Q),
                ElementsAre("send type 1 key 0x5B scan 0x0 flags 0x1 time 0 extra 0x0", "sleep 50",
                            "extra info", "send type 1 key 0x51 scan 0x10 flags 0x8 time 0 extra 0x7001",
                            "sleep 50", "extra info",
                            "send type 1 key 0x51 scan 0x10 flags 0x2 time 0 extra 0x7002", "sleep 100",
                            "send type 1 key 0x5B scan 0x0 flags 0x2 time 0 extra 0x0", "sleep 200"));
}

TEST_F(KeyEmulate, EnterGoesDownExtendedAndUpPlain)
{
    EXPECT_THAT(Run(CQanhKeyEmulate::SendInput_Enter),
                ElementsAre("send type 1 key 0x0D scan 0x0 flags 0x1 time 0 extra 0x0", "sleep 50",
                            "send type 1 key 0x0D scan 0x0 flags 0x2 time 0 extra 0x0", "sleep 50"));
}

TEST_F(KeyEmulate, ShiftInsertLeavesShiftPressed)
{
    EXPECT_THAT(Run(CQanhKeyEmulate::SendInput_Shift_Insert),
                ElementsAre("extra info", "map 0x10 type 0",
                            "send type 1 key 0x10 scan 0x41 flags 0x0 time 0 extra 0x7001", "sleep 50", //
                            "extra info", "map 0x2D type 0",
                            "send type 1 key 0x2D scan 0x42 flags 0x1 time 0 extra 0x7002", "sleep 50", //
                            "extra info", "map 0x2D type 0",
                            "send type 1 key 0x2D scan 0x43 flags 0x3 time 0 extra 0x7003", "sleep 1000"));
}

TEST_F(KeyEmulate, ShiftUpReleasesShift)
{
    EXPECT_THAT(Run(CQanhKeyEmulate::SendInput_ShiftUp),
                ElementsAre("extra info", "map 0x10 type 0",
                            "send type 1 key 0x10 scan 0x41 flags 0x2 time 0 extra 0x7001", "sleep 50"));
}

TEST_F(KeyEmulate, RefusedEventsDoNotCutAScriptShort)
{
    m_sent = 0;
    CQanhKeyEmulate::Sendinput_Win();
    CQanhKeyEmulate::SendInput_Win_Q();
    CQanhKeyEmulate::SendInput_Enter();
    CQanhKeyEmulate::SendInput_Shift_Insert();
    CQanhKeyEmulate::SendInput_ShiftUp();
    EXPECT_THAT(m_sleep.Calls(), ElementsAre(50u, 50u, 50u, 50u, 100u, 200u, 50u, 50u, 50u, 50u, 1000u, 50u));
    EXPECT_EQ(std::count_if(m_calls.begin(), m_calls.end(),
                            [](const std::string& call) { return call.rfind("send", 0) == 0; }),
              12);
}

TEST_F(KeyEmulate, LogOfTheScriptsNamesTheScanCodesThatAreSent)
{
    EXPECT_EQ(
        LogOf(CQanhKeyEmulate::Sendinput_Win),
        Call("CQanhKeyEmulate::Sendinput_Win", "", Key("0x005B, 0x00000001") + Key("0x005B, 0x00000002")));
    EXPECT_EQ(
        LogOf(CQanhKeyEmulate::SendInput_Enter),
        Call("CQanhKeyEmulate::SendInput_Enter", "", Key("0x000D, 0x00000001") + Key("0x000D, 0x00000002")));
    EXPECT_EQ(LogOf(CQanhKeyEmulate::SendInput_Win_Q),
              Call("CQanhKeyEmulate::SendInput_Win_Q", "",
                   Key("0x005B, 0x00000001") + Key("0x0051, 0x0010, 0x00000008") +
                       Key("0x0051, 0x0010, 0x00000002") + Key("0x005B, 0x00000002")));
    EXPECT_EQ(LogOf(CQanhKeyEmulate::SendInput_Shift_Insert),
              Call("CQanhKeyEmulate::SendInput_Shift_Insert", "",
                   Key("0x0010, 0x0041, 0x00000000") + Key("0x002D, 0x0042, 0x00000001") +
                       Key("0x002D, 0x0043, 0x00000003")));
    // The event only.
    EXPECT_EQ(LogOf(CQanhKeyEmulate::SendInput_ShiftUp), Key("0x0010, 0x0044, 0x00000002"));
}

TEST_F(KeyEmulate, AnEventIsSentBetweenItsTwoLinesAndThePauseComesAfterThem)
{
    const LogCapture log;
    m_lastLine = [&] { return log.Lines().back(); };
    EXPECT_THAT(Run(CQanhKeyEmulate::SendInput_ShiftUp),
                ElementsAre("extra info", "map 0x10 type 0",
                            "send type 1 key 0x10 scan 0x41 flags 0x2 time 0 extra 0x7001",
                            "log: CQanhKeyEmulate::Sendinput_Key(0x0010, 0x0041, 0x00000002) IN",
                            "log: CQanhKeyEmulate::Sendinput_Key OUT", "sleep 50"));
    EXPECT_THAT(Run(CQanhKeyEmulate::SendInput_Enter),
                ElementsAre("send type 1 key 0x0D scan 0x0 flags 0x1 time 0 extra 0x0",
                            "log: CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000001) IN",
                            "log: CQanhKeyEmulate::Sendinput_Key OUT", "sleep 50",
                            "send type 1 key 0x0D scan 0x0 flags 0x2 time 0 extra 0x0",
                            "log: CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000002) IN",
                            "log: CQanhKeyEmulate::Sendinput_Key OUT", "sleep 50"));
}

// What a low-level hook of the desktop sees, and swallows, of the events that are really sent.
TEST(KeyEmulateOnTheDesktop, WindowsQArrivesAsFourKeyEvents)
{
    Lines seen;
    standin::KeyboardHook hook;
    ASSERT_TRUE(hook.Start([&](DWORD key, bool isDown) {
        seen.push_back((isDown ? "down " : "up ") + Hex(key, 2));
        return true;
    }));
    const FakeSleep sleep;
    CQanhKeyEmulate::SendInput_Win_Q();
    hook.Stop();
    EXPECT_THAT(seen, ElementsAre("down 0x5B", "down 0x51", "up 0x51", "up 0x5B"));
}

} // namespace
