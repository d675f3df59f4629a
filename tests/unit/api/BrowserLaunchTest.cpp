// The export that starts the browser by the Start screen's search.

#include "QanHelper.h"

#include "api/Statics.h"
#include "common/Apartment.h"
#include "support/FakeShell.h"
#include "support/Registry.h"
#include "support/Test.h"
#include "support/TileLines.h"

namespace {

using namespace test;

constexpr wchar_t kTile[] = L"ApplicationTileImmersiveActivation";

class BrowserLaunch : public ::testing::Test
{
protected:
    BrowserLaunch() { m_key.Create(); }
    ~BrowserLaunch() override
    {
        if (s_MonitorMode.m_pImmersiveMode) {
            s_MonitorMode.m_pImmersiveMode->Release();
            s_MonitorMode.m_pImmersiveMode = nullptr;
        }
    }

    // From here on a launch comes as far as the shell.
    void HaveShell()
    {
        if (!s_MonitorMode.m_pImmersiveMode) {
            m_shell.visibility->AddRef();
            s_MonitorMode.m_pImmersiveMode = m_shell.visibility;
        }
    }
    // The same; it fails there, after the action.
    void FailAtTheShell(std::function<void()> action)
    {
        m_shell.objects.At("IsLauncherVisible", std::move(action));
        m_shell.objects.Fail("IsLauncherVisible", E_FAIL);
        HaveShell();
    }
    // The same; how the setting stands meanwhile is kept.
    void Watch()
    {
        FailAtTheShell([this] {
            m_meanwhile = m_key.Dword(kTile);
            m_wasThere = m_key.HasValue(kTile);
        });
    }

    // A launch that fails, as it does without the shell's object, and its whole log: what comes before the
    // launch by search, and after it.
    void ExpectLog(DWORD tileMode, const Lines& before, const Lines& after = {})
    {
        m_log.Clear();
        EXPECT_EQ(QanhLaunchIEBySearch(tileMode, 0, FALSE), E_FAIL);
        EXPECT_EQ(m_log.Lines(), Call("QanhLaunchIEBySearch(" + std::to_string(tileMode) + ", 0, 0)",
                                      "(0x80004005)", before + kLaunch + after));
    }
    const Lines kLaunch =
        Call("QanhLaunchBySearch(Internet Explorer, 0, 0)", "(SwitchToStartScreen : ret=0x80004005)",
             Lines{"QanhLaunchBySearch szKeyword = \"Internet Explorer\" "} +
                 Call("CQanhMonitorMode::OpenAppSearchUI", "(GetMonitorState : ret=0x80004005)",
                      Call("CQanhMonitorMode::GetMonitorState", "( m_pImmersiveMode NULL : -1)")));

    ScopedKey m_key{HKEY_CURRENT_USER, kBrowserKey};
    const ComApartment m_apartment{CoInitialize(nullptr)};
    FakeShell m_shell;
    LogCapture m_log;
    std::optional<DWORD> m_meanwhile;
    bool m_wasThere = false;
};

// What is written, and what stands there afterwards.

struct TileCase
{
    const char* name;
    std::optional<DWORD> stored;
    DWORD tileMode;
    std::optional<DWORD> meanwhile;
    bool isSet;
    bool isDeleted;
};

class BrowserTile : public BrowserLaunch, public ::testing::WithParamInterface<TileCase>
{
protected:
    BrowserTile()
    {
        if (GetParam().stored) {
            m_key.SetDword(kTile, *GetParam().stored);
        }
    }
};

TEST_P(BrowserTile, IsForcedDuringTheLaunchAndPutBack)
{
    Watch();
    EXPECT_EQ(QanhLaunchIEBySearch(GetParam().tileMode, 0, FALSE), E_FAIL);
    EXPECT_EQ(m_meanwhile, GetParam().meanwhile);
    EXPECT_EQ(m_key.Dword(kTile), GetParam().stored);
}

TEST_P(BrowserTile, IsLoggedStepByStep)
{
    const int stored = static_cast<int>(GetParam().stored.value_or(1));
    const int forced = static_cast<int>(GetParam().tileMode);
    ExpectLog(GetParam().tileMode, GetTileLines(stored) + (GetParam().isSet ? SetTileLines(forced) : Lines()),
              GetParam().isDeleted ? DeleteTileLines()
              : GetParam().isSet   ? SetTileLines(stored)
                                   : Lines());
}

const std::optional<DWORD> kAbsent;
const TileCase kTiles[] = {
    // An absent value counts as 1, and is deleted in every case.
    {"Absent0", kAbsent, 0, 0u, true, true},       {"Absent1", kAbsent, 1, kAbsent, false, true},
    {"Absent2", kAbsent, 2, kAbsent, false, true}, {"Stored0For0", 0u, 0, 0u, false, false},
    {"Stored0For1", 0u, 1, 1u, true, false},       {"Stored0For2", 0u, 2, 0u, false, false},
    {"Stored1For0", 1u, 0, 0u, true, false},       {"Stored1For1", 1u, 1, 1u, false, false},
    {"Stored1For2", 1u, 2, 1u, false, false},      {"Stored7For0", 7u, 0, 0u, true, false},
    {"Stored7For1", 7u, 1, 1u, true, false},       {"Stored7For2", 7u, 2, 7u, false, false},
    {"Stored2For2", 2u, 2, 2u, false, false},      {"StoredHugeFor0", 0xFFFFFFFFu, 0, 0u, true, false},
};

INSTANTIATE_TEST_SUITE_P(Of, BrowserTile, ::testing::ValuesIn(kTiles),
                         [](const auto& each) { return std::string(each.param.name); });

// Without the key there is nothing to set or delete.

TEST_F(BrowserLaunch, NeverMakesTheKey)
{
    m_key.Delete();
    for (const DWORD tileMode : {0u, 1u, 2u}) {
        ExpectLog(tileMode, GetTileLines(1) + (tileMode == 0 ? SetTileLines(0, "(0)") : Lines()),
                  DeleteTileLines("(0)"));
        EXPECT_FALSE(m_key.Exists());
    }
}

// Values that are none of this library's business.

struct OddCase
{
    const char* name;
    DWORD type;
    std::vector<BYTE> bytes;
};

class OddTile : public BrowserLaunch, public ::testing::WithParamInterface<OddCase>
{
};

TEST_P(OddTile, IsLeftAlone)
{
    for (const DWORD tileMode : {0u, 1u, 2u}) {
        m_key.SetBytes(kTile, GetParam().type, GetParam().bytes);
        Watch();
        EXPECT_EQ(QanhLaunchIEBySearch(tileMode, 0, FALSE), E_FAIL);
        EXPECT_TRUE(m_wasThere);
        BYTE bytes[64] = {};
        DWORD size = sizeof bytes;
        DWORD type = 0;
        EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, kBrowserKey, kTile, RRF_RT_ANY | RRF_NOEXPAND, &type, bytes,
                               &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, GetParam().type);
        EXPECT_EQ(std::vector<BYTE>(bytes, bytes + size), GetParam().bytes);
        EXPECT_THAT(m_log.Text(), Not(HasSubstr("SetCurrent")));
        EXPECT_THAT(m_log.Text(), Not(HasSubstr("Delete")));
    }
}

