// The settings of the library.

#include "common/Reg.h"

#include "support/LogCapture.h"
#include "support/Registry.h"
#include "unit/common/RegCalls.h"

#include <gmock/gmock.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using test::RegCalls;
using test::ScopedKey;
using ::testing::ElementsAre;

constexpr char kOpen[] = "open machine Software\\Vel\\VELQAN\\QanHelper 0 0x20019";

class Reg : public ::testing::Test
{
protected:
    ScopedKey m_key{HKEY_LOCAL_MACHINE, test::kSettingsKey};
};

// ---- the reader behind the getters ----

TEST_F(Reg, ReaderTakesADword)
{
    m_key.SetDword(L"RefreshInterval", 0x89ABCDEF);
    const test::LogCapture log;
    DWORD value = 0;
    EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"RefreshInterval", &value), 1);
    EXPECT_EQ(value, 0x89ABCDEFu);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhReg::GetDWORDRegVal IN", "CQanhReg::GetDWORDRegVal OUT(1)"));
}

TEST_F(Reg, ReaderOpensTheKeyForReadingAndClosesItAtEveryCall)
{
    m_key.SetDword(L"DebugLog", 1);
    RegCalls calls;
    DWORD value = 0;
    (void)CQanhReg::GetDWORDRegVal(L"DebugLog", &value);
    (void)CQanhReg::GetDWORDRegVal(L"None", &value);
    EXPECT_THAT(calls.journal, ElementsAre(kOpen, "query DebugLog type 4 size 4", "close", kOpen,
                                           "query None type 4 size 4", "close"));
}

TEST_F(Reg, WithoutTheKeyTheExitLineHasNoNumberAndTheKeyIsNotMade)
{
    const test::LogCapture log;
    DWORD value = 7;
    {
        RegCalls calls;
        EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"DebugLog", &value), 0);
        EXPECT_THAT(calls.journal, ElementsAre(kOpen));
    }
    EXPECT_EQ(value, 7u);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhReg::GetDWORDRegVal IN", "CQanhReg::GetDWORDRegVal OUT"));
    EXPECT_FALSE(m_key.Exists());
}

TEST_F(Reg, DeniedKeyIsLikeNoKey)
{
    m_key.SetDword(L"DebugLog", 1);
    const test::LogCapture log;
    DWORD value = 7;
    {
        RegCalls calls;
        calls.openResult = ERROR_ACCESS_DENIED;
        EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"DebugLog", &value), 0);
        EXPECT_THAT(calls.journal, ElementsAre(kOpen));
    }
    EXPECT_EQ(value, 7u);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhReg::GetDWORDRegVal IN", "CQanhReg::GetDWORDRegVal OUT"));
}

TEST_F(Reg, FailingQueryClosesTheKey)
{
    m_key.SetDword(L"DebugLog", 1);
    const test::LogCapture log;
    DWORD value = 7;
    {
        RegCalls calls;
        calls.queryResult = ERROR_ACCESS_DENIED;
        EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"DebugLog", &value), 0);
        EXPECT_THAT(calls.journal, ElementsAre(kOpen, "query DebugLog type 4 size 4", "close"));
    }
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhReg::GetDWORDRegVal IN", "CQanhReg::GetDWORDRegVal OUT(0)"));
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
    std::function<void(ScopedKey&, const wchar_t*)> store;
};

void PrintTo(const Unusable& unusable, std::ostream* stream)
{
    *stream << unusable.name;
}

void Store(ScopedKey& key, const wchar_t* name, DWORD type, std::vector<BYTE> bytes)
{
    key.SetBytes(name, type, bytes);
}

