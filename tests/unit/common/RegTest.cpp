// The settings of the library.

#include "common/Reg.h"

#include "support/Registry.h"
#include "unit/common/RegCalls.h"

namespace {

using namespace test;

constexpr char kOpen[] = "open machine Software\\Vel\\VELQAN\\QanHelper 0 0x20019";

class Reg : public ::testing::Test
{
protected:
    // Reads a value into a number that was 7.
    static void ExpectRead(const wchar_t* name, int result, DWORD expected)
    {
        DWORD value = 7;
        EXPECT_EQ(CQanhReg::GetDWORDRegVal(name, &value), result);
        EXPECT_EQ(value, expected);
    }
    static void ExpectGetters(DWORD debugLog, DWORD manifestReader, DWORD interval, DWORD waitTime)
    {
        EXPECT_EQ(CQanhReg::IsDebugLogOn(), debugLog);
        EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), manifestReader);
        EXPECT_EQ(CQanhReg::GetRefreshInterval(), interval);
        EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), waitTime);
    }
    static void ExpectDefaults() { ExpectGetters(0, 1, 43200000, 1000); }

    ScopedKey m_key{HKEY_LOCAL_MACHINE, kSettingsKey};
};

// ---- the reader behind the getters ----

TEST_F(Reg, ReaderTakesADword)
{
    m_key.SetDword(L"RefreshInterval", 0x89ABCDEF);
    const LogCapture log;
    ExpectRead(L"RefreshInterval", 1, 0x89ABCDEF);
    EXPECT_EQ(log.Lines(), Call("CQanhReg::GetDWORDRegVal", "(1)"));
}

TEST_F(Reg, ReaderOpensTheKeyForReadingAndClosesItAtEveryCall)
{
    m_key.SetDword(L"DebugLog", 1);
    const RegCalls calls;
    DWORD value = 0;
    (void)CQanhReg::GetDWORDRegVal(L"DebugLog", &value);
    (void)CQanhReg::GetDWORDRegVal(L"None", &value);
    EXPECT_THAT(calls.journal, ElementsAre(kOpen, "query DebugLog type 4 size 4", "close", kOpen,
                                           "query None type 4 size 4", "close"));
}

TEST_F(Reg, WithoutTheKeyOrItsRightTheExitLineHasNoNumber)
{
    for (const bool isDenied : {false, true}) {
        if (isDenied) {
            m_key.SetDword(L"DebugLog", 1);
        }
        const LogCapture log;
        {
            RegCalls calls;
            if (isDenied) {
                calls.open.answer = ERROR_ACCESS_DENIED;
            }
            ExpectRead(L"DebugLog", 0, 7);
            EXPECT_THAT(calls.journal, ElementsAre(kOpen));
        }
        EXPECT_EQ(log.Lines(), Call("CQanhReg::GetDWORDRegVal"));
        EXPECT_EQ(m_key.Exists(), isDenied) << "the key is not made";
    }
}

TEST_F(Reg, FailingQueryClosesTheKey)
{
    m_key.SetDword(L"DebugLog", 1);
    const LogCapture log;
    {
        RegCalls calls;
        calls.query.answer = ERROR_ACCESS_DENIED;
        DWORD value = 7;
        EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"DebugLog", &value), 0);
        EXPECT_THAT(calls.journal, ElementsAre(kOpen, "query DebugLog type 4 size 4", "close"));
    }
    EXPECT_EQ(log.Lines(), Call("CQanhReg::GetDWORDRegVal", "(0)"));
}

TEST_F(Reg, ShortDwordReplacesOnlyItsBytesOfThePreset)
{
    m_key.SetBytes(L"RefreshInterval", REG_DWORD, {0xAA, 0xBB});
    DWORD value = 0x11223344;
    EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"RefreshInterval", &value), 1);
    EXPECT_EQ(value, 0x1122BBAAu);
}

// What stands in the registry and is no value of ours.
struct Unusable
{
    const char* name;
    std::optional<DWORD> type; // of the value; without one there is no value of its name
    std::vector<BYTE> bytes;   // of the value, or of one with another name
};

const Unusable kUnusable[] = {
    {"no value", std::nullopt, {}},
    {"another value", std::nullopt, {1, 0, 0, 0}},
    {"text", REG_SZ, {'1', 0, 0, 0}},
    {"empty text", REG_SZ, {0, 0}},
    {"longer text", REG_SZ, {'1', 0, '2', 0, '3', 0, '4', 0, 0, 0}},
    {"eight bytes", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0}},
    {"four bytes as eight", REG_QWORD, {1, 0, 0, 0}},
    {"bytes", REG_BINARY, {1, 0, 0, 0}},
    {"other byte order", REG_DWORD_BIG_ENDIAN, {0, 0, 0, 1}},
    {"nothing", REG_NONE, {}},
    {"dword of five bytes", REG_DWORD, {1, 0, 0, 0, 0}},
};