INSTANTIATE_TEST_SUITE_P(OfType, OddTile,
                         ::testing::Values(OddCase{"ShortText", REG_SZ, {'0', 0, 0, 0}},
                                           OddCase{"LongText", REG_SZ, {'0', 0, '0', 0, '0', 0, 0, 0}},
                                           OddCase{"Bytes", REG_BINARY, {1, 0, 0, 0}},
                                           OddCase{"Quadword", REG_QWORD, {0, 0, 0, 0, 0, 0, 0, 0}},
                                           OddCase{"LongNumber", REG_DWORD, {0, 0, 0, 0, 0, 0, 0, 0}},
                                           OddCase{"TextToExpand", REG_EXPAND_SZ, {'0', 0, 0, 0}}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(BrowserLaunch, WithAValueOfAnotherTypeOnlyLaunches)
{
    // The number is what the four bytes come to.
    m_key.SetText(kTile, L"1");
    for (const DWORD tileMode : {0u, 1u, 2u}) {
        ExpectLog(tileMode, GetTileLines(49));
    }
}

TEST_F(BrowserLaunch, WithAValueThatIsTooLongOnlyLaunches)
{
    m_key.SetBytes(kTile, REG_QWORD, std::vector<BYTE>(8, 0));
    EXPECT_EQ(QanhLaunchIEBySearch(0, 0, FALSE), E_FAIL);
    const Lines lines = m_log.Lines();
    ASSERT_EQ(lines.size(), 3 + kLaunch.size() + 1);
    EXPECT_EQ(Lines(lines.begin() + 3, lines.end() - 1), kLaunch);
    EXPECT_EQ(lines.back(), "QanhLaunchIEBySearch OUT(0x80004005)");
}

// Only a value or key that is not there counts as absent, not one that cannot be had.
TEST_F(BrowserLaunch, WithoutAnAnswerOnlyLaunches)
{
    m_key.SetDword(kTile, 0);
    for (const LSTATUS status : {ERROR_ACCESS_DENIED, ERROR_PATH_NOT_FOUND, ERROR_KEY_DELETED}) {
        for (const DWORD tileMode : {0u, 1u, 2u}) {
            const CapturingPatch<decltype(&RegOpenKeyExW)> patch("RegOpenKeyExW", Answer(status));
            ExpectLog(tileMode, GetTileLines(1));
        }
    }
    EXPECT_EQ(m_key.Dword(kTile), 0u);
}

TEST_F(BrowserLaunch, WithAQueryThatFailsOnlyLaunches)
{
    m_key.SetDword(kTile, 0);
    {
        const CapturingPatch<decltype(&RegQueryValueExW)> patch("RegQueryValueExW",
                                                                Answer(ERROR_ACCESS_DENIED));
        ExpectLog(0, GetTileLines(1));
    }
    EXPECT_EQ(m_key.Dword(kTile), 0u);
}

TEST_F(BrowserLaunch, WithoutTheRightToWriteLaunchesAllTheSame)
{
    m_key.SetDword(kTile, 1);
    {
        const CapturingPatch<decltype(&RegOpenKeyExW)> patch(
            "RegOpenKeyExW",
            [&](HKEY key, const wchar_t* path, DWORD options, REGSAM access, HKEY* result) -> LSTATUS {
                return access == KEY_WRITE ? ERROR_ACCESS_DENIED
                                           : patch.Original(key, path, options, access, result);
            });
        ExpectLog(0, GetTileLines(1) + SetTileLines(0, "(0)"), SetTileLines(1, "(0)"));
    }
    EXPECT_EQ(m_key.Dword(kTile), 1u);
}

// Also what could not be set counts as changed.
TEST_F(BrowserLaunch, PutsBackAlsoWhereSettingFailed)
{
    m_key.SetDword(kTile, 7);
    {
        const CapturingPatch<decltype(&RegSetValueExW)> patch("RegSetValueExW", Answer(ERROR_ACCESS_DENIED));
        ExpectLog(1, GetTileLines(7) + SetTileLines(1), SetTileLines(7));
    }
    EXPECT_EQ(m_key.Dword(kTile), 7u);
}

TEST_F(BrowserLaunch, ReturnsTheResultOfTheLaunchWhenDeletingFails)
{
    {
        const CapturingPatch<decltype(&RegDeleteValueW)> patch("RegDeleteValueW",
                                                               Answer(ERROR_ACCESS_DENIED));
        ExpectLog(0, GetTileLines(1) + SetTileLines(0), DeleteTileLines());
    }
    EXPECT_EQ(m_key.Dword(kTile), 0u) << "nothing else takes it away";
}

TEST_F(BrowserLaunch, RestoresOverWhatOthersWroteMeanwhile)
{
    m_key.SetDword(kTile, 1);
    FailAtTheShell([this] { m_key.SetDword(kTile, 9); }); // another program
    QanhLaunchIEBySearch(0, 0, FALSE);
    EXPECT_EQ(m_key.Dword(kTile), 1u);
    m_key.DeleteValue(kTile);
    QanhLaunchIEBySearch(1, 0, FALSE);
    EXPECT_FALSE(m_key.HasValue(kTile));
    m_key.Delete();
    QanhLaunchIEBySearch(2, 0, FALSE);
    EXPECT_TRUE(m_key.Exists());
    EXPECT_FALSE(m_key.HasValue(kTile)) << "deleted also where the key was not there before";
}

TEST_F(BrowserLaunch, WhatWasNotForcedIsNotPutBack)
{
    FailAtTheShell([this] { m_key.SetDword(kTile, 9); }); // another program
    for (const auto& [stored, tileMode] : {std::pair(0u, 0u), {1u, 1u}, {0u, 2u}, {7u, 2u}}) {
        m_key.SetDword(kTile, stored);
        QanhLaunchIEBySearch(tileMode, 0, FALSE);
        EXPECT_EQ(m_key.Dword(kTile), 9u);
    }
    for (const std::vector<BYTE>& bytes : {std::vector<BYTE>{'1', 0, 0, 0}, std::vector<BYTE>(8, 0)}) {
        for (const DWORD tileMode : {0u, 1u, 2u}) {
            m_key.SetBytes(kTile, REG_SZ, bytes);
            QanhLaunchIEBySearch(tileMode, 0, FALSE);
            EXPECT_EQ(m_key.Dword(kTile), 9u);
        }
    }
}

TEST_F(BrowserLaunch, HandsTheOtherArgumentsOn)
{
    m_key.SetDword(kTile, 1);
    EXPECT_EQ(QanhLaunchIEBySearch(2, 2, -5), E_FAIL);
    for (const char* line :
         {"QanhLaunchIEBySearch(2, 2, -5) IN", "QanhLaunchBySearch(Internet Explorer, 2, -5) IN",
          "CQanhAppNameList::GetExcludeAppNameList(Internet Explorer) IN"}) {
        EXPECT_THAT(m_log.Lines(), Contains(line));
    }
}

TEST_F(BrowserLaunch, ReturnsTheSuccessOfTheLaunch)
{
    m_key.SetDword(kTile, 1);
    HaveShell();
    const FakeSleep sleep;
    const CapturingPatch<decltype(&SendInput)> keys("SendInput", Answer(1));
    const CapturingPatch<decltype(&GetForegroundWindow)> foreground("GetForegroundWindow", Answer(nullptr));
    EXPECT_EQ(QanhLaunchIEBySearch(0, 1, FALSE), S_OK);
    EXPECT_EQ(m_key.Dword(kTile), 1u);
    const Lines lines = m_log.Lines();
    ASSERT_GT(lines.size(), 4u);
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()), Lines{"QanhLaunchBySearch OUT(0x00000000)"} +
                                                       SetTileLines(1) +
                                                       Lines{"QanhLaunchIEBySearch OUT(0x00000000)"});
}

} // namespace