const Unusable kUnusable[] = {
    {"no value", [](ScopedKey& key, const wchar_t*) { key.Create(); }},
    {"another value", [](ScopedKey& key, const wchar_t*) { key.SetDword(L"Other", 1); }},
    {"text", [](ScopedKey& key, const wchar_t* name) { key.SetText(name, L"1"); }},
    {"empty text", [](ScopedKey& key, const wchar_t* name) { key.SetText(name, L""); }},
    {"longer text", [](ScopedKey& key, const wchar_t* name) { key.SetText(name, L"1234"); }},
    {"eight bytes",
     [](ScopedKey& key, const wchar_t* name) {
         Store(key, name, REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0});
     }},
    {"four bytes as eight",
     [](ScopedKey& key, const wchar_t* name) {
         Store(key, name, REG_QWORD, {1, 0, 0, 0});
     }},
    {"bytes",
     [](ScopedKey& key, const wchar_t* name) {
         Store(key, name, REG_BINARY, {1, 0, 0, 0});
     }},
    {"other byte order",
     [](ScopedKey& key, const wchar_t* name) {
         Store(key, name, REG_DWORD_BIG_ENDIAN, {0, 0, 0, 1});
     }},
    {"nothing", [](ScopedKey& key, const wchar_t* name) { Store(key, name, REG_NONE, {}); }},
    {"dword of five bytes",
     [](ScopedKey& key, const wchar_t* name) {
         Store(key, name, REG_DWORD, {1, 0, 0, 0, 0});
     }},
};

class UnusableValue : public ::testing::TestWithParam<Unusable>
{
protected:
    ScopedKey m_key{HKEY_LOCAL_MACHINE, test::kSettingsKey};
};

TEST_P(UnusableValue, IsNotRead)
{
    GetParam().store(m_key, L"RefreshInterval");
    const test::LogCapture log;
    DWORD value = 7;
    EXPECT_EQ(CQanhReg::GetDWORDRegVal(L"RefreshInterval", &value), 0);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhReg::GetDWORDRegVal IN", "CQanhReg::GetDWORDRegVal OUT(0)"));
}

TEST_P(UnusableValue, GivesTheDefault)
{
    for (const wchar_t* name :
         {L"DebugLog", L"ManifestReaderSetting", L"RefreshInterval", L"ClearClipboardWaitTime"}) {
        GetParam().store(m_key, name);
    }
    EXPECT_EQ(CQanhReg::IsDebugLogOn(), 0u);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 1u);
    EXPECT_EQ(CQanhReg::GetRefreshInterval(), 43200000u);
    EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), 1000u);
}

INSTANTIATE_TEST_SUITE_P(Reg, UnusableValue, ::testing::ValuesIn(kUnusable));

// ---- the getters ----

TEST_F(Reg, DefaultsWithoutTheKey)
{
    EXPECT_EQ(CQanhReg::IsDebugLogOn(), 0u);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 1u);
    EXPECT_EQ(CQanhReg::GetRefreshInterval(), 43200000u);
    EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), 1000u);
    EXPECT_FALSE(m_key.Exists());
}

TEST_F(Reg, GarbageOfAFailedQueryGivesTheDefaults)
{
    m_key.Create();
    RegCalls calls;
    calls.queryResult = ERROR_MORE_DATA;
    EXPECT_EQ(CQanhReg::IsDebugLogOn(), 0u);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 1u);
    EXPECT_EQ(CQanhReg::GetRefreshInterval(), 43200000u);
    EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), 1000u);
}

TEST_F(Reg, EachGetterReadsItsOwnValueAnewAtEveryCall)
{
    m_key.SetDword(L"DebugLog", 1);
    m_key.SetDword(L"ManifestReaderSetting", 0);
    m_key.SetDword(L"RefreshInterval", 3);
    m_key.SetDword(L"ClearClipboardWaitTime", 4);
    EXPECT_EQ(CQanhReg::IsDebugLogOn(), 1u);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 0u);
    EXPECT_EQ(CQanhReg::GetRefreshInterval(), 180000u);
    EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), 4u);
    m_key.Delete();
    EXPECT_EQ(CQanhReg::IsDebugLogOn(), 0u);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 1u);
    EXPECT_EQ(CQanhReg::GetRefreshInterval(), 43200000u);
    EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), 1000u);
}

TEST_F(Reg, AnyNumberButZeroSwitchesTheLogOn)
{
    for (const DWORD value : {1u, 2u, 0x80000000u, 0xFFFFFFFFu}) {
        m_key.SetDword(L"DebugLog", value);
        EXPECT_EQ(CQanhReg::IsDebugLogOn(), 1u) << value;
    }
    m_key.SetDword(L"DebugLog", 0);
    EXPECT_EQ(CQanhReg::IsDebugLogOn(), 0u);
}