TEST_F(Reg, UnusableValueIsNotReadAndGivesTheDefault)
{
    for (const Unusable& unusable : kUnusable) {
        SCOPED_TRACE(unusable.name);
        m_key.Delete();
        m_key.Create();
        for (const wchar_t* name :
             {L"DebugLog", L"ManifestReaderSetting", L"RefreshInterval", L"ClearClipboardWaitTime"}) {
            if (unusable.type) {
                m_key.SetBytes(name, *unusable.type, unusable.bytes);
            }
        }
        if (!unusable.type && !unusable.bytes.empty()) {
            m_key.SetBytes(L"Other", REG_DWORD, unusable.bytes);
        }
        {
            const LogCapture log;
            DWORD value = 7;
            EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"RefreshInterval", &value), 0);
            EXPECT_EQ(log.Lines(), Call("CQanhReg::GetDWORDRegVal", "(0)"));
        }
        ExpectDefaults();
    }
}

// ---- the getters ----

TEST_F(Reg, DefaultsWithoutTheKey)
{
    ExpectDefaults();
    EXPECT_FALSE(m_key.Exists());
}

TEST_F(Reg, GarbageOfAFailedQueryGivesTheDefaults)
{
    m_key.Create();
    RegCalls calls;
    calls.query.answer = ERROR_MORE_DATA;
    ExpectDefaults();
}

TEST_F(Reg, EachGetterReadsItsOwnValueAnewAtEveryCall)
{
    m_key.SetDword(L"DebugLog", 1);
    m_key.SetDword(L"ManifestReaderSetting", 0);
    m_key.SetDword(L"RefreshInterval", 3);
    m_key.SetDword(L"ClearClipboardWaitTime", 4);
    ExpectGetters(1, 0, 180000, 4);
    m_key.Delete();
    ExpectDefaults();
}

TEST_F(Reg, EachGetterMakesItsOwnOfTheStoredNumber)
{
    const auto expectResults = [&](const wchar_t* name, DWORD (*get)(),
                                   const std::vector<std::pair<DWORD, DWORD>>& results) {
        SCOPED_TRACE(ToUtf8(name));
        for (const auto& [stored, result] : results) {
            m_key.SetDword(name, stored);
            EXPECT_EQ(get(), result) << stored;
        }
    };
    // Any number but zero switches the log on.
    expectResults(L"DebugLog", CQanhReg::IsDebugLogOn,
                  {{1, 1}, {2, 1}, {0x80000000, 1}, {0xFFFFFFFF, 1}, {0, 0}});
    // Whatever is above one is one.
    expectResults(L"ManifestReaderSetting", CQanhReg::GetManifestReaderSetting,
                  {{2, 1}, {3, 1}, {0x80000000, 1}, {0xFFFFFFFF, 1}, {0, 0}, {1, 1}});
    // Minutes as milliseconds, which wrap: the second last is 4,294,980,000 less 2 to the power of 32.
    expectResults(
        L"RefreshInterval", CQanhReg::GetRefreshInterval,
        {{0, 0}, {1, 60000}, {720, 43200000}, {71582, 4294920000}, {71583, 12704}, {0xFFFFFFFF, 4294907296}});
    // Without a range.
    expectResults(L"ClearClipboardWaitTime", CQanhReg::GetClearClipboardWaitTime,
                  {{0, 0}, {1, 1}, {999999, 999999}, {0xFFFFFFFF, 0xFFFFFFFF}});
}

class RegLog : public Reg
{
protected:
    // What a getter writes: whether its value was read, and what it tells.
    static Lines GetterLines(const std::string& getter, bool isRead, const std::string& told)
    {
        return Call("CQanhReg::" + getter, "(" + told + ")",
                    Call("CQanhReg::GetDWORDRegVal", isRead ? "(1)" : "(0)"));
    }
    static void CallGetters()
    {
        (void)CQanhReg::IsDebugLogOn();
        (void)CQanhReg::GetManifestReaderSetting();
        (void)CQanhReg::GetRefreshInterval();
        (void)CQanhReg::GetClearClipboardWaitTime();
    }
};

TEST_F(RegLog, OfTheGetters)
{
    m_key.SetDword(L"DebugLog", 7);
    m_key.SetDword(L"ManifestReaderSetting", 0);
    m_key.SetDword(L"RefreshInterval", 0xFFFFFFFF);
    m_key.SetDword(L"ClearClipboardWaitTime", 250);
    const LogCapture log;
    CallGetters();
    // The interval in minutes, not in milliseconds.
    EXPECT_EQ(log.Lines(), GetterLines("IsDebugLogOn", true, "1") +
                               GetterLines("GetManifestReaderSetting", true, "0") +
                               GetterLines("GetRefreshInterval", true, "-1") +
                               GetterLines("GetClearClipboardWaitTime", true, "250"));
}

TEST_F(RegLog, OfTheGettersTellsTheDefaults)
{
    m_key.SetDword(L"ManifestReaderSetting", 2);
    m_key.SetText(L"RefreshInterval", L"5");
    const LogCapture log;
    CallGetters();
    EXPECT_EQ(log.Lines(), GetterLines("IsDebugLogOn", false, "0") +
                               GetterLines("GetManifestReaderSetting", true, "1") +
                               GetterLines("GetRefreshInterval", false, "720") +
                               GetterLines("GetClearClipboardWaitTime", false, "1000"));
}

} // namespace