TEST_F(Reg, ManifestReaderSettingAboveOneIsOne)
{
    for (const DWORD value : {2u, 3u, 0x80000000u, 0xFFFFFFFFu}) {
        m_key.SetDword(L"ManifestReaderSetting", value);
        EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 1u) << value;
    }
    m_key.SetDword(L"ManifestReaderSetting", 0);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 0u);
    m_key.SetDword(L"ManifestReaderSetting", 1);
    EXPECT_EQ(CQanhReg::GetManifestReaderSetting(), 1u);
}

TEST_F(Reg, RefreshIntervalIsMinutesAsMillisecondsAndWraps)
{
    const struct
    {
        DWORD minutes;
        DWORD milliseconds;
    } intervals[] = {{0, 0},
                     {1, 60000},
                     {720, 43200000},
                     {71582, 4294920000},
                     {71583, 12704}, // 4,294,980,000 less 2 to the power of 32
                     {0xFFFFFFFF, 4294907296}};
    for (const auto& interval : intervals) {
        m_key.SetDword(L"RefreshInterval", interval.minutes);
        EXPECT_EQ(CQanhReg::GetRefreshInterval(), interval.milliseconds) << interval.minutes;
    }
}

TEST_F(Reg, ClearClipboardWaitTimeHasNoRange)
{
    for (const DWORD value : {0u, 1u, 999999u, 0xFFFFFFFFu}) {
        m_key.SetDword(L"ClearClipboardWaitTime", value);
        EXPECT_EQ(CQanhReg::GetClearClipboardWaitTime(), value);
    }
}

TEST_F(Reg, LogOfTheGetters)
{
    m_key.SetDword(L"DebugLog", 7);
    m_key.SetDword(L"ManifestReaderSetting", 0);
    m_key.SetDword(L"RefreshInterval", 0xFFFFFFFF);
    m_key.SetDword(L"ClearClipboardWaitTime", 250);
    const test::LogCapture log;
    (void)CQanhReg::IsDebugLogOn();
    (void)CQanhReg::GetManifestReaderSetting();
    (void)CQanhReg::GetRefreshInterval();
    (void)CQanhReg::GetClearClipboardWaitTime();
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhReg::IsDebugLogOn IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(1)", "CQanhReg::IsDebugLogOn OUT(1)",
                            "CQanhReg::GetManifestReaderSetting IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(1)", "CQanhReg::GetManifestReaderSetting OUT(0)",
                            // The minutes, not the milliseconds.
                            "CQanhReg::GetRefreshInterval IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(1)", "CQanhReg::GetRefreshInterval OUT(-1)",
                            "CQanhReg::GetClearClipboardWaitTime IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(1)",
                            "CQanhReg::GetClearClipboardWaitTime OUT(250)"));
}

TEST_F(Reg, LogOfTheGettersTellsTheDefaults)
{
    m_key.SetDword(L"ManifestReaderSetting", 2);
    m_key.SetText(L"RefreshInterval", L"5");
    const test::LogCapture log;
    (void)CQanhReg::IsDebugLogOn();
    (void)CQanhReg::GetManifestReaderSetting();
    (void)CQanhReg::GetRefreshInterval();
    (void)CQanhReg::GetClearClipboardWaitTime();
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhReg::IsDebugLogOn IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(0)", "CQanhReg::IsDebugLogOn OUT(0)",
                            "CQanhReg::GetManifestReaderSetting IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(1)", "CQanhReg::GetManifestReaderSetting OUT(1)",
                            "CQanhReg::GetRefreshInterval IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(0)", "CQanhReg::GetRefreshInterval OUT(720)",
                            "CQanhReg::GetClearClipboardWaitTime IN", "CQanhReg::GetDWORDRegVal IN",
                            "CQanhReg::GetDWORDRegVal OUT(0)",
                            "CQanhReg::GetClearClipboardWaitTime OUT(1000)"));
}

} // namespace
